#!/bin/sh
# Shows the client at work: records a presentation over UDP and over TCP, and tells how many pictures came out
# and where the first one is. Without a URL it makes a short clip and serves it itself.
#
#   scripts/demo.sh [URL]
set -eu
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
out=$build/demo
server=""
url=${1-}

say() { printf '\n== %s\n' "$*"; }

stop_server() {
    # The server ends with its standard input, which is our end of this pipe.
    exec 3>&-
    [ -z "$server" ] || wait "$server" || true
    rm -f "$out/pipe"
}

make_clip() {
    [ -f "$out/clip.mp4" ] && return
    say "Making a clip of 10 s"
    ffmpeg -v error -y -f lavfi -i testsrc2=size=1280x720:rate=25:duration=10 \
        -c:v libx264 -preset veryfast -bf 2 -g 50 -pix_fmt yuv420p "$out/making.mp4"
    mv "$out/making.mp4" "$out/clip.mp4"
}

serve_clip() {
    make_clip
    rm -f "$out/pipe" "$out/url"
    mkfifo "$out/pipe"
    $build/tests/servers/rtsp_server --file "$out/clip.mp4" <"$out/pipe" >"$out/url" &
    server=$!
    exec 3>"$out/pipe"
    trap stop_server EXIT
    while [ ! -s "$out/url" ]; do
        kill -0 "$server" || exit 1
        sleep 0.1
    done
    url=$(cat "$out/url")
}

# record NAME OPTION...
record() {
    name=$1
    shift
    say "Recording $url over $name"
    rm -rf "${out:?}/$name"
    $build/tools/virertsp/virertsp record "$url" --output "$out/$name" --seconds 20 "$@"
    for track in "$out/$name"/*.h264; do
        [ -e "$track" ] || continue
        frames=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames \
            -of csv=p=0 "$track")
        ffmpeg -v error -y -i "$track" -frames:v 1 "$track.png"
        echo "frames:        $frames"
        echo "first picture: $PWD/$track.png"
    done
}

say "Building"
cmake --preset release >/dev/null
cmake --build --preset release --target virertsp rtsp_server
mkdir -p "$out"
[ -n "$url" ] || serve_clip
record UDP
record TCP --tcp
