#include <gst/gst.h>
#include <gtest/gtest.h>

#include "Memory.hpp"
#include "support/Feeder.hpp"
#include "support/QuickSleep.hpp"

namespace ElementTest {
namespace {

using Faults::OutOfMemory;

/// The element without anything of the test around it that would need memory as well.
class BareElement {
public:
    BareElement() : mElement(gst_element_factory_make("virertspsrc", nullptr)) { gst_object_ref_sink(mElement); }
    BareElement(const BareElement&) = delete;
    BareElement& operator=(const BareElement&) = delete;
    ~BareElement() {
        gst_element_set_state(mElement, GST_STATE_NULL);
        gst_object_unref(mElement);
    }

    bool Set(GstState aState) { return GST_STATE_CHANGE_FAILURE != gst_element_set_state(mElement, aState); }
    void SetLocation(const char* aLocation) { g_object_set(mElement, "location", aLocation, nullptr); }
    void SetNetwork(bool aAvailable) { g_object_set(mElement, "network-available", aAvailable, nullptr); }
    void Seek() {
        gst_element_send_event(mElement, gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                                            GST_SEEK_TYPE_SET, GST_SECOND, GST_SEEK_TYPE_NONE, -1));
    }
    /// What an application does with one.
    bool PlayAll() {
        SetLocation("rtsp://host/clip");
        bool lAll = Set(GST_STATE_PAUSED) && Set(GST_STATE_PLAYING);
        Seek();
        SetLocation("rtsp://host/other");
        lAll = Set(GST_STATE_PAUSED) && lAll;
        SetNetwork(false);
        SetNetwork(true);
        lAll = Set(GST_STATE_PLAYING) && lAll;
        return Set(GST_STATE_NULL) && lAll;
    }

private:
    GstElement* const mElement;
};

/// On the application's thread, call by call of a play: nothing is thrown through GLib, and the next play works.
TEST(SourceMemorySlow, AnyAllocationMayFindNone) {
    FakeServer lServer;
    FakeServer::Description lPicture = FakeServer::MP4V();
    lPicture.emplace_back("FmtParams", "config=000001b001");
    FakeServer::Description lSound = FakeServer::AAC();
    lSound.emplace_back("FmtParams", "config=40002420");
    lServer.Describe({FakeServer::H264(), lSound, lPicture});
    lServer.Range(0, 20);
    const Feeder lFeeder(lServer);
    // Each play waits for packets several times.
    const QuickSleep lQuick;
    BareElement lElement;
    bool lHappened = true;
    unsigned lNumber = 0;
    while (lHappened && !testing::Test::HasFailure()) {
        SCOPED_TRACE("allocation " + std::to_string(++lNumber));
        {
            const OutOfMemory lFault(lNumber);
            const bool lAll = lElement.PlayAll();
            lHappened = OutOfMemory::Happened();
            EXPECT_TRUE(lAll || lHappened);
        }
        lElement.SetNetwork(true);
        lElement.Set(GST_STATE_NULL);
        lServer.Forget();
        lServer.TakeCalls();
    }
    EXPECT_LT(50U, lNumber);
}

}  // namespace
}  // namespace ElementTest
