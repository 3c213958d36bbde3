// The stack beside a model that never has to extend anything: it is told the true 64-bit numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <random>

#include "RTP/Stack.hpp"
#include "RTP/StackFixture.hpp"

namespace Player::RTP {

using Testing::Bytes;
using Testing::Packet;
using Testing::SizeOf;

namespace {

using Wide = std::int64_t;

class Model {
public:
    Model(Wide aSeqBase, Wide aTimeBase) : mSeqBase(aSeqBase), mTimeBase(aTimeBase), mHighest(aSeqBase) {}

    bool Take(Wide aSeq, Wide aTimestamp, Wide aArrival) {
        if (aSeq < mSeqBase || aTimestamp < mTimeBase) { return false; }
        const Wide lTransit = aArrival - aTimestamp;
        if (0 == mReceived) { mTransit = lTransit; }
        mJitter += std::abs(lTransit - mTransit) - (mJitter + 8) / 16;
        mTransit = lTransit;
        mHighest = std::max(mHighest, aSeq);
        ++mReceived;
        const Entry lEntry{aSeq - mSeqBase, aTimestamp - mTimeBase};
        if (lEntry.mIndex <= mPopped.mIndex && lEntry.mTimestamp < mPopped.mTimestamp) { return false; }
        return Insert(lEntry);
    }

    struct Entry {
        Wide mIndex = 0;
        Wide mTimestamp = 0;
    };

    const Entry& Pop() {
        mPopped = mQueue.front();
        mQueue.pop_front();
        return mPopped;
    }
    bool Empty() const { return mQueue.empty(); }
    Wide Received() const { return mReceived; }
    Wide Lost() const { return mHighest - mSeqBase + 1 - mReceived; }
    Wide HighestExt() const { return mHighest; }
    Wide Jitter() const { return mJitter / 16; }

private:
    bool Insert(const Entry& aEntry) {
        const bool lIsBehindFront = !mQueue.empty() && mQueue.front().mIndex < aEntry.mIndex;
        auto lAt = mQueue.begin();
        for (; lIsBehindFront && lAt != mQueue.end() && lAt->mIndex <= aEntry.mIndex; ++lAt) {
            if (lAt->mIndex == aEntry.mIndex) { return false; }
        }
        mQueue.insert(lAt, aEntry);
        return true;
    }

    Wide mSeqBase;
    Wide mTimeBase;
    Wide mHighest;
    Wide mReceived = 0;
    Wide mTransit = 0;
    Wide mJitter = 0;
    Entry mPopped;
    std::deque<Entry> mQueue;
};

/// A stream in true numbers: mostly in order, with losses, duplicates, reordering and leaps.
class Stream {
public:
    explicit Stream(unsigned aSeed) : mRandom(aSeed) {
        mBaseSeq = mSeq = Below(65536);
        mBaseTimestamp = mTimestamp = Below(1LL << 32);
    }

    Wide BaseSeq() const { return mBaseSeq; }
    Wide BaseTimestamp() const { return mBaseTimestamp; }
    Wide Below(Wide aLimit) { return std::uniform_int_distribution<Wide>(0, aLimit - 1)(mRandom); }

    struct Step {
        Wide mSeq;
        Wide mTimestamp;
    };

    /// Steps stay within half the range of the highest number before, which is all that a receiver can know.
    Step Next() {
        const Wide lKind = Below(100);
        if (lKind < 70) { return Forward(1, 3600); }
        if (lKind < 78) { return Forward(1 + Below(5), Below(8000)); }
        if (lKind < 80) { return Forward(1 + Below(32767), 1 + Below((1LL << 31) - 1)); }
        if (lKind < 95) { return {mSeq - Below(12), mTimestamp - Below(40000)}; }
        if (lKind < 98) { return {mSeq - Below(12), mTimestamp}; }
        return {mSeq - Below(32769), mTimestamp - Below((1LL << 31) + 1)};
    }

private:
    Step Forward(Wide aSeq, Wide aTimestamp) {
        mSeq += aSeq;
        mTimestamp += aTimestamp;
        return {mSeq, mTimestamp};
    }

    std::mt19937 mRandom;
    Wide mBaseSeq;
    Wide mBaseTimestamp;
    Wide mSeq;
    Wide mTimestamp;
};

/// Both are told the base; 0 would be learnt from the first packet.
void Compare(unsigned aSeed) {
    SCOPED_TRACE(aSeed);
    Stream lStream(aSeed);
    if (0 == lStream.BaseSeq() || 0 == lStream.BaseTimestamp()) { return; }
    Stack lStack;
    lStack.SetTimeRes(90000);
    lStack.SetSeqBase(static_cast<unsigned short>(lStream.BaseSeq()));
    lStack.SetTimeBase(static_cast<UInt>(lStream.BaseTimestamp()));
    Model lModel(lStream.BaseSeq(), lStream.BaseTimestamp());

    for (Wide i = 0; i < 3000; ++i) {
        const Stream::Step lStep = lStream.Next();
        // Whole seconds have a whole number of ticks: no rounding to model.
        const Wide lSeconds = 1000000 + i / 25;
        const Bytes lBytes =
            Packet().Seq(static_cast<UInt>(lStep.mSeq)).Timestamp(static_cast<UInt>(lStep.mTimestamp)).Build();
        const bool lTaken = lStack.HandleRTP(lBytes.data(), SizeOf(lBytes), Time(lSeconds, 1));
        ASSERT_EQ(lModel.Take(lStep.mSeq, lStep.mTimestamp, lSeconds * 90000), lTaken) << i;

        for (Wide lPops = lStream.Below(4) * lStream.Below(2); 0 < lPops && !lModel.Empty(); --lPops) {
            const Model::Entry& lExpected = lModel.Pop();
            const auto lPacket = lStack.Pop();
            ASSERT_TRUE(lPacket) << i;
            ASSERT_EQ(static_cast<UInt>(lExpected.mIndex), lPacket->SeqNumberExt()) << i;
            ASSERT_EQ(lExpected.mTimestamp, lPacket->TimestampExt()) << i;
            ASSERT_EQ(Time(lExpected.mTimestamp, 90000), lPacket->PlayTime()) << i;
        }
        ASSERT_EQ(lModel.Empty(), lStack.Empty()) << i;
    }

    const Reception lFigures = lStack.GetReception();
    EXPECT_EQ(lModel.Received(), lFigures.mPacketsReceived);
    EXPECT_EQ(lModel.Lost(), lFigures.mPacketsLost);
    if (0 == lModel.Received()) { return; }
    Bytes lReport(32);
    ASSERT_EQ(32U, lStack.AssembleRTCP_RR(lReport.data(), 32, Time(1, 1)));
    EXPECT_EQ(lModel.HighestExt(), BigEndian::Read32(lReport.data() + 16));
}

TEST(StackModelTest, AgreesWithTrueNumbers) {
    for (unsigned lSeed = 1; lSeed <= 25; ++lSeed) {
        Compare(lSeed);
    }
}

TEST(StackModelTest, AgreesOnJitter) {
    Stack lStack;
    lStack.SetTimeRes(90000);
    lStack.SetSeqBase(65000);
    lStack.SetTimeBase(0xFFFFF000);
    Model lModel(65000, 0xFFFFF000LL);
    std::mt19937 lRandom(7);
    for (Wide i = 0; i < 5000; ++i) {
        const Wide lTimestamp = 0xFFFFF000LL + i * 90000 + static_cast<Wide>(lRandom() % 20000);
        const Bytes lBytes =
            Packet().Seq(static_cast<UInt>(65000 + i)).Timestamp(static_cast<UInt>(lTimestamp)).Build();
        ASSERT_TRUE(lStack.HandleRTP(lBytes.data(), SizeOf(lBytes), Time(i, 1)));
        ASSERT_TRUE(lModel.Take(65000 + i, lTimestamp, i * 90000));
        ASSERT_EQ(Time(lModel.Jitter(), 90000), lStack.GetReception().mJitter) << i;
    }
    EXPECT_LT(1000, lModel.Jitter());
}

/// Every operation with extreme values in any order. The sanitizers are the judges, and the bytes that
/// come out are within the packet that went in.
TEST(StackModelTest, NoInputIsUndefined) {
    std::mt19937_64 lRandom(99);
    const auto lExtreme = [&lRandom] {
        const std::uint64_t kValues[] = {0,
                                         1,
                                         0x7FFF,
                                         0x8000,
                                         0xFFFF,
                                         0x7FFFFFFF,
                                         0x80000000,
                                         0xFFFFFFFF,
                                         0x7FFFFFFFFFFFFFFF,
                                         0x8000000000000000,
                                         ~0ULL,
                                         lRandom(),
                                         lRandom()};
        return kValues[lRandom() % std::size(kValues)];
    };
    const auto lTime = [&lExtreme] { return Time(static_cast<long long>(lExtreme())); };
    const auto lWord = [&lExtreme] { return static_cast<UInt>(lExtreme()); };
    Stack lStacks[2];
    for (int i = 0; i < 200000; ++i) {
        Stack& lStack = lStacks[lRandom() % 2];
        switch (lRandom() % 16) {
            case 0: lStack.SetTimeRes(lWord()); break;
            case 1: lStack.SetSeqBase(static_cast<unsigned short>(lExtreme())); break;
            case 2: lStack.SetTimeBase(lWord()); break;
            case 3: lStack.SetBeginTime(lTime()); break;
            case 4: lStack.SetEndTime(lTime()); break;
            case 5: lStack.SetTimeoutTime(lTime()); break;
            case 6: lStack.Ended(lTime()); break;
            case 7: lStack.Synchronize(lStacks[0]); break;
            case 8: lStack.Preflight(lTime()); break;
            case 9:
                if (0 == lRandom() % 50) { lStack.Flush(lTime()); }
                break;
            case 10: {
                const Bytes lBytes = Testing::Compound().SR(lWord(), lWord(), lWord()).Build();
                lStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), lTime());
                Bytes lReport(32);
                lStack.AssembleRTCP_RR(lReport.data(), 32, lTime());
                break;
            }
            case 11: {
                const auto lPacket = lStack.Pop();
                if (lPacket) { EXPECT_EQ(0xAB, *lPacket->Begin()); }
                lStack.GetReception();
                lStack.AdjustedLatestTime();
                break;
            }
            default: {
                const Bytes lBytes = Packet().Seq(lWord()).Timestamp(lWord()).Build();
                lStack.HandleRTP(lBytes.data(), SizeOf(lBytes), lTime());
                break;
            }
        }
    }
}

TEST(StackModelTest, RandomBytesStayWithinThePacket) {
    std::mt19937 lRandom(5);
    Stack lStack;
    UInt lTaken = 0;
    for (int i = 0; i < 50000; ++i) {
        Bytes lBytes(lRandom() % 80);
        for (Byte& lByte : lBytes) {
            lByte = static_cast<Byte>(lRandom());
        }
        if (!lBytes.empty()) { lBytes[0] = static_cast<Byte>(0x80 | (lBytes[0] & 0x3F)); }
        if (3 < lBytes.size() && 0 == lRandom() % 2) {
            lBytes[1] = static_cast<Byte>(200 + lRandom() % 2);
            BigEndian::Write16(&lBytes[2], static_cast<UInt>(lBytes.size() / 4 - 1));
        }
        lBytes = Testing::Exactly(lBytes);
        lStack.Reset();
        if (lStack.HandleRTP(lBytes.data(), SizeOf(lBytes), Time(1, 1))) {
            ++lTaken;
            const auto lPacket = lStack.Pop();
            ASSERT_LT(0U, lPacket->Size());
            UInt lSum = 0;
            for (const Byte* p = lPacket->Begin(); p != lPacket->End(); ++p) {
                lSum += *p;
            }
            ASSERT_LE(lSum, 255 * lPacket->Size());
            UInt lSources[15];
            lPacket->CopyCSRCs(lSources, 15);
            Bytes lExtension(65536);
            lPacket->CopyExtension(lExtension.data(), 0xFFFF);
        }
        if (8 <= lBytes.size()) { lStack.SetExpectedSSRC(BigEndian::Read32(lBytes.data() + 4)); }
        lStack.HandleRTCP(lBytes.data(), SizeOf(lBytes), Time(1, 1));
    }
    EXPECT_LT(1000U, lTaken);
}

}  // namespace
}  // namespace Player::RTP
