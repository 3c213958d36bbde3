#include "support/SinkPad.hpp"

#include <algorithm>
#include <chrono>

namespace ElementTest {

namespace {

GstStaticPadTemplate gTemplate = GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("ANY"));

}  // namespace

SinkPad::SinkPad(GstPad* aSource)
    : mPad(gst_pad_new_from_static_template(&gTemplate, "sink")), mSource(GST_PAD(gst_object_ref(aSource))) {
    gst_pad_set_element_private(mPad, this);
    SetChain<OnBuffer>(mPad);
    gst_pad_set_event_function(mPad, OnEvent);
    gst_pad_set_active(mPad, TRUE);
    gst_pad_link(mSource, mPad);
}

SinkPad::~SinkPad() {
    SetBlocked(false);
    gst_pad_set_active(mPad, FALSE);
    gst_pad_unlink(mSource, mPad);
    gst_object_unref(mPad);
    gst_object_unref(mSource);
}

void SinkPad::SetResult(GstFlowReturn aResult) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mResult = aResult;
}

void SinkPad::SetBlocked(bool aBlocked) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mBlocked = aBlocked;
    mChanged.notify_all();
}

std::vector<Item> SinkPad::Items() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mItems;
}

std::string SinkPad::Kinds() const {
    std::string lKinds;
    for (const Item& lItem : Items()) {
        lKinds += (lKinds.empty() ? "" : " ") + lItem.mKind;
    }
    return lKinds;
}

std::vector<Item> SinkPad::Buffers() const {
    std::vector<Item> lBuffers = Items();
    lBuffers.erase(
        std::remove_if(lBuffers.begin(), lBuffers.end(), [](const Item& aItem) { return "buffer" != aItem.mKind; }),
        lBuffers.end());
    return lBuffers;
}

std::size_t SinkPad::Count(const std::string& aKind) const {
    const std::vector<Item> lItems = Items();
    return static_cast<std::size_t>(
        std::count_if(lItems.begin(), lItems.end(), [&aKind](const Item& aItem) { return aKind == aItem.mKind; }));
}

void SinkPad::Clear() {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mItems.clear();
}

bool SinkPad::Await(const std::string& aKind, std::size_t aCount) const {
    std::unique_lock<std::mutex> lLock(mMutex);
    return mChanged.wait_for(lLock, std::chrono::seconds(10), [this, &aKind, aCount] {
        return static_cast<std::size_t>(std::count_if(mItems.begin(), mItems.end(), [&aKind](const Item& aItem) {
                   return aKind == aItem.mKind;
               })) >= aCount;
    });
}

bool SinkPad::SourceFlushes() const {
    GST_OBJECT_LOCK(mSource);
    const bool lFlushes = GST_PAD_IS_FLUSHING(mSource);
    GST_OBJECT_UNLOCK(mSource);
    return lFlushes;
}

void SinkPad::Add(const Item& aItem, const std::unique_lock<std::mutex>& /*aLock*/) {
    mItems.push_back(aItem);
    if ("flush-start" == aItem.mKind) { mFlushing = true; }
    if ("flush-stop" == aItem.mKind) { mFlushing = false; }
    mChanged.notify_all();
}

GstFlowReturn SinkPad::OnBuffer(GstPad* aPad, GstBuffer* aBuffer) {
    auto* const lThis = static_cast<SinkPad*>(gst_pad_get_element_private(aPad));
    Item lItem;
    lItem.mKind = "buffer";
    lItem.mTimestamp = GST_BUFFER_TIMESTAMP(aBuffer);
    lItem.mDuration = GST_BUFFER_DURATION(aBuffer);
    lItem.mOffset = GST_BUFFER_OFFSET(aBuffer);
    lItem.mOffsetEnd = GST_BUFFER_OFFSET_END(aBuffer);
    lItem.mDiscont = GST_BUFFER_FLAG_IS_SET(aBuffer, GST_BUFFER_FLAG_DISCONT);
    lItem.mBytes = BufferBytes(aBuffer);
    gst_buffer_unref(aBuffer);

    // Whether it blocks is decided as it comes: a test that has seen it may block the next.
    std::unique_lock<std::mutex> lLock(lThis->mMutex);
    lThis->Add(lItem, lLock);
    lThis->mChanged.wait_for(lLock, std::chrono::seconds(10), [lThis] { return !lThis->mBlocked || lThis->mFlushing; });
    return lThis->mResult;
}

gboolean SinkPad::OnEvent(GstPad* aPad, GstEvent* aEvent) {
    Item lItem;
    lItem.mKind = gst_event_type_get_name(GST_EVENT_TYPE(aEvent));
    lItem.mSeqnum = gst_event_get_seqnum(aEvent);
    if (IsSegment(aEvent)) {
        lItem.mKind = "segment";
        lItem.mSegment = ParseSegment(aEvent);
    }
    gst_event_unref(aEvent);
    auto* const lThis = static_cast<SinkPad*>(gst_pad_get_element_private(aPad));
    lThis->Add(lItem, std::unique_lock<std::mutex>(lThis->mMutex));
    return TRUE;
}

}  // namespace ElementTest
