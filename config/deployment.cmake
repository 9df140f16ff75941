# Deployment settings: the cloud's host names. Each is a cache variable; all go into one generated
# header, found as "config/deployment.h" by what links deployment_settings.

set(CLOUD_TFA_HOST tfa.example.com CACHE STRING "Host that takes dumps")
set(CLOUD_CHECKIN_HOST checkin.example.com CACHE STRING "Host that devices check in with")
set(CLOUD_CONNECTION_KEEPER_HOST keeper.example.com CACHE STRING "Host of the connection keeper")
set(CLOUD_QUENTA_HOST quenta.example.com CACHE STRING "Host of the quenta service")
set(CLOUD_CATALOGUE_HOST catalogue.example.com CACHE STRING "Host of the service catalogue")
set(CLOUD_BASE_DOMAIN example.com CACHE STRING "Domain of the hosts whose names are made up at run time")

configure_file(config/deployment.h.in generated/config/deployment.h @ONLY)
add_library(deployment_settings INTERFACE)
target_include_directories(deployment_settings INTERFACE ${PROJECT_BINARY_DIR}/generated)
