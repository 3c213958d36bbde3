#include "Network.hpp"

namespace nsGstVireRtspSrc {

bool Network::available() const {
    const Lock lLock(m_mutex);
    return m_networkAvailable;
}

bool Network::was_lost() const {
    const Lock lLock(m_mutex);
    return m_networkWasLost;
}

void Network::clear_lost() {
    const Lock lLock(m_mutex);
    m_networkWasLost = false;
}

bool Network::lose(GstState aState) {
    const Lock lLock(m_mutex);
    if (!m_networkAvailable) { return false; }
    m_stateAtNetworkLoss = aState;
    m_networkAvailable = false;
    m_networkWasLost = true;
    return true;
}

bool Network::regain(GstState& aStateAtLoss) {
    const Lock lLock(m_mutex);
    if (m_networkAvailable) { return false; }
    aStateAtLoss = m_stateAtNetworkLoss;
    m_networkAvailable = true;
    return true;
}

}  // namespace nsGstVireRtspSrc
