#include <gst/gst.h>

namespace Gst1 {

guint8* BufferData(GstBuffer* aBuffer) {
    GstMapInfo lMap;
    if (!gst_buffer_map(aBuffer, &lMap, GST_MAP_WRITE)) { return nullptr; }
    guint8* const lData = lMap.data;
    gst_buffer_unmap(aBuffer, &lMap);
    return lData;
}

GstFlowReturn AllocBuffer(gint aSize, GstBuffer** aBuffer) {
    *aBuffer = gst_buffer_new_and_alloc(static_cast<gsize>(aSize));
    return nullptr == *aBuffer ? GST_FLOW_ERROR : GST_FLOW_OK;
}

}  // namespace Gst1
