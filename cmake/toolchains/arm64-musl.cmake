# 64-bit Arm with musl: script/bootstrap unpacks Debian's musl of that processor; qemu runs the programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)
cmake_path(SET musl_root NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../.deps/musl-arm64/usr)
include(${CMAKE_CURRENT_LIST_DIR}/../musl.cmake)
