#pragma once

#include <gst/gst.h>

/// The flag of elements that bins send events to which go downstream.
#define GST_ELEMENT_IS_SOURCE GST_ELEMENT_FLAG_SOURCE

/// The descriptor under the name of 0.10, its name a string, and the function by which 1.x asks for it: that
/// function carries the plugin's name, `libgstvirertspsrc.so` being the file.
#undef GST_PLUGIN_DEFINE
#define GST_PLUGIN_DEFINE(aMajor, aMinor, aName, aDescription, aInit, aVersion, aLicense, aPackage, aOrigin)         \
    G_BEGIN_DECLS                                                                                                    \
    GST_PLUGIN_EXPORT GstPluginDesc gst_plugin_desc = {aMajor,   aMinor,  aName,    aDescription, aInit,   aVersion, \
                                                       aLicense, PACKAGE, aPackage, aOrigin,      nullptr, {}};      \
    GST_PLUGIN_EXPORT const GstPluginDesc* gst_plugin_virertspsrc_get_desc(void);                                    \
    const GstPluginDesc* gst_plugin_virertspsrc_get_desc(void) {                                                     \
        return &gst_plugin_desc;                                                                                     \
    }                                                                                                                \
    G_END_DECLS
