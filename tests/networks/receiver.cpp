// Plays a location and writes down each access unit with when it came out.
//
//     receiver FILE greedy|paced URL [KEY=VALUE...]
//
// greedy: takes all that there is, like a recorder. paced: like a player's screen, takes an access unit and
// asks for the next when that one's turn is over; the rest stays in the library.
// FILE: for each access unit a line "ARRIVAL PLAYTIME SIZE", times in ns, and its bytes.
// At the end one line: packets, lost, out of order, duplicate, and the state of the stack at the end.
// Exit status 3 with a sentence when the library throws.

#include <Player/Player.hpp>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "Player/Pace.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using Sample = Player::SharedPtr<Player::Packet, Player::SharedObject>;

/// The end of a track may overtake its last packets.
constexpr std::chrono::seconds kLastWords(1);

class Receiver {
public:
    Receiver(Player::MediaPlayer& aPlayer, std::FILE* aFile, bool aIsPaced)
        : mPlayer(aPlayer), mFile(aFile), mIsPaced(aIsPaced) {}

    void Run() {
        Clock::time_point lLastTaken = Clock::now();
        while (!mPlayer.IsEnded() || Clock::now() - lLastTaken < kLastWords) {
            if (TakeAll()) { lLastTaken = Clock::now(); }
            std::this_thread::sleep_for(mPace.Next(PacketsSinceLast()));
        }
    }

private:
    bool IsWaiting() const { return mIsPaced && Clock::now() < mTurn; }

    bool TakeAll() {
        bool lHasTaken = false;
        while (!IsWaiting()) {
            const Sample lSample = mPlayer.GetTrackPacket(0);
            if (!lSample) { return lHasTaken; }
            Write(*lSample);
            lHasTaken = true;
            if (!mIsPaced) { mPlayer.Fetch(0); }
        }
        mPlayer.TakeIn();
        return lHasTaken;
    }

    void Write(const Player::Packet& aSample) {
        const Clock::time_point lNow = Clock::now();
        const std::chrono::nanoseconds lPlayTime(aSample.PlayTime().NanoSeconds());
        // Play begins with the first.
        if (Clock::time_point() == mBegin) { mBegin = lNow - lPlayTime; }
        mTurn = mBegin + lPlayTime;
        std::fprintf(mFile, "%lld %lld %u\n", static_cast<long long>(lNow.time_since_epoch().count()),
                     static_cast<long long>(lPlayTime.count()), aSample.Size());
        std::fwrite(aSample.Begin(), 1, aSample.Size(), mFile);
    }

    unsigned PacketsSinceLast() {
        const unsigned lPackets = mPlayer.GetTrackReception(0).mPacketsReceived;
        const unsigned lMore = lPackets - mPackets;
        mPackets = lPackets;
        return lMore;
    }

    Player::MediaPlayer& mPlayer;
    std::FILE* mFile;
    bool mIsPaced;
    Player::Pace mPace;
    unsigned mPackets = 0;
    Clock::time_point mBegin;
    Clock::time_point mTurn;
};

void Play(std::FILE* aFile, bool aIsPaced, const char* aURL, char** aSettings) {
    Player::MediaPlayer lPlayer;
    for (; nullptr != *aSettings; ++aSettings) {
        const std::string lSetting = *aSettings;
        const std::size_t lEquals = lSetting.find('=');
        lPlayer.SetConfigParam(lSetting.substr(0, lEquals), lSetting.substr(lEquals + 1));
    }
    lPlayer.Play(aURL, Player::Time(0));
    Receiver(lPlayer, aFile, aIsPaced).Run();
    const Player::Reception lReception = lPlayer.GetTrackReception(0);
    std::printf("%u %d %u %u %u\n", lReception.mPacketsReceived, lReception.mPacketsLost, lReception.mPacketsReordered,
                lReception.mPacketsDuplicate, static_cast<unsigned>(lReception.mEnd));
    lPlayer.Close();
}

}  // namespace

int main(int aCount, char** aArgs) {
    if (aCount < 4) {
        std::fprintf(stderr, "usage: receiver FILE greedy|paced URL [KEY=VALUE...]\n");
        return 2;
    }
    std::FILE* const lFile = std::fopen(aArgs[1], "wb");
    if (nullptr == lFile) { return 2; }
    int lStatus = 0;
    try {
        Play(lFile, 0 == std::strcmp("paced", aArgs[2]), aArgs[3], aArgs + 4);
    } catch (const Player::Exception& lException) {
        std::fprintf(stderr, "%s\n", lException.Message());
        lStatus = 3;
    }
    std::fclose(lFile);
    return lStatus;
}
