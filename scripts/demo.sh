#!/bin/sh
# Shows the element at work: plays a presentation with gst-launch, prints what came out of its pads and saves a sheet
# of decoded pictures. Then records it with the command-line tool, over UDP and over TCP. Without a URL it makes a
# short clip with picture and sound and serves it itself.
#
#   scripts/demo.sh [URL]
set -eu
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
out=$build/demo
server=""
url=${1-}

# Seconds that are played of a presentation that does not end.
longest=20

say() { printf '\n== %s\n' "$*"; }

stop_server() {
    # The server ends with its standard input, which is our end of this pipe.
    exec 3>&-
    [ -z "$server" ] || wait "$server" || true
    rm -f "$out/pipe"
}

make_clip() {
    [ -f "$out/picture-and-sound.mp4" ] && return
    say "Making a clip of 10 s"
    ffmpeg -v error -y -f lavfi -i testsrc2=size=1280x720:rate=25:duration=10 \
        -f lavfi -i sine=frequency=440:beep_factor=4:sample_rate=44100:duration=10 \
        -c:v libx264 -preset veryfast -bf 2 -g 50 -pix_fmt yuv420p -c:a aac -ac 2 "$out/making.mp4"
    mv "$out/making.mp4" "$out/picture-and-sound.mp4"
}

serve_clip() {
    make_clip
    rm -f "$out/pipe" "$out/url"
    mkfifo "$out/pipe"
    $build/tests/servers/rtsp_server --launch "( filesrc location=$out/picture-and-sound.mp4 ! qtdemux name=demux
        demux.video_0 ! queue ! rtph264pay name=pay0 pt=96 config-interval=0
        demux.audio_0 ! queue ! rtpmp4apay name=pay1 pt=97 )" <"$out/pipe" >"$out/url" &
    server=$!
    exec 3>"$out/pipe"
    trap stop_server EXIT
    while [ ! -s "$out/url" ]; do
        kill -0 "$server" || exit 1
        sleep 0.1
    done
    url=$(cat "$out/url")
}

# pad NAME DIGITS: what the element's pad in front of the checksum sink NAME gave; DIGITS: the length of its sums
pad() {
    echo "$1:"
    sed -n "s/.*GstChecksumSink:$1\.GstPad:sink: caps = /    caps     /p" "$out/play.log" | tail -n 1
    grep -E "^[0-9:.]+ [0-9a-f]{$2}\$" "$out/play.log" | sort |
        awk 'NR == 1 { first = $1 } { last = $1 }
             END { if (NR) printf "    buffers  %d\n    from     %s\n    to       %s\n", NR, first, last
                   else print "    nothing" }'
}

contact_sheet() {
    pictures=$(find "$out/pictures" -name '*.png' | wc -l)
    [ "$pictures" -gt 0 ] || { echo "no picture was decoded" && return; }
    rows=$((pictures < 5 ? 1 : pictures / 5))
    ffmpeg -v error -y -framerate 2 -i "$out/pictures/%03d.png" -vf "tile=5x$rows:padding=8:color=white" -frames:v 1 \
        "$out/sheet.png"
    echo "contact sheet: $PWD/$out/sheet.png ($pictures pictures, two of each second)"
}

play() {
    say "Playing $url with virertspsrc"
    rm -rf "${out:?}/pictures" "$out/sheet.png"
    mkdir "$out/pictures"
    GST_PLUGIN_PATH=$PWD/$build/GStreamer/1.0 GST_REGISTRY=$PWD/$out/registry.bin \
        timeout --signal=INT "$longest" gst-launch-1.0 -v virertspsrc location="$url" name=source \
        source. ! "video/x-h264;video/mpeg" ! tee name=video ! queue ! decodebin ! videoconvert ! videoscale ! \
        video/x-raw,width=320,pixel-aspect-ratio=1/1 ! videorate ! video/x-raw,framerate=2/1 ! pngenc ! \
        multifilesink location="$out/pictures/%03d.png" index=1 async=false \
        source. ! audio/mpeg ! tee name=audio ! queue ! decodebin ! fakesink async=false \
        video. ! queue ! checksumsink name=picture hash=md5 async=false \
        audio. ! queue ! checksumsink name=sound hash=sha1 async=false \
        >"$out/play.log" || [ $? -eq 124 ] || return
    pad picture 32
    pad sound 40
    contact_sheet
}

# record NAME OPTION...
record() {
    name=$1
    shift
    say "Recording $url over $name"
    rm -rf "${out:?}/$name"
    $build/tools/virertsp/virertsp record "$url" --output "$out/$name" --seconds "$longest" "$@"
    for track in "$out/$name"/*.h264; do
        [ -e "$track" ] || continue
        frames=$(ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames \
            -of csv=p=0 "$track")
        echo "frames: $frames"
    done
}

say "Building"
cmake --preset release >/dev/null
cmake --build --preset release --target virertsp rtsp_server element-1.0-plugin
mkdir -p "$out"
[ -n "$url" ] || serve_clip
play
record UDP
record TCP --tcp
