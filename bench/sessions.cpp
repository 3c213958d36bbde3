// Many sessions of the library in one process, all read by one thread.
//
//     sessions URL COUNT SECONDS [KEY=VALUE...]
//
// Starts the sessions one after the other, reads them for this many seconds, half of it to warm up, and closes them.
// Prints CPU microseconds per packet received in the second half, access units, kilobytes of memory per session, and
// how long starting and closing took.

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Player/MediaPlayer.hpp"
#include "Player/Pace.hpp"
#include "Player/Ptr.hpp"
#include "Player/Report.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using PlayerPtr = Player::SharedPtr<Player::MediaPlayer, Player::SharedObject>;

double CpuMicroseconds() {
    timespec lTime{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &lTime);
    return static_cast<double>(lTime.tv_sec) * 1e6 + static_cast<double>(lTime.tv_nsec) / 1e3;
}

/// Private memory of the process.
double Kilobytes() {
    std::ifstream lFile("/proc/self/smaps_rollup");
    for (std::string lWord; lFile >> lWord;) {
        double lSize = 0;
        if ("Private_Dirty:" == lWord && lFile >> lSize) { return lSize; }
    }
    return 0;
}

double Seconds(Clock::duration aTime) {
    return std::chrono::duration<double>(aTime).count();
}

class Sessions {
public:
    Sessions(const std::string& aURL, std::size_t aCount, const std::vector<std::string>& aSettings) {
        for (std::size_t i = 0; i < aCount; ++i) {
            const PlayerPtr lPlayer(new Player::MediaPlayer);
            for (const std::string& lSetting : aSettings) {
                const std::size_t lEqual = lSetting.find('=');
                lPlayer->SetConfigParam(lSetting.substr(0, lEqual), lSetting.substr(lEqual + 1));
            }
            lPlayer->Play(aURL, Player::Time(0));
            mPlayers.push_back(lPlayer);
        }
    }

    void ReadFor(double aSeconds) {
        Player::Pace lPace;
        for (const auto lStart = Clock::now(); Seconds(Clock::now() - lStart) < aSeconds;) {
            const std::uint64_t lBefore = Packets();
            for (const PlayerPtr& lPlayer : mPlayers) {
                while (lPlayer->GetTrackPacket(0)) {
                    ++mUnits;
                }
            }
            // What came in a look at all of them, for one.
            std::this_thread::sleep_for(lPace.Next(static_cast<unsigned>((Packets() - lBefore) / mPlayers.size())));
        }
    }

    void Close() {
        for (const PlayerPtr& lPlayer : mPlayers) {
            lPlayer->Close();
        }
    }

    std::uint64_t Packets() const {
        std::uint64_t lPackets = 0;
        for (const PlayerPtr& lPlayer : mPlayers) {
            lPackets += lPlayer->GetTrackReception(0).mPacketsReceived;
        }
        return lPackets;
    }
    std::uint64_t Units() const { return mUnits; }

private:
    std::vector<PlayerPtr> mPlayers;
    std::uint64_t mUnits = 0;
};

void Run(const std::string& aURL, std::size_t aCount, double aSeconds, const std::vector<std::string>& aSettings) {
    const double lEmpty = Kilobytes();
    const auto lStart = Clock::now();
    Sessions lSessions(aURL, aCount, aSettings);
    const double lStarted = Seconds(Clock::now() - lStart);
    const double lWithout = Kilobytes();
    lSessions.ReadFor(aSeconds / 2);
    const double lCpu = CpuMicroseconds();
    const std::uint64_t lPackets = lSessions.Packets();
    lSessions.ReadFor(aSeconds / 2);
    const auto lCount = static_cast<double>(aCount);
    std::printf("%5zu sessions: %6.2f us/packet, %llu access units, %.0f KB each, %.0f KB each before media, ", aCount,
                (CpuMicroseconds() - lCpu) / static_cast<double>(lSessions.Packets() - lPackets),
                static_cast<unsigned long long>(lSessions.Units()), (Kilobytes() - lEmpty) / lCount,
                (lWithout - lEmpty) / lCount);
    const auto lEnd = Clock::now();
    lSessions.Close();
    std::printf("started in %.2f s, closed in %.2f s\n", lStarted, Seconds(Clock::now() - lEnd));
}

}  // namespace

int main(int aCount, char** aArgs) {
    if (aCount < 4) { return 2; }
    // Each session takes three descriptors.
    rlimit lLimit{};
    getrlimit(RLIMIT_NOFILE, &lLimit);
    lLimit.rlim_cur = lLimit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &lLimit);
    Player::SetReporter(nullptr);
    try {
        Run(aArgs[1], std::strtoul(aArgs[2], nullptr, 10), std::strtod(aArgs[3], nullptr),
            std::vector<std::string>(aArgs + 4, aArgs + aCount));
    } catch (const std::exception& lException) {
        std::fprintf(stderr, "sessions: %s\n", lException.what());
        return 1;
    }
    return 0;
}
