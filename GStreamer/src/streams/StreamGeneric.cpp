#include "streams/StreamGeneric.hpp"

#include "Player/String.hpp"
#include "threads/Held.hpp"

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

/// The sampling rates that an AudioSpecificConfig names by a number (ISO/IEC 14496-3 section 1.6.3.4).
constexpr guint64 kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};

/// AudioSpecificConfig: object type (5 bits), number of the rate (4), channels (4) ... The rate is the coder's: with
/// spectral band replication the track's is twice as much.
guint64 CoderRate(const Player::Properties& aInfo) {
    constexpr gsize kHeaderSize = 2;
    guint64 lRate = Player::DecimalToUInt(aInfo.Get("TimeRes"));
    const Held<GstBuffer> lConfig(NewBufferFromParam(aInfo, "config"));
    if (lConfig && GST_BUFFER_SIZE(lConfig.get()) >= kHeaderSize) {
        const guint8* const lBytes = GST_BUFFER_DATA(lConfig.get());
        const unsigned int lNumber = (lBytes[0] & 0x07U) << 1 | lBytes[1] >> 7;
        if (lNumber < G_N_ELEMENTS(kRates)) { lRate = kRates[lNumber]; }
    }
    return lRate;
}

/// Duration of an access unit in ns; 0 if the description does not give it.
gint64 FrameDuration(const Player::Properties& aInfo) {
    constexpr guint64 kSamples = 1024;
    const guint64 lRate = CoderRate(aInfo);
    return 0 == lRate ? 0 : static_cast<gint64>(kSamples * GST_SECOND / lRate);
}

}  // namespace

StreamGeneric::StreamGeneric(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer,
                             unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps(aPlayer.TrackInfo(aTrack))),
      m_times(FrameDuration(aPlayer.TrackInfo(aTrack))) {}

GstCaps* StreamGeneric::create_caps(const Player::Properties& aInfo) {
    return MakeCaps(aInfo);
}

}  // namespace nsGstVireRtspSrc
