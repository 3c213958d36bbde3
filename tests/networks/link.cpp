// A link between two network namespaces that loses, holds back, copies, delays and limits what passes, as it is
// told, and the same way every time.
//
//     link LOG [NAME=VALUE...]      NAME: see Conditions::Set
//
// Prints where the namespaces can be entered: the server's, whose address is 10.0.0.1, and the client's, 10.0.0.2.
// Ends, and everything with it, when its standard input does. The log has a line for each RTP packet to the client
// that did not go straight through: "lost", "held" or "copied", its sequence number, its timestamp.
// Where the machine forbids such things the exit status is 77.

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <system_error>

#include "Conditions.hpp"
#include "Direction.hpp"
#include "Tunnel.hpp"

namespace {

using namespace Networks;

constexpr int kForbidden = 77;
/// So many packets of one way, then the other has its turn.
constexpr unsigned kTurn = 64;

class Log {
public:
    explicit Log(const char* aPath) : mFile(std::fopen(aPath, "w")) {
        if (nullptr == mFile) { throw std::runtime_error("the log can't be written"); }
    }
    ~Log() { std::fclose(mFile); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    void Write(const Packet& aPacket, const Direction::Fate& aFate) const {
        if (aFate.mIsLost) { Write("lost", aPacket); }
        if (aFate.mIsHeld) { Write("held", aPacket); }
        if (aFate.mIsCopied) { Write("copied", aPacket); }
    }

private:
    // IPv4 without options, UDP (protocol 17), then RTP to the even port of a pair.
    static constexpr std::size_t kUDP = 20;
    static constexpr std::size_t kRTP = kUDP + 8;

    static bool IsRTP(const Packet& aPacket) {
        return aPacket.size() >= kRTP + 12 && 0x45 == aPacket[0] && 17 == aPacket[9] && 0 == aPacket[kUDP + 3] % 2;
    }
    static unsigned Number(const Packet& aPacket, std::size_t aAt, std::size_t aSize) {
        unsigned lNumber = 0;
        for (std::size_t i = 0; i < aSize; ++i) {
            lNumber = lNumber << 8 | aPacket[aAt + i];
        }
        return lNumber;
    }
    void Write(const char* aFate, const Packet& aPacket) const {
        if (!IsRTP(aPacket)) { return; }
        std::fprintf(mFile, "%s %u %u\n", aFate, Number(aPacket, kRTP + 2, 2), Number(aPacket, kRTP + 4, 4));
    }

    std::FILE* mFile;
};

/// Seconds since the first packet.
class Watch {
public:
    double Now() {
        const auto lNow = std::chrono::steady_clock::now();
        if (!mIsRunning) { mStart = lNow; }
        mIsRunning = true;
        return std::chrono::duration<double>(lNow - mStart).count();
    }

private:
    bool mIsRunning = false;
    std::chrono::steady_clock::time_point mStart;
};

class Link {
public:
    Link(const Conditions& aConditions, const char* aLog)
        : mServer("10.0.0.1"), mClient("10.0.0.2"), mDown(aConditions, 0), mUp(aConditions, 1), mLog(aLog) {}

    void Run() {
        std::printf("%s %s\n", mServer.NamespacePath().c_str(), mClient.NamespacePath().c_str());
        std::fflush(stdout);
        while (Wait()) {
            Packet lPacket;
            for (unsigned i = 0; i < kTurn && mServer.Read(lPacket); ++i) {
                mLog.Write(lPacket, mDown.Take(lPacket, mWatch.Now()));
            }
            for (unsigned i = 0; i < kTurn && mClient.Read(lPacket); ++i) {
                mUp.Take(lPacket, mWatch.Now());
            }
            Deliver(mDown, mClient);
            Deliver(mUp, mServer);
        }
    }

private:
    /// Until something is there or due; false at the end.
    bool Wait() {
        pollfd lPoll[] = {
            {STDIN_FILENO, POLLIN, 0}, {mServer.Descriptor(), POLLIN, 0}, {mClient.Descriptor(), POLLIN, 0}};
        double lDue = 3600;
        for (const Direction* lWay : {&mDown, &mUp}) {
            if (const auto lNext = lWay->NextDue()) { lDue = std::fmin(lDue, std::fmax(0, *lNext - mWatch.Now())); }
        }
        const timespec lTime{static_cast<time_t>(lDue), static_cast<long>(std::fmod(lDue, 1) * 1e9)};
        ::ppoll(lPoll, 3, &lTime, nullptr);
        return 0 == lPoll[0].revents;
    }

    void Deliver(Direction& aWay, const Tunnel& aTo) {
        while (aWay.NextDue()) {
            const auto lPacket = aWay.Give(mWatch.Now());
            if (!lPacket) { return; }
            aTo.Write(*lPacket);
        }
    }

    Tunnel mServer;
    Tunnel mClient;
    Direction mDown;
    Direction mUp;
    Log mLog;
    Watch mWatch;
};

bool IsForbidden(const std::error_code& aError) {
    for (const int lError : {EPERM, EACCES, ENOENT, ENODEV}) {
        if (lError == aError.value()) { return true; }
    }
    return false;
}

}  // namespace

int main(int aCount, char** aArgs) {
    if (aCount < 2) {
        std::fprintf(stderr, "usage: link LOG [NAME=VALUE...]\n");
        return 2;
    }
    try {
        Conditions lConditions;
        for (int i = 2; i < aCount; ++i) {
            lConditions.Set(aArgs[i]);
        }
        Link(lConditions, aArgs[1]).Run();
    } catch (const std::system_error& lError) {
        std::fprintf(stderr, "link: %s\n", lError.what());
        return IsForbidden(lError.code()) ? kForbidden : 1;
    } catch (const std::exception& lError) {
        std::fprintf(stderr, "link: %s\n", lError.what());
        return 1;
    }
    return 0;
}
