#include <thread>

#include "support/Pipeline.hpp"
#include "support/SourceFixture.hpp"
#include "support/Watch.hpp"

namespace ElementTest {
namespace {

/// Pauses, seeks and ends as the profile "modern" has them.
class Modern : public SourceFixture {
protected:
    Modern() : mWatch("the profile modern", std::chrono::seconds(25)) {
        gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    }

    static GstEvent* NewSeek(gint64 aPosition, GstSeekType aType = GST_SEEK_TYPE_SET) {
        return gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, aType, aPosition, GST_SEEK_TYPE_NONE, -1);
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

class ModernSlow : public Modern {};

TEST_F(Modern, APauseHasNothingToPrerollWith) {
    ServeH264();
    StartPlaying();
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    Resume(0);
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED)) << "as it was started";
    mElement.Set(GST_STATE_READY);
    mServer.Push(0, 0, "x");
    ASSERT_TRUE(mElement.Play());
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PAUSED));
}

TEST_F(Modern, APauseLeavesWhatIsDownstreamWhereItIs) {
    ServeH264();
    StartPlaying();
    for (gint64 lTime = 1; lTime < 4; ++lTime) {
        mElement.Set(GST_STATE_PAUSED);
        EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
        EXPECT_EQ("", mElement.Sink(0)->Kinds());
        Resume(lTime);
        EXPECT_EQ(Texts{"Resume"}, mServer.TakeCalls());
        EXPECT_EQ("buffer", TakeKinds(1));
    }
}

TEST_F(Modern, AServerThatGoesOnFarAwayBeginsASegment) {
    ServeH264();
    StartPlaying();
    for (const gint64 lTime : {gint64{1001} * GST_MSECOND, gint64{0}, gint64{1000} * GST_MSECOND}) {
        mElement.Set(GST_STATE_PAUSED);
        Resume(lTime);
        EXPECT_EQ(gint64{1000} * GST_MSECOND == lTime ? "buffer" : "segment buffer", TakeKinds(1)) << lTime;
    }
}

TEST_F(Modern, ALivePresentationBeginsAnew) {
    ServeH264(0);
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
    PushOn("Play", 1, "anew");
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(1));
}

TEST_F(ModernSlow, AServerThatWasPausedBeforeTheFirstPlayingBeginsASegment) {
    ServeH264();
    std::atomic<bool> lPaused{false};
    mServer.On("Pause", [&lPaused] { lPaused = true; });
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    ASSERT_TRUE(Eventually([&lPaused] { return lPaused.load(); })) << "after 1.5 s";
    mServer.Clear("Pause");
    Resume(0);
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer", 2)) << "that of the start, too";
    EXPECT_EQ(LegPreamble() + "segment buffer buffer", TakeKinds(1));
}

TEST_F(Modern, AStreamThatHasEndedStaysEndedThroughAPause) {
    ServeH264();
    StartPlaying();
    mServer.End(0, "EndTime");
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_EQ(0U, mElement.Sink(0)->Count("flush-start"));
}

/// Only the element goes down: what it is linked to stays as it is, and may hold a buffer for ever.
TEST_F(Modern, GoesDownWhileAPushHangs) {
    ServeH264();
    StartPlaying();
    mElement.Sink(0)->SetBlocked(true);
    mServer.Push(0, 1, "hangs");
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_NULL));
}

TEST_F(Modern, ASegmentBeginsAfterReady) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_READY);
    mServer.Push(0, 1, "x");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    const std::string lKinds = mElement.Sink(0)->Kinds();
    EXPECT_EQ("segment buffer", lKinds.substr(lKinds.find("segment"))) << lKinds;
}

TEST_F(Modern, ANewLocationDuringAPausePlays) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    mServer.Describe({FakeServer::MP4V()});
    PushOn("Play", 0, "other");
    mElement.SetText("location", "rtsp://host/other");
    EXPECT_EQ((Texts{"Pause", "Play rtsp://host/other 0.000000"}), mServer.TakeCalls());
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Modern, StandardOutputIsTheApplications) {
    ServeH264();
    StartPlaying();
    testing::internal::CaptureStdout();
    mElement.Set(GST_STATE_PAUSED);
    gst_element_send_event(mElement.Get(), gst_event_new_latency(1));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST_F(Modern, ASeekThatComesByEveryPadIsDoneOnce) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    mServer.Push(1, 0, "first");
    StartPlaying();
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    mElement.Sink(1)->Clear();
    mServer.On("Seek", [this] {
        mServer.Push(0, 5 * GST_SECOND, "video");
        mServer.Push(1, 5 * GST_SECOND, "audio");
    });
    GstEvent* const lSeek = NewSeek(5 * GST_SECOND);
    const guint32 lSeqnum = gst_event_get_seqnum(lSeek);
    gst_event_ref(lSeek);
    EXPECT_TRUE(mElement.Sink(1)->SendUp(lSeek));
    EXPECT_TRUE(mElement.Sink(0)->SendUp(lSeek));
    EXPECT_EQ(Texts{"Seek 5.000000"}, mServer.TakeCalls());
    for (const unsigned lTrack : {0U, 1U}) {
        ASSERT_TRUE(mElement.Sink(lTrack)->Await("buffer"));
        EXPECT_EQ("flush-start# flush-stop# segment# buffer", TakeKinds(lSeqnum, lTrack));
    }
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND)) << "another seek to the same position";
    EXPECT_EQ(Texts{"Seek 5.000000"}, mServer.TakeCalls());
    mServer.End(0, "EndTime");
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
}

TEST_F(Modern, TheEndBehindASeekHasItsNumber) {
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

TEST_F(Modern, OtherSeeksAreRefused) {
    const struct {
        gdouble mRate;
        GstFormat mFormat;
        GstSeekFlags mFlags;
        GstSeekType mStartType;
        GstSeekType mStopType;
        gint64 mStop;
    } lSeeks[] = {
        {2.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {-1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_BYTES, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_PERCENT, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_ACCURATE, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_TIME, static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_SEGMENT),
         GST_SEEK_TYPE_SET, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_NONE, GST_SEEK_TYPE_NONE, -1},
        {1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET, GST_SEEK_TYPE_SET, 9 * GST_SECOND},
    };
    ServeH264();
    StartPlaying();
    for (const auto& lSeek : lSeeks) {
        const auto lNew = [&lSeek] {
            return gst_event_new_seek(lSeek.mRate, lSeek.mFormat, lSeek.mFlags, lSeek.mStartType, 5 * GST_SECOND,
                                      lSeek.mStopType, lSeek.mStop);
        };
        EXPECT_FALSE(SeekAtPad(lNew())) << &lSeek - lSeeks;
        EXPECT_FALSE(gst_element_send_event(mElement.Get(), lNew())) << &lSeek - lSeeks;
    }
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
}

TEST_F(Modern, ASeekStaysWithinTheRange) {
    Serve({FakeServer::H264()});
    mServer.Range(10, 40);
    StartPlaying();
    const struct {
        gint64 mPosition;
        GstSeekType mType;
        const char* mCall;
    } lSeeks[] = {{15 * GST_SECOND, GST_SEEK_TYPE_SET, "Seek 15.000000"},
                  {5 * GST_SECOND, GST_SEEK_TYPE_SET, "Seek 10.000000"},
                  {-1, GST_SEEK_TYPE_SET, "Seek 10.000000"},
                  {50 * GST_SECOND, GST_SEEK_TYPE_SET, "Seek 40.000000"},
                  {-5 * gint64{GST_SECOND}, GST_SEEK_TYPE_END, "Seek 35.000000"},
                  {5 * GST_SECOND, GST_SEEK_TYPE_END, "Seek 40.000000"},
                  {G_MININT64, GST_SEEK_TYPE_END, "Seek 10.000000"}};
    PushOn("Seek", 0, "x");
    for (const auto& lSeek : lSeeks) {
        EXPECT_TRUE(SeekAtPad(NewSeek(lSeek.mPosition, lSeek.mType)));
        EXPECT_EQ(Texts{lSeek.mCall}, mServer.TakeCalls());
    }
}

TEST_F(Modern, NothingIsSoughtInALivePresentationNorWithoutOne) {
    EXPECT_FALSE(gst_element_send_event(mElement.Get(), NewSeek(0)));
    ServeH264(0);
    StartPlaying();
    EXPECT_FALSE(SeekAtPad(5 * GST_SECOND));
    EXPECT_FALSE(gst_element_send_event(mElement.Get(), NewSeek(0)));
    mElement.Set(GST_STATE_READY);
    mServer.TakeCalls();
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_READY);
    EXPECT_FALSE(gst_element_send_event(mElement.Get(), NewSeek(0)));
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
}

TEST_F(Modern, QueriesForWhatCanBeSoughtAreAnswered) {
    const auto lAsk = [this](GstFormat aFormat, bool aPad) {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), "src0");
        GstQuery* const lQuery = gst_query_new_seeking(aFormat);
        std::string lAnswer = "none";
        if (aPad ? gst_pad_query(lPad, lQuery) : gst_element_query(mElement.Get(), lQuery)) {
            gboolean lSeekable = FALSE;
            gint64 lStart = 0;
            gint64 lEnd = 0;
            gst_query_parse_seeking(lQuery, nullptr, &lSeekable, &lStart, &lEnd);
            lAnswer = std::to_string(lSeekable) + " " + std::to_string(lStart) + " " + std::to_string(lEnd);
        }
        gst_query_unref(lQuery);
        gst_object_unref(lPad);
        return lAnswer;
    };
    ServeH264();
    mServer.Range(2, 60);
    StartPlaying();
    for (const bool lPad : {true, false}) {
        EXPECT_EQ("1 2000000000 60000000000", lAsk(GST_FORMAT_TIME, lPad));
        EXPECT_EQ("none", lAsk(GST_FORMAT_BYTES, lPad));
    }
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_EQ("none", lAsk(GST_FORMAT_TIME, true));
    EXPECT_FALSE(SeekAtPad(5 * GST_SECOND));
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    mElement.Set(GST_STATE_READY);
    mServer.TakeCalls();
    ServeH264(0);
    StartPlaying();
    EXPECT_EQ("0 -1 -1", lAsk(GST_FORMAT_TIME, true));
}

TEST_F(Modern, ASeekDuringAPauseFlushesAtOnceAndIsDoneByTheNextPlaying) {
    ServeH264();
    StartPlaying();
    mElement.Set(GST_STATE_PAUSED);
    mServer.TakeCalls();
    EXPECT_TRUE(SeekAtPad(3 * GST_SECOND));
    EXPECT_EQ("flush-start flush-stop", TakeKinds(0));
    GstEvent* const lSeek = NewSeek(7 * GST_SECOND);
    const guint32 lSeqnum = gst_event_get_seqnum(lSeek);
    EXPECT_TRUE(SeekAtPad(lSeek));
    EXPECT_EQ("flush-start# flush-stop#", TakeKinds(lSeqnum));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    PushOn("Seek", 7 * GST_SECOND, "there");
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(Texts{"Seek 7.000000"}, mServer.TakeCalls());
    EXPECT_EQ("segment# buffer", TakeKinds(lSeqnum));
}

/// The buffer that a paused sink holds.
TEST_F(Modern, ASeekDuringAPauseFreesAPushThatHangs) {
    ServeH264();
    StartPlaying();
    mElement.Sink(0)->SetBlocked(true);
    mServer.Push(0, 1, "hangs");
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_TRUE(SeekAtPad(3 * GST_SECOND));
    EXPECT_EQ("buffer flush-start flush-stop", TakeKinds(0));
    mElement.Sink(0)->SetBlocked(false);
}

TEST_F(Modern, ASeekOfAHandlerDuringTheStartIsDoneAtItsEnd) {
    ServeH264();
    PushOn("Seek", 5 * GST_SECOND, "there");
    mHandler = [this] { EXPECT_TRUE(SeekAtPad(5 * GST_SECOND)); };
    g_signal_connect_swapped(mElement.Get(), "no-more-pads",
                             G_CALLBACK(+[](std::function<void()>* aHandler) { (*aHandler)(); }), &mHandler);
    EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_EQ((Texts{"Play rtsp://host/clip 0.000000", "Seek 5.000000"}), mServer.TakeCalls());
    mServer.Forget();
    mServer.Push(0, 5 * GST_SECOND, "x");
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_TRUE(mElement.Sink(0)->Await("segment"));
}

TEST_F(Modern, ASeekThatTheServerRefusesGoesOnWhereItWas) {
    ServeH264();
    StartPlaying();
    mServer.On("Seek", Throws<Player::RTSPErr>(0x457));
    PushOn("Resume", 1, "goes on");
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(0));
    EXPECT_TRUE(mElement.TakeMessages({"failure"}).empty());
}

TEST_F(Modern, ASeekWithoutTheNetworkIsRefused) {
    ServeH264();
    StartPlaying();
    mElement.SetNetwork(false);
    EXPECT_FALSE(SeekAtPad(5 * GST_SECOND));
    EXPECT_EQ("", mElement.Sink(0)->Kinds());
    mElement.SetNetwork(true);
    PushOn("Seek", 5 * GST_SECOND, "there");
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Modern, ANetworkThatIsLostDuringASeekLeavesNoPadFlushing) {
    ServeH264();
    StartPlaying();
    mServer.On("Seek", [this] {
        mElement.SetNetwork(false);
        throw Player::NetworkErr(104, "lost");
    });
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    EXPECT_EQ("flush-start flush-stop", TakeKinds(0));
    mServer.Clear("Seek");
    mElement.SetNetwork(true);
    PushOn("Seek", 5 * GST_SECOND, "there");
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
}

TEST_F(Modern, PausesAndSeeksFromTwoThreads) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    mServer.Film(GST_MSECOND, {0, 0});
    ASSERT_TRUE(mElement.Play());
    std::thread lSeeks([this] {
        for (gint64 lTime = 1; lTime <= 60; ++lTime) {
            // A pad that is flushing for the seek before, by the other thread, refuses events.
            EXPECT_TRUE(Eventually([this, lTime] {
                return mElement.Sink(0 == lTime % 2 ? 0 : 1)->SendUp(NewSeek(lTime % 50 * GST_SECOND));
            })) << lTime;
        }
    });
    for (int lTime = 0; lTime < 30; ++lTime) {
        EXPECT_EQ(GST_STATE_CHANGE_NO_PREROLL, mElement.Set(GST_STATE_PAUSED));
        EXPECT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    }
    lSeeks.join();
    for (const unsigned lTrack : {0U, 1U}) {
        mElement.Sink(lTrack)->Clear();
        EXPECT_TRUE(mElement.Sink(lTrack)->Await("buffer", 5));
    }
}

TEST_F(Modern, AnEndOfStreamEndsAllTracks) {
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

TEST_F(Modern, AnEndOfStreamReachesTheElementOfAPipeline) {
    mServer.Describe({FakeServer::H264()});
    mServer.Film(20 * GST_MSECOND, {0});
    Pipeline lPipeline;
    gst_util_set_object_arg(G_OBJECT(lPipeline.Source()), "profile", "modern");
    lPipeline.SetLocation("rtsp://host/clip");
    ASSERT_TRUE(lPipeline.Set(GST_STATE_PLAYING));
    lPipeline.Watch(3);
    EXPECT_TRUE(gst_element_send_event(lPipeline.Get(), gst_event_new_eos()));
    GstBus* const lBus = gst_element_get_bus(lPipeline.Get());
    GstMessage* const lEnd = gst_bus_timed_pop_filtered(lBus, 10 * GST_SECOND, GST_MESSAGE_EOS);
    EXPECT_NE(nullptr, lEnd);
    if (nullptr != lEnd) { gst_message_unref(lEnd); }
    gst_object_unref(lBus);
}

TEST_F(Modern, AnEndOfStreamDuringAPauseComesAtOnce) {
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

TEST_F(Modern, AnEndOfStreamBeforeTheFirstPlayingComesWithIt) {
    ServeH264();
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_TRUE(gst_element_send_event(mElement.Get(), gst_event_new_eos()));
    mElement.Set(GST_STATE_PLAYING);
    EXPECT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_EQ(0U, mElement.Sink(0)->Buffers().size());
}

TEST_F(Modern, AnEndOfStreamWithoutAPresentationIsForgotten) {
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

TEST_F(Modern, AHandlerOnAStreamingThreadMayEndTheStreams) {
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

TEST_F(Modern, APlayerThatIsMadeAnewIsGivenTheSettings) {
    ServeH264();
    mElement.SetText("use-proxy", "192.0.2.9:80");
    g_object_set(mElement.Get(), "user-id", "anna", "udp-buffer-size", 1000U, "timeout-rtsp-after", "7", nullptr);
    for (const char* const lProfile : {"modern", "classic"}) {
        gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", lProfile);
        const bool lModern = std::string("modern") == lProfile;
        const unsigned lMade = mServer.PlayersMade();
        mServer.Push(0, 1, "x");
        mServer.End(0, "Timeout");
        ASSERT_TRUE(mElement.Play());
        ASSERT_TRUE(mElement.AwaitMessage("error 33043"));
        mElement.TakeMessages();
        mElement.Set(GST_STATE_READY);
        mServer.Push(0, 0, "x");
        ASSERT_TRUE(mElement.Play());
        EXPECT_EQ(lMade + 1, mServer.PlayersMade());
        EXPECT_EQ(lModern ? "modern" : "(none)", mServer.Setting("RTSP:Profile"));
        EXPECT_EQ(lModern ? "192.0.2.9:80" : "(none)", mServer.Setting("RTSP:UseProxy"));
        EXPECT_EQ(lModern ? "anna" : "(none)", mServer.Setting("RTSP:UserName"));
        EXPECT_EQ(lModern ? "1000" : "(none)", mServer.Setting("RTSP:UDPBuffer"));
        EXPECT_EQ(lModern ? "7" : "(none)", mServer.Setting("RTSP:TimeOutAfter"));
        EXPECT_EQ("(none)", mServer.Setting("RTSP:SendReferrer")) << "was never set";
        mElement.Set(GST_STATE_READY);
    }
}

TEST_F(Modern, TheTimeOutsFollowTheProperties) {
    const auto lTold = [this] {
        return mServer.Setting("RTSP:TimeOutAfter") + " " + mServer.Setting("RTSP:TimeOutRTPAfter");
    };
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    mElement.SetText("timeout-rtsp-after", "3");
    ServeH264();
    StartPlaying();
    EXPECT_EQ(" ", lTold());
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    EXPECT_EQ("3 ", lTold());
    mElement.SetText("timeout-rtp-after", "5");
    EXPECT_EQ("3 5", lTold());
    for (const char* const lNone : {"0", "", "soon"}) {
        mElement.SetText("timeout-rtsp-after", lNone);
        EXPECT_EQ(" 5", lTold());
    }
    mElement.SetText("timeout-rtp-after", nullptr);
    EXPECT_EQ(" ", lTold());
    mElement.SetText("timeout-rtp-after", "6");
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_EQ(" ", lTold());
}

TEST_F(Modern, AVisualTracksPositionIsThatOfItsMedia) {
    Serve({FakeServer::MP4V()});
    StartPlaying();
    PushOn("Seek", 30 * GST_SECOND, "x");
    EXPECT_TRUE(SeekAtPad(30 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    for (const Item& lItem : mElement.Sink(0)->Items()) {
        if ("segment" == lItem.mKind) { EXPECT_EQ(30 * GST_SECOND, lItem.mSegment.mPosition); }
    }
}

}  // namespace
}  // namespace ElementTest
