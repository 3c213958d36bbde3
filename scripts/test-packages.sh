#!/bin/sh
# Makes Debian's packages as Debian would, examines them with lintian, and installs and uses them in a fresh system: the
# tool, the element, and README's program built against the library, all playing from a server out here. As root.
set -eu
cd "$(dirname "$0")/.."

packages=build/package/packages
out=build/package/test
server=""

say() { printf '\n== %s\n' "$*"; }

# The first archive of this machine's own sources that has the whole distribution.
archive() { apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' | head -n 1; }

make_packages() {
    export DEB_BUILD_MAINT_OPTIONS=hardening=+all
    rm -rf "$packages"
    CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)" \
        LDFLAGS=$(dpkg-buildflags --get LDFLAGS) cmake --preset package >/dev/null
    cmake --build --preset package -- --quiet
    cpack --preset package >"$out/cpack.log" 2>&1 || { cat "$out/cpack.log"; return 1; }
}

serve() {
    cmake --preset debug >/dev/null
    cmake --build --preset debug --target rtsp_server -- --quiet
    ffmpeg -v error -y -f lavfi -i testsrc2=size=320x240:rate=25:duration=4 -c:v libx264 -preset veryfast -g 25 \
        -pix_fmt yuv420p "$out/clip.mp4"
    rm -f "$out/pipe" "$out/url"
    mkfifo "$out/pipe"
    # It ends with its standard input, which is our end of this pipe.
    build/debug/tests/servers/rtsp_server --file "$out/clip.mp4" <"$out/pipe" >"$out/url" &
    server=$!
    exec 3>"$out/pipe"
    while [ ! -s "$out/url" ]; do
        kill -0 "$server" || exit 1
        sleep 0.1
    done
}

# What a user does in the new system; every line has to succeed.
write_steps() {
    sed -n '/^```cpp$/,/^```$/{/^```/d;p}' README.md >"$out/play.cpp"
    cat >"$out/steps" <<END
set -eux
cd /root
install() { DEBIAN_FRONTEND=noninteractive apt-get -qq install --no-install-recommends "\$@" >/dev/null; }

install ./libplayer1_*.deb ./virertsp_*.deb
virertsp --version
virertsp probe $(cat "$out/url") | grep H264
virertsp record $(cat "$out/url") --output recorded
test -s recorded/track0.h264
test -s /usr/share/man/man1/virertsp.1.gz
test -s /usr/share/bash-completion/completions/virertsp
test -s /usr/share/zsh/vendor-completions/_virertsp
test -s /usr/share/fish/vendor_completions.d/virertsp.fish

install ./gstreamer1.0-virertsp_*.deb gstreamer1.0-tools
gst-inspect-1.0 virertspsrc | grep Version
gst-launch-1.0 virertspsrc location=$(cat "$out/url") ! fakesink | grep 'Got EOS'

install ./libplayer-dev_*.deb g++ pkg-config
g++ -std=c++17 play.cpp \$(pkg-config --cflags --libs Player) -o play
./play $(cat "$out/url") | tail -n 1 | grep 'track 0: 3[0-9]* ns'

apt-get -qq purge libplayer1 >/dev/null
test -z "\$(find /usr /etc -iname '*virertsp*' -o -name 'libPlayer*')"
echo "The new system is fine."
END
}

use_packages() {
    mmdebstrap --quiet --variant=apt --format=null \
        --customize-hook="copy-in $(echo "$packages"/*.deb) $out/play.cpp $out/steps /root" \
        --customize-hook='chroot "$1" sh /root/steps' bookworm /dev/null "$(archive)" >"$out/use.log" 2>&1 ||
        { tail -n 40 "$out/use.log"; return 1; }
    grep -xF "The new system is fine." "$out/use.log"
}

scripts/setup.sh lintian mmdebstrap dpkg-dev
mkdir -p "$out"
say "Packages"
make_packages
(cd "$packages" && ls ./*.deb)
say "lintian"
# CPack calls ldconfig beside the trigger; and no bug of Debian's asked for these packages.
lintian --allow-root --fail-on error,warning \
    --suppress-tags maintscript-calls-ldconfig,initial-upload-closes-no-bugs "$packages"/*.deb
say "A new system"
serve
write_steps
status=0
use_packages || status=$?
exec 3>&-
wait "$server" || true
exit $status
