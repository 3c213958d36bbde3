#pragma once

namespace ElementTest {

/// While it lives, the element sleeps for a hundredth of the time that it asks for. What it counts in sleeps, such as
/// the half minute that a start waits for media, comes to its end sooner.
class QuickSleep {
public:
    QuickSleep();
    QuickSleep(const QuickSleep&) = delete;
    QuickSleep& operator=(const QuickSleep&) = delete;
    ~QuickSleep();
};

}  // namespace ElementTest
