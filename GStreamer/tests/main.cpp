#include <gst/gst.h>
#include <gtest/gtest.h>

#include "gstvirertspsrc.hpp"
#include "support/DebugCapture.hpp"
#include "support/Finalize.hpp"

/// The element is linked in and registered here; the plugin file is looked at by a test of its own.
int main(int aCount, char** aArguments) {
    gst_init(&aCount, &aArguments);
    ::testing::InitGoogleTest(&aCount, aArguments);
    gst_element_register(nullptr, "virertspsrc", GST_RANK_NONE, gst_vire_rtsp_src_get_type());
    ElementTest::CompleteFinalize();
    ElementTest::DebugCapture::Install();
    return RUN_ALL_TESTS();
}
