#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "RTP/Stack.hpp"
#include "support/Datagrams.hpp"

namespace Player::Testing {

/// A stack at 90 kHz that is fed packets built by `Packet()` and `Compound()`.
class StackFixture : public testing::Test {
protected:
    static constexpr UInt kRes = 90000;

    StackFixture() { mStack.SetTimeRes(kRes); }

    bool Take(const TestSupport::RtpPacket& aPacket, Time aArrival = Time(1000, 1)) {
        const Bytes lBytes = aPacket.Build();
        return mStack.HandleRTP(lBytes.data(), SizeOf(lBytes), aArrival);
    }
    /// The n-th frame of a stream with 25 frames a second, one packet each.
    bool TakeFrame(UInt aSeq, Time aArrival = Time(1000, 1)) {
        return Take(Packet().Seq(aSeq).Timestamp(aSeq * 3600), aArrival);
    }
    bool Control(const TestSupport::RtcpCompound& aCompound, Time aArrival = Time(1000, 1)) {
        const Bytes lBytes = aCompound.Build();
        return mStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), aArrival);
    }

    /// Takes out everything: the extended sequence numbers.
    std::vector<UInt> PopAll() {
        std::vector<UInt> lIndices;
        while (!mStack.Empty()) {
            lIndices.push_back(mStack.Pop()->SeqNumberExt());
        }
        return lIndices;
    }

    /// The receiver report, in a block of exactly its size.
    Bytes Report(Time aNow = Time(1000, 1)) {
        Bytes lBytes(32, 0xEE);
        EXPECT_EQ(32U, mStack.AssembleRTCP_RR(lBytes.data(), 32, aNow));
        return lBytes;
    }

    RTP::Stack mStack;
};

}  // namespace Player::Testing
