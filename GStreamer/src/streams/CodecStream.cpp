#include "streams/CodecStream.hpp"

#include <cstring>

#include "Player/Mem.hpp"
#include "Player/String.hpp"
#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT StreamCategory()

namespace nsGstVireRtspSrc {

namespace {

/// A new reference to the caps that the pad has now, or null.
GstCaps* CurrentCaps(GstPad* aPad) {
    GST_OBJECT_LOCK(aPad);
    GstCaps* const lCaps = GST_PAD_CAPS(aPad);
    if (nullptr != lCaps) { gst_caps_ref(lCaps); }
    GST_OBJECT_UNLOCK(aPad);
    return lCaps;
}

void FreeBytes(gpointer aBytes) {
    Player::Mem::Free(static_cast<Player::Byte*>(aBytes));
}

/// A buffer of this size that the pad allocates, or null where a buffer of our own is as good.
GstBuffer* AllocateFor(GstPad* aPad, gsize aSize, GstCaps* aCaps) {
    GstBuffer* lBuffer = nullptr;
    if (!gst_pad_is_linked(aPad) ||
        GST_FLOW_OK != gst_pad_alloc_buffer(aPad, GST_BUFFER_OFFSET_NONE, static_cast<gint>(aSize), aCaps, &lBuffer)) {
        return nullptr;
    }
    if (nullptr != lBuffer && (GST_BUFFER_SIZE(lBuffer) != aSize || GstLeg::IsOrdinary(lBuffer))) {
        gst_buffer_unref(lBuffer);
        lBuffer = nullptr;
    }
    return lBuffer;
}

}  // namespace

bool CodecStream::caps_are_valid() {
    const Player::Properties lInfo = player().TrackInfo(track());
    // Two formats that are described without a configuration would make for the same caps here.
    if (!lInfo.Is("Format", format())) { return false; }
    GstCaps* const lDescribed = create_caps(lInfo);
    GstCaps* const lCurrent = CurrentCaps(pad());
    const bool lEqual = nullptr != lCurrent && gst_caps_is_equal(lDescribed, lCurrent);
    if (nullptr != lCurrent) { gst_caps_unref(lCurrent); }
    gst_caps_unref(lDescribed);
    return lEqual;
}

bool CodecStream::task_process() {
    const auto lPacket = player().TakePacket(track());
    if (!lPacket) { return false; }
    GstBuffer* const lBuffer = make_buffer(*lPacket);
    const bool lNewSegment = take_new_segment();
    const gint64 lPlayTime = time_of(lPacket->PlayTime().NanoSeconds(), lNewSegment);
    const GstClockTime lTimestamp = lPlayTime > 0 ? static_cast<GstClockTime>(lPlayTime) : 0;
    GST_BUFFER_TIMESTAMP(lBuffer) = lTimestamp;
    GST_BUFFER_DURATION(lBuffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_OFFSET(lBuffer) = next_offset();
    GST_BUFFER_OFFSET_END(lBuffer) = GST_BUFFER_OFFSET(lBuffer);
    const bool lElsewhere = take_resumed() && is_far(lTimestamp);
    m_lastTimestamp = lTimestamp;
    if (lNewSegment || lElsewhere) { start_segment(lBuffer); }
    count_access_unit();
    handle_push_result(gst_pad_push(pad(), lBuffer));
    return true;
}

/// Servers go on about where they were paused. Those that do not have gone elsewhere: what was pushed before says
/// nothing of when this is due.
bool CodecStream::is_far(GstClockTime aTimestamp) const {
    constexpr GstClockTime kFar = 1 * GST_SECOND;
    return aTimestamp > m_lastTimestamp + kFar || aTimestamp + kFar < m_lastTimestamp;
}

void CodecStream::handle_push_result(GstFlowReturn aResult) {
    if (GST_FLOW_ERROR == aResult) { stop_processing(); }
    if (GST_FLOW_UNEXPECTED == aResult && profile().ends_with_its_peer()) {
        GST_DEBUG_OBJECT(pad(), "What is linked is at its end");
        end_of_stream();
    }
    if (profile().fails_with_its_peers()) { report_push(aResult); }
    if (GST_FLOW_NOT_NEGOTIATED != aResult || m_refusalLogged) { return; }
    m_refusalLogged = true;
    GST_WARNING_OBJECT(pad(), "What is linked to %s does not take its caps: %s", GST_PAD_NAME(pad()),
                       gst_flow_get_name(aResult));
}

GstBuffer* CodecStream::make_buffer(Player::Packet& aPacket) const {
    guint8 lHeader = 0;
    const gsize lHeaderSize = header(aPacket, lHeader);
    const gsize lSize = lHeaderSize + aPacket.Size();
    GstCaps* const lCaps = CurrentCaps(pad());
    GstBuffer* lBuffer = AllocateFor(pad(), lSize, lCaps);
    // The packet's own bytes, unless somebody wants them elsewhere.
    Player::Byte* const lBytes = nullptr == lBuffer && 0 == lHeaderSize ? aPacket.Detach() : nullptr;
    if (nullptr != lBytes) {
        lBuffer = GstLeg::NewBufferOwning(lBytes, lSize, FreeBytes);
    } else {
        if (nullptr == lBuffer) { lBuffer = gst_buffer_new_and_alloc(static_cast<guint>(lSize)); }
        if (0 != lHeaderSize) { *GST_BUFFER_DATA(lBuffer) = lHeader; }
        if (lSize != lHeaderSize) {
            std::memcpy(GST_BUFFER_DATA(lBuffer) + lHeaderSize, aPacket.Begin(), lSize - lHeaderSize);
        }
    }
    if (nullptr != lCaps) {
        gst_buffer_set_caps(lBuffer, lCaps);
        gst_caps_unref(lCaps);
    }
    return lBuffer;
}

void CodecStream::start_segment(GstBuffer* aBuffer) {
    const GstClockTime lStart = GST_BUFFER_TIMESTAMP(aBuffer);
    Segment lSegment = segment_from(lStart);
    if (profile().positions_are_of_media()) { lSegment.mPosition = static_cast<gint64>(lStart); }
    const gint64 lBegin = take_begin();
    push_segment(-1 == lBegin ? gst_event_new_new_segment(FALSE, 1.0, GST_FORMAT_TIME, static_cast<gint64>(lStart),
                                                          lSegment.mStop, lSegment.mPosition)
                              : GstLeg::NewSegmentAt(lBegin, lSegment.mStop, lStart));
    GST_BUFFER_FLAG_SET(aBuffer, GST_BUFFER_FLAG_DISCONT);
}

GstBuffer* NewBuffer(const void* aData, gsize aSize) {
    GstBuffer* const lBuffer = gst_buffer_new_and_alloc(static_cast<guint>(aSize));
    if (0 != aSize) { std::memcpy(GST_BUFFER_DATA(lBuffer), aData, aSize); }
    return lBuffer;
}

GstBuffer* NewBufferFromParam(const Player::Properties& aInfo, const char* aParam) {
    if (!aInfo.Has("FmtParams")) { return nullptr; }
    GHashTable* const lParams = Stream::split_fmt_params(aInfo.Get("FmtParams"));
    const auto* const lHex = static_cast<const gchar*>(g_hash_table_lookup(lParams, aParam));
    std::string lBytes;
    const bool lIsHex = nullptr != lHex && Player::HexToBytes(lHex, lBytes);
    g_hash_table_unref(lParams);
    return lIsHex ? NewBuffer(lBytes.data(), lBytes.size()) : nullptr;
}

void SetCodecData(GstCaps* aCaps, GstBuffer* aBuffer) {
    gst_caps_set_simple(aCaps, "codec_data", GST_TYPE_BUFFER, aBuffer, nullptr);
    gst_buffer_unref(aBuffer);
}

}  // namespace nsGstVireRtspSrc
