#pragma once

#include "streams/Stream.hpp"

namespace nsGstVireRtspSrc {

/// What the streams of all codecs have in common: caps from the track's description, and packets turned into
/// buffers with a timestamp.
class CodecStream : public Stream {
public:
    bool caps_are_valid() override;
    bool task_process() override;

protected:
    using Stream::Stream;

    /// How the segment that begins with a buffer goes on, in ns; -1 for no stop.
    struct Segment {
        gint64 mStop;
        gint64 mPosition;
    };

    /// The "Format" of the tracks that the stream plays.
    virtual const char* format() const = 0;
    /// New caps from the track's description, which is read anew at each start.
    virtual GstCaps* create_caps(const Player::Properties& aInfo) = 0;
    /// The offset of the next buffer.
    virtual guint64 next_offset() = 0;
    /// `aStart`: the timestamp of the segment's first buffer.
    virtual Segment segment_from(GstClockTime aStart) const = 0;
    /// When a packet with that play time is due, in ns. `aAnew`: what came before it was of another time.
    virtual gint64 time_of(gint64 aPlayTime, bool /*aAnew*/) { return aPlayTime; }
    /// How many bytes, `aByte` or none, a buffer has before those of its packet.
    virtual gsize header(const Player::Packet& /*aPacket*/, guint8& /*aByte*/) const { return 0; }

private:
    /// Takes the packet's bytes where it can.
    GstBuffer* make_buffer(Player::Packet& aPacket) const;
    void start_segment(GstBuffer* aBuffer);
    bool is_far(GstClockTime aTimestamp) const;
    void handle_push_result(GstFlowReturn aResult);

    GstClockTime m_lastTimestamp = 0;  ///< Of the buffer pushed last; the streaming thread's own, as the next.
    bool m_refusalLogged = false;      ///< Once for the pad; the streaming thread's own.
};

/// A new buffer with a copy of the bytes.
GstBuffer* NewBuffer(const void* aData, gsize aSize);
/// A new buffer with the bytes that the parameter of the track's "FmtParams" spells in hexadecimal, or null
/// where there are none.
GstBuffer* NewBufferFromParam(const Player::Properties& aInfo, const char* aParam);
/// Sets "codec_data"; takes the buffer over.
void SetCodecData(GstCaps* aCaps, GstBuffer* aBuffer);

}  // namespace nsGstVireRtspSrc
