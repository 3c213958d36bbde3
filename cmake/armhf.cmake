# 32-bit ARM with hardware floating point.
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(VIRE_TRIPLET arm-linux-gnueabihf)
set(VIRE_QEMU qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/Cross.cmake)
