#include <cstdlib>

#include "gstvirertspsrc.hpp"

#define PACKAGE "gst-vire-rtsp-src"

namespace {

GstDebugCategory* gCategory = nullptr;

gboolean virertspsrc_init(GstPlugin* aPlugin) {
    if (nullptr == gCategory) { GST_DEBUG_CATEGORY_INIT(gCategory, "virertspsrc", 0, "Template virertspsrc"); }
    // Ports and identifiers of senders come from rand(): two processes must not begin with the same values.
    std::srand(g_random_int());
    return gst_element_register(aPlugin, "virertspsrc", GST_RANK_NONE, gst_vire_rtsp_src_get_type());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, "virertspsrc", "Template virertspsrc", virertspsrc_init,
                  VIRE_VERSION, "Proprietary", "Quenra", "https://quenra.example/")
