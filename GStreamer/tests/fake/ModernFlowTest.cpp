#include "fake/ModernFixture.hpp"

namespace ElementTest {
namespace {

/// What is linked fails, or is missing.
class ModernFlow : public ModernFixture {
protected:
    void PlayBoth() {
        Serve({FakeServer::H264(), FakeServer::AAC()});
        mServer.Film(20 * GST_MSECOND, {0, 0});
        ASSERT_TRUE(mElement.Play());
        Await(0);
        Await(1);
    }
    void Await(unsigned aTrack) {
        mElement.Sink(aTrack)->Clear();
        ASSERT_TRUE(mElement.Sink(aTrack)->Await("buffer", 3));
    }
    /// Of the profile's own, in the order in which they came.
    Texts TakeErrors() { return mElement.TakeMessages({"error", "failure", "warning"}); }
    /// Which belongs to a stream; its text.
    std::string AwaitError() {
        GstBus* const lBus = gst_element_get_bus(mElement.Get());
        GstMessage* const lMessage = gst_bus_timed_pop_filtered(lBus, 10 * GST_SECOND, GST_MESSAGE_ERROR);
        gst_object_unref(lBus);
        if (nullptr == lMessage) { return "none"; }
        GError* lError = nullptr;
        gchar* lDebug = nullptr;
        gst_message_parse_error(lMessage, &lError, &lDebug);
        const bool lFailed = g_error_matches(lError, GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED);
        const std::string lText = std::string(lFailed ? "" : "of another kind: ") + lError->message + " " + lDebug;
        g_error_free(lError);
        g_free(lDebug);
        gst_message_unref(lMessage);
        return lText;
    }
};

TEST_F(ModernFlow, APeerThatFailsIsAnErrorOnce) {
    const struct {
        GstFlowReturn mResult;
        const char* mReason;
    } lRows[] = {{GST_FLOW_NOT_NEGOTIATED, "not-negotiated"},
                 {GST_FLOW_ERROR, "error"},
                 {GST_FLOW_NOT_SUPPORTED, "not-supported"},
                 {GST_FLOW_CUSTOM_ERROR, "custom-error"}};
    for (const auto& lRow : lRows) {
        SCOPED_TRACE(lRow.mReason);
        PlayBoth();
        mElement.Sink(1)->SetResult(lRow.mResult);
        const std::string lReason = lRow.mReason;
        EXPECT_EQ("What is linked to src1 does not take its media: " + lReason + ". streaming stopped, reason " +
                      lReason + " (" + std::to_string(lRow.mResult) + ")",
                  AwaitError());
        const std::size_t lBuffers = mElement.Sink(0)->Count("buffer");
        mElement.Sink(0)->SetResult(lRow.mResult);
        // The stream stops after an error, as it always did.
        EXPECT_TRUE(mElement.Sink(0)->Await("buffer", lBuffers + (GST_FLOW_ERROR == lRow.mResult ? 1 : 2)));
        mElement.Set(GST_STATE_READY);
        EXPECT_EQ(Texts(), TakeErrors());
        mElement.Set(GST_STATE_NULL);
        mServer.TakeCalls();
    }
}

TEST_F(ModernFlow, APadThatIsNotLinkedIsNoErrorWhileAnotherIs) {
    PlayBoth();
    SinkPad& lSound = *mElement.Sink(1);
    lSound.SetResult(GST_FLOW_NOT_LINKED);
    Await(1);
    Await(0);
    EXPECT_EQ(Texts(), TakeErrors());
    mElement.Sink(0)->SetResult(GST_FLOW_NOT_LINKED);
    EXPECT_EQ("Nothing is linked to any pad. streaming stopped, reason not-linked (-1)", AwaitError());
    Await(0);
    Await(1);
    EXPECT_EQ(Texts(), TakeErrors());
    lSound.SetResult(GST_FLOW_OK);
    Await(1);
    EXPECT_EQ(0U, lSound.Count("eos")) << "linked again it goes on";
}

TEST_F(ModernFlow, ClassicSaysNothing) {
    gst_util_set_object_arg(G_OBJECT(mElement.Get()), "profile", "classic");
    PlayBoth();
    for (const GstFlowReturn lResult : {GST_FLOW_NOT_LINKED, GST_FLOW_NOT_NEGOTIATED}) {
        for (const unsigned lTrack : {0U, 1U}) {
            mElement.Sink(lTrack)->SetResult(lResult);
            Await(lTrack);
        }
    }
    mElement.Set(GST_STATE_READY);
    EXPECT_EQ(Texts(), TakeErrors());
}

}  // namespace
}  // namespace ElementTest
