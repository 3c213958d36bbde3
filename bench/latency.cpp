// How long access units take from the server's last packet to a pipeline's sink.
//
//     latency SECONDS PIPELINE
//
// The pipeline, in the launcher's words, plays a blast server, whose access units end with the time at which their last
// packet was sent, and ends in an element "sink". Prints median, 99th percentile and largest time, without those of
// the first second.

#include <gst/gst.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace {

struct Times {
    std::mutex mMutex;
    std::vector<double> mMilliseconds;
};

GstPadProbeReturn OnBuffer(GstPad* /*aPad*/, GstPadProbeInfo* aInfo, gpointer aTimes) {
    timespec lNow{};
    clock_gettime(CLOCK_MONOTONIC, &lNow);
    GstBuffer* const lBuffer = GST_PAD_PROBE_INFO_BUFFER(aInfo);
    std::int64_t lSent = 0;
    const gsize lSize = gst_buffer_get_size(lBuffer);
    if (lSize < sizeof(lSent)) { return GST_PAD_PROBE_OK; }
    gst_buffer_extract(lBuffer, lSize - sizeof(lSent), &lSent, sizeof(lSent));
    auto* const lTimes = static_cast<Times*>(aTimes);
    const std::lock_guard<std::mutex> lLock(lTimes->mMutex);
    lTimes->mMilliseconds.push_back(static_cast<double>(std::int64_t{lNow.tv_sec} * 1000000000 + lNow.tv_nsec - lSent) /
                                    1e6);
    return GST_PAD_PROBE_OK;
}

void Print(std::vector<double> aTimes) {
    if (aTimes.empty()) {
        std::printf("no access unit came\n");
        return;
    }
    std::sort(aTimes.begin(), aTimes.end());
    const auto lAt = [&aTimes](double aShare) {
        return aTimes[static_cast<std::size_t>(aShare * static_cast<double>(aTimes.size() - 1))];
    };
    std::printf("%zu access units: median %.2f ms, 99th percentile %.2f ms, largest %.2f ms\n", aTimes.size(), lAt(0.5),
                lAt(0.99), lAt(1));
}

}  // namespace

int main(int aCount, char** aArgs) {
    gst_init(&aCount, &aArgs);
    if (3 != aCount) { return 2; }
    GstElement* const lPipeline = gst_parse_launch(aArgs[2], nullptr);
    GstElement* const lSink = nullptr == lPipeline ? nullptr : gst_bin_get_by_name(GST_BIN(lPipeline), "sink");
    if (nullptr == lSink) { return 1; }
    Times lTimes;
    GstPad* const lPad = gst_element_get_static_pad(lSink, "sink");
    gst_pad_add_probe(lPad, GST_PAD_PROBE_TYPE_BUFFER, OnBuffer, &lTimes, nullptr);
    gst_element_set_state(lPipeline, GST_STATE_PLAYING);
    g_usleep(G_USEC_PER_SEC);
    {
        const std::lock_guard<std::mutex> lLock(lTimes.mMutex);
        lTimes.mMilliseconds.clear();
    }
    g_usleep(static_cast<gulong>(std::strtod(aArgs[1], nullptr) * G_USEC_PER_SEC));
    gst_element_set_state(lPipeline, GST_STATE_NULL);
    Print(lTimes.mMilliseconds);
    gst_object_unref(lPad);
    gst_object_unref(lSink);
    gst_object_unref(lPipeline);
    return 0;
}
