#include "source/StreamList.hpp"

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

namespace {

/// Most presentations have sound and picture.
constexpr guint kUsualTracks = 2;

}  // namespace

StreamList::StreamList() : m_streams(g_ptr_array_sized_new(kUsualTracks)) {}

StreamList::~StreamList() {
    g_ptr_array_free(m_streams, TRUE);
}

Stream* StreamList::at(unsigned int aTrack) const {
    return aTrack < m_streams->len ? static_cast<Stream*>(g_ptr_array_index(m_streams, aTrack)) : nullptr;
}

void StreamList::put(unsigned int aTrack, Stream* aStream) {
    const Lock lStreams(m_streamsMutex);
    if (aTrack < m_streams->len) {
        g_ptr_array_index(m_streams, aTrack) = aStream;
    } else {
        g_ptr_array_add(m_streams, aStream);
    }
}

void StreamList::clear(unsigned int aTrack) {
    Stream* const lStream = at(aTrack);
    if (nullptr == lStream) { return; }
    put(aTrack, nullptr);
    Stream::destroy(lStream);
}

void StreamList::cut(unsigned int aSize) {
    while (m_streams->len > aSize) {
        clear(m_streams->len - 1);
        const Lock lStreams(m_streamsMutex);
        g_ptr_array_remove_index(m_streams, m_streams->len - 1);
    }
}

void StreamList::for_each(const std::function<void(Stream&)>& aAction) {
    for (unsigned int lTrack = 0; lTrack < m_streams->len; ++lTrack) {
        Stream* const lStream = at(lTrack);
        if (nullptr == lStream) {
            GST_DEBUG("Could not find stream");
        } else {
            aAction(*lStream);
        }
    }
}

void StreamList::halt(guint32 aSeqnum) {
    for_each([aSeqnum](Stream& aStream) {
        aStream.task_pause();
        aStream.flush_start(aSeqnum);
    });
    for_each([](Stream& aStream) { aStream.task_wait(); });
}

void StreamList::pause() {
    for_each([](Stream& aStream) { aStream.task_pause(); });
}

void StreamList::flush(guint32 aSeqnum) {
    halt(aSeqnum);
    for_each([aSeqnum](Stream& aStream) { aStream.flush_stop(aSeqnum); });
}

void StreamList::run(bool aFlush, guint32 aSeqnum) {
    for_each([aFlush, aSeqnum](Stream& aStream) {
        if (aFlush || aStream.is_flushing()) { aStream.flush_stop(aSeqnum); }
        aStream.task_run();
    });
}

void StreamList::go_on() {
    for_each([](Stream& aStream) {
        if (aStream.is_flushing()) { aStream.flush_stop(); }
        aStream.task_run(false);
    });
}

void StreamList::begin_at(gint64 aPosition) {
    for_each([aPosition](Stream& aStream) { aStream.begin_at(aPosition); });
}

void StreamList::end(guint32 aSeqnum, gint64 aPosition) {
    for_each([aSeqnum, aPosition](Stream& aStream) { aStream.end(aSeqnum, aPosition); });
}

bool StreamList::all_have_ended() {
    bool lAll = true;
    for_each([&lAll](Stream& aStream) { lAll = lAll && aStream.has_ended(); });
    return lAll;
}

void StreamList::stop() {
    for_each([](Stream& aStream) { aStream.task_stop(); });
}

bool StreamList::all_have_no_data() const {
    const Lock lStreams(m_streamsMutex);
    for (unsigned int lTrack = 0; lTrack < m_streams->len; ++lTrack) {
        const Stream* const lStream = at(lTrack);
        if (nullptr != lStream && kNoData != lStream->status_get()) { return false; }
    }
    return true;
}

bool StreamList::all_are_unlinked() const {
    const Lock lStreams(m_streamsMutex);
    for (unsigned int lTrack = 0; lTrack < m_streams->len; ++lTrack) {
        const Stream* const lStream = at(lTrack);
        if (nullptr != lStream && !lStream->is_unlinked()) { return false; }
    }
    return true;
}

guint64 StreamList::access_units(unsigned int aTrack) const {
    const Lock lStreams(m_streamsMutex);
    const Stream* const lStream = at(aTrack);
    return nullptr == lStream ? 0 : lStream->access_units();
}

}  // namespace nsGstVireRtspSrc
