#include "messages/BufferingReports.hpp"

namespace nsGstVireRtspSrc {

bool BufferingReports::no_data(const std::function<bool()>& aAll) {
    {
        const Lock lBuffering(m_bufferingMutex);
        if (m_buffering || !aAll()) { return false; }
        m_buffering = true;
        m_bufferingUnanswered = true;
        m_messages.put_buffering(0);
    }
    m_messages.send();
    return true;
}

bool BufferingReports::data() {
    {
        const Lock lBuffering(m_bufferingMutex);
        if (!m_buffering) { return false; }
        m_buffering = false;
        m_bufferingUnanswered = false;
        m_messages.put_buffering(100);
    }
    m_messages.send();
    return true;
}

void BufferingReports::answer() {
    {
        const Lock lBuffering(m_bufferingMutex);
        m_buffering = false;
        if (!m_bufferingUnanswered) { return; }
        m_bufferingUnanswered = false;
        m_messages.put_buffering(100);
    }
    m_messages.send();
}

void BufferingReports::forget() {
    const Lock lBuffering(m_bufferingMutex);
    m_buffering = false;
}

}  // namespace nsGstVireRtspSrc
