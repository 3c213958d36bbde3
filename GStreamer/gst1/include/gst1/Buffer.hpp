#pragma once

#include <gst/gst.h>

namespace Gst1 {

/// The bytes of a buffer that was just made in ordinary memory and is still ours alone: they stay where
/// they are when the mapping ends.
guint8* BufferData(GstBuffer* aBuffer);

}  // namespace Gst1

#define GST_BUFFER_DATA(aBuffer) ::Gst1::BufferData(aBuffer)
#define GST_BUFFER_SIZE(aBuffer) gst_buffer_get_size(aBuffer)

/// Caps travel as an event of the pad.
#define gst_buffer_set_caps(aBuffer, aCaps) static_cast<void>(aCaps)

/// 1.x has no allocation by the peer in the push itself: the pad never gives a buffer.
#define gst_pad_alloc_buffer(aPad, aOffset, aSize, aCaps, aBuffer) \
    (static_cast<void>(aSize), static_cast<void>(aCaps), static_cast<void>(aBuffer), GST_FLOW_NOT_SUPPORTED)
