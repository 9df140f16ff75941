# Compile flags. Everything links project_warnings; the library and the program link shipped_code.

option(CLOUD_WARNINGS_AS_ERRORS "Make warnings errors" OFF)
option(CLOUD_COVERAGE "Count which lines run" OFF)
set(CLOUD_SANITIZE "" CACHE STRING "Sanitizers to build everything with, as for -fsanitize=")

add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra    # nearly always mistakes
    -Wpedantic       # standard C++17 and C11, so that any compiler will do
    -Wconversion     # conversions that lose bits (sizes, statuses, uint32_t to int)
    -Wshadow         # one name for two variables
    $<$<BOOL:${CLOUD_WARNINGS_AS_ERRORS}>:-Werror>)

if(CLOUD_SANITIZE)
    add_compile_options(-fsanitize=${CLOUD_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # GCC 12 then accuses <regex>
    add_link_options(-fsanitize=${CLOUD_SANITIZE})
endif()
if(CLOUD_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()

include(CheckPIESupported)
check_pie_supported()

# The product does without the C++ run-time library, which exceptions, type information and guarded
# statics would pull in; it is linked as C.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
add_library(shipped_code INTERFACE)
target_link_libraries(shipped_code INTERFACE project_warnings)
target_compile_options(shipped_code INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
    -fvisibility=hidden         # except what public headers declare
    -fstack-protector-strong)   # abort on a stack buffer overrun
target_compile_definitions(shipped_code INTERFACE
    _FILE_OFFSET_BITS=64        # dumps beyond 2 GiB on 32-bit devices
    _TIME_BITS=64)              # and times beyond 2038
target_link_options(shipped_code INTERFACE
    -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(NOT CLOUD_SANITIZE)  # sanitizers define their functions in the program only
    target_link_options(shipped_code INTERFACE -Wl,-z,defs)
endif()

# Level 3 checks more buffers; it needs GCC 12 or clang 9, and glibc 2.34. A level among the builder's
# own flags would often be lower.
include(CheckCSourceCompiles)
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_c_source_compiles("
    #include <features.h>
    #if __USE_FORTIFY_LEVEL < 3
    #error
    #endif
    int main(void) { return 0; }" CLOUD_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
set(fortify_level 2)
if(CLOUD_FORTIFY_3)
    set(fortify_level 3)
endif()
target_compile_options(shipped_code INTERFACE
    "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=${fortify_level}>")

# For everything that runs on the device.
function(link_without_cxx_library)
    set_target_properties(${ARGN} PROPERTIES LINKER_LANGUAGE C POSITION_INDEPENDENT_CODE ON)
endfunction()
