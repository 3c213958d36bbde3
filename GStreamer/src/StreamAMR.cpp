#include "StreamAMR.hpp"

#include <algorithm>
#include <iterator>

namespace nsGstVireRtspSrc {

namespace {

/// Bytes of a frame by its type (3GPP TS 26.101): eight of speech, and comfort noise.
constexpr gsize kFrameSizes[] = {12, 13, 15, 17, 19, 20, 26, 31, 5};

GstCaps* MakeCaps() {
    return gst_caps_new_simple("audio/AMR", "rate", G_TYPE_INT, 8000, "channels", G_TYPE_INT, 1, nullptr);
}

}  // namespace

StreamAMR::StreamAMR(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps()) {}

GstCaps* StreamAMR::create_caps(const Player::Properties& /*aInfo*/) {
    return MakeCaps();
}

/// A frame's own byte of a file (RFC 4867 section 5.3): padding (1 bit), type (4), quality (1), padding (2). The
/// library hands out the speech alone, whose size tells the type.
gsize StreamAMR::header(const Player::Packet& aPacket, guint8& aByte) const {
    constexpr unsigned int kGoodFrame = 0x04;
    const auto* const lFound = std::find(std::begin(kFrameSizes), std::end(kFrameSizes), gsize{aPacket.Size()});
    if (std::end(kFrameSizes) == lFound) { return 0; }
    aByte = static_cast<guint8>(static_cast<unsigned int>(lFound - std::begin(kFrameSizes)) << 3 | kGoodFrame);
    return 1;
}

}  // namespace nsGstVireRtspSrc
