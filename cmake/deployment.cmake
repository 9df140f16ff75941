# Deployment settings: the cloud's host names, and whether it must prove who it is. Each is a cache
# variable; targets that link deployment_settings find them all in the generated header
# "deployment.h".

set(CLOUD_TFA_HOST tfa.example.com CACHE STRING "Host that takes dumps")
set(CLOUD_CHECKIN_HOST checkin.example.com CACHE STRING "Host that devices check in with")
set(CLOUD_CONNECTION_KEEPER_HOST keeper.example.com CACHE STRING "Host of the connection keeper")
set(CLOUD_QUENTA_HOST quenta.example.com CACHE STRING "Host of the quenta service")
set(CLOUD_CATALOGUE_HOST catalogue.example.com CACHE STRING "Host of the service catalogue")
set(CLOUD_BASE_DOMAIN example.com CACHE STRING "Domain of the hosts whose names are composed at run time")

option(CLOUD_VERIFY_CLOUD "Check the cloud's certificates and host names against /etc/ssl/certs" OFF)

configure_file(cmake/deployment.h.in generated/deployment.h @ONLY)
add_library(deployment_settings INTERFACE)
target_include_directories(deployment_settings INTERFACE ${PROJECT_BINARY_DIR}/generated)

# build_verifying(TARGET): builds a program of this build as CLOUD_VERIFY_CLOUD=ON does. The one source
# that knows the setting comes before the library's own.
function(build_verifying target)
    set(CLOUD_VERIFY_CLOUD ON)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/deployment.h.in
        ${PROJECT_BINARY_DIR}/generated/verifying/deployment.h @ONLY)
    target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cloud_http/request.cpp)
    target_include_directories(${target} BEFORE PRIVATE ${PROJECT_BINARY_DIR}/generated/verifying)
endfunction()
