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

/// What the element itself logs to, and what it is made of.
inline GstDebugCategory* SourceCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_source");
    return sCategory;
}

/// What the pads and loops of all streams log to.
inline GstDebugCategory* StreamCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_stream");
    return sCategory;
}

}  // namespace nsGstVireRtspSrc
