# How code is compiled. Two targets to link: project_warnings for everything of this project,
# shipped_code for the library and the program.

option(CLOUD_WARNINGS_AS_ERRORS "Stop at the first warning" OFF)
option(CLOUD_COVERAGE "Count which lines run" OFF)
set(CLOUD_SANITIZE "" CACHE STRING "Sanitizers to build everything with, as for -fsanitize=")

add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra    # what is nearly always a mistake
    -Wpedantic       # the language is standard C++17 and C11, so that any compiler will do
    -Wconversion     # a number that loses bits on its way (sizes, statuses, uint32_t to int)
    -Wshadow         # two things under one name
    $<$<BOOL:${CLOUD_WARNINGS_AS_ERRORS}>:-Werror>)

if(CLOUD_SANITIZE)
    add_compile_options(-fsanitize=${CLOUD_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${CLOUD_SANITIZE})
endif()
if(CLOUD_COVERAGE)
    add_compile_options(--coverage)
    add_link_options(--coverage)
endif()

include(CheckPIESupported)
check_pie_supported()

# Exceptions, type information and guarded statics would pull in the C++ run-time library, which
# the product does without; so it is linked as C, and nothing of that library on its own accord.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
add_library(shipped_code INTERFACE)
target_link_libraries(shipped_code INTERFACE project_warnings)
target_compile_options(shipped_code INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
    -fvisibility=hidden         # public headers make their names visible, nothing else is
    -fstack-protector-strong)   # an overrun ends the program, not the stack frame
target_compile_definitions(shipped_code INTERFACE
    _FILE_OFFSET_BITS=64        # dumps beyond 2 GiB on 32-bit devices
    _TIME_BITS=64               # and times beyond 2038
    $<$<CONFIG:Release>:_FORTIFY_SOURCE=3>)
target_link_options(shipped_code INTERFACE
    -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(NOT CLOUD_SANITIZE)  # a sanitizer's functions are found in the program only
    target_link_options(shipped_code INTERFACE -Wl,-z,defs)
endif()

# For the targets that are linked into something that runs on the device.
function(link_without_cxx_library)
    set_target_properties(${ARGN} PROPERTIES LINKER_LANGUAGE C POSITION_INDEPENDENT_CODE ON)
endfunction()
