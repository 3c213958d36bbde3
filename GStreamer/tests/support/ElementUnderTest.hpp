#pragma once

#include <gst/gst.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/SinkPad.hpp"

namespace ElementTest {

/// A message of the bus in one line: "error 33043", "buffering 0", "duration 5000000000", "warning <text>",
/// "failure resource 3 <text>" (an error that ends pipelines, with its code), "state paused".
std::string Describe(GstMessage* aMessage);

/// A "virertspsrc" of its own, with a bus, and a `SinkPad` for every pad that it adds.
class ElementUnderTest {
public:
    ElementUnderTest();
    ElementUnderTest(const ElementUnderTest&) = delete;
    ElementUnderTest& operator=(const ElementUnderTest&) = delete;
    ~ElementUnderTest();

    GstElement* Get() const { return mElement; }
    GstStateChangeReturn Set(GstState aState) { return gst_element_set_state(mElement, aState); }
    GstState State() const;
    /// Says that the element is in that state, without any transition.
    void Force(GstState aState);
    /// To PLAYING, one step after the other; false when one failed.
    bool Play(const char* aLocation = "rtsp://host/clip");

    void SetText(const char* aProperty, const char* aValue) { g_object_set(mElement, aProperty, aValue, nullptr); }
    /// "wap profile", whose text the element deliberately never frees.
    void SetProfile(const char* aValue);
    /// "(null)" for none.
    std::string Text(const char* aProperty) const;
    void SetNetwork(bool aAvailable) { g_object_set(mElement, "network-available", aAvailable, nullptr); }
    bool Seek(GstClockTime aPosition);

    /// The pad "src<track>", or null.
    SinkPad* Sink(unsigned aTrack) const;
    /// Names of the pads added, in order, and "no-more-pads".
    std::vector<std::string> PadSignals() const;

    /// The messages since the last call, less those of a kind that is not asked for.
    std::vector<std::string> TakeMessages(const std::vector<std::string>& aKinds = {"error", "buffering", "warning"});
    /// Waits for a message; false when it did not come in time. It and what preceded it stay to be taken.
    bool AwaitMessage(const std::string& aMessage);
    std::size_t CountMessages(const std::string& aMessage);

private:
    static void OnPadAdded(GstElement* aElement, GstPad* aPad, gpointer aThis);
    static void OnPadRemoved(GstElement* aElement, GstPad* aPad, gpointer aThis);
    static void OnNoMorePads(GstElement* aElement, gpointer aThis);
    void Collect();

    GstElement* mElement;
    GstBus* mBus;
    std::vector<std::string> mMessages;
    mutable std::mutex mMutex;
    std::map<std::string, std::shared_ptr<SinkPad>> mSinks;
    std::vector<std::shared_ptr<SinkPad>> mOldSinks;
    std::vector<std::string> mPadSignals;
};

/// Looks again and again, for ten seconds at most.
bool Eventually(const std::function<bool()>& aCondition);

}  // namespace ElementTest
