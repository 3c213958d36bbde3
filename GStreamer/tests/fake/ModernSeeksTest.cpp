#include <thread>

#include "fake/ModernFixture.hpp"

namespace ElementTest {
namespace {

class ModernSeeks : public ModernFixture {};

TEST_F(ModernSeeks, ASeekThatComesByEveryPadIsDoneOnce) {
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

TEST_F(ModernSeeks, OtherSeeksAreRefused) {
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

TEST_F(ModernSeeks, ASeekStaysWithinTheRange) {
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
                  {-5 * gint64{GST_SECOND}, GST_SEEK_TYPE_END, "Seek 35.000000"},
                  {G_MININT64, GST_SEEK_TYPE_END, "Seek 10.000000"}};
    PushOn("Seek", 0, "x");
    for (const auto& lSeek : lSeeks) {
        EXPECT_TRUE(SeekAtPad(NewSeek(lSeek.mPosition, lSeek.mType)));
        EXPECT_EQ(Texts{lSeek.mCall}, mServer.TakeCalls());
    }
}

/// Servers send nothing from there on, and do not say so.
TEST_F(ModernSeeks, ASeekToTheEndEndsTheStreamsByItself) {
    Serve({FakeServer::H264()});
    mServer.Range(10, 40);
    StartPlaying();
    for (const gint64 lPosition : {40 * GST_SECOND, 50 * GST_SECOND}) {
        GstEvent* const lSeek = NewSeek(static_cast<gint64>(lPosition));
        const guint32 lSeqnum = gst_event_get_seqnum(lSeek);
        EXPECT_TRUE(SeekAtPad(lSeek));
        ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
        EXPECT_EQ(gint64{40} * GST_SECOND, mElement.Sink(0)->Items()[2].mSegment.mPosition);
        EXPECT_EQ("flush-start# flush-stop# segment# eos#", TakeKinds(lSeqnum));
        EXPECT_EQ(Texts(), mServer.TakeCalls());
    }
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_EQ(Texts{"Pause"}, mServer.TakeCalls());
    EXPECT_TRUE(SeekAtPad(20 * GST_SECOND));
    EXPECT_TRUE(SeekAtPad(NewSeek(0, GST_SEEK_TYPE_END)));
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_EQ("flush-start flush-stop flush-start flush-stop segment eos", TakeKinds(0));
    PushOn("Seek", 20 * GST_SECOND, "there");
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    EXPECT_EQ(Texts(), mServer.TakeCalls());
    EXPECT_TRUE(SeekAtPad(20 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(Texts{"Seek 20.000000"}, mServer.TakeCalls());
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(0)) << "and from there back";
}

TEST_F(ModernSeeks, NothingIsSoughtInALivePresentationNorWithoutOne) {
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

TEST_F(ModernSeeks, QueriesForWhatCanBeSoughtAreAnswered) {
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

TEST_F(ModernSeeks, ASeekDuringAPauseFlushesAtOnceAndIsDoneByTheNextPlaying) {
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
TEST_F(ModernSeeks, ASeekDuringAPauseFreesAPushThatHangs) {
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

TEST_F(ModernSeeks, ASeekOfAHandlerDuringTheStartIsDoneAtItsEnd) {
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

TEST_F(ModernSeeks, ASeekThatTheServerRefusesGoesOnWhereItWas) {
    ServeH264();
    StartPlaying();
    mServer.On("Seek", Throws<Player::RTSPErr>(0x457));
    PushOn("Resume", 1, "goes on");
    EXPECT_TRUE(SeekAtPad(5 * GST_SECOND));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ("flush-start flush-stop segment buffer", TakeKinds(0));
    EXPECT_TRUE(mElement.TakeMessages({"failure"}).empty());
}

TEST_F(ModernSeeks, ASeekWithoutTheNetworkIsRefused) {
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

TEST_F(ModernSeeks, ANetworkThatIsLostDuringASeekLeavesNoPadFlushing) {
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

TEST_F(ModernSeeks, PausesAndSeeksFromTwoThreads) {
    Serve({FakeServer::H264(), FakeServer::AAC()});
    mServer.Film(GST_MSECOND, {0, 0});
    ASSERT_TRUE(mElement.Play());
    std::thread lSeeks([this] {
        for (gint64 lTime = 1; lTime <= 60; ++lTime) {
            SinkPad& lSink = *mElement.Sink(0 == lTime % 2 ? 0 : 1);
            std::size_t lEnded = 0;
            const auto lSend = [&] {
                lEnded = lSink.Count("flush-stop");
                return lSink.SendUp(NewSeek(lTime % 50 * GST_SECOND));
            };
            // A pad refuses events while it flushes for the seek before, by the other thread, and for nothing else.
            while (!lSend()) {
                ASSERT_TRUE(lSink.SourceFlushes() || lSink.Count("flush-start") > lEnded) << lTime;
                std::this_thread::yield();
            }
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

/// Sound and picture begin before it, each by its own distance.
TEST_F(ModernSeeks, AnAccurateSeekBeginsTheSegmentsWhereItLeadsTo) {
    constexpr gint64 kWanted = 5 * GST_SECOND;
    Serve({FakeServer::H264(), FakeServer::AAC()});
    StartPlaying();
    mServer.On("Seek", [this] {
        mServer.Push(0, kWanted - 2 * GST_SECOND, "video");
        mServer.Push(1, kWanted - 250 * GST_MSECOND, "audio");
    });
    const auto lAwait = [this](gint64 aVideo, gint64 aAudio) {
        const gint64 lBegins[] = {aVideo, aAudio};
        for (const unsigned lTrack : {0U, 1U}) {
            ASSERT_TRUE(mElement.Sink(lTrack)->Await("buffer"));
            EXPECT_EQ(lBegins[lTrack], LastSegment(lTrack).mStart);
            EXPECT_EQ(lBegins[lTrack], LastSegment(lTrack).mPosition);
            mElement.Sink(lTrack)->Clear();
        }
    };
    EXPECT_TRUE(SeekAtPad(NewAccurateSeek(kWanted)));
    lAwait(kWanted, kWanted);
    EXPECT_TRUE(SeekAtPad(kWanted));
    lAwait(kWanted - 2 * GST_SECOND, kWanted - 250 * GST_MSECOND);
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_TRUE(SeekAtPad(NewAccurateSeek(kWanted)));
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_PLAYING));
    lAwait(kWanted, kWanted);
}

TEST_F(ModernSeeks, AnAccurateSeekThatIsNotDoneLeavesSegmentsAsTheyAre) {
    ServeH264();
    StartPlaying();
    mServer.On("Seek", Throws<Player::RTSPErr>(0x457));
    PushOn("Resume", 1 * GST_SECOND, "goes on");
    EXPECT_TRUE(SeekAtPad(NewAccurateSeek(5 * GST_SECOND)));
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(gint64{GST_SECOND}, LastSegment(0).mStart) << "refused";
    mServer.Clear("Seek");
    mElement.Set(GST_STATE_PAUSED);
    EXPECT_TRUE(SeekAtPad(NewAccurateSeek(5 * GST_SECOND)));
    mElement.Set(GST_STATE_READY);
    mElement.Sink(0)->Clear();
    mServer.Push(0, 2 * GST_SECOND, "anew");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    EXPECT_EQ(2 * gint64{GST_SECOND}, LastSegment(0).mStart) << "left";
}

TEST_F(ModernSeeks, AVisualTracksPositionIsThatOfItsMedia) {
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
