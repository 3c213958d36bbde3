# What the toolchain files of other machines share; they set VIRE_TRIPLET, VIRE_QEMU and CMAKE_SYSTEM_PROCESSOR.
# Debian's cross compiler builds against a tree of that machine's own packages (scripts/test-cross.sh makes it), and
# the tests run under qemu's emulation of one process, which needs no kernel, no root and no registered binary formats.
set(CMAKE_SYSTEM_NAME Linux)
set(VIRE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-${VIRE_TRIPLET}" CACHE PATH "Packages of the machine")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VIRE_SYSROOT)
cmake_path(ABSOLUTE_PATH VIRE_SYSROOT NORMALIZE)

set(CMAKE_C_COMPILER ${VIRE_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${VIRE_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${VIRE_TRIPLET})
set(CMAKE_SYSROOT ${VIRE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${VIRE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${VIRE_SYSROOT}/usr/lib/${VIRE_TRIPLET}/pkgconfig:${VIRE_SYSROOT}/usr/share/pkgconfig)

# No word of what changed between compilers that nobody mixes.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

# The whole path: a test may run the tool where PATH leads elsewhere.
find_program(VIRE_EMULATOR ${VIRE_QEMU} REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${VIRE_EMULATOR};-L;${VIRE_SYSROOT})
