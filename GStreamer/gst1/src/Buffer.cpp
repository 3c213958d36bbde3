#include <gst/gst.h>

namespace Gst1 {

guint8* BufferData(GstBuffer* aBuffer) {
    GstMapInfo lMap;
    if (!gst_buffer_map(aBuffer, &lMap, GST_MAP_WRITE)) { return nullptr; }
    guint8* const lData = lMap.data;
    gst_buffer_unmap(aBuffer, &lMap);
    return lData;
}

}  // namespace Gst1
