#include "Sockets/Wait.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include "Sockets/Loopback.hpp"

namespace Player::Sockets {
namespace {

using Testing::Connection;
using Testing::Descriptor;
using Testing::DescriptorLimit;
using Testing::Interruptions;
using Clock = std::chrono::steady_clock;

TEST(Wait, TellsReadableFromWritable) {
    const Connection lPair;
    EXPECT_EQ(0, Wait(lPair.mFd, Readiness::kReadable, 0));
    EXPECT_EQ(1, Wait(lPair.mFd, Readiness::kWritable, 0));
    lPair.mPeer.Send("x");
    EXPECT_EQ(1, Wait(lPair.mFd, Readiness::kReadable, 0));
    EXPECT_EQ(1, Wait(lPair.mFd, Readiness::kReadable, 0xFFFFFFFF)) << "no time-out is too long";
}

TEST(Wait, LastsAsLongAsItIsTold) {
    const Connection lPair;
    const auto lStart = Clock::now();
    EXPECT_EQ(0, Wait(lPair.mFd, Readiness::kReadable, 1));
    EXPECT_GE(Clock::now() - lStart, std::chrono::seconds(1));
}

TEST(Wait, GoesOnAfterSignalsWithTheTimeThatIsLeft) {
    const Connection lPair;
    const Interruptions lInterruptions;
    const auto lStart = Clock::now();
    EXPECT_EQ(0, Wait(lPair.mFd, Readiness::kReadable, 1));
    const auto lElapsed = Clock::now() - lStart;
    EXPECT_GE(lElapsed, std::chrono::seconds(1)) << "not cut short";
    EXPECT_LT(lElapsed, std::chrono::seconds(10)) << "not started over by each signal";
    EXPECT_GE(Interruptions::Count(), 2);
}

int gPeer = -1;

TEST(Wait, LateSignalDoesNotStartTheTimeAnew) {
    const Connection lPair;
    gPeer = lPair.mPeer.Get();
    // Every signal comes before a second is over that begins with the one before.
    const Interruptions lInterruptions(
        [](int aTick) {
            if (6 == aTick) { static_cast<void>(!::write(gPeer, "x", 1)); }
        },
        900);
    const auto lStart = Clock::now();
    EXPECT_EQ(0, Wait(lPair.mFd, Readiness::kReadable, 1)) << "started anew until something came";
    EXPECT_GE(Clock::now() - lStart, std::chrono::seconds(1));
    EXPECT_LE(1, Interruptions::Count());
}

TEST(Wait, SeesWhatComesAfterASignal) {
    const Connection lPair;
    gPeer = lPair.mPeer.Get();
    const Interruptions lInterruptions([](int aTick) {
        if (3 == aTick) { static_cast<void>(!::write(gPeer, "x", 1)); }
    });
    EXPECT_EQ(1, Wait(lPair.mFd, Readiness::kReadable, 60));
    EXPECT_GE(Interruptions::Count(), 3);
}

TEST(Wait, FailsForWhatIsNoDescriptor) {
    for (const Readiness lFor : {Readiness::kReadable, Readiness::kWritable}) {
        errno = 0;
        EXPECT_EQ(-1, Wait(-1, lFor, 0));
        EXPECT_EQ(EBADF, errno);
        int lClosed = -1;
        {
            const Connection lPair;
            lClosed = lPair.mFd;
        }
        errno = 0;
        EXPECT_EQ(-1, Wait(lClosed, lFor, 0));
        EXPECT_EQ(EBADF, errno);
    }
}

TEST(Wait, DescriptorsOf1024AndAbove) {
    const DescriptorLimit lLimit(2100);
    if (!lLimit.IsSet()) { GTEST_SKIP() << "Too few descriptors are allowed here"; }
    const Connection lPair;
    for (const int lNumber : {1022, 1023, 1024, 1025, 1087, 1088, 2047, 2048, 2099}) {
        const Descriptor lHigh(::fcntl(lPair.mFd, F_DUPFD, lNumber));
        ASSERT_EQ(lNumber, lHigh.Get());
        EXPECT_EQ(0, Wait(lNumber, Readiness::kReadable, 0)) << lNumber;
        EXPECT_EQ(1, Wait(lNumber, Readiness::kWritable, 0)) << lNumber;
        lPair.mPeer.Send("x");
        EXPECT_EQ(1, Wait(lNumber, Readiness::kReadable, 1)) << lNumber;
        Descriptor(::dup(lPair.mFd)).Receive(1);
    }
}

}  // namespace
}  // namespace Player::Sockets
