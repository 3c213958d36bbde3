#pragma once

#include <gst/gst.h>

#include <memory>

namespace nsGstVireRtspSrc {

struct Unref {
    void operator()(GstCaps* aCaps) const { gst_caps_unref(aCaps); }
    void operator()(GstBuffer* aBuffer) const { gst_buffer_unref(aBuffer); }
};

/// A reference of our own, given back also when something is thrown before it was handed on with `release`.
template <typename Kind>
using Held = std::unique_ptr<Kind, Unref>;

}  // namespace nsGstVireRtspSrc
