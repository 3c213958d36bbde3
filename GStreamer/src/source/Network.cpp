#include "source/Network.hpp"

namespace nsGstVireRtspSrc {

bool Network::available() const {
    const Lock lLock(m_mutex);
    return m_networkAvailable;
}

bool Network::said_available() const {
    const Lock lLock(m_mutex);
    return m_networkAvailable || m_returned;
}

bool Network::lose(GstState aState) {
    const Lock lLock(m_mutex);
    m_returned = false;
    if (!m_networkAvailable) { return false; }
    m_stateAtNetworkLoss = aState;
    m_networkAvailable = false;
    return true;
}

void Network::returned() {
    const Lock lLock(m_mutex);
    m_returned = !m_networkAvailable;
}

bool Network::has_returned() const {
    const Lock lLock(m_mutex);
    return m_returned;
}

bool Network::regain(GstState& aStateAtLoss) {
    const Lock lLock(m_mutex);
    if (!m_returned) { return false; }
    aStateAtLoss = m_stateAtNetworkLoss;
    m_networkAvailable = true;
    m_returned = false;
    return true;
}

}  // namespace nsGstVireRtspSrc
