#pragma once

#include "streams/CodecStream.hpp"

namespace nsGstVireRtspSrc {

/// A track with the format "H264": "video/x-h264", each NAL unit preceded by its 4-byte length.
class StreamH264 : public CodecStream {
public:
    StreamH264(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack);

    /// What a decoder needs, out of a "sprop-parameter-sets" value: an AVC decoder configuration record
    /// (ISO/IEC 14496-15) with one SPS and one PPS, and the picture size; 0 for a size that is not known.
    static void GetDecoderSpecificInfo(const std::string& aSprop, std::string& aBytes, unsigned int& aWidth,
                                       unsigned int& aHeight);

    static constexpr const char* kFormat = "H264";

private:
    const char* format() const override { return kFormat; }
    GstCaps* create_caps(const Player::Properties& aInfo) override;
    guint64 next_offset() override { return m_offset++; }
    Segment segment_from(GstClockTime aStart) const override { return {-1, static_cast<gint64>(aStart)}; }

    guint32 m_offset = 0;
};

}  // namespace nsGstVireRtspSrc
