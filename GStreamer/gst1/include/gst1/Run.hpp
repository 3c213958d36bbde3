#pragma once

#include <gst/gst.h>

namespace Gst1 {

/// A run is what an element's source pads send from one flush, or start, to the next. 0.10 lets running time
/// begin anew after a flush; in 1.x it goes on. So the segments of a run begin at the running time that the
/// pipeline has at the run's first buffer, each as much later, or earlier, as its own first timestamp is.

/// Forgets the run of the element: the next segment begins another. From any thread, as the next.
void EndRun(GstElement* aElement);

/// Pushes the event, and takes it over. A flush-start on a source pad ends the run, a segment is given its place
/// in it.
gboolean PushEvent(GstPad* aPad, GstEvent* aEvent);

}  // namespace Gst1

#define gst_pad_push_event(aPad, aEvent) ::Gst1::PushEvent(aPad, aEvent)
