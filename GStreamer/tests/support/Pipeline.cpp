#include "support/Pipeline.hpp"

#include <algorithm>

#include "support/ElementUnderTest.hpp"

namespace ElementTest {

namespace {

constexpr gint64 kMaxLateness = 20 * GST_MSECOND;

/// Counts what passes an element that hands it off.
void CountHandOffs(GstElement* aElement, std::atomic<unsigned>& aCount) {
    g_object_set(aElement, "signal-handoffs", TRUE, nullptr);
    // The arguments after the first two differ from kind to kind.
    g_signal_connect_swapped(aElement, "handoff", G_CALLBACK(+[](std::atomic<unsigned>* aCounter) { ++*aCounter; }),
                             &aCount);
}

}  // namespace

/// What is linked to one pad.
struct Pipeline::Branch {
    GstElement* mSource;
    std::string mPad;
    std::atomic<unsigned> mCame{0};
    std::atomic<unsigned> mShown{0};
};

Pipeline::Pipeline(unsigned aSources, Sinks aSinks) : mPipeline(gst_pipeline_new(nullptr)), mSinks(aSinks) {
    for (unsigned lSource = 0; lSource < aSources; ++lSource) {
        mSources.push_back(gst_element_factory_make("virertspsrc", nullptr));
        gst_bin_add(GST_BIN(mPipeline), mSources.back());
        g_signal_connect(mSources.back(), "pad-added", G_CALLBACK(OnPadAdded), this);
    }
}

Pipeline::~Pipeline() {
    gst_element_set_state(mPipeline, GST_STATE_NULL);
    gst_object_unref(mPipeline);
}

void Pipeline::OnPadAdded(GstElement* aSource, GstPad* aPad, gpointer aThis) {
    auto* const lThis = static_cast<Pipeline*>(aThis);
    auto lBranch = std::make_unique<Branch>();
    lBranch->mSource = aSource;
    lBranch->mPad = GST_PAD_NAME(aPad);
    GstElement* const lCounter = gst_element_factory_make("identity", nullptr);
    GstElement* const lSink = gst_element_factory_make("fakesink", nullptr);
    g_object_set(lSink, "sync", TRUE, "async", Sinks::kWaiting == lThis->mSinks, "max-lateness", kMaxLateness, "qos",
                 TRUE, nullptr);
    CountHandOffs(lCounter, lBranch->mCame);
    CountHandOffs(lSink, lBranch->mShown);
    {
        const std::lock_guard<std::mutex> lLock(lThis->mMutex);
        lThis->mBranches.push_back(std::move(lBranch));
    }
    gst_bin_add_many(GST_BIN(lThis->mPipeline), lCounter, lSink, nullptr);
    gst_element_link(lCounter, lSink);
    gst_element_sync_state_with_parent(lSink);
    gst_element_sync_state_with_parent(lCounter);
    GstPad* const lEntry = gst_element_get_static_pad(lCounter, "sink");
    gst_pad_link(aPad, lEntry);
    gst_object_unref(lEntry);
}

bool Pipeline::Set(GstState aState) {
    return GST_STATE_CHANGE_FAILURE != gst_element_set_state(mPipeline, aState);
}

bool Pipeline::Resume() {
    PrepareToResume(mPipeline);
    return Set(GST_STATE_PLAYING);
}

void Pipeline::SetLocation(const char* aLocation, unsigned aSource) {
    g_object_set(Source(aSource), "location", aLocation, nullptr);
}

bool Pipeline::Seek(GstClockTime aPosition, unsigned aSource) {
    return gst_element_send_event(Source(aSource),
                                  gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                                                     static_cast<gint64>(aPosition), GST_SEEK_TYPE_NONE, -1));
}

Pipeline::Branch& Pipeline::Find(const std::string& aPad, unsigned aSource) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    // The newest: a pad of that name may have come anew.
    return **std::find_if(mBranches.rbegin(), mBranches.rend(), [&](const auto& aBranch) {
        return aBranch->mPad == aPad && aBranch->mSource == Source(aSource);
    });
}

Pipeline::Share Pipeline::Watch(unsigned aPictures, const std::string& aPad, unsigned aSource) {
    const Branch& lBranch = Find(aPad, aSource);
    {
        const std::lock_guard<std::mutex> lLock(mMutex);
        for (const auto& lEach : mBranches) {
            lEach->mCame = 0;
            lEach->mShown = 0;
        }
    }
    Eventually([&lBranch, aPictures] { return lBranch.mCame >= aPictures; });
    return Seen(aPad, aSource);
}

Pipeline::Share Pipeline::Seen(const std::string& aPad, unsigned aSource) {
    const Branch& lBranch = Find(aPad, aSource);
    return {lBranch.mCame, lBranch.mShown};
}

}  // namespace ElementTest
