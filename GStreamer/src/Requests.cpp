#include "Requests.hpp"

#include <utility>

namespace nsGstVireRtspSrc {

bool Requests::any() const {
    const Lock lLock(m_mutex);
    return m_location || m_seek || nullptr != m_pauseCheck;
}

void Requests::ask_location(const std::function<bool()>& aStore) {
    const Lock lLock(m_mutex);
    if (!aStore()) { return; }
    m_location = true;
    m_seek = false;
}

std::string Requests::take_location(const std::function<std::string()>& aRead) {
    const Lock lLock(m_mutex);
    m_location = false;
    return aRead();
}

bool Requests::take_location() {
    const Lock lLock(m_mutex);
    return std::exchange(m_location, false);
}

void Requests::ask_seek(gint64 aPosition) {
    const Lock lLock(m_mutex);
    m_seek = true;
    m_position = aPosition;
}

bool Requests::take_seek(gint64& aPosition) {
    const Lock lLock(m_mutex);
    aPosition = m_position;
    return std::exchange(m_seek, false);
}

void Requests::ask_pause_check(GstClockID aId) {
    const Lock lLock(m_mutex);
    m_pauseCheck = aId;
}

bool Requests::take_pause_check(GstClockID& aId) {
    const Lock lLock(m_mutex);
    aId = std::exchange(m_pauseCheck, nullptr);
    return nullptr != aId;
}

}  // namespace nsGstVireRtspSrc
