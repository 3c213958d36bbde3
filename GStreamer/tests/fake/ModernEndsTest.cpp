#include "fake/ModernFixture.hpp"

namespace ElementTest {
namespace {

class ModernEnds : public ModernFixture {};

TEST_F(ModernEnds, AStreamThatHasEndedStaysEndedThroughAPause) {
    ServeH264();
    StartPlaying();
    mServer.End(0, "EndTime");
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
    mServer.On("Resume", Throws<Player::RTSPErr>(1, "Clip has ended"));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ(0U, mElement.Sink(0)->Count("flush-start"));
    EXPECT_EQ(Texts(), mElement.TakeMessages({"error", "failure", "warning"}));
}

TEST_F(ModernEnds, ATrackWhosePeerIsAtItsEndEndsAlone) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    mServer.Film(20 * GST_MSECOND, {0, 0});
    ASSERT_TRUE(mElement.Play());
    SinkPad& lEnded = *mElement.Sink(0);
    SinkPad& lOther = *mElement.Sink(1);
    lEnded.SetResult(GST_FLOW_UNEXPECTED);
    ASSERT_TRUE(lEnded.Await("eos"));
    const std::string lKinds = lEnded.Kinds();
    EXPECT_EQ("buffer eos", lKinds.substr(lKinds.size() - 10)) << lKinds;
    lEnded.SetResult(GST_FLOW_OK);
    for (int lTime = 0; lTime < 2; ++lTime) {
        lOther.Clear();
        ASSERT_TRUE(lOther.Await("buffer", 3));
        mElement.Set(GST_STATE_PAUSED);
        ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    }
    EXPECT_EQ(lKinds, lEnded.Kinds()) << "whatever its peer takes by now";
    EXPECT_EQ(0U, lOther.Count("eos"));
    EXPECT_EQ(Texts(), mElement.TakeMessages({"error", "failure", "warning"}));
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    EXPECT_TRUE(lEnded.Await("segment", 2)) << "a seek begins anew";
}

TEST_F(ModernEnds, WhatComesForATrackThatHasEndedDoesNotPileUp) {
    ServeH264();
    StartPlaying();
    mElement.Sink(0)->SetResult(GST_FLOW_UNEXPECTED);
    for (gint64 lTime = 1; lTime < 50; ++lTime) {
        mServer.Push(0, lTime * GST_MSECOND, "x");
    }
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_TRUE(Eventually([this] { return 0 == mServer.Queued(0); }));
    EXPECT_EQ("buffer eos", TakeKinds(0));
}

TEST_F(ModernEnds, TheEndBehindASeekHasItsNumber) {
    ServeH264();
    StartPlaying();
    GstEvent* const lSeek = NewSeek(5 * GST_SECOND);
    const guint32 lSeqnum = gst_event_get_seqnum(lSeek);
    mServer.On("Seek", [this] {
        mServer.Push(0, 5 * GST_SECOND, "x");
        mServer.End(0, "EndTime");
    });
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), lSeek));
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_EQ("flush-start# flush-stop# segment# buffer eos#", TakeKinds(lSeqnum));
    // And from there back.
    mServer.On("Seek", [this] { mServer.Push(0, 1 * GST_SECOND, "x"); });
    EXPECT_TRUE(SeekAtPad(1 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(lSeqnum));
}

TEST_F(ModernEnds, AnEndOfStreamEndsAllTracks) {
    Serve({FakeServer::H264(), FakeServer::AAC()}, 0);
    mServer.Film(20 * GST_MSECOND, {0, 0});
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    GstEvent* const lEnd = gst_event_new_eos();
    const guint32 lSeqnum = gst_event_get_seqnum(lEnd);
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), lEnd));
    for (const unsigned lTrack : {0U, 1U}) {
        ASSERT_TRUE(mElement.Sink(lTrack)->Await("eos"));
        const Item lLast = mElement.Sink(lTrack)->Items().back();
        EXPECT_EQ("eos", lLast.mKind);
        EXPECT_EQ(lSeqnum, lLast.mSeqnum);
    }
}

TEST_F(ModernEnds, AnEndOfStreamDuringAPauseComesAtOnce) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), gst_event_new_eos()));
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    Texts lCalls = mServer.TakeCalls();
    mServer.Push(0, 1, "too late");
    mElement.Set(GST_STATE_PLAYING);
    // What comes after it is of no use.
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), gst_event_new_eos()));
    EXPECT_EQ("eos", TakeKinds(0));
    mServer.Forget();
    PushOn("Seek", 5 * GST_SECOND, "there");
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    // What came too late may be in the queue still: these servers' seeks leave it there.
    EXPECT_EQ(0U, TakeKinds(0).find("flush-start flush-stop segment buffer"));
}

TEST_F(ModernEnds, AnEndOfStreamBeforeTheFirstPlayingComesWithIt) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), gst_event_new_eos()));
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_EQ(0U, mElement.Sink(0)->Buffers().size());
}

TEST_F(ModernEnds, AnEndOfStreamWithoutAPresentationIsForgotten) {
    gst_element_send_event(mElement.Get(), gst_event_new_eos());
    ServeH264();
    StartPlaying();
    EXPECT_EQ(0U, mElement.Sink(0)->Count("eos"));
    mElement.Set(GST_STATE_READY);
    gst_element_send_event(mElement.Get(), gst_event_new_eos());
    mServer.Push(0, 0, "first");
    ASSERT_TRUE(mElement.Play());
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(ModernEnds, AHandlerOnAStreamingThreadMayEndTheStreams) {
    ServeH264();
    StartPlaying();
    GstBus* const lBus = gst_element_get_bus(mElement.Get());
    mHandler = [this] { gst_element_send_event(mElement.Get(), gst_event_new_eos()); };
    SetSyncHandler(
        lBus,
        [](GstBus*, GstMessage* aMessage, gpointer aHandler) {
            if (GST_MESSAGE_BUFFERING == GST_MESSAGE_TYPE(aMessage)) {
                (*static_cast<std::function<void()>*>(aHandler))();
            }
            return GST_BUS_PASS;
        },
        &mHandler);
    EXPECT_TRUE(mElement.Sink(0)->Await("eos"));
    SetSyncHandler(lBus, nullptr, nullptr);
    gst_object_unref(lBus);
}

}  // namespace
}  // namespace ElementTest
