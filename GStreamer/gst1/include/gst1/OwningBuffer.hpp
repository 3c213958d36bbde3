#pragma once

#include <gst/gst.h>

namespace GstLeg {

/// A buffer that takes bytes over; `aFree` gets them when the buffer ends, on any thread.
GstBuffer* NewBufferOwning(guint8* aData, gsize aSize, GFreeFunc aFree);

/// Whether the bytes of a buffer that a pad has allocated lie in memory that any buffer could have: nothing
/// downstream needs them there.
bool IsOrdinary(GstBuffer* aBuffer);

}  // namespace GstLeg
