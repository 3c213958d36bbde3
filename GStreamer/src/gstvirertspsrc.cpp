#include "gstvirertspsrc.hpp"

#include <new>

#include "settings/Options.hpp"
#include "settings/PropertyTable.hpp"
#include "source/Source.hpp"
#include "threads/Boundary.hpp"

using nsGstVireRtspSrc::AtBoundary;
using nsGstVireRtspSrc::ConfigParamKey;
using nsGstVireRtspSrc::Options;
using nsGstVireRtspSrc::Source;

struct GstVireRtspSrcPrivate {
    Source* source;
    gchar* version;
};

namespace {

constexpr const char* kVersion = VIRE_VERSION;
constexpr const char* kBuild = "6415";

gpointer parent_class = nullptr;

GstStaticPadTemplate gSourceTemplate =
    GST_STATIC_PAD_TEMPLATE("src%d", GST_PAD_SRC, GST_PAD_SOMETIMES, GST_STATIC_CAPS("ANY"));

/// Null only where there was no memory for it.
Source* SourceOf(gpointer aElement) {
    return static_cast<GstVireRtspSrc*>(aElement)->m_private->source;
}

bool IsSetting(guint aId) {
    return 1 <= aId && aId < nsGstVireRtspSrc::kPropertyNetworkAvailable;
}

ConfigParamKey KeyOf(guint aId) {
    return static_cast<ConfigParamKey>(aId - 1);
}

GstURIType gst_vire_rtsp_src_uri_get_type() {
    return GST_URI_SRC;
}

gchar** gst_vire_rtsp_src_uri_get_protocols() {
    static gchar sScheme[] = "vire";
    static gchar* sProtocols[] = {sScheme, nullptr};
    return sProtocols;
}

const gchar* gst_vire_rtsp_src_uri_get_uri(GstURIHandler* aHandler) {
    Source* const lSource = SourceOf(aHandler);
    if (nullptr == lSource) { return nullptr; }
    return AtBoundary<const gchar*>(aHandler, nullptr,
                                    [&] { return lSource->get_config_param(nsGstVireRtspSrc::kLocation); });
}

gboolean gst_vire_rtsp_src_uri_set_uri(GstURIHandler* aHandler, const gchar* aUri) {
    Source* const lSource = SourceOf(aHandler);
    if (nullptr != lSource) {
        AtBoundary(aHandler, [&] { lSource->set_config_param(nsGstVireRtspSrc::kLocation, aUri); });
    }
    return TRUE;
}

void gst_vire_rtsp_src_uri_handler_init(gpointer aInterface, gpointer /*aData*/) {
    auto* const lInterface = static_cast<GstURIHandlerInterface*>(aInterface);
    lInterface->get_type = gst_vire_rtsp_src_uri_get_type;
    lInterface->get_protocols = gst_vire_rtsp_src_uri_get_protocols;
    lInterface->get_uri = gst_vire_rtsp_src_uri_get_uri;
    lInterface->set_uri = gst_vire_rtsp_src_uri_set_uri;
}

void gst_vire_rtsp_src_set_property(GObject* aObject, guint aId, const GValue* aValue, GParamSpec* aSpec) {
    Source* const lSource = SourceOf(aObject);
    if (nullptr == lSource) { return; }
    if (nsGstVireRtspSrc::kLocation + 1 == aId) {
        gst_vire_rtsp_src_uri_set_uri(GST_URI_HANDLER(aObject), g_value_get_string(aValue));
    } else if (IsSetting(aId)) {
        AtBoundary(aObject, [&] { lSource->set_config_param(KeyOf(aId), g_value_get_string(aValue)); });
    } else if (nsGstVireRtspSrc::kPropertyNetworkAvailable == aId) {
        AtBoundary(aObject, [&] { lSource->set_config_boolean_param(KeyOf(aId), g_value_get_boolean(aValue)); });
    } else if (Options::has(aId)) {
        AtBoundary(aObject, [&] { lSource->set_option(aId, aValue); });
    } else {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(aObject, aId, aSpec);
    }
}

void gst_vire_rtsp_src_get_property(GObject* aObject, guint aId, GValue* aValue, GParamSpec* aSpec) {
    Source* const lSource = SourceOf(aObject);
    if (nullptr == lSource) { return; }
    if (IsSetting(aId)) {
        g_value_take_string(aValue, lSource->dup_config_param(KeyOf(aId)));
    } else if (nsGstVireRtspSrc::kPropertyNetworkAvailable == aId) {
        g_value_set_boolean(aValue, lSource->get_config_boolean_param(KeyOf(aId)));
    } else if (nsGstVireRtspSrc::kPropertyVersion == aId) {
        g_value_set_string(aValue, reinterpret_cast<GstVireRtspSrc*>(aObject)->m_private->version);
    } else if (Options::has(aId)) {
        lSource->get_option(aId, aValue);
    } else if (Options::kStats == aId) {
        AtBoundary(aObject, [&] { g_value_take_boxed(aValue, lSource->stats()); });
    } else {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(aObject, aId, aSpec);
    }
}

/// What the source does before the element's own state moves up; a failure leaves the element where it is.
bool RunBefore(Source* aSource, GstStateChange aTransition) {
    switch (aTransition) {
        case GST_STATE_CHANGE_READY_TO_PAUSED: return nullptr != aSource && aSource->readyToPaused();
        case GST_STATE_CHANGE_PAUSED_TO_PLAYING: return nullptr != aSource && aSource->pausedToPlaying();
        default: return true;
    }
}

/// What it does after the element has stopped the pads on its way down.
bool RunAfter(Source* aSource, GstStateChange aTransition) {
    if (nullptr == aSource) { return true; }
    switch (aTransition) {
        case GST_STATE_CHANGE_PLAYING_TO_PAUSED: return aSource->playingToPaused();
        case GST_STATE_CHANGE_PAUSED_TO_READY: return aSource->pausedToReady();
        case GST_STATE_CHANGE_READY_TO_NULL: return aSource->readyToNull();
        default: return true;
    }
}

GstStateChangeReturn gst_vire_rtsp_src_change_state(GstElement* aElement, GstStateChange aTransition) {
    Source* const lSource = SourceOf(aElement);
    if (!AtBoundary(aElement, false, [&] { return RunBefore(lSource, aTransition); })) {
        return GST_STATE_CHANGE_FAILURE;
    }
    const GstStateChangeReturn lResult = GST_ELEMENT_CLASS(parent_class)->change_state(aElement, aTransition);
    if (GST_STATE_CHANGE_FAILURE == lResult) { return lResult; }
    if (!AtBoundary(aElement, true, [&] { return RunAfter(lSource, aTransition); })) {
        return GST_STATE_CHANGE_FAILURE;
    }
    // A live source has nothing to preroll with.
    const bool lNothing =
        GST_STATE_CHANGE_READY_TO_PAUSED == aTransition ||
        (GST_STATE_CHANGE_PLAYING_TO_PAUSED == aTransition && nullptr != lSource && lSource->pauses_in_place());
    return lNothing ? GST_STATE_CHANGE_NO_PREROLL : lResult;
}

gboolean gst_vire_rtsp_src_send_event(GstElement* aElement, GstEvent* aEvent) {
    Source* const lSource = SourceOf(aElement);
    if (nullptr != lSource) {
        return AtBoundary(aElement, FALSE, [&] { return lSource->handle_event(aEvent); });
    }
    gst_event_unref(aEvent);
    return FALSE;
}

void gst_vire_rtsp_src_dispose(GObject* aObject) {
    Source* const lSource = SourceOf(aObject);
    if (nullptr != lSource) { lSource->element_goes(); }
    G_OBJECT_CLASS(parent_class)->dispose(aObject);
}

/// Deliberately the end of it: the parent's finalize is not called.
void gst_vire_rtsp_src_finalize(GObject* aObject) {
    GstVireRtspSrcPrivate* const lPrivate = reinterpret_cast<GstVireRtspSrc*>(aObject)->m_private;
    delete lPrivate->source;
    lPrivate->source = nullptr;
    g_free(lPrivate->version);
    lPrivate->version = nullptr;
}

void gst_vire_rtsp_src_base_init(gpointer aClass) {
    auto* const lClass = static_cast<GstElementClass*>(aClass);
    gst_element_class_add_pad_template(lClass, gst_static_pad_template_get(&gSourceTemplate));
    gst_element_class_set_details_simple(lClass, "VireRtspSrc", "Source/Network", "Quenra RTSP Source Element",
                                         "Quenra <multimedia@quenra.example>");
}

void gst_vire_rtsp_src_class_init(gpointer aClass) {
    g_type_class_add_private(aClass, sizeof(GstVireRtspSrcPrivate));

    auto* const lObjectClass = static_cast<GObjectClass*>(aClass);
    lObjectClass->dispose = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_dispose);
    lObjectClass->finalize = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_finalize);
    lObjectClass->set_property = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_set_property);
    lObjectClass->get_property = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_get_property);
    nsGstVireRtspSrc::InstallProperties(lObjectClass);
    Options::install(lObjectClass);

    auto* const lElementClass = static_cast<GstElementClass*>(aClass);
    lElementClass->change_state = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_change_state);
    lElementClass->send_event = GST_DEBUG_FUNCPTR(gst_vire_rtsp_src_send_event);
}

void ClassInitTrampoline(gpointer aClass, gpointer /*aData*/) {
    parent_class = g_type_class_peek_parent(aClass);
    gst_vire_rtsp_src_class_init(aClass);
}

void gst_vire_rtsp_src_init(GTypeInstance* aInstance, gpointer /*aClass*/) {
    auto* const lElement = reinterpret_cast<GstVireRtspSrc*>(aInstance);
    lElement->m_private = G_TYPE_INSTANCE_GET_PRIVATE(aInstance, gst_vire_rtsp_src_get_type(), GstVireRtspSrcPrivate);
    // No exception may pass through the type system, which calls this.
    try {
        lElement->m_private->source = new Source(GST_ELEMENT(aInstance));
    } catch (const std::exception& lException) { g_critical("virertspsrc: %s", lException.what()); }
    lElement->m_private->version = g_strdup_printf("%s.%s", kVersion, kBuild);
}

GType RegisterType() {
    const GTypeInfo lInfo = {sizeof(GstVireRtspSrcClass),
                             gst_vire_rtsp_src_base_init,
                             nullptr,
                             ClassInitTrampoline,
                             nullptr,
                             nullptr,
                             sizeof(GstVireRtspSrc),
                             0,
                             gst_vire_rtsp_src_init,
                             nullptr};
    const GInterfaceInfo lUriHandlerInfo = {gst_vire_rtsp_src_uri_handler_init, nullptr, nullptr};
    const GType lType = g_type_register_static(GST_TYPE_ELEMENT, "GstVireRtspSrc", &lInfo, static_cast<GTypeFlags>(0));
    g_type_add_interface_static(lType, GST_TYPE_URI_HANDLER, &lUriHandlerInfo);
    return lType;
}

}  // namespace

GType gst_vire_rtsp_src_get_type() {
    static gsize sType = 0;
    if (g_once_init_enter(&sType)) { g_once_init_leave(&sType, RegisterType()); }
    return sType;
}
