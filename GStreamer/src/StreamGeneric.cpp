#include "StreamGeneric.hpp"

#include "Held.hpp"
#include "Player/String.hpp"

namespace nsGstVireRtspSrc {

namespace {

GstCaps* MakeCaps(const Player::Properties& aInfo) {
    Held<GstCaps> lCaps(gst_caps_new_simple("audio/mpeg", "mpegversion", G_TYPE_INT, 4, "stream-format", G_TYPE_STRING,
                                            "raw", "framed", G_TYPE_BOOLEAN, TRUE, nullptr));
    const unsigned int lChannels = Player::DecimalToUInt(aInfo.Get("EncParams"), 1);
    gst_caps_set_simple(lCaps.get(), "channels", G_TYPE_INT, static_cast<int>(lChannels), nullptr);
    const unsigned int lRate = Player::DecimalToUInt(aInfo.Get("TimeRes"));
    if (0 != lRate) { gst_caps_set_simple(lCaps.get(), "rate", G_TYPE_INT, static_cast<int>(lRate), nullptr); }
    GstBuffer* const lConfig = NewBufferFromParam(aInfo, "config");
    if (nullptr != lConfig) { SetCodecData(lCaps.get(), lConfig); }
    return lCaps.release();
}

}  // namespace

StreamGeneric::StreamGeneric(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer,
                             unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps(aPlayer.TrackInfo(aTrack))) {}

GstCaps* StreamGeneric::create_caps(const Player::Properties& aInfo) {
    return MakeCaps(aInfo);
}

}  // namespace nsGstVireRtspSrc
