#pragma once

#include <functional>
#include <string>

#include "support/SourceFixture.hpp"
#include "support/Watch.hpp"

namespace ElementTest {

/// An element with the profile "modern" that plays from a fake server.
class ModernFixture : public SourceFixture {
protected:
    ModernFixture() : mWatch("the profile modern", std::chrono::seconds(25)) {
        gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    }

    static GstEvent* NewSeek(gint64 aPosition, GstSeekType aType = GST_SEEK_TYPE_SET) {
        return gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, aType, aPosition, GST_SEEK_TYPE_NONE, -1);
    }
    static GstEvent* NewAccurateSeek(gint64 aPosition) {
        return gst_event_new_seek(1.0, GST_FORMAT_TIME,
                                  static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                  GST_SEEK_TYPE_SET, aPosition, GST_SEEK_TYPE_NONE, -1);
    }
    /// The last that came down the pad of the track.
    Segment LastSegment(unsigned aTrack) {
        Segment lSegment{};
        for (const Item& lItem : mElement.Sink(aTrack)->Items()) {
            if ("segment" == lItem.mKind) { lSegment = lItem.mSegment; }
        }
        return lSegment;
    }
    /// Up the pad of the first track.
    bool SeekAtPad(GstEvent* aSeek) { return mElement.Sink(0)->SendUp(aSeek); }
    bool SeekAtPad(gint64 aPosition) { return SeekAtPad(NewSeek(aPosition)); }
    /// What came down a pad since the last call, with the number of the seek as "#": "flush-start#", "buffer" ...
    std::string TakeKinds(guint32 aSeqnum, unsigned aTrack = 0) {
        std::string lKinds;
        for (const Item& lItem : mElement.Sink(aTrack)->Items()) {
            lKinds += (lKinds.empty() ? "" : " ") + lItem.mKind + (0 != aSeqnum && aSeqnum == lItem.mSeqnum ? "#" : "");
        }
        mElement.Sink(aTrack)->Clear();
        return lKinds;
    }
    /// To PLAYING once more, with that buffer.
    void Resume(gint64 aPlayTime) {
        PushOn("Resume", aPlayTime, "resumed");
        ASSERT_NE(GST_STATE_CHANGE_FAILURE, mElement.Set(GST_STATE_PLAYING));
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
        mServer.Clear("Resume");
    }

    std::function<void()> mHandler;
    const Watch mWatch;
};

}  // namespace ElementTest
