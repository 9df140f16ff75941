# Lets Debian's GCC for glibc build static, position-independent programs for musl. Its own wrapper,
# musl-gcc, knows neither C++ nor static-pie. musl_root holds musl's include/ and lib/.

# GCC's C++ headers suffice: the product uses what needs no library. They ask for glibc's version.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -xc++ -E -v /dev/null
    ERROR_VARIABLE searched OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n /[^\n]+" searched "${searched}")
set(musl_machine ${CMAKE_SYSTEM_PROCESSOR}-linux-musl)
set(c_folders "-isystem ${musl_root}/include/${musl_machine}")
set(cxx_folders "")
foreach(folder IN LISTS searched)
    string(STRIP "${folder}" folder)
    cmake_path(NORMAL_PATH folder)
    if(folder MATCHES "/c[+][+]/")
        string(APPEND cxx_folders "-isystem ${folder} ")
    elseif(folder MATCHES "/gcc(-cross)?/.*/include$")
        string(APPEND c_folders " -isystem ${folder}")  # stddef.h, stdarg.h and the like
    endif()
endforeach()
set(musl_flags "-B${musl_root}/lib/${musl_machine} -static-pie -nostdinc")
set(CMAKE_C_FLAGS_INIT "${musl_flags} ${c_folders}")
set(CMAKE_CXX_FLAGS_INIT "${musl_flags} ${cxx_folders}${c_folders} -D'__GLIBC_PREREQ(major,minor)=0'")
set(CMAKE_C_LINK_PIE_SUPPORTED OFF CACHE INTERNAL "")  # CMake's -pie would undo -static-pie
set(CLOUD_STATIC_PROGRAM ON)  # its relocations are this project's to unpack
set(CMAKE_FIND_ROOT_PATH ${musl_root}/lib/${musl_machine})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
