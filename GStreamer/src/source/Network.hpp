#pragma once

#include <gst/gst.h>

#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// What the application says of the network. From any thread.
class Network {
public:
    bool available() const;
    /// As the application said it last; the return may not have been heeded yet.
    bool said_available() const;

    /// False when nothing changes. `aState`: the element's state now.
    bool lose(GstState aState);
    /// The network is back: it counts as lost until `regain`.
    void returned();
    bool has_returned() const;
    /// False when it has not returned. `aStateAtLoss`: the state given when the network was lost.
    bool regain(GstState& aStateAtLoss);

private:
    Mutex m_mutex;  // A leaf.
    bool m_networkAvailable VIRE_GUARDED_BY(m_mutex) = true;
    bool m_returned VIRE_GUARDED_BY(m_mutex) = false;  ///< And `regain` is still to come.
    GstState m_stateAtNetworkLoss VIRE_GUARDED_BY(m_mutex) = GST_STATE_NULL;
};

}  // namespace nsGstVireRtspSrc
