#include <gst/gst.h>

#undef GstURIHandlerInterface
#undef g_type_add_interface_static

namespace Gst1 {

namespace {

/// Filled once, while the type is being registered.
UriHandlerInterface gSlots;

GstURIType GetType(GType /*aType*/) {
    return gSlots.get_type();
}

const gchar* const* GetProtocols(GType /*aType*/) {
    return gSlots.get_protocols();
}

/// 1.x wants a copy; the property makes one under the lock of what it copies.
gchar* GetUri(GstURIHandler* aHandler) {
    gchar* lLocation = nullptr;
    g_object_get(aHandler, "location", &lLocation, nullptr);
    return lLocation;
}

gboolean SetUri(GstURIHandler* aHandler, const gchar* aUri, GError** aError) {
    if (gSlots.set_uri(aHandler, aUri)) { return TRUE; }
    g_set_error_literal(aError, GST_URI_ERROR, GST_URI_ERROR_BAD_URI, "Not a location");
    return FALSE;
}

void InitUriHandler(gpointer aInterface, gpointer /*aData*/) {
    auto* const lInterface = static_cast<GstURIHandlerInterface*>(aInterface);
    lInterface->get_type = GetType;
    lInterface->get_protocols = GetProtocols;
    lInterface->get_uri = GetUri;
    lInterface->set_uri = SetUri;
}

}  // namespace

void AddInterface(GType aType, GType aInterface, const GInterfaceInfo* aInfo) {
    if (GST_TYPE_URI_HANDLER != aInterface) {
        g_type_add_interface_static(aType, aInterface, aInfo);
        return;
    }
    aInfo->interface_init(&gSlots, aInfo->interface_data);
    const GInterfaceInfo lInfo = {InitUriHandler, nullptr, nullptr};
    g_type_add_interface_static(aType, aInterface, &lInfo);
}

}  // namespace Gst1
