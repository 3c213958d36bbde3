#include "threads/Timer.hpp"

#include <utility>

#include "threads/Boundary.hpp"

namespace nsGstVireRtspSrc {

/// What the clock keeps for a shot.
class Timer::Shot {
public:
    Shot(GstElement* aElement, const Timer& aTimer) : m_timer(aTimer), m_element(aElement) {}

    /// A reference to the element, and with it to the timer; null when the shot was cancelled.
    GstElement* TakeElement() const {
        const Lock lLock(m_mutex);
        return nullptr == m_element ? nullptr : GST_ELEMENT(gst_object_ref(m_element));
    }
    void Cancel() {
        const Lock lLock(m_mutex);
        m_element = nullptr;
    }

    const Timer& m_timer;

private:
    Mutex m_mutex;  // A leaf.
    GstElement* m_element VIRE_GUARDED_BY(m_mutex);
};

Timer::Timer(GstElement* aElement, Action aAction) : m_element(aElement), m_action(std::move(aAction)) {}

Timer::~Timer() {
    cancel();
}

gboolean Timer::Fire(GstClock* /*aClock*/, GstClockTime /*aTime*/, GstClockID aId, gpointer aShot) {
    const auto* const lShot = static_cast<Shot*>(aShot);
    GstElement* const lElement = lShot->TakeElement();
    if (nullptr == lElement) { return TRUE; }
    AtBoundary(lElement, [lShot, aId] { lShot->m_timer.m_action(aId); });
    gst_object_unref(lElement);
    return TRUE;
}

void Timer::start(GstClockTime aAfter) {
    cancel();
    const Lock lLock(m_mutex);
    if (nullptr != m_checkIfPausedId) { return; }
    auto* const lShot = new Shot(m_element, *this);
    GstClock* const lClock = gst_system_clock_obtain();
    m_checkIfPausedId = gst_clock_new_single_shot_id(lClock, gst_clock_get_time(lClock) + aAfter);
    m_shot = lShot;
    gst_clock_id_wait_async_full(m_checkIfPausedId, Fire, lShot,
                                 [](gpointer aOld) { delete static_cast<Shot*>(aOld); });
    gst_object_unref(lClock);
}

void Timer::cancel() {
    GstClockID lId = nullptr;
    {
        const Lock lLock(m_mutex);
        if (nullptr == m_checkIfPausedId) { return; }
        m_shot->Cancel();
        m_shot = nullptr;
        lId = std::exchange(m_checkIfPausedId, nullptr);
    }
    gst_clock_id_unschedule(lId);
    gst_clock_id_unref(lId);
}

bool Timer::is_current(GstClockID aId) const {
    const Lock lLock(m_mutex);
    return nullptr != aId && aId == m_checkIfPausedId;
}

}  // namespace nsGstVireRtspSrc
