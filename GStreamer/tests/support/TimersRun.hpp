#pragma once

#include <gst/gst.h>

namespace ElementTest {

/// While it lives, the element's timers come in their time. Otherwise they are an hour late: a test that is held up for
/// longer than the timer of a pause would see the server paused once more.
class TimersRun {
public:
    TimersRun();
    TimersRun(const TimersRun&) = delete;
    TimersRun& operator=(const TimersRun&) = delete;
    ~TimersRun();

    /// How long after it was asked for the last one that is not for at once is to come.
    GstClockTime LastAfter() const;
};

}  // namespace ElementTest
