#include <gst/gst.h>

namespace GstLeg {

GstBuffer* NewBufferOwning(guint8* aData, gsize aSize, GFreeFunc aFree) {
    return gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), aData, aSize, 0, aSize, aData, aFree);
}

/// Pads allocate nothing.
bool IsOrdinary(GstBuffer* /*aBuffer*/) {
    return true;
}

}  // namespace GstLeg
