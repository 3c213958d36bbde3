#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

#include "fake/StreamFixture.hpp"
#include "support/DebugCapture.hpp"

namespace ElementTest {
namespace {

/// A descriptor that is readable once something was written.
class Pipe {
public:
    Pipe() { EXPECT_EQ(0, pipe(mEnds)); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close(mEnds[0]);
        close(mEnds[1]);
    }
    void Write() { EXPECT_EQ(1, write(mEnds[1], "x", 1)); }
    int Descriptor() const { return mEnds[0]; }

private:
    int mEnds[2] = {-1, -1};
};

class StreamReports : public StreamFixture {};

TEST_F(StreamReports, ReportsMissingDataEveryHalfSecond) {
    std::atomic<int> lLooks{0};
    std::vector<int> lLooksBefore;
    mServer.On("Produce", [&lLooks] { ++lLooks; });
    mController.OnStatus([&lLooks, &lLooksBefore](StreamStatus) { lLooksBefore.push_back(lLooks.exchange(0)); });
    MakeH264();
    const Clock::time_point lStart = Clock::now();
    mStream->task_run();
    EXPECT_EQ(kOk, mStream->status_get());
    ASSERT_TRUE(Eventually([this] { return mController.Reports().size() >= 3; }));
    EXPECT_EQ(kNoData, mStream->status_get());
    EXPECT_EQ(3U, mController.Count(kNoData));
    Clock::time_point lBefore = lStart;
    for (const Controller::Report& lReport : mController.Reports()) {
        EXPECT_EQ(1U, lReport.mTrack);
        EXPECT_GE(lReport.mTime - lBefore, std::chrono::milliseconds(490));
        lBefore = lReport.mTime;
    }
    mStream->task_pause();
    mStream->task_wait();
    // A tenth of a second after each. What looks for something to have arrived looks once more before the first.
    for (const int lBetween : lLooksBefore) {
        EXPECT_GE(lBetween, 5);
        EXPECT_LE(lBetween, 6);
    }
}

/// Another track's packets, say, on the same connection.
TEST_F(StreamReports, AServerThatSendsFasterThanItIsReadDoesNotMakeItRestForEver) {
    mServer.KeepMedia();
    const auto lReception = std::make_shared<Player::Reception>();
    mServer.On("TakeIn", [this, lReception] {
        lReception->mPacketsReceived += 100;
        mServer.Receive(1, *lReception);
    });
    MakeH264();
    const Clock::time_point lStart = Clock::now();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    EXPECT_GE(mController.Reports()[0].mTime - lStart, std::chrono::milliseconds(490)) << "its rests are no shorter";
}

TEST_F(StreamReports, ThatWaitsLooksAgainAsSoonAsSomethingArrives) {
    Pipe lPipe;
    mServer.AwaitWith(lPipe.Descriptor());
    mController.Wait();
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [&lLooks] { ++lLooks; });
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    EXPECT_LE(lLooks, 7) << "a look per interval, when nothing arrives";
    lPipe.Write();  // and is never read
    // A machine that is late looks less often in one half of a second, but not in each.
    std::size_t lReports = mController.Count(kNoData);
    int lBefore = lLooks;
    EXPECT_TRUE(Eventually([&] {
        const bool lOften = lLooks - lBefore >= 12;
        if (!lOften && mController.Count(kNoData) != lReports) {
            lReports = mController.Count(kNoData);
            lBefore = lLooks;
        }
        return lOften;
    })) << "in half a second";
}

TEST_F(StreamReports, ThatDoesNotWaitRestsWhateverArrives) {
    Pipe lPipe;
    lPipe.Write();
    mServer.AwaitWith(lPipe.Descriptor());
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [&lLooks] { ++lLooks; });
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    EXPECT_LE(lLooks, 7);
}

TEST_F(StreamReports, ThatWaitsDeliversAndEndsAsOthersDo) {
    Pipe lPipe;
    lPipe.Write();
    mServer.AwaitWith(lPipe.Descriptor());
    mController.Wait();
    MakeH264();
    mStream->task_run();
    mServer.Push(1, 1500000000, "first");
    ASSERT_TRUE(Sink().Await("buffer"));
    mServer.Push(1, 1540000000, "second");
    mServer.End(1, "Bye");
    ASSERT_TRUE(Sink().Await("eos"));
    EXPECT_EQ(2U, Sink().Count("buffer"));
}

TEST_F(StreamReports, ReportsOkOnceWhenDataComesBack) {
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mServer.Push(1, 1, "a");
    mServer.Push(1, 2, "b");
    ASSERT_TRUE(Sink().Await("buffer", 2));
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kOk); }));
    mServer.Push(1, 3, "c");
    ASSERT_TRUE(Sink().Await("buffer", 3));
    EXPECT_EQ(1U, mController.Count(kOk));
    EXPECT_EQ(kOk, mStream->status_get());
    EXPECT_EQ(kOk, mController.Reports().back().mStatus);
    EXPECT_EQ(1U, mController.Reports().back().mTrack);
}

TEST_F(StreamReports, DataThatNeverWasMissingIsNotReported) {
    MakeH264();
    for (int lPacket = 0; lPacket < 3; ++lPacket) {
        mServer.Push(1, lPacket, "x");
    }
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("buffer", 3));
    EXPECT_TRUE(mController.Reports().empty());
}

TEST_F(StreamReports, APacketStartsTheWaitAnew) {
    // Every third look, after two tenths of a second without, finds one.
    std::atomic<int> lLooks{0};
    mServer.On("Produce", [this, &lLooks] {
        if (0 == ++lLooks % 3) { mServer.Push(1, lLooks, "x"); }
    });
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([&lLooks] { return lLooks >= 20; }));
    EXPECT_EQ(0U, mController.Count(kNoData));
    mStream->task_pause();
    mStream->task_wait();
}

TEST_F(StreamReports, BeingRunStartsTheWaitAnew) {
    MakeH264();
    mStream->task_run();
    std::this_thread::sleep_for(kALittle);
    mStream->task_pause();
    mStream->task_wait();
    const Clock::time_point lStart = Clock::now();
    const std::size_t lBefore = mController.Reports().size();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this, lBefore] { return mController.Reports().size() > lBefore; }));
    EXPECT_GE(mController.Reports()[lBefore].mTime - lStart, std::chrono::milliseconds(490));
}

TEST_F(StreamReports, BeingRunForgetsThatThereWasNoData) {
    MakeH264();
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mStream->task_pause();
    mStream->task_wait();
    EXPECT_EQ(kNoData, mStream->status_get());
    // It looks for no packet yet.
    mElement.Force(GST_STATE_PAUSED);
    mStream->task_run();
    EXPECT_EQ(kOk, mStream->status_get());
}

TEST_F(StreamReports, MediaThatComesWithTheTimeOutGoesOutBeforeItIsReported) {
    MakeH264();
    mServer.PushOnTakeIn(1, {"last"}, "Timeout");
    std::atomic<std::size_t> lBuffers{0};
    mController.OnStatus([this, &lBuffers](StreamStatus) { lBuffers = Sink().Count("buffer"); });
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
    EXPECT_EQ(1U, lBuffers);
    EXPECT_EQ(0U, Sink().Count("eos"));
}

TEST_F(StreamReports, ReportsItsTimeOutOnceAndIdles) {
    MakeH264();
    mServer.End(1, "Timeout");
    const DebugCapture lLog("virertsp_stream");
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(1U, mController.Reports().size());
    EXPECT_EQ(1U, mController.Reports()[0].mTrack);
    EXPECT_EQ(kTimedOut, mStream->status_get());
    EXPECT_FALSE(mStream->task_is_running());
    EXPECT_EQ(0U, Sink().Count("eos"));
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "RTP/RTCP timed out for track 1\n"));
}

TEST_F(StreamReports, AFailureIsToldOnceAndCountsAsNoPacket) {
    MakeH264();
    mServer.On("Produce", Throws<Player::RTSPErr>(2));
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Count(kNoData); }));
    const std::vector<std::pair<Player::UInt, unsigned>> lTold = {{0x110002, 1U}};
    EXPECT_EQ(lTold, mController.Exceptions());
    // Told again when the task is run again.
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Exceptions().size(); }));
    mServer.Clear("Produce");
    mServer.End(1, "Timeout");
    EXPECT_TRUE(Eventually([this] { return 1 == mController.Count(kTimedOut); }));
}

TEST_F(StreamReports, OtherExceptionsGoNoFurtherEither) {
    MakeH264();
    mServer.On("Produce", [] { throw std::runtime_error("no library exception"); });
    mStream->task_run();
    ASSERT_TRUE(Eventually([this] { return 1 == mController.Count(kNoData); }));
    mServer.On("Produce", [] { throw "a text"; });
    ASSERT_TRUE(Eventually([this] { return 2 == mController.Count(kNoData); }));
    EXPECT_TRUE(mController.Exceptions().empty());
    mServer.Clear("Produce");
    mServer.Push(1, 1, "x");
    EXPECT_TRUE(Sink().Await("buffer"));
}

}  // namespace
}  // namespace ElementTest
