#pragma once

#include "streams/CodecStream.hpp"

namespace nsGstVireRtspSrc {

/// A track with the format "MP4A-LATM": "audio/mpeg", version 4.
class StreamAAC : public CodecStream {
public:
    StreamAAC(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack);

    static constexpr const char* kFormat = "MP4A-LATM";

private:
    const char* format() const override { return kFormat; }
    GstCaps* create_caps(const Player::Properties& aInfo) override;
    guint64 next_offset() override { return 0; }
    Segment segment_from(GstClockTime aStart) const override;
    void read_times(const Player::Properties& aInfo);

    gint64 m_timeRes = 0;     ///< Clock rate.
    gint64 m_startTime = -1;  ///< In ns; -1 when not described.
    gint64 m_endTime = -1;    ///< In ns; -1 when not described.
};

/// The AudioSpecificConfig inside a StreamMuxConfig. Empty, and logged why, when there is none.
std::string AudioSpecificConfig(const std::string& aStreamMuxConfig);

}  // namespace nsGstVireRtspSrc
