#include <thread>

#include "fake/StreamFixture.hpp"
#include "support/DebugCapture.hpp"

namespace ElementTest {
namespace {

class StreamEnds : public StreamFixture {};

TEST_F(StreamEnds, EndsWithOneEndOfStreamAndIdles) {
    MakeH264();
    mServer.Push(1, 1, "last");
    mServer.End(1, "Bye");
    const DebugCapture lLog("virertsp_stream");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    mServer.Push(1, 2, "too late");
    std::this_thread::sleep_for(kALittle);
    EXPECT_EQ(LegPreamble() + "segment buffer eos", Sink().Kinds());
    EXPECT_FALSE(mStream->task_is_running());
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_DEBUG, "End of stream for track 1\n"));
    EXPECT_TRUE(Eventually([&lLog] { return lLog.Count(GST_LEVEL_DEBUG, "Unexpected - task is not running\n") >= 2; }));
    EXPECT_TRUE(mController.Reports().empty());
    EXPECT_EQ(1U, mServer.Queued(1));
}

TEST_F(StreamEnds, MediaThatComesWithTheEndGoesOutBeforeIt) {
    for (const char* const lWhy : {"Bye", "EndTime", "Unknown"}) {
        SCOPED_TRACE(lWhy);
        MakeH264();
        mServer.PushOnTakeIn(1, {"last but one", "last"}, lWhy);
        mStream->task_run();
        ASSERT_TRUE(Sink().Await("eos"));
        EXPECT_EQ(LegPreamble() + "segment buffer buffer eos", Sink().Kinds());
        Stream::destroy(mStream);
        mStream = nullptr;
    }
}

/// The end of a described range is reckoned by the clock, and a sender's last packet may be of that very moment.
TEST_F(StreamEnds, MediaThatComesShortlyAfterTheEndGoesOutBeforeIt) {
    MakeH264();
    mServer.End(1, "EndTime");
    mServer.PushOnTakeIn(1, {"late"}, "");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    EXPECT_EQ(LegPreamble() + "segment buffer eos", Sink().Kinds());
}

TEST_F(StreamEnds, AFailureAfterTheEndDoesNotKeepItBack) {
    MakeH264();
    mServer.End(1, "Bye");
    mStream->task_run();
    mServer.On("TakeIn", [this] { mServer.On("Produce", Throws<Player::RTSPErr>(2)); });
    EXPECT_TRUE(Sink().Await("eos"));
}

/// A flush that is not the element's own clears what 1.x pads remember of the first.
TEST_F(StreamEnds, ClassicPushesItAsOftenAsItIsCalled) {
    MakeH264();
    mStream->end_of_stream();
    gst_pad_push_event(Pad(), gst_event_new_flush_start());
    gst_pad_push_event(Pad(), gst_event_new_flush_stop());
    mStream->end_of_stream();
    EXPECT_EQ(2U, Sink().Count("eos"));
}

TEST_F(StreamEnds, GoesOnAfterItsEndWhenItIsRunAgain) {
    MakeH264();
    mServer.End(1, "EndTime");
    mStream->task_run();
    ASSERT_TRUE(Sink().Await("eos"));
    mStream->task_pause();
    mStream->flush_start();
    mStream->task_wait();
    mServer.Push(1, 7, "again");
    Sink().Clear();
    mStream->flush_stop();
    mStream->task_run();
    EXPECT_TRUE(Sink().Await("buffer"));
    EXPECT_EQ("flush-stop segment buffer", Sink().Kinds().substr(0, 25));
}

}  // namespace
}  // namespace ElementTest
