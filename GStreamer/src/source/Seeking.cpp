#include "source/Seeking.hpp"

#include <algorithm>

namespace nsGstVireRtspSrc {

namespace {

bool IsSeekForward(GstEvent* aSeek) {
    gdouble lRate = 0;
    GstFormat lFormat = GST_FORMAT_UNDEFINED;
    GstSeekFlags lFlags = GST_SEEK_FLAG_NONE;
    GstSeekType lStopType = GST_SEEK_TYPE_NONE;
    gint64 lStop = -1;
    gst_event_parse_seek(aSeek, &lRate, &lFormat, &lFlags, nullptr, nullptr, &lStopType, &lStop);
    // A server plays to the end: it can't be asked to stop before, and segments are not distinguished from the rest.
    const bool lToEnd = GST_SEEK_TYPE_NONE == lStopType || (GST_SEEK_TYPE_SET == lStopType && -1 == lStop);
    const bool lFlushes = 0 != (lFlags & GST_SEEK_FLAG_FLUSH) && 0 == (lFlags & GST_SEEK_FLAG_SEGMENT);
    return GST_FORMAT_TIME == lFormat && lRate == 1.0 && lFlushes && lToEnd;
}

}  // namespace

void Seeking::set_range(gint64 aStart, gint64 aEnd) {
    const Lock lLock(m_mutex);
    m_start = aStart;
    m_end = aEnd;
}

bool Seeking::find(GstEvent* aEvent, Seek& aSeek) const {
    if (!IsSeekForward(aEvent)) { return false; }
    GstSeekFlags lFlags = GST_SEEK_FLAG_NONE;
    GstSeekType lType = GST_SEEK_TYPE_NONE;
    gint64 lStart = 0;
    gst_event_parse_seek(aEvent, nullptr, nullptr, &lFlags, &lType, &lStart, nullptr, nullptr);
    const Lock lLock(m_mutex);
    if (m_end < m_start || GST_SEEK_TYPE_NONE == lType) { return false; }
    if (GST_SEEK_TYPE_END == lType) { lStart = m_end + std::clamp<gint64>(lStart, -m_end, 0); }
    if (GST_SEEK_TYPE_SET != lType && GST_SEEK_TYPE_END != lType) { return false; }
    aSeek.mPosition = std::clamp(lStart, m_start, m_end);
    aSeek.mSeqnum = gst_event_get_seqnum(aEvent);
    aSeek.mAccurate = 0 != (lFlags & GST_SEEK_FLAG_ACCURATE);
    return true;
}

bool Seeking::is_end(gint64 aPosition) const {
    const Lock lLock(m_mutex);
    return m_end > m_start && aPosition >= m_end;
}

bool Seeking::answer(GstQuery* aQuery) const {
    GstFormat lFormat = GST_FORMAT_UNDEFINED;
    gst_query_parse_seeking(aQuery, &lFormat, nullptr, nullptr, nullptr);
    if (GST_FORMAT_TIME != lFormat) { return false; }
    const Lock lLock(m_mutex);
    const bool lSeekable = m_end >= m_start;
    gst_query_set_seeking(aQuery, GST_FORMAT_TIME, lSeekable, lSeekable ? m_start : -1, lSeekable ? m_end : -1);
    return true;
}

}  // namespace nsGstVireRtspSrc
