#pragma once

/// Stands before GStreamer 0.10's own header in the include path and adds what the element needs on both legs.
#include_next <gst/gst.h>

#include "gst010/Event.hpp"
#include "gst010/OwningBuffer.hpp"
