#include "support/Finalize.hpp"

#include "gstvirertspsrc.hpp"

namespace ElementTest {

namespace {

Finalize gOwn = nullptr;

void FinalizeAll(GObject* aObject) {
    gOwn(aObject);
    static_cast<GObjectClass*>(g_type_class_peek(GST_TYPE_ELEMENT))->finalize(aObject);
}

}  // namespace

void CompleteFinalize() {
    auto* const lClass = static_cast<GObjectClass*>(g_type_class_ref(gst_vire_rtsp_src_get_type()));
    gOwn = lClass->finalize;
    lClass->finalize = FinalizeAll;
}

Finalize ElementsOwnFinalize() {
    return gOwn;
}

}  // namespace ElementTest
