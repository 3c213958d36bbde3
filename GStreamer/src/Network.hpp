#pragma once

#include <gst/gst.h>

#include "Lock.hpp"

namespace nsGstVireRtspSrc {

/// What the application says of the network. From any thread.
class Network {
public:
    bool available() const;
    /// The network was lost since `clear_lost` was called last.
    bool was_lost() const;
    void clear_lost();

    /// False when nothing changes. `aState`: the element's state now.
    bool lose(GstState aState);
    /// False when nothing changes. `aStateAtLoss`: the state given when the network was lost.
    bool regain(GstState& aStateAtLoss);

private:
    Mutex m_mutex;  // A leaf; guards the rest.
    bool m_networkAvailable = true;
    bool m_networkWasLost = false;
    GstState m_stateAtNetworkLoss = GST_STATE_NULL;
};

}  // namespace nsGstVireRtspSrc
