#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// The state that the element is in; during a transition the one it comes from.
inline GstState CurrentState(GstElement* aElement) {
    GST_OBJECT_LOCK(aElement);
    const GstState lState = GST_STATE(aElement);
    GST_OBJECT_UNLOCK(aElement);
    return lState;
}

}  // namespace nsGstVireRtspSrc
