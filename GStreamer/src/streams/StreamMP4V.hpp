#pragma once

#include "streams/CodecStream.hpp"

namespace nsGstVireRtspSrc {

/// A track with the format "MP4V-ES": "video/mpeg", version 4.
class StreamMP4V : public CodecStream {
public:
    StreamMP4V(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack);

    static constexpr const char* kFormat = "MP4V-ES";

private:
    const char* format() const override { return kFormat; }
    GstCaps* create_caps(const Player::Properties& aInfo) override;
    guint64 next_offset() override { return m_offset++; }
    Segment segment_from(GstClockTime aStart) const override;

    guint32 m_offset = 0;
};

}  // namespace nsGstVireRtspSrc
