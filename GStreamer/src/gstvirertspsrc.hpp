#pragma once

#include <gst/gst.h>

struct GstVireRtspSrcPrivate;

/// The element "virertspsrc": a source with a pad per track of an RTSP presentation.
struct GstVireRtspSrc {
    GstElement m_parent;
    GstVireRtspSrcPrivate* m_private;
};

struct GstVireRtspSrcClass {
    GstElementClass m_parent;
};

GType gst_vire_rtsp_src_get_type();
