#pragma once

#include "streams/CodecStream.hpp"
#include "streams/FrameTimes.hpp"

namespace nsGstVireRtspSrc {

/// A track with the format "AMR": "audio/AMR", a speech frame a buffer, in the form of AMR files.
class StreamAMR : public CodecStream {
public:
    static constexpr const char* kFormat = "AMR";

    StreamAMR(GstElement* aElement, StreamController* aController, PlayerAccess& aPlayer, unsigned int aTrack);

protected:
    const char* format() const override { return kFormat; }
    GstCaps* create_caps(const Player::Properties& aInfo) override;
    guint64 next_offset() override { return m_offset++; }
    Segment segment_from(GstClockTime aStart) const override { return {-1, static_cast<gint64>(aStart)}; }
    gint64 time_of(gint64 aPlayTime, bool aAnew) override { return m_times.Next(aPlayTime, aAnew); }
    gsize header(const Player::Packet& aPacket, guint8& aByte) const override;

private:
    guint64 m_offset = 0;
    FrameTimes m_times{20 * GST_MSECOND};
};

}  // namespace nsGstVireRtspSrc
