#pragma once

#include <chrono>

#include "Player/MediaPlayer.hpp"

namespace Virertsp {

/// Follows a recording while it runs.
class Observer {
public:
    using Clock = std::chrono::steady_clock;

    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    /// Called for each sample that was received.
    virtual void Sample(const Player::MediaPlayer& /*aPlayer*/, Player::TrackIdx /*aTrack*/,
                        const Player::Packet& /*aSample*/) {}
    /// Called between two looks at the network. False ends the recording.
    virtual bool Update(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) = 0;
    /// Called once at the end, before the session is left.
    virtual void Conclude(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) = 0;
};

}  // namespace Virertsp
