#pragma once

#include <string>

namespace Player::MediaSessions {

/// The ways by which media may come in; UDP is tried first. Read from a text such as "udp,tcp".
struct Transports {
    bool mUDP = false;
    bool mTCP = false;

    /// Words separated by "," or "+", without regard to case; unknown ones do not count. None of them: neither way.
    static Transports Parse(const std::string& aText);

    bool Empty() const { return !mUDP && !mTCP; }
    bool operator==(const Transports& aOther) const { return mUDP == aOther.mUDP && mTCP == aOther.mTCP; }
};

}  // namespace Player::MediaSessions
