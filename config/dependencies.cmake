# What the product is linked to: libcurl, OpenSSL, cJSON. Makes cloudagent::curl and
# cloudagent::cjson; the installed package makes targets of the same names.

option(CLOUD_SYSTEM_CURL "Use the system's libcurl instead of the one script/bootstrap builds" OFF)
option(CLOUD_DEVICE "Link everything but libc into one small program" OFF)
set(CLOUD_DEPS_DIR "${PROJECT_SOURCE_DIR}/.deps" CACHE PATH "What script/bootstrap filled")

if(CLOUD_DEVICE)
    include(config/device_build.cmake)
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
    message(WARNING "Building with the system's libcurl ${CURL_VERSION_STRING}: unless it was built "
        "with c-ares, it refuses CURLOPT_DNS_SERVERS, and DNS pinning (/tmp/curlDNSFile) is missing.")
    set(curl_library ${CURL_LIBRARIES})
    set(curl_include_dir ${CURL_INCLUDE_DIRS})
else()
    set(curl_library ${CLOUD_DEPS_DIR}/curl/lib/libcurl.so)
    set(curl_include_dir ${CLOUD_DEPS_DIR}/curl/include)
    if(NOT EXISTS ${curl_library})
        message(FATAL_ERROR "${curl_library} is missing: run script/bootstrap first")
    endif()
endif()
set_target_properties(cloudagent::curl PROPERTIES
    IMPORTED_LOCATION ${curl_library}
    INTERFACE_INCLUDE_DIRECTORIES ${curl_include_dir})
