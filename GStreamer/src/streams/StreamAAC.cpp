#include "streams/StreamAAC.hpp"

#include <cmath>

#include "Parser/AudioConfig.hpp"
#include "Player/String.hpp"
#include "debug/Debug.hpp"
#include "threads/Held.hpp"

#define GST_CAT_DEFAULT AACCategory()

namespace nsGstVireRtspSrc {

namespace {

GstDebugCategory* AACCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_streamAAC");
    return sCategory;
}

/// Decimal seconds in ns, cut; -1 when the description has no such time, as the end of an open range, or none that 64
/// bits hold.
gint64 TimeOf(const Player::Properties& aInfo, const char* aKey) {
    const std::string lText = aInfo.Get(aKey);
    if (lText.empty()) { return -1; }
    const double lTime = g_ascii_strtod(lText.c_str(), nullptr) * 1000000000.0;
    return std::fabs(lTime) < 9.2e18 ? static_cast<gint64>(lTime) : -1;
}

void SetInt(GstCaps* aCaps, const char* aField, unsigned int aValue) {
    gst_caps_set_simple(aCaps, aField, G_TYPE_INT, static_cast<int>(aValue), nullptr);
}

void SetConfig(GstCaps* aCaps, GstBuffer* aConfig) {
    const std::string lConfig = AudioSpecificConfig(
        std::string(reinterpret_cast<const char*>(GST_BUFFER_DATA(aConfig)), GST_BUFFER_SIZE(aConfig)));
    if (!lConfig.empty()) { SetCodecData(aCaps, NewBuffer(lConfig.data(), lConfig.size())); }
}

GstCaps* MakeCaps(const Player::Properties& aInfo) {
    Held<GstCaps> lCaps(gst_caps_new_simple("audio/mpeg", "mpegversion", G_TYPE_INT, 4, "encoding-name", G_TYPE_STRING,
                                            "MP4A-LATM", "framed", G_TYPE_BOOLEAN, FALSE, nullptr));
    if (aInfo.Has("EncParams")) { SetInt(lCaps.get(), "channels", Player::DecimalToUInt(aInfo.Get("EncParams"), 1)); }
    if (aInfo.Has("TimeRes")) { SetInt(lCaps.get(), "rate", Player::DecimalToUInt(aInfo.Get("TimeRes"))); }
    const Held<GstBuffer> lConfig(NewBufferFromParam(aInfo, "config"));
    if (lConfig) { SetConfig(lCaps.get(), lConfig.get()); }
    return lCaps.release();
}

}  // namespace

StreamAAC::StreamAAC(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack)
    : CodecStream(aElement, aController, aPlayer, aTrack, MakeCaps(aPlayer.TrackInfo(aTrack))) {
    read_times(aPlayer.TrackInfo(aTrack));
    AACCategory();
    GST_INFO_OBJECT(element(), "AAC pad-added");
}

GstCaps* StreamAAC::create_caps(const Player::Properties& aInfo) {
    read_times(aInfo);
    return MakeCaps(aInfo);
}

void StreamAAC::read_times(const Player::Properties& aInfo) {
    if (aInfo.Has("TimeRes")) { m_timeRes = Player::DecimalToUInt(aInfo.Get("TimeRes")); }
    m_startTime = TimeOf(aInfo, "StartTime");
    m_endTime = TimeOf(aInfo, "EndTime");
}

CodecStream::Segment StreamAAC::segment_from(GstClockTime aStart) const {
    const auto lStart = static_cast<gint64>(aStart);
    const bool lKnown = -1 != m_startTime && -1 != m_endTime;
    // A range that ends before it begins, or after all time, is as good as none.
    if (!lKnown || m_endTime < m_startTime || m_endTime - m_startTime > G_MAXINT64 - lStart) { return {-1, lStart}; }
    return {lStart + (m_endTime - m_startTime), lStart};
}

std::string AudioSpecificConfig(const std::string& aStreamMuxConfig) {
    const Parser::StreamMuxConfig lMux(aStreamMuxConfig);
    if (aStreamMuxConfig.size() <= 1) {
        GST_DEBUG("To little config Data");
    } else if (0 != lMux.mVersion) {
        GST_DEBUG("Need audioMuxVersion 0");
    }
    return lMux.mAudioSpecificConfig;
}

}  // namespace nsGstVireRtspSrc
