#!/bin/sh
# Builds with gcc and clang as users and distributions do, warnings being errors: Release, RelWithDebInfo, MinSizeRel, and
# the hardening flags of Debian's packages.
#
#   scripts/check-builds.sh [--product] [KIND...]      --product: without tests, benchmarks and examples
#                                                      KIND: for example gcc-Release; all of them if none is named
set -u
cd "$(dirname "$0")/.."

everything=ON
if [ "${1-}" = "--product" ]; then
    everything=OFF
    shift
fi
[ $# -gt 0 ] || set -- gcc-Release gcc-RelWithDebInfo gcc-MinSizeRel gcc-Debian \
    clang-Release clang-RelWithDebInfo clang-MinSizeRel clang-Debian

# The build type of Debian's packages is none; what CMake doesn't take from the environment is among the flags.
export DEB_BUILD_MAINT_OPTIONS=hardening=+all
flags() { printf '%s %s' "$(dpkg-buildflags --get CPPFLAGS)" "$(dpkg-buildflags --get "$1")"; }

configure() {
    compiler=${1%%-*}
    type=${1#*-}
    case $compiler in
        gcc) export CC=gcc CXX=g++ ;;
        *) export CC=clang CXX=clang++ ;;
    esac
    if [ "$type" = "Debian" ]; then
        type=None
        export CFLAGS="$(flags CFLAGS)" CXXFLAGS="$(flags CXXFLAGS)" LDFLAGS="$(dpkg-buildflags --get LDFLAGS)"
    fi
    cmake -S . -B "build/check/$1" -G Ninja -DCMAKE_BUILD_TYPE=$type -DBUILD_TESTING=$everything \
        -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >"build/check/$1.log" 2>&1
}

mkdir -p build/check
failed=""
for kind; do
    begin=$(date +%s)
    if (configure "$kind") && cmake --build "build/check/$kind" -- --quiet -k 0 >>"build/check/$kind.log" 2>&1; then
        echo "$kind: $(($(date +%s) - begin)) s"
    else
        failed="$failed $kind"
        grep -hE -A4 'error:|warning:|CMake Error' "build/check/$kind.log" | head -n 60
        echo "$kind: FAILED, see build/check/$kind.log"
    fi
done
[ -z "$failed" ] || { echo "FAILED:$failed"; exit 1; }
