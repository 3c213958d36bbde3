#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "recording/Observer.hpp"

namespace Virertsp {

/// The reception of all tracks together.
struct Totals {
    std::uint64_t mPackets = 0;
    std::int64_t mLost = 0;
    std::uint64_t mBytes = 0;
    /// The latest play time that came out.
    Player::Time mTime;
    /// Of the track that holds least.
    Player::Time mBuffered;

    static Totals Of(const Player::MediaPlayer& aPlayer);
};

/// "1:02:03.4" or "02:03.4"
std::string FormatTime(const Player::Time& aTime);
/// "02:03.4  812 packets, 0 lost, 4012 kbit/s, 2.8 s buffered"; "buffering" stands for the time before the first sample
/// is taken out.
std::string FormatProgress(const Totals& aTotals, std::uint64_t aKiloBitsPerSecond);

/// One line on a terminal that is written over again and again; silent elsewhere.
class Progress : public Observer {
public:
    explicit Progress(std::FILE* aTerminal);

    /// Shows where things stand, at most twice a second. Always true.
    bool Update(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) override;
    /// Leaves the line empty for whatever is printed next.
    void Conclude(const Player::MediaPlayer& aPlayer, Clock::time_point aNow) override;

private:
    void Show(const Totals& aTotals, Clock::time_point aNow);

    std::FILE* mTerminal;
    bool mEnabled;
    bool mShown = false;
    Clock::time_point mLast;
    std::uint64_t mLastBytes = 0;
};

}  // namespace Virertsp
