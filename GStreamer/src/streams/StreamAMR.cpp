#include "streams/StreamAMR.hpp"

#include "Player/AMRFrame.hpp"

namespace nsGstVireRtspSrc {

namespace {

GstCaps* MakeCaps() {
    return gst_caps_new_simple("audio/AMR", "rate", G_TYPE_INT, 8000, "channels", G_TYPE_INT, 1, nullptr);
}

}  // namespace

StreamAMR::StreamAMR(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps()) {}

GstCaps* StreamAMR::create_caps(const Player::Properties& /*aInfo*/) {
    return MakeCaps();
}

/// The library hands out the speech alone; its size gives back the byte that files have in front.
gsize StreamAMR::header(const Player::Packet& aPacket, guint8& aByte) const {
    const Player::UInt lType = Player::AMRFrame::TypeOf(aPacket.Size());
    if (lType > Player::AMRFrame::kComfortNoise) { return 0; }
    aByte = Player::AMRFrame::Entry(lType);
    return 1;
}

}  // namespace nsGstVireRtspSrc
