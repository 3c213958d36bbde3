#include "messages/Outbox.hpp"

namespace nsGstVireRtspSrc {

Outbox::~Outbox() {
    while (gpointer lMessage = g_queue_pop_head(&m_messages)) {
        gst_message_unref(static_cast<GstMessage*>(lMessage));
    }
}

void Outbox::put(GstMessage* aMessage) {
    const Lock lLock(m_mutex);
    g_queue_push_tail(&m_messages, aMessage);
}

void Outbox::send() {
    {
        const Lock lLock(m_mutex);
        if (m_sending) { return; }
        m_sending = true;
    }
    while (GstMessage* const lMessage = next()) {
        gst_element_post_message(m_element, lMessage);
    }
}

/// Null, and the end of the sending, when there is none.
GstMessage* Outbox::next() {
    const Lock lLock(m_mutex);
    auto* const lMessage = static_cast<GstMessage*>(g_queue_pop_head(&m_messages));
    m_sending = nullptr != lMessage;
    return lMessage;
}

}  // namespace nsGstVireRtspSrc
