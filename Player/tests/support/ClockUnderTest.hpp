#pragma once

#include "Clock.hpp"

namespace Player::Testing {

/// A clock that stands at the time of its making until it is set on; the library reads it for as long as it lives.
class ClockUnderTest {
public:
    ClockUnderTest() {
        Value() = Time::Now();
        SetClock([] { return Value(); });
    }
    ClockUnderTest(const ClockUnderTest&) = delete;
    ClockUnderTest& operator=(const ClockUnderTest&) = delete;
    ~ClockUnderTest() { SetClock(nullptr); }

    void Advance(Time aBy) { Value() += aBy; }

private:
    static Time& Value() {
        static Time gValue;
        return gValue;
    }
};

}  // namespace Player::Testing
