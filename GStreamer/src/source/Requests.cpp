#include "source/Requests.hpp"

#include <utility>

namespace nsGstVireRtspSrc {

bool Requests::any() const {
    const Lock lLock(m_mutex);
    return m_location || m_seek || m_end || nullptr != m_pauseCheck;
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

void Requests::ask_seek(const Seek& aSeek) {
    const Lock lLock(m_mutex);
    if (0 != aSeek.mSeqnum && aSeek.mSeqnum == m_lastSeek.mSeqnum) { return; }
    m_seek = true;
    m_lastSeek = aSeek;
}

void Requests::ask_end(guint32 aSeqnum) {
    const Lock lLock(m_mutex);
    m_end = true;
    m_endSeqnum = aSeqnum;
}

bool Requests::take_end(guint32& aSeqnum) {
    const Lock lLock(m_mutex);
    aSeqnum = m_endSeqnum;
    return std::exchange(m_end, false);
}

bool Requests::take_seek(Seek& aSeek) {
    const Lock lLock(m_mutex);
    aSeek = m_lastSeek;
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
