#pragma once

/// Stands before GStreamer 1.x's own header in the include path. The element is written for GStreamer 0.10;
/// this folder supplies what it uses of it and 1.x dropped or changed. Names that 1.x keeps itself for old
/// sources (gst/gstcompat.h) are not repeated here.
#include_next <gst/gst.h>

#include "gst1/Buffer.hpp"
#include "gst1/Event.hpp"
#include "gst1/Mutex.hpp"
#include "gst1/OwningBuffer.hpp"
#include "gst1/Pad.hpp"
#include "gst1/Plugin.hpp"
#include "gst1/Run.hpp"
#include "gst1/Task.hpp"
#include "gst1/UriHandler.hpp"
