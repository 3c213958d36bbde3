#include "RTP/Stack.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "BigEndian.hpp"
#include "Packets/StoredRTP.hpp"

namespace Player::RTP {

namespace {

constexpr UInt kRTPHeader = 12;
constexpr UInt kRTPExtensionHeader = 4;

constexpr UInt kRTCPHeader = 4;
/// A header and the sender's SSRC.
constexpr UInt kMinCompound = 8;
/// Up to the RTP time, which is as far as sender reports are read.
constexpr UInt kSenderReport = 20;

enum PacketType : Byte { kSR = 200, kRR = 201, kSDES = 202, kBYE = 203, kAPP = 204 };

Byte Version(const Byte* aData) {
    return aData[0] >> 6;
}

/// How the datagram divides up; false unless payload is left.
bool MeasureRTP(const Byte* aData, UInt aSize, Packets::RTP::Lengths& aLengths) {
    aLengths.mHeader = static_cast<Byte>(kRTPHeader + 4 * (aData[0] & 0x0F));
    if (0 != (aData[0] & 0x10)) {
        if (aSize < aLengths.mHeader + kRTPExtensionHeader) { return false; }
        aLengths.mExtension = 4 * (BigEndian::Read16(aData + aLengths.mHeader + 2) + 1U);
    }
    if (0 != (aData[0] & 0x20)) { aLengths.mPadding = aData[aSize - 1]; }
    return aLengths.Overhead() < aSize;
}

/// Bytes that a packet occupies, its datagram included.
std::size_t Occupied(const Packets::RTP& aPacket) {
    return sizeof(aPacket) + aPacket.Datagram().Size();
}

UInt RTCPLength(const Byte* aData) {
    return (BigEndian::Read16(aData + 2) + 1U) * 4;
}

/// Whether packets follow each other exactly to the end.
bool IsCompound(const Byte* aData, UInt aSize) {
    UInt lAt = 0;
    while (lAt < aSize) {
        const UInt lLeft = aSize - lAt;
        if (lLeft < kRTCPHeader || 2 != Version(aData + lAt) || lLeft < RTCPLength(aData + lAt)) { return false; }
        lAt += RTCPLength(aData + lAt);
    }
    return true;
}

}  // namespace

void Stack::SetSeqBase(unsigned short aSeq, UInt aStep) {
    mLearnsSeq = false;
    // Over the connection media of the new range may overtake the answer that says where it begins.
    const UInt lAhead = static_cast<UInt>(static_cast<unsigned short>(mSeq.Highest() - aSeq)) + 1;
    const UInt lSincePreflight = mRun.mPacketsReceived - mRun.mReceivedAtPreflight;
    const UInt lOvertaken = lAhead <= lSincePreflight ? lAhead : 0;
    mRun.mExpectedBefore = Expected() - lOvertaken;
    mRun.mReceivedBefore = mRun.mPacketsReceived - lOvertaken;
    mRun.mReceivedAtPreflight = mRun.mPacketsReceived;
    mSeq.SetBase(aSeq, aStep);
    mMayBeginEarlier = 0 != aStep;
}

void Stack::BeginEarlier(unsigned short aSeq) {
    constexpr int kMostEarlier = 16;
    const int lEarlier = static_cast<unsigned short>(mSeq.Base() - aSeq);
    if (lEarlier <= kMostEarlier) { mSeq.MoveBase(aSeq); }
    mMayBeginEarlier = false;
}

UInt Stack::Expected() const {
    // A base alone stands for no packet.
    const bool lHasBegun = mRun.mPacketsReceived != mRun.mReceivedBefore;
    return mRun.mExpectedBefore + (lHasBegun ? mSeq.Expected() : 0);
}

bool Stack::HandleRTP(const unsigned char* aData, unsigned int aSize, Time aArrival) {
    if (aSize < kRTPHeader || 2 != Version(aData)) { return false; }
    if (0 != mExpectedPT && (aData[1] & 0x7F) != mExpectedPT) { return false; }
    if (BigEndian::Read32(aData + 8) != mExpectedSSRC && !LearnsSSRC()) { return false; }
    Packets::RTP::Lengths lLengths;
    if (!MeasureRTP(aData, aSize, lLengths)) { return false; }

    if (0 == mRun.mPacketsReceived) { LearnFrom(aData, aArrival); }
    if (mLearnsSeq) { SetSeqBase(BigEndian::Read16(aData + 2), mStep); }
    if (mLearnsTime) { SetTimeBase(BigEndian::Read32(aData + 4)); }
    if (mMayBeginEarlier) { BeginEarlier(BigEndian::Read16(aData + 2)); }
    return TakeRTP(aData, aSize, lLengths, aArrival);
}

void Stack::LearnFrom(const Byte* aData, Time aArrival) {
    // Where something was expected, this is it.
    mExpectedPT = aData[1] & 0x7F;
    mExpectedSSRC = BigEndian::Read32(aData + 8);
    mSeq.LearnBase(BigEndian::Read16(aData + 2));
    const UInt lTimestamp = BigEndian::Read32(aData + 4);
    mTimestamp.LearnBase(lTimestamp);
    mRun.mJitter.Start(Transit(aArrival, lTimestamp));
}

bool Stack::TakeRTP(const Byte* aData, UInt aSize, const Packets::RTP::Lengths& aLengths, Time aArrival) {
    const auto lSeq = mSeq.Find(BigEndian::Read16(aData + 2));
    const auto lTimestamp = mTimestamp.Find(BigEndian::Read32(aData + 4));
    if (!lSeq || !lTimestamp) { return false; }
    mSeq.Accept(*lSeq);
    mTimestamp.Accept(*lTimestamp);

    mRun.mJitter.Update(Transit(aArrival, lTimestamp->mNumber));
    mRun.mLastRTPArrival = aArrival;
    mRun.mPacketsReceived += 1;
    if (lSeq->mIsOlder) { mRun.mPacketsReordered += 1; }
    mRun.mBytes += aSize;

    // Too late: what follows it in both orders has been handed out. It has counted as received all the same.
    const long long lTimestampExt = static_cast<long long>(lTimestamp->mExtended);
    const bool lIsEarlier = lSeq->mExtended <= mRun.mPoppedIndex && lTimestampExt < mRun.mPoppedTimestamp;
    if (mRun.mHasPopped && lIsEarlier) {
        mRun.mPacketsLate += 1;
        return false;
    }
    return Enqueue(aData, aSize, aLengths, lSeq->mExtended, lTimestampExt);
}

bool Stack::Enqueue(const Byte* aData, UInt aSize, const Packets::RTP::Lengths& aLengths, UInt aIndex,
                    long long aTimestamp) {
    Queue& lQueue = mRun.mQueue;
    auto lAt = lQueue.end();
    if (!lQueue.empty() && aIndex <= lQueue.back()->SeqNumberExt()) {
        // Only a duplicate behind the front is recognised; one of the front packet itself goes before it.
        const auto lLess = [](UInt aLeft, const auto& aRight) { return aLeft < aRight->SeqNumberExt(); };
        const bool lGoesFirst = aIndex <= lQueue.front()->SeqNumberExt();
        lAt = lGoesFirst ? lQueue.begin() : std::upper_bound(lQueue.begin(), lQueue.end(), aIndex, lLess);
        if (!lGoesFirst && aIndex == (*std::prev(lAt))->SeqNumberExt()) {
            mRun.mPacketsDuplicate += 1;
            return false;
        }
    }
    if (!mHeld.Takes()) {
        mRun.mPacketsDropped += 1;
        mHeld.ReportDrop();
        return false;
    }
    auto lPacket = Packets::StoredRTP::Make(*mArena, aData, aSize, aLengths, aIndex, aTimestamp);
    const std::size_t lBytes = Occupied(*lPacket);
    lQueue.insert(lAt, std::move(lPacket));
    mHeld.Add(lBytes);
    return true;
}

UInt Stack::Transit(Time aArrival, UInt aTimestamp) const {
    return static_cast<UInt>(aArrival.Scale(mTimeRes, 1)) - aTimestamp;
}

bool Stack::HandleRTCP(const unsigned char* aData, unsigned int aSize, Time aArrival) {
    if (aSize < kMinCompound || 2 != Version(aData)) { return false; }
    if (kSR != aData[1] && kRR != aData[1]) { return false; }
    if (BigEndian::Read32(aData + 4) != mExpectedSSRC || !IsCompound(aData, aSize)) { return false; }

    mRun.mRTCPPacketsReceived += 1;
    mRun.mLastRTCPArrival = aArrival;
    UInt lLength = 0;
    for (UInt lAt = 0; lAt < aSize; lAt += lLength) {
        lLength = RTCPLength(aData + lAt);
        switch (aData[lAt + 1]) {
            case kSR: HandleRTCP_SR(aData + lAt, lLength, aArrival); break;
            case kRR: HandleRTCP_RR(aData + lAt, lLength); break;
            case kSDES: HandleRTCP_SDES(aData + lAt, lLength); break;
            case kBYE: HandleRTCP_BYE(aData + lAt, lLength); break;
            case kAPP: HandleRTCP_APP(aData + lAt, lLength); break;
            default: HandleRTCP_UDEF(aData + lAt, lLength); break;
        }
    }
    return true;
}

void Stack::HandleRTCP_SR(const Byte* aData, UInt aSize, Time aArrival) {
    if (aSize < kSenderReport) { return; }
    const std::uint64_t lSeconds = BigEndian::Read32(aData + 8);
    const UInt lFraction = BigEndian::Read32(aData + 12);
    mRun.mClock.Update(lSeconds << 32 | lFraction, BigEndian::Read32(aData + 16), aArrival, mTimeRes);
}

void Stack::HandleRTCP_BYE(const Byte* /*aData*/, UInt /*aSize*/) {
    mRun.mEnd = Reception::End::kBye;
}

// Nothing in these is of use here.
void Stack::HandleRTCP_RR(const Byte* /*aData*/, UInt /*aSize*/) {}
void Stack::HandleRTCP_SDES(const Byte* /*aData*/, UInt /*aSize*/) {}
void Stack::HandleRTCP_APP(const Byte* /*aData*/, UInt /*aSize*/) {}
void Stack::HandleRTCP_UDEF(const Byte* /*aData*/, UInt /*aSize*/) {}

unsigned int Stack::AssembleRTCP_RR(unsigned char* aBuf, unsigned int aSize, Time aNow) {
    if (aSize < ReceiverReport::kSize || 0 == mRun.mPacketsReceived) { return 0; }
    ReceiverReport lReport;
    lReport.mLocalSSRC = mLocalSSRC;
    lReport.mSourceSSRC = mExpectedSSRC;
    lReport.mFractionLost = mRun.mLosses.Advance(mSeq.Expected(), mRun.mPacketsReceived);
    lReport.mCumulativeLost = CumulativeLost(mSeq.Expected(), mRun.mPacketsReceived);
    lReport.mSeqCycles = mSeq.Cycles();
    lReport.mHighestSeq = mSeq.Highest();
    lReport.mJitter = mRun.mJitter.Get();
    lReport.mLastSR = mRun.mClock.ShortNTPTime();
    lReport.mDelaySinceLastSR = mRun.mClock.Age(aNow);
    lReport.Write(aBuf);
    return ReceiverReport::kSize;
}

SharedPtr<Packets::RTP, SharedObject> Stack::Pop() {
    SharedPtr<Packets::RTP, SharedObject> lPacket;
    if (Empty()) { return lPacket; }
    lPacket.Swap(mRun.mQueue.front());
    mRun.mQueue.pop_front();
    mHeld.Remove(Occupied(*lPacket));
    mRun.mHasPopped = true;
    mRun.mPoppedIndex = lPacket->SeqNumberExt();
    mRun.mPoppedTimestamp = lPacket->TimestampExt();
    lPacket->SetPlayTime(AdjustedCurrentTime());
    return lPacket;
}

Time Stack::SizeInTime() const {
    if (Empty()) { return Time(0); }
    const std::uint64_t lFirst = static_cast<std::uint64_t>(mRun.mQueue.front()->TimestampExt());
    const std::uint64_t lSpan = static_cast<std::uint64_t>(LatestTimestamp()) - lFirst;
    return PlayTime(static_cast<long long>(lSpan));
}

Time Stack::CurrentTime() const {
    return PlayTime(mRun.mPoppedTimestamp);
}

Time Stack::LatestTime() const {
    return PlayTime(LatestTimestamp());
}

Time Stack::AdjustedCurrentTime() const {
    return AdjustedPlayTime(mRun.mPoppedTimestamp);
}

Time Stack::AdjustedLatestTime() const {
    return AdjustedPlayTime(LatestTimestamp());
}

long long Stack::LatestTimestamp() const {
    return Empty() ? mRun.mPoppedTimestamp : mRun.mQueue.back()->TimestampExt();
}

Time Stack::AdjustedPlayTime(long long aTimestamp) const {
    const std::uint64_t lAdjustment = static_cast<std::uint64_t>(mRun.mAdjustment);
    const std::uint64_t lAdjusted = static_cast<std::uint64_t>(aTimestamp) + lAdjustment;
    return PlayTime(static_cast<long long>(lAdjusted));
}

UInt Stack::Ended(Time aNow) {
    const Time lNone(0);
    if (Reception::End::kRunning == mRun.mEnd) {
        const Time lElapsed = lNone == mRun.mLastRTPArrival ? lNone : aNow - mRun.mLastRTPArrival;
        const bool lHasReceived = 0 != mRun.mPacketsReceived || 0 != mRun.mRTCPPacketsReceived;
        if (lHasReceived && lNone != mEndTime && LatestTime() + lElapsed >= mEndTime) {
            mRun.mEnd = Reception::End::kEndTime;
        } else if (lNone != mTimeoutTime && lElapsed > mTimeoutTime && aNow - mRun.mLastRTCPArrival > mTimeoutTime) {
            mRun.mEnd = Reception::End::kTimedOut;
        }
    }
    return static_cast<UInt>(mRun.mEnd);
}

void Stack::SetBeginTime(const Time& aTime) {
    mTimestamp.SetOffset(static_cast<std::uint64_t>(aTime.Scale(mTimeRes, 1)));
}

void Stack::Preflight(Time aNow) {
    mRun.mLastRTPArrival = mRun.mLastRTCPArrival = aNow;
    mRun.mReceivedAtPreflight = mRun.mPacketsReceived;
}

void Stack::Flush(Time aNow) {
    mHeld.Clear();
    mRun = Run();
    mLearnsSeq = mLearnsTime = mMayBeginEarlier = false;
    mSeq.Restart();
    mTimestamp.Restart();
    Preflight(aNow);
}

void Stack::Reset() {
    mExpectedPT = 0;
    mExpectedSSRC = mLocalSSRC = mTimeRes = 0;
    mSSRCIsHint = false;
    mStep = 0;
    mEndTime = mTimeoutTime = Time(0);
    mSeq = SequenceExtension();
    mTimestamp = TimestampExtension();
    Flush(Time(0));
}

void Stack::Synchronize(const Stack& aOther) {
    if (this == &aOther || !mRun.mClock.IsKnown() || !aOther.mRun.mClock.IsKnown()) { return; }
    if (!HasTimeBase() || !aOther.HasTimeBase()) { return; }
    const std::uint64_t lByRTP = NTPSinceTimeBase() - aOther.NTPSinceTimeBase();
    const std::uint64_t lByNTP = mRun.mClock.NTPTime() - aOther.mRun.mClock.NTPTime();
    const SInt lShift = ToRTPRes(static_cast<long long>(lByRTP - lByNTP), mTimeRes);
    mRun.mAdjustment = static_cast<SInt>(static_cast<UInt>(mRun.mAdjustment) + static_cast<UInt>(lShift));
}

std::uint64_t Stack::NTPSinceTimeBase() const {
    const std::uint64_t lTicks = mRun.mClock.RTPTimeExt() - static_cast<std::uint64_t>(GetAdjustedTimeBase());
    return static_cast<std::uint64_t>(ToNTPRes(static_cast<long long>(lTicks), mTimeRes));
}

Reception Stack::GetReception() const {
    Reception lFigures;
    lFigures.mPacketsReceived = mRun.mPacketsReceived;
    lFigures.mPacketsLost = static_cast<SInt>(Expected() - mRun.mPacketsReceived);
    lFigures.mPacketsReordered = mRun.mPacketsReordered;
    lFigures.mPacketsLate = mRun.mPacketsLate;
    lFigures.mPacketsDuplicate = mRun.mPacketsDuplicate;
    lFigures.mPacketsDropped = mRun.mPacketsDropped;
    lFigures.mBytes = mRun.mBytes;
    lFigures.mJitter = Time(mRun.mJitter.Get(), mTimeRes);
    lFigures.mCurrentTime = AdjustedCurrentTime();
    lFigures.mBufferedTime = SizeInTime();
    lFigures.mEnd = mRun.mEnd;
    return lFigures;
}

}  // namespace Player::RTP
