# A big-endian machine; nobody plays media on it, it shows what depends on the order of bytes.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(VIRE_TRIPLET s390x-linux-gnu)
set(VIRE_QEMU qemu-s390x-static)
include(${CMAKE_CURRENT_LIST_DIR}/Cross.cmake)
