#include <gst/gst.h>

namespace GstLeg {

GstBuffer* NewBufferOwning(guint8* aData, gsize aSize, GFreeFunc aFree) {
    GstBuffer* const lBuffer = gst_buffer_new();
    GST_BUFFER_DATA(lBuffer) = aData;
    GST_BUFFER_SIZE(lBuffer) = static_cast<guint>(aSize);
    GST_BUFFER_MALLOCDATA(lBuffer) = aData;
    GST_BUFFER_FREE_FUNC(lBuffer) = aFree;
    return lBuffer;
}

bool IsOrdinary(GstBuffer* aBuffer) {
    return GST_TYPE_BUFFER == G_TYPE_FROM_INSTANCE(aBuffer) && g_free == GST_BUFFER_FREE_FUNC(aBuffer);
}

}  // namespace GstLeg
