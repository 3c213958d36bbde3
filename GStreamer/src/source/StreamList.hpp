#pragma once

#include <gst/gst.h>

#include <functional>

#include "streams/Stream.hpp"
#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// One entry per track, null where no stream plays it. Changed by who has the turn, alone; read by all.
class StreamList {
public:
    StreamList();
    /// The streams are gone before.
    ~StreamList();
    StreamList(const StreamList&) = delete;
    StreamList& operator=(const StreamList&) = delete;

    unsigned int size() const { return m_streams->len; }
    Stream* at(unsigned int aTrack) const;
    /// Puts a stream, or null, at the index or after the last.
    void put(unsigned int aTrack, Stream* aStream);
    /// Deletes the stream and leaves its place empty.
    void clear(unsigned int aTrack);
    /// Deletes all from that index on, the last one first.
    void cut(unsigned int aSize);
    /// Says which tracks have no stream.
    void for_each(const std::function<void(Stream&)>& aAction);

    /// Pauses the tasks and flushes; no packet is on its way afterwards. `aSeqnum` here and below: of the seek that is
    /// the reason for it, or 0.
    void halt(guint32 aSeqnum = 0);
    /// Pauses the tasks; what is on its way stays there.
    void pause();
    /// Halts, and flushes no more.
    void flush(guint32 aSeqnum = 0);
    /// Runs the tasks. Pads that flush stop doing so; with `aFlush` every pad stops flushing. Segments begin.
    void run(bool aFlush, guint32 aSeqnum = 0);
    /// Runs the tasks in the segments that there are; where pads flush, others begin.
    void go_on();
    void stop();
    /// See `Stream::begin_at`.
    void begin_at(gint64 aPosition);
    /// Ends the streams.
    void end(guint32 aSeqnum, gint64 aPosition = -1);
    /// Nothing goes out of any stream until it is flushed.
    bool all_have_ended();

    /// From any thread: whether no track has had data for a while.
    bool all_have_no_data() const;
    /// From any thread: whether no stream finds anything linked.
    bool all_are_unlinked() const;
    /// From any thread: how many the stream of the track has pushed; 0 where there is none.
    guint64 access_units(unsigned int aTrack) const;

private:
    mutable Mutex m_streamsMutex;  // Then a stream's status mutex.
    GPtrArray* const m_streams;    ///< Changed under m_streamsMutex.
};

}  // namespace nsGstVireRtspSrc
