#include "support/TimersRun.hpp"

#include <atomic>

namespace {

std::atomic<int> gRun{0};
std::atomic<GstClockTime> gLastAfter{0};
/// What the thread has last been told the time to be: a shot that is due then is for at once, and not put off.
thread_local GstClockTime tNow = 0;

}  // namespace

extern "C" {

GstClockTime __real_gst_clock_get_time(GstClock* aClock);
GstClockTime __wrap_gst_clock_get_time(GstClock* aClock);
GstClockID __real_gst_clock_new_single_shot_id(GstClock* aClock, GstClockTime aTime);
GstClockID __wrap_gst_clock_new_single_shot_id(GstClock* aClock, GstClockTime aTime);

GstClockTime __wrap_gst_clock_get_time(GstClock* aClock) {
    tNow = __real_gst_clock_get_time(aClock);
    return tNow;
}

GstClockID __wrap_gst_clock_new_single_shot_id(GstClock* aClock, GstClockTime aTime) {
    if (aTime <= tNow) { return __real_gst_clock_new_single_shot_id(aClock, aTime); }
    gLastAfter = aTime - tNow;
    return __real_gst_clock_new_single_shot_id(aClock, 0 == gRun ? aTime + 3600 * GST_SECOND : aTime);
}
}

namespace ElementTest {

TimersRun::TimersRun() {
    ++gRun;
}

TimersRun::~TimersRun() {
    --gRun;
}

GstClockTime TimersRun::LastAfter() const {
    return gLastAfter;
}

}  // namespace ElementTest
