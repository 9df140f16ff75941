# This machine's processor with musl: one file that needs no C library.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER x86_64-linux-gnu-g++)
set(musl_root /usr)
include(${CMAKE_CURRENT_LIST_DIR}/../musl.cmake)
