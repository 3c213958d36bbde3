#pragma once

#include <gst/gst.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/TimersRun.hpp"

namespace ElementTest {

/// A "virertspsrc" in a pipeline with a clock. Each of its pads ends in a sink that shows pictures when they are due
/// and drops those that come more than 20 ms late, as sinks of displays do.
class Pipeline {
public:
    /// Whether sinks wait for a first picture in PAUSED, as they do where nothing is set.
    enum class Sinks { kAtOnce, kWaiting };

    /// `aSources`: how many elements; the first is number 0.
    explicit Pipeline(unsigned aSources = 1, Sinks aSinks = Sinks::kAtOnce);
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;
    ~Pipeline();

    GstElement* Get() const { return mPipeline; }
    GstElement* Source(unsigned aSource = 0) const { return mSources[aSource]; }
    bool Set(GstState aState);
    /// PLAYING after a pause, as applications get there.
    bool Resume();
    void SetLocation(const char* aLocation, unsigned aSource = 0);
    bool Seek(GstClockTime aPosition, unsigned aSource = 0);

    /// What was pushed into a sink, and what of that was shown.
    struct Share {
        unsigned mCame;
        unsigned mShown;
    };
    /// Counts anew, in all sinks, until so many have come.
    Share Watch(unsigned aPictures, const std::string& aPad = "src0", unsigned aSource = 0);
    /// As counted up to now.
    Share Seen(const std::string& aPad = "src0", unsigned aSource = 0);

private:
    struct Branch;

    static void OnPadAdded(GstElement* aSource, GstPad* aPad, gpointer aThis);
    Branch& Find(const std::string& aPad, unsigned aSource);

    const TimersRun mTimers;
    GstElement* const mPipeline;
    const Sinks mSinks;
    std::vector<GstElement*> mSources;
    mutable std::mutex mMutex;
    std::vector<std::unique_ptr<Branch>> mBranches;  ///< Under mMutex.
};

}  // namespace ElementTest
