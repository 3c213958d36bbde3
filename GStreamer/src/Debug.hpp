#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// A new debug category with the description that all of the element share. Each file that logs keeps its
/// own in a function, so that it is made once: by the first object that logs to it, whatever the level.
inline GstDebugCategory* MakeDebugCategory(const char* aName) {
    GstDebugCategory* lCategory = nullptr;
    GST_DEBUG_CATEGORY_INIT(lCategory, aName, 0, "Template virertspsrc");
    return lCategory;
}

}  // namespace nsGstVireRtspSrc
