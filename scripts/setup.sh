#!/bin/sh
# Installs what the build, the tests and the demonstration need on Debian 12. Run as root; quick and silent
# when everything is there.
#
#   scripts/setup.sh [PACKAGE...]      more packages, that only some need
set -eu

packages="
    build-essential cmake ninja-build pkg-config ccache mold doxygen
    clang clang-format clang-tidy cppcheck libclang-rt-14-dev llvm
    libglib2.0-dev libgnutls28-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libgstrtspserver-1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    gstreamer1.0-plugins-ugly gstreamer1.0-libav
    libgtest-dev libgmock-dev libbenchmark-dev
    ffmpeg python3 groff-base valgrind zsh fish openssl glib-networking
    $*
"

missing=""
for package in $packages; do
    case "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" in
        *" installed") ;;
        *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" -ne 0 ]; then
    echo "setup.sh: these packages are missing, and only root can install them:$missing" >&2
    exit 1
fi
echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
apt-get -qq update
# shellcheck disable=SC2086  # a list of words
apt-get -qq install --no-install-recommends $missing >/dev/null
