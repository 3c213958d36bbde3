#pragma once

#include "streams/CodecStream.hpp"
#include "streams/FrameTimes.hpp"

namespace nsGstVireRtspSrc {

/// A track of audio with the format "mpeg4-generic": "audio/mpeg", version 4, raw access units.
class StreamGeneric : public CodecStream {
public:
    static constexpr const char* kFormat = "mpeg4-generic";

    StreamGeneric(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack);

protected:
    const char* format() const override { return kFormat; }
    GstCaps* create_caps(const Player::Properties& aInfo) override;
    guint64 next_offset() override { return m_offset++; }
    Segment segment_from(GstClockTime aStart) const override { return {-1, static_cast<gint64>(aStart)}; }
    gint64 time_of(gint64 aPlayTime, bool aAnew) override { return m_times.Next(aPlayTime, aAnew); }

private:
    guint64 m_offset = 0;
    FrameTimes m_times;
};

}  // namespace nsGstVireRtspSrc
