#pragma once

#include <gst/gst.h>

#include <functional>

#include "threads/Lock.hpp"

namespace nsGstVireRtspSrc {

/// A single shot of the system clock for an element. The element may go meanwhile: it cancels the shot before, while
/// its last reference is still there for the clock to add to.
class Timer {
public:
    /// Called on the clock's thread, with the id of the shot and the element alive.
    using Action = std::function<void(GstClockID)>;

    Timer(GstElement* aElement, Action aAction);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    /// In place of a shot that is still to come. From any thread, as the next.
    void start(GstClockTime aAfter);
    void cancel();
    /// Whether it is the id of the last shot, and that was not cancelled.
    bool is_current(GstClockID aId) const;

private:
    class Shot;
    static gboolean Fire(GstClock* aClock, GstClockTime aTime, GstClockID aId, gpointer aShot);

    GstElement* const m_element;
    const Action m_action;
    Mutex m_mutex;  // A leaf but for the shot's.
    GstClockID m_checkIfPausedId VIRE_GUARDED_BY(m_mutex) = nullptr;
    Shot* m_shot VIRE_GUARDED_BY(m_mutex) = nullptr;  ///< The clock's, which keeps it for the id.
};

}  // namespace nsGstVireRtspSrc
