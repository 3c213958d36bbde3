#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "Memory.hpp"
#include "Player/Exception.hpp"
#include "Player/MediaPlayer.hpp"
#include "Player/Report.hpp"
#include "SystemCalls.hpp"
#include "support/Footprint.hpp"
#include "support/MoodyServer.hpp"
#include "support/Throws.hpp"

namespace Faults {
namespace {

using Player::Time;
using TestSupport::Footprint;
using TestSupport::MoodyServer;

/// Media that a fault has eaten is not waited for without end.
constexpr int kMostLooks = 500;

struct Silence : Player::Reporter {
    void Report(const char*, Player::UInt, Player::Severity, const char*) override {}
};

class Faulty : public testing::TestWithParam<bool> {
protected:
    Faulty() { Player::SetReporter(&mSilence); }
    ~Faulty() override { Player::SetDefaultReporter(); }

    void SetUp() override {
        mPlayer = std::make_unique<Player::MediaPlayer>();
        mPlayer->SetConfigParam("RTSP:TargetRTPBuffer", "0");
        mPlayer->SetConfigParam("RTSP:TimeOutAfter", "2");
        mPlayer->SetConfigParam("RTSP:UseInterleavedRTP", GetParam() ? "1" : "0");
    }

    bool HasMedia() {
        for (int lLook = 0; lLook < kMostLooks && !mPlayer->IsEnded(); ++lLook) {
            if (mPlayer->GetTrackPacket(0)) { return true; }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }
    /// All that a player does, once. False when media did not come.
    bool PlayAll() {
        mPlayer->Play(mServer.URL(), Time(0));
        bool lAll = 2 == mPlayer->GetTrackCount() && HasMedia();
        mPlayer->Pause();
        mPlayer->Resume();
        lAll = HasMedia() && lAll;
        mPlayer->Seek(Time(10, 1));
        lAll = HasMedia() && lAll;
        mPlayer->Close();
        return lAll;
    }
    /// Returns the message of what it throws, which is one of those that callers have to expect.
    static std::string Thrown(const std::function<void()>& aAction) {
        try {
            return TestSupport::Thrown(aAction);
        } catch (const std::bad_alloc&) { return "no memory"; }
    }
    void ExpectAll() {
        EXPECT_EQ("nothing", Thrown([this] { EXPECT_TRUE(PlayAll()); }));
    }
    /// Plays again and again, and each time the fault comes one call later, until it comes no more. What is played
    /// after a fault must be whole. Returns how often it came.
    template <typename Fault, typename Make>
    unsigned FailEach(Make aMake) {
        ExpectAll();
        const std::size_t lDescriptors = Descriptors();
        unsigned lNumber = 0;
        while (!HasFailure() && PlayWithFault<Fault>(aMake, ++lNumber)) {
            SCOPED_TRACE("number " + std::to_string(lNumber));
            ExpectAll();
        }
        EXPECT_EQ(lDescriptors, Descriptors());
        return lNumber - 1;
    }
    template <typename Fault, typename Make>
    bool PlayWithFault(Make aMake, unsigned aNumber) {
        bool lHappened = false;
        Thrown([&] {
            const Fault lFault = aMake(aNumber);
            // Looked at before the fault goes, also when it has thrown.
            const std::shared_ptr<void> lLook(nullptr, [&](void*) { lHappened = Fault::Happened(); });
            PlayAll();
        });
        return lHappened;
    }
    /// When the server has let go of the client that left.
    std::size_t Descriptors() const {
        while (mServer.HasClient()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return Footprint::Now().mDescriptors;
    }

    Silence mSilence;
    MoodyServer mServer;
    std::unique_ptr<Player::MediaPlayer> mPlayer;
};

TEST_P(Faulty, AnyAllocationFindsNoMemory) {
    const unsigned lFailed = FailEach<OutOfMemory>([](unsigned aNumber) { return OutOfMemory(aNumber); });
    EXPECT_LT(100U, lFailed);
}

TEST_P(Faulty, AnyCallOfTheSystemFails) {
    struct Failure {
        Call mCall;
        const char* mName;
        std::vector<int> mErrnos;
        bool mIsOverUDPOnly;
    };
    const std::vector<Failure> lFailures = {
        {Call::kSocket, "socket", {EMFILE, ENOBUFS}, false},
        {Call::kBind, "bind", {EADDRINUSE, EACCES}, true},
        {Call::kConnect, "connect", {EINTR, EAGAIN, ENETUNREACH, ECONNREFUSED}, false},
        {Call::kSetSockOpt, "setsockopt", {ENOBUFS}, true},
        {Call::kSend, "send", {EAGAIN, ENOBUFS, EPIPE, ECONNRESET}, false},
        {Call::kSendTo, "sendto", {EAGAIN, ENOBUFS, EPERM, ECONNREFUSED}, true},
        {Call::kRecv, "recv", {EAGAIN, ENOBUFS, ECONNRESET}, false},
        {Call::kRecvMMsg, "recvmmsg", {EAGAIN, ENOBUFS, ECONNREFUSED, ENOSYS}, true},
        {Call::kSelect, "select", {EINTR, EBADF, ENOMEM}, false},
        {Call::kTime, "gettimeofday", {EINVAL}, false},
    };
    for (const Failure& lFailure : lFailures) {
        if (lFailure.mIsOverUDPOnly && GetParam()) { continue; }
        for (const int lErrno : lFailure.mErrnos) {
            SCOPED_TRACE(std::string(lFailure.mName) + ": " + std::strerror(lErrno));
            const unsigned lFailed =
                FailEach<FailingCall>([&](unsigned aNumber) { return FailingCall(lFailure.mCall, lErrno, aNumber); });
            EXPECT_NE(0U, lFailed) << "never called";
        }
    }
}

TEST_P(Faulty, SignalsInterruptEveryOtherCall) {
    const Interrupted lFault;
    ExpectAll();
}

TEST_P(Faulty, ConnectionsTakeOneByteAtATime) {
    const SmallWrites lFault(1);
    ExpectAll();
}

TEST_P(Faulty, SomebodySetsTheClock) {
    constexpr long kHour = 3600;
    for (const long lSeconds : {-kHour, -1L, kHour, 100000 * kHour}) {
        SCOPED_TRACE(lSeconds);
        const unsigned lSet = FailEach<ClockSet>([&](unsigned aNumber) { return ClockSet(lSeconds, aNumber); });
        EXPECT_NE(0U, lSet);
    }
}

INSTANTIATE_TEST_SUITE_P(Over, Faulty, testing::Bool(),
                         [](const auto& aInfo) { return aInfo.param ? std::string("TCP") : std::string("UDP"); });

}  // namespace
}  // namespace Faults
