#pragma once

namespace nsGstVireRtspSrc {

/// The settings of a `Source`. The values are fixed: property id N of the element is key N - 1.
enum ConfigParamKey {
    kLocation = 0,
    kUseProxy = 1,
    kProxyAuthorization = 2,
    kNetworkType = 3,
    kReferrer = 4,
    kWapProfile = 5,
    kUseLocalIp = 6,
    kUdpPortsFrom = 7,
    kUdpPortsTo = 8,
    kRtpBufferSize = 9,
    kTimeoutRtspAfter = 10,
    kTimeoutRtpAfter = 11,
    kNetworkAvailable = 12  ///< The only boolean; all others are text.
};

}  // namespace nsGstVireRtspSrc
