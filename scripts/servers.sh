#!/bin/sh
# Plays servers of other makes with the tool and the element over each transport, compares what arrives with the
# file that is served, and prints the table of docs/servers.md. Ends with 1 when something that should play does not.
# Installs the servers, as root; those of the npm registry go into the build folder.
#
#   scripts/servers.sh [--only NAME] [--jobs N]
set -eu

cd "$(dirname "$0")/.."
build=$PWD/build/debug
# A Node.js from elsewhere brings its own npm and suffers no other.
node="nodejs npm"
command -v node >/dev/null && command -v npm >/dev/null && node=""
# shellcheck disable=SC2086  # a list of words
scripts/setup.sh vlc-bin vlc-plugin-base rtsp-server-perl $node iproute2 util-linux

export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
[ -f "$build/build.ninja" ] || cmake --preset debug >/dev/null
cmake --build --preset debug --target virertsp rtsp_server element-1.0-plugin -- --quiet

export NODE_SERVERS="$build/node-servers"
mkdir -p "$NODE_SERVERS"
if ! [ -d "$NODE_SERVERS/node_modules/node-rtsp-rtmp-server" ]; then
    # No package may run a script of its own here.
    (cd "$NODE_SERVERS" && npm install --silent --no-fund --no-audit --ignore-scripts --no-save \
        rtsp-streaming-server@2.1.0 node-rtsp-rtmp-server@0.4.0)
fi

export VIRERTSP="$build/tools/virertsp/virertsp" RTSP_SERVER="$build/tests/servers/rtsp_server"
export CLIPS="$build/tests/media/clips" GST_LAUNCH="${GST_LAUNCH:-gst-launch-1.0}"
export GST_PLUGIN_PATH="$build/GStreamer/1.0" GST_REGISTRY="$build/registry-servers.bin"
export PYTHONPATH="$PWD/tests/support:$PWD/tests/media" PYTHONDONTWRITEBYTECODE=1
# A network with nothing but a loopback: some servers listen on all addresses and want ports by number.
rights=""
[ "$(id -u)" -eq 0 ] || rights="--map-root-user"
# shellcheck disable=SC2016,SC2086  # the inner shell's words; nothing or one word
exec unshare --net $rights sh -c 'ip link set lo up && exec python3 tests/servers/table.py "$@"' sh "$@"
