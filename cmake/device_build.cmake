# A small program for a device, with everything but libc linked in, for musl libc too. Included in place of the search
# for the machine's libraries: `script/bootstrap --target` has built the dependencies for the
# toolchain file in use, or for this machine's compiler.

set(device native)
if(CMAKE_TOOLCHAIN_FILE)
    cmake_path(GET CMAKE_TOOLCHAIN_FILE STEM LAST_ONLY device)
endif()
set(CLOUD_DEVICE_DEPS "${CLOUD_DEPS_DIR}/device-${device}" CACHE PATH "Static libcurl and the rest")
if(NOT EXISTS ${CLOUD_DEVICE_DEPS}/lib/libcurl.a)
    message(FATAL_ERROR "${CLOUD_DEVICE_DEPS} is incomplete: run script/bootstrap --target first")
endif()

if(CMAKE_CROSSCOMPILING)
    list(APPEND CMAKE_FIND_ROOT_PATH ${CLOUD_DEVICE_DEPS})
endif()
list(PREPEND CMAKE_PREFIX_PATH ${CLOUD_DEVICE_DEPS})
set(OPENSSL_ROOT_DIR ${CLOUD_DEVICE_DEPS})
set(OPENSSL_USE_STATIC_LIBS ON)
find_package(OpenSSL REQUIRED)

# imported_archive(TARGET ARCHIVE LIBRARY...): the archive, and the libraries that it needs.
function(imported_archive target archive)
    add_library(${target} STATIC IMPORTED)
    set_target_properties(${target} PROPERTIES
        IMPORTED_LOCATION ${CLOUD_DEVICE_DEPS}/lib/${archive}
        INTERFACE_INCLUDE_DIRECTORIES ${CLOUD_DEVICE_DEPS}/include
        INTERFACE_LINK_LIBRARIES "${ARGN}")
endfunction()
imported_archive(cloudagent::cares libcares.a)
imported_archive(cloudagent::curl libcurl.a cloudagent::cares OpenSSL::SSL OpenSSL::Crypto)
imported_archive(cloudagent::cjson libcjson.a)

# Tests must agree with the product on the sizes of files and times.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
    add_compile_options(-Wno-psabi)  # no GCC before 7 is involved
endif()

# The image of a device is often built where the libraries for the tests are missing. For another
# target the machine's own build has most of what tests need.
set(test_libraries GTest)
if(NOT CMAKE_CROSSCOMPILING)
    list(APPEND test_libraries nlohmann_json fmt CLI11)
endif()
foreach(library IN LISTS test_libraries)
    if(BUILD_TESTING)
        find_package(${library} QUIET)
        if(NOT ${library}_FOUND AND CMAKE_CROSSCOMPILING)
            message(STATUS "The unit tests are left out: ${library} is missing")
            set(CLOUD_NO_UNIT_TESTS ON)
        elseif(NOT ${library}_FOUND)
            message(STATUS "The tests are left out: ${library} is missing")
            set(BUILD_TESTING OFF)
        endif()
    endif()
endforeach()

# Test programs link the objects' machine code, the product their link-time-optimisation form.
target_compile_options(shipped_code INTERFACE
    -ffunction-sections -fdata-sections -fno-asynchronous-unwind-tables -Wa,--noexecstack
    -flto=auto -ffat-lto-objects)
target_link_options(shipped_code INTERFACE -flto=auto -Wl,--gc-sections -static-libgcc -s)

# A relocation then takes a few bits instead of 24 bytes; linker and C library must support it. glibc's
# version tells; other C libraries, such as musl before 1.2.4, crash and tell nothing. No loader
# relocates a static program: it unpacks them itself.
include(CheckCSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS -Wl,-z,pack-relative-relocs)
if(CLOUD_STATIC_PROGRAM)
    set(CMAKE_REQUIRED_DEFINITIONS -DUNPACKS_ITSELF)
endif()
check_c_source_compiles("
    #ifndef UNPACKS_ITSELF
    #include <features.h>
    #ifndef __GLIBC_PREREQ
    #error
    #elif !__GLIBC_PREREQ(2, 36)
    #error
    #endif
    #endif
    int main(void) { return 0; }" CLOUD_PACKED_RELOCATIONS FAIL_REGEX ignored)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
unset(CMAKE_REQUIRED_DEFINITIONS)
if(CLOUD_PACKED_RELOCATIONS)
    target_link_options(shipped_code INTERFACE -Wl,-z,pack-relative-relocs)
endif()
if(CLOUD_PACKED_RELOCATIONS AND CLOUD_STATIC_PROGRAM)
    add_library(unpack_relocations OBJECT cmake/unpack_relocations.c)
    target_compile_options(unpack_relocations PRIVATE -fno-stack-protector)
    target_link_libraries(unpack_relocations PRIVATE project_warnings)
    target_link_libraries(shipped_code INTERFACE $<TARGET_OBJECTS:unpack_relocations>)
    target_link_options(shipped_code INTERFACE -Wl,-e,start_packed)
endif()
