#pragma once

#include <gst/gst.h>

namespace Gst1 {

/// The slots of 0.10's URI handler.
struct UriHandlerInterface {
    GstURIType (*get_type)();
    gchar** (*get_protocols)();
    const gchar* (*get_uri)(GstURIHandler*);
    gboolean (*set_uri)(GstURIHandler*, const gchar*);
};

/// Adds the interface to the type; a URI handler's init function is given 0.10's slots to fill.
/// One type of this plugin handles URIs.
void AddInterface(GType aType, GType aInterface, const GInterfaceInfo* aInfo);

}  // namespace Gst1

#define GstURIHandlerInterface ::Gst1::UriHandlerInterface
#define g_type_add_interface_static(aType, aInterface, aInfo) ::Gst1::AddInterface(aType, aInterface, aInfo)
