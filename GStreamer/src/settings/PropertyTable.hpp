#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// Ids of the element's properties. Id N of a setting is its `ConfigParamKey` plus 1.
constexpr guint kPropertyNetworkAvailable = 13;
constexpr guint kPropertyVersion = 14;

void InstallProperties(GObjectClass* aClass);

}  // namespace nsGstVireRtspSrc
