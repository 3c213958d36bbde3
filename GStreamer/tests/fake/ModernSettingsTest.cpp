#include "fake/ModernFixture.hpp"

namespace ElementTest {
namespace {

class ModernSettings : public ModernFixture {};

TEST_F(ModernSettings, APlayerThatIsMadeAnewIsGivenTheSettings) {
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
        const std::size_t lSignals = mElement.PadSignals().size();
        mElement.Sink(0)->Clear();
        mElement.Set(GST_STATE_READY);
        mServer.Push(0, 0, "x");
        ASSERT_TRUE(mElement.Play());
        EXPECT_EQ(lModern && kPadsSurviveReady, lSignals == mElement.PadSignals().size()) << "links stay";
        EXPECT_TRUE(mElement.Sink(0)->Await("buffer"));
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

TEST_F(ModernSettings, TheTimeOutsFollowTheProperties) {
    // The streaming thread may have the player just then: it applies the setting when it lets go.
    const auto lBecome = [this](const std::string& aTimeOuts) {
        return Eventually([this, &aTimeOuts] {
            return aTimeOuts == mServer.Setting("RTSP:TimeOutAfter") + " " + mServer.Setting("RTSP:TimeOutRTPAfter");
        });
    };
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    mElement.SetText("timeout-rtsp-after", "3");
    ServeH264();
    StartPlaying();
    EXPECT_TRUE(lBecome(" "));
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "modern");
    EXPECT_TRUE(lBecome("3 "));
    mElement.SetText("timeout-rtp-after", "5");
    EXPECT_TRUE(lBecome("3 5"));
    for (const char* const lNone : {"0", "", "soon"}) {
        mElement.SetText("timeout-rtsp-after", lNone);
        EXPECT_TRUE(lBecome(" 5")) << lNone;
        mElement.SetText("timeout-rtsp-after", "4");
        EXPECT_TRUE(lBecome("4 5"));
    }
    mElement.SetText("timeout-rtp-after", nullptr);
    EXPECT_TRUE(lBecome("4 "));
    mElement.SetText("timeout-rtp-after", "6");
    EXPECT_TRUE(lBecome("4 6"));
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_TRUE(lBecome(" "));
}

/// Where seconds are gathered a wait of its own for each access unit would cost, and bring nothing.
TEST_F(ModernSettings, TheLatencyIsThatOfAWaitForTheSocketWhereNothingIsGathered) {
    const auto lAsk = [this] {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), "src0");
        GstQuery* const lQuery = gst_query_new_latency();
        gboolean lLive = FALSE;
        GstClockTime lLeast = 0;
        GstClockTime lMost = 0;
        EXPECT_TRUE(gst_pad_query(lPad, lQuery));
        gst_query_parse_latency(lQuery, &lLive, &lLeast, &lMost);
        EXPECT_TRUE(lLive);
        EXPECT_EQ(GST_CLOCK_TIME_NONE, lMost);
        gst_query_unref(lQuery);
        gst_object_unref(lPad);
        return lLeast;
    };
    ServeH264();
    StartPlaying();
    for (const char* const lGathered : {"2", "", static_cast<const char*>(nullptr)}) {
        mElement.SetText("rtp-buffer-size", "0");
        EXPECT_EQ(5500 * GST_USECOND, lAsk());
        mElement.SetText("rtp-buffer-size", lGathered);
        EXPECT_EQ(100 * GST_MSECOND, lAsk());
    }
    mElement.SetText("rtp-buffer-size", "0");
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    EXPECT_EQ(100 * GST_MSECOND, lAsk());
}

}  // namespace
}  // namespace ElementTest
