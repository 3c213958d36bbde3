#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "support/Leg.hpp"

namespace ElementTest {

/// One thing that came down a pad.
struct Item {
    /// "buffer", "segment", "flush-start", "flush-stop", "eos", "stream-start", "caps" ...
    std::string mKind;
    Segment mSegment{};
    guint32 mSeqnum = 0;  ///< Of an event.
    GstClockTime mTimestamp = 0;
    GstClockTime mDuration = 0;
    guint64 mOffset = 0;
    guint64 mOffsetEnd = 0;
    bool mDiscont = false;
    std::string mBytes;
};

/// A sink pad that writes down what it gets. It is linked to a source pad for as long as it lives.
class SinkPad {
public:
    explicit SinkPad(GstPad* aSource);
    SinkPad(const SinkPad&) = delete;
    SinkPad& operator=(const SinkPad&) = delete;
    ~SinkPad();

    /// Pushes get this result from now on.
    void SetResult(GstFlowReturn aResult);
    /// Pushes wait until the pad flushes or this is taken back.
    void SetBlocked(bool aBlocked);

    std::vector<Item> Items() const;
    /// The kinds, separated by blanks.
    std::string Kinds() const;
    std::vector<Item> Buffers() const;
    std::size_t Count(const std::string& aKind) const;
    void Clear();
    /// Waits for so many of a kind. False when they did not come in time.
    bool Await(const std::string& aKind, std::size_t aCount = 1) const;

    /// Whether the pad that it is linked to flushes; this one may have to hear of it yet.
    bool SourceFlushes() const;

    GstPad* Pad() const { return mPad; }
    /// Sends an event up the pad.
    bool SendUp(GstEvent* aEvent) { return gst_pad_push_event(mPad, aEvent); }

private:
    static GstFlowReturn OnBuffer(GstPad* aPad, GstBuffer* aBuffer);
    static gboolean OnEvent(GstPad* aPad, GstEvent* aEvent);
    void Add(const Item& aItem, const std::unique_lock<std::mutex>& aLock);

    GstPad* mPad;
    GstPad* mSource;
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::vector<Item> mItems;
    GstFlowReturn mResult = GST_FLOW_OK;
    bool mBlocked = false;
    bool mFlushing = false;
};

}  // namespace ElementTest
