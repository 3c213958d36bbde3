#include "threads/Turn.hpp"

namespace nsGstVireRtspSrc {

bool Turn::take() {
    std::unique_lock<std::mutex> lLock(m_stateMutex);
    if (std::this_thread::get_id() == m_owner) { return false; }
    m_left.wait(lLock, [this] { return std::thread::id() == m_owner; });
    m_owner = std::this_thread::get_id();
    return true;
}

bool Turn::try_take() {
    const std::lock_guard<std::mutex> lLock(m_stateMutex);
    if (std::thread::id() != m_owner) { return false; }
    m_owner = std::this_thread::get_id();
    return true;
}

void Turn::leave() {
    {
        const std::lock_guard<std::mutex> lLock(m_stateMutex);
        m_owner = std::thread::id();
    }
    m_left.notify_one();
}

}  // namespace nsGstVireRtspSrc
