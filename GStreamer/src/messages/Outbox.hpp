#pragma once

#include <gst/gst.h>

#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// Messages on their way to the bus, in the order in which they were put. None is posted with a lock held: its
/// handler may call the element, or wait for a thread that does. From any thread.
class Outbox {
public:
    explicit Outbox(GstElement* aElement) : m_element(aElement) {}
    ~Outbox();
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;

    /// Takes the message over.
    void put(GstMessage* aMessage);
    /// Posts all. What another thread is about to post is left to it.
    void send();

private:
    GstMessage* next();

    GstElement* const m_element;
    Mutex m_mutex;  // A leaf.
    GQueue m_messages VIRE_GUARDED_BY(m_mutex) = G_QUEUE_INIT;
    bool m_sending VIRE_GUARDED_BY(m_mutex) = false;
};

}  // namespace nsGstVireRtspSrc
