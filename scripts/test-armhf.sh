#!/bin/sh
# Builds everything for 32-bit ARM and runs the tests under emulation.
#
#   scripts/test-armhf.sh [--build] [CTEST-OPTION...]
exec "$(dirname "$0")/test-cross.sh" armhf "$@"
