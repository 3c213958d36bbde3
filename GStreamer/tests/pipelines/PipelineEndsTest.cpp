#include "fake/ModernFixture.hpp"
#include "support/Pipeline.hpp"

namespace ElementTest {
namespace {

class PipelineEnds : public ModernFixture {
protected:
    void Play(const std::vector<FakeServer::Description>& aTracks) {
        mServer.Describe(aTracks);
        mServer.Film(20 * GST_MSECOND, std::vector<long long>(aTracks.size()));
        gst_util_set_object_arg(G_OBJECT(mPipeline.Source()), "profile", "modern");
        mPipeline.SetLocation("rtsp://host/clip");
        ASSERT_TRUE(mPipeline.Set(GST_STATE_PLAYING));
    }
    /// Whether the pipeline ends, and without an error.
    bool Ends() {
        GstBus* const lBus = gst_element_get_bus(mPipeline.Get());
        GstMessage* const lEnd = gst_bus_timed_pop_filtered(
            lBus, 10 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        const bool lEnds = nullptr != lEnd && GST_MESSAGE_EOS == GST_MESSAGE_TYPE(lEnd);
        if (nullptr != lEnd) { gst_message_unref(lEnd); }
        gst_object_unref(lBus);
        return lEnds;
    }

    Pipeline mPipeline;
};

TEST_F(PipelineEnds, AllSinksHaveHadEnough) {
    g_signal_connect(mPipeline.Get(), "element-added", G_CALLBACK(+[](GstBin*, GstElement* aElement) {
                         const bool lIsSink = nullptr != g_strrstr(GST_OBJECT_NAME(aElement), "fakesink");
                         if (lIsSink) { g_object_set(aElement, "num-buffers", 3, nullptr); }
                     }),
                     nullptr);
    Play({FakeServer::H264(), FakeServer::AAC()});
    EXPECT_TRUE(Ends());
}

TEST_F(PipelineEnds, AnEndOfStreamReachesTheElement) {
    Play({FakeServer::H264()});
    mPipeline.Watch(3);
    EXPECT_TRUE(gst_element_send_event(mPipeline.Get(), gst_event_new_eos()));
    EXPECT_TRUE(Ends());
}

}  // namespace
}  // namespace ElementTest
