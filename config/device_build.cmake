# A program for a device: everything but libc linked into it, as small as it gets. Included in place
# of the search for the machine's libraries. The dependencies are those that
# `script/bootstrap --target` made for the toolchain file in use, or for this machine's compiler.

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

# imported_archive(TARGET ARCHIVE LIBRARY...): the archive, and what it needs in turn.
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

# Tests mean the same sizes and times as what they test.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
    add_compile_options(-Wno-psabi)  # how GCC 6 passed a record is not asked for
endif()

# The objects hold machine code beside what the optimisation at link time works on, for test programs.
target_compile_options(shipped_code INTERFACE
    -ffunction-sections -fdata-sections -fno-asynchronous-unwind-tables -Wa,--noexecstack
    -flto=auto -ffat-lto-objects)
target_link_options(shipped_code INTERFACE -flto=auto -Wl,--gc-sections -static-libgcc -s)

# A relocation in a few bits instead of 24 bytes, where linker and C library know how.
include(CheckCSourceCompiles)
set(CMAKE_REQUIRED_LINK_OPTIONS -Wl,-z,pack-relative-relocs)
check_c_source_compiles("int main(void) { return 0; }" CLOUD_PACKED_RELOCATIONS FAIL_REGEX ignored)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(CLOUD_PACKED_RELOCATIONS)
    target_link_options(shipped_code INTERFACE -Wl,-z,pack-relative-relocs)
endif()
