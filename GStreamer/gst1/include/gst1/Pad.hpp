#pragma once

#include <gst/gst.h>

/// Nothing more is wanted.
#define GST_FLOW_UNEXPECTED GST_FLOW_EOS

namespace Gst1 {

/// 0.10's pad functions have no parent argument.
using PadActivatePush = gboolean (*)(GstPad*, gboolean);
using PadEvent = gboolean (*)(GstPad*, GstEvent*);
using PadQuery = gboolean (*)(GstPad*, GstQuery*);

/// Gives an active source pad of `aElement` the sticky events that a 1.x stream begins with: stream-start
/// (all pads of one start share a group id) and caps. They are kept on the pad and go out before the next
/// serialised event or buffer. Does nothing where the stream has begun.
void BeginStream(GstElement* aElement, GstPad* aPad);

/// The same for a pad of the element that was active before: what it sends begins another run.
void Restart(GstElement* aElement, GstPad* aPad);

/// The pad's caps as the element knows them; they are kept in READY, where 1.x drops the event. What goes
/// downstream has in addition the fields that today's parsers and decoders insist on.
gboolean SetCaps(GstPad* aPad, GstCaps* aCaps);
/// The pad's, or null.
GstCaps* Caps(GstPad* aPad);

gboolean AddPad(GstElement* aElement, GstPad* aPad);
gboolean QueryDefault(GstPad* aPad, GstQuery* aQuery);

template <PadActivatePush kFunction>
gboolean ActivateMode(GstPad* aPad, GstObject* aParent, GstPadMode aMode, gboolean aActive) {
    if (GST_PAD_MODE_PUSH != aMode || !kFunction(aPad, aActive)) { return FALSE; }
    if (aActive && nullptr != aParent) { Restart(GST_ELEMENT(aParent), aPad); }
    return TRUE;
}

template <PadEvent kFunction>
gboolean Event(GstPad* aPad, GstObject* /*aParent*/, GstEvent* aEvent) {
    return kFunction(aPad, aEvent);
}

template <PadQuery kFunction>
gboolean Query(GstPad* aPad, GstObject* /*aParent*/, GstQuery* aQuery) {
    return kFunction(aPad, aQuery);
}

}  // namespace Gst1

#undef gst_pad_set_event_function
#undef gst_pad_set_query_function

#define gst_pad_set_activatepush_function(aPad, aFunction) \
    gst_pad_set_activatemode_function(aPad, ::Gst1::ActivateMode<aFunction>)
#define gst_pad_set_event_function(aPad, aFunction) \
    gst_pad_set_event_function_full(aPad, ::Gst1::Event<aFunction>, nullptr, nullptr)
#define gst_pad_set_query_function(aPad, aFunction) \
    gst_pad_set_query_function_full(aPad, ::Gst1::Query<aFunction>, nullptr, nullptr)
#define gst_pad_query_default(aPad, aQuery) ::Gst1::QueryDefault(aPad, aQuery)
#define gst_pad_set_caps(aPad, aCaps) ::Gst1::SetCaps(aPad, aCaps)
#define GST_PAD_CAPS(aPad) ::Gst1::Caps(aPad)
#define gst_element_add_pad(aElement, aPad) ::Gst1::AddPad(aElement, aPad)
