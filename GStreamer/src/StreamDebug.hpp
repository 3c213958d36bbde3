#pragma once

#include "Debug.hpp"

namespace nsGstVireRtspSrc {

/// What the pads and loops of all streams log to.
inline GstDebugCategory* StreamCategory() {
    static GstDebugCategory* const sCategory = MakeDebugCategory("virertsp_stream");
    return sCategory;
}

}  // namespace nsGstVireRtspSrc
