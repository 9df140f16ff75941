# The product's dependencies: libcurl, OpenSSL, cJSON. Defines cloudagent::curl and
# cloudagent::cjson, as the installed package does.

option(CLOUD_SYSTEM_CURL "Use the system's libcurl instead of the one script/bootstrap builds" OFF)
option(CLOUD_DEVICE "Link everything but libc into one small program" OFF)
set(CLOUD_DEPS_DIR "${PROJECT_SOURCE_DIR}/.deps" CACHE PATH "Folder that script/bootstrap fills")

if(CLOUD_DEVICE)
    include(cmake/device_build.cmake)
    return()
endif()

find_package(OpenSSL REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(CJSON REQUIRED libcjson)
find_library(CJSON_LIBRARY cjson HINTS ${CJSON_LIBRARY_DIRS} REQUIRED)
add_library(cloudagent::cjson UNKNOWN IMPORTED)
set_target_properties(cloudagent::cjson PROPERTIES IMPORTED_LOCATION ${CJSON_LIBRARY})

add_library(cloudagent::curl UNKNOWN IMPORTED)
if(CLOUD_SYSTEM_CURL)
    find_package(CURL REQUIRED)
    set(curl_library ${CURL_LIBRARIES})
    file(STRINGS ${curl_library} cares_version_text REGEX "c-ares/%s")  # of curl_version()
    if(NOT cares_version_text)
        message(WARNING "The system's libcurl ${CURL_VERSION_STRING} was built without c-ares: it "
            "refuses CURLOPT_DNS_SERVERS, and DNS pinning (/tmp/curlDNSFile) is missing.")
    endif()
    set(curl_include_dir ${CURL_INCLUDE_DIRS})
else()
    # Without their run paths nothing finds the private libcurl; some image builders turn them off.
    set(CMAKE_SKIP_RPATH OFF)
    set(CMAKE_SKIP_INSTALL_RPATH OFF)
    set(curl_include_dir ${CLOUD_DEPS_DIR}/curl/include)
    if(NOT EXISTS ${CLOUD_DEPS_DIR}/curl/lib/libcurl.so)
        message(FATAL_ERROR "${CLOUD_DEPS_DIR}/curl/lib/libcurl.so is missing: run script/bootstrap first")
    endif()
    # A copy in the build folder, so that run paths are relative and the folder can be moved.
    set(curl_library ${PROJECT_BINARY_DIR}/curl/libcurl.so.4)
    configure_file(${CLOUD_DEPS_DIR}/curl/lib/libcurl.so ${curl_library} COPYONLY)
endif()
set_target_properties(cloudagent::curl PROPERTIES
    IMPORTED_LOCATION ${curl_library}
    INTERFACE_INCLUDE_DIRECTORIES ${curl_include_dir})
