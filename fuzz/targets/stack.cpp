// The reception of one track: what it hands out it was given, once, in order; nothing that it queued is lost; packets
// in any order within a window come out in the order of their numbers, across all wraps.

#include "RTP/Stack.hpp"

#include <algorithm>
#include <list>

#include "support/Target.hpp"

namespace Fuzz {

/// Each packet is kept here, too, and is an object there, in a block that holds more of them; each track has its own.
const Bounds kBounds{65536 + 2 * Player::Packets::Arena::kBlockSize, 512};

namespace {

using Player::Time;
using Player::RTP::Stack;
using PacketPtr = Player::SharedPtr<Player::Packets::RTP, Player::SharedObject>;

constexpr Player::UInt kReportSize = 32;

void Put(Bytes& aOut, std::uint32_t aValue, unsigned aBytes) {
    while (0 != aBytes--) {
        aOut.push_back(static_cast<std::uint8_t>(aValue >> 8 * aBytes));
    }
}

/// What the reception may hand out again.
struct Known {
    std::uint16_t mSeq = 0;
    std::uint32_t mTimestamp = 0;
    bool mMarker = false;
    Bytes mPayload;

    bool operator==(const Known& aOther) const {
        return mSeq == aOther.mSeq && mTimestamp == aOther.mTimestamp && mMarker == aOther.mMarker &&
               mPayload == aOther.mPayload;
    }
};

Known Popped(const Player::Packets::RTP& aPacket) {
    return {aPacket.SeqNumber(), aPacket.Timestamp(), aPacket.HasMarker(), Bytes(aPacket.Begin(), aPacket.End())};
}

/// RFC 3550 section 5.1, read anew. The payload is empty for what is no RTP packet.
Known Read(const Bytes& aDatagram) {
    Known lKnown;
    if (aDatagram.size() < 12 || 2 != aDatagram[0] >> 6) { return lKnown; }
    Input lHeader(aDatagram.data() + 2, aDatagram.size() - 2);
    lKnown.mSeq = static_cast<std::uint16_t>(lHeader.Word16());
    lKnown.mTimestamp = lHeader.Word32();
    lKnown.mMarker = 0 != (aDatagram[1] & 0x80);
    std::size_t lBegin = 12 + 4U * (aDatagram[0] & 0x0F);
    if (0 != (aDatagram[0] & 0x10)) {
        if (aDatagram.size() < lBegin + 4) { return lKnown; }
        lBegin += 4 * (aDatagram[lBegin + 2] * 256U + aDatagram[lBegin + 3] + 1U);
    }
    const std::size_t lPadding = 0 != (aDatagram[0] & 0x20) ? aDatagram.back() : 0;
    if (lBegin + lPadding >= aDatagram.size()) { return lKnown; }
    lKnown.mPayload.assign(aDatagram.begin() + static_cast<std::ptrdiff_t>(lBegin),
                           aDatagram.end() - static_cast<std::ptrdiff_t>(lPadding));
    return lKnown;
}

/// One track and what it must still hold.
class Track {
public:
    void TakeRTP(Input& aInput, Time aNow) {
        const unsigned lFlags = aInput.Byte();
        Bytes lDatagram;
        if (0 != (lFlags & 1)) {
            lDatagram = aInput.Chunk();
        } else {
            mSeq = static_cast<std::uint32_t>(mSeq + Step(aInput));
            mTimestamp = static_cast<std::uint32_t>(mTimestamp + 100 * Step(aInput));
            if (0 != (lFlags & 2)) { mSeq = aInput.Word16(); }
            if (0 != (lFlags & 4)) { mTimestamp = aInput.Word32(); }
            lDatagram = {0x80, static_cast<std::uint8_t>(96 | (lFlags & 0x80))};
            Put(lDatagram, mSeq, 2);
            Put(lDatagram, mTimestamp, 4);
            Put(lDatagram, 0x11223344, 4);
            Put(lDatagram, ++mSerial, 4);
        }
        const Known lKnown = Read(lDatagram);
        const Player::Reception lBefore = mStack.GetReception();
        const bool lTaken = mStack.HandleRTP(lDatagram.data(), static_cast<Player::UInt>(lDatagram.size()), aNow);
        const Player::Reception lAfter = mStack.GetReception();
        FUZZ_CHECK(!lTaken || !lKnown.mPayload.empty());
        const bool lCounts = lBefore.mPacketsReceived != lAfter.mPacketsReceived;
        FUZZ_CHECK(lAfter.mPacketsReceived == lBefore.mPacketsReceived + (lCounts ? 1 : 0));
        FUZZ_CHECK(lAfter.mBytes == lBefore.mBytes + (lCounts ? lDatagram.size() : 0));
        FUZZ_CHECK(lCounts || !lTaken);
        if (lTaken) { mHeld.push_back(lKnown); }
    }

    void TakeRTCP(Input& aInput, Time aNow) {
        Bytes lCompound;
        bool lSaysGoodbye = false;
        const unsigned lFlags = aInput.Byte();
        if (0 != (lFlags & 1)) {
            lCompound = aInput.Chunk();
        } else {
            const std::uint32_t lSsrc = 0 != (lFlags & 2) ? aInput.Word32() : 0x11223344;
            if (0 != (lFlags & 4)) {
                lCompound = {0x80, 200, 0, 6};
                Put(lCompound, lSsrc, 4);
                Put(lCompound, aInput.Word32(), 4);
                Put(lCompound, aInput.Word32(), 4);
                Put(lCompound, aInput.Word32(), 4);
                Put(lCompound, 0, 4);
                Put(lCompound, 0, 4);
            } else {
                lCompound = {0x80, 201, 0, 1};
                Put(lCompound, lSsrc, 4);
            }
            lSaysGoodbye = 0 != (lFlags & 8);
            if (lSaysGoodbye) {
                Put(lCompound, 0x81CB0001, 4);
                Put(lCompound, lSsrc, 4);
            }
        }
        const bool lTaken = mStack.HandleRTCP(lCompound.data(), static_cast<Player::UInt>(lCompound.size()), aNow);
        FUZZ_CHECK(!lTaken || (lCompound.size() >= 8 && 0 == lCompound.size() % 4));
        if (lTaken && lSaysGoodbye) { FUZZ_CHECK(3 == mStack.Ended(aNow)); }
    }

    void Pop() {
        const bool lIsEmpty = mStack.Empty();
        FUZZ_CHECK(lIsEmpty == mHeld.empty());
        const PacketPtr lPacket = mStack.Pop();
        FUZZ_CHECK(lIsEmpty == !lPacket);
        if (!lPacket) { return; }
        const auto lHeld = std::find(mHeld.begin(), mHeld.end(), Popped(*lPacket));
        FUZZ_CHECK(lHeld != mHeld.end());
        mHeld.erase(lHeld);
    }

    /// Nothing comes in between: from the lowest number to the highest.
    void Drain() {
        std::uint32_t lLast = 0;
        while (!mStack.Empty()) {
            // Looked at before it goes: what is popped is checked there.
            const std::size_t lHeld = mHeld.size();
            const PacketPtr lPacket = mStack.Pop();
            FUZZ_CHECK(lLast <= lPacket->SeqNumberExt());
            lLast = lPacket->SeqNumberExt();
            const auto lFound = std::find(mHeld.begin(), mHeld.end(), Popped(*lPacket));
            FUZZ_CHECK(lFound != mHeld.end());
            mHeld.erase(lFound);
            FUZZ_CHECK(lHeld == mHeld.size() + 1);
        }
        FUZZ_CHECK(mHeld.empty());
    }

    void Report(Input& aInput, Time aNow) {
        constexpr std::uint8_t kUntouched = 0xA5;
        Bytes lReport(aInput.Below(64), kUntouched);
        const bool lIsDue = lReport.size() >= kReportSize && 0 != mStack.GetReception().mPacketsReceived;
        const Player::UInt lSize =
            mStack.AssembleRTCP_RR(lReport.data(), static_cast<Player::UInt>(lReport.size()), aNow);
        FUZZ_CHECK(lSize == (lIsDue ? kReportSize : 0));
        for (std::size_t lIdx = lSize; lIdx < lReport.size(); ++lIdx) {
            FUZZ_CHECK(kUntouched == lReport[lIdx]);
        }
        if (lIsDue) { FUZZ_CHECK(0x81 == lReport[0] && 201 == lReport[1] && 0 == lReport[2] && 7 == lReport[3]); }
    }

    void Ask(Time aNow) {
        const Player::UInt lEnded = mStack.Ended(aNow);
        // What has ended stays so.
        FUZZ_CHECK(lEnded <= 3 && (0 == lEnded || lEnded == mStack.Ended(Time(0))));
        FUZZ_CHECK(static_cast<Player::UInt>(mStack.GetReception().mEnd) == lEnded);
        if (mStack.Empty()) { FUZZ_CHECK(Time(0) == mStack.SizeInTime()); }
        mStack.LatestTime();
        mStack.AdjustedLatestTime();
        mStack.AdjustedCurrentTime();
    }

    void Flush(Time aNow) {
        mStack.Flush(aNow);
        mHeld.clear();
        FUZZ_CHECK(mStack.Empty() && 0 == mStack.Ended(aNow) && 0 == mStack.GetReception().mPacketsReceived);
    }

    void Set(Input& aInput) {
        switch (aInput.Below(9)) {
            case 0: return mStack.SetExpectedPT(static_cast<std::uint8_t>(aInput.Byte()));
            case 1: return mStack.SetExpectedSSRC(aInput.Word32());
            case 2: return mStack.SetTimeRes(aInput.Word32());
            case 3: return mStack.SetTimeRes(90000);
            case 4: return SetSeqBase(static_cast<std::uint16_t>(aInput.Word16()));
            case 5: return SetTimeBase(aInput.Word32());
            case 6: return mStack.SetBeginTime(Time(aInput.Word32(), 1000));
            case 7: return mStack.SetEndTime(Time(aInput.Word32(), 1000));
            default: return mStack.SetTimeoutTime(Time(aInput.Word16(), 10));
        }
    }

    Stack mStack;

private:
    // One base in two is set as the modern profile sets it.
    void SetSeqBase(std::uint16_t aSeq) { mStack.SetSeqBase(aSeq, aSeq & 1U); }
    void SetTimeBase(std::uint32_t aTimestamp) { mStack.SetTimeBase(aTimestamp, 0 != (aTimestamp & 1) ? 90000 : 0); }

    static std::int64_t Step(Input& aInput) { return static_cast<std::int8_t>(aInput.Byte()); }

    std::list<Known> mHeld;
    std::uint32_t mSeq = 0;
    std::uint32_t mTimestamp = 0;
    std::uint32_t mSerial = 0;
};

void TakeAnything(Input& aInput) {
    Track lTracks[2];
    std::uint64_t lClock = std::uint64_t{1700000000} << 32;
    while (!aInput.Empty()) {
        const unsigned lStep = aInput.Byte();
        Track& lTrack = lTracks[lStep >> 7];
        const Time lNow(static_cast<long long>(lClock));
        switch (lStep % 16) {
            case 8: lTrack.TakeRTCP(aInput, lNow); break;
            case 9: lTrack.Pop(); break;
            case 10: lTrack.Report(aInput, lNow); break;
            case 11: lTrack.Set(aInput); break;
            case 12: lTrack.Ask(lNow); break;
            case 13: lTrack.mStack.Synchronize(lTracks[lStep >> 6 & 1].mStack); break;
            case 14: lClock += std::uint64_t{aInput.Word16()} << 26; break;
            case 15:
                if (0 == (lStep & 0x70)) {
                    lTrack.Flush(lNow);
                } else if (0x10 == (lStep & 0x70)) {
                    // The system's clock is set.
                    lClock = std::uint64_t{aInput.Word32()} << 32;
                } else {
                    lTrack.mStack.Preflight(lNow);
                }
                break;
            default: lTrack.TakeRTP(aInput, lNow); break;
        }
    }
    for (Track& lTrack : lTracks) {
        lTrack.Drain();
    }
}

/// A base of 0 stands for one that is not known: what comes before the first packet is dropped then.
bool IsKnownBase(std::uint32_t aSeq, std::uint32_t aTimestamp) {
    return 0 != aSeq && 0 != aTimestamp;
}

void KeepOrder(Input& aInput) {
    const std::uint16_t lSeqBase = static_cast<std::uint16_t>(aInput.Word16());
    const std::uint32_t lTimeBase = aInput.Word32();
    const std::uint32_t lStep = aInput.Word16();
    if (!IsKnownBase(lSeqBase, lTimeBase)) { return; }
    std::vector<unsigned> lOrder;
    const Bytes lShuffle = aInput.Rest();
    for (unsigned lIdx = 0; lIdx < lShuffle.size(); ++lIdx) {
        const std::size_t lBack = std::min<std::size_t>(lShuffle[lIdx] % 64, lOrder.size());
        lOrder.insert(lOrder.end() - static_cast<std::ptrdiff_t>(lBack), lIdx);
    }

    Stack lStack;
    lStack.SetTimeRes(8000);
    lStack.SetSeqBase(lSeqBase);
    lStack.SetTimeBase(lTimeBase);
    lStack.Flush(Time(0));
    for (const unsigned lIdx : lOrder) {
        Bytes lDatagram = {0x80, 96};
        Put(lDatagram, lSeqBase + lIdx, 2);
        Put(lDatagram, lTimeBase + lIdx * lStep, 4);
        Put(lDatagram, 7, 4);
        Put(lDatagram, lIdx, 4);
        FUZZ_CHECK(lStack.HandleRTP(lDatagram.data(), static_cast<Player::UInt>(lDatagram.size()), Time(0)));
    }
    for (unsigned lIdx = 0; lIdx < lOrder.size(); ++lIdx) {
        const PacketPtr lPacket = lStack.Pop();
        FUZZ_CHECK(lPacket && lIdx == lPacket->SeqNumberExt());
        FUZZ_CHECK(static_cast<long long>(lIdx) * lStep == lPacket->TimestampExt());
        FUZZ_CHECK(Time(static_cast<long long>(lIdx) * lStep, 8000) == lPacket->PlayTime());
        Bytes lPayload;
        Put(lPayload, lIdx, 4);
        FUZZ_CHECK(lPayload == Bytes(lPacket->Begin(), lPacket->End()));
    }
    FUZZ_CHECK(lStack.Empty());
}

/// A track of this rate that has had a packet, and a sender report: `aElapsed` ticks behind its time base it was `aNTP`
/// at the server.
Stack ReportedTrack(std::uint32_t aRate, std::uint32_t aTimeBase, std::uint32_t aElapsed, std::uint64_t aNTP) {
    Stack lStack;
    lStack.SetTimeRes(aRate);
    lStack.SetTimeBase(aTimeBase);
    lStack.Flush(Time(0));
    Bytes lPacket = {0x80, 96, 0, 1};
    Put(lPacket, aTimeBase, 4);
    Put(lPacket, 7, 4);
    Put(lPacket, 0, 4);
    FUZZ_CHECK(lStack.HandleRTP(lPacket.data(), static_cast<Player::UInt>(lPacket.size()), Time(0)));
    Bytes lReport = {0x80, 200, 0, 6};
    Put(lReport, 7, 4);
    Put(lReport, static_cast<std::uint32_t>(aNTP >> 32), 4);
    Put(lReport, static_cast<std::uint32_t>(aNTP), 4);
    Put(lReport, aTimeBase + aElapsed, 4);
    Put(lReport, 0, 4);
    Put(lReport, 0, 4);
    FUZZ_CHECK(lStack.HandleRTCP(lReport.data(), static_cast<Player::UInt>(lReport.size()), Time(0)));
    FUZZ_CHECK(aNTP == lStack.GetLastNTPTime());
    return lStack;
}

/// One track moves onto the time line of the other, which stays, and what has moved stays there.
void Settle(Input& aInput) {
    constexpr std::uint32_t kRates[] = {8000, 44100, 48000, 90000};
    const std::uint32_t lRate = kRates[aInput.Below(4)];
    const std::uint32_t lOtherRate = kRates[aInput.Below(4)];
    // Bases are known, and far enough from the wrap for the reports to be behind them.
    const std::uint32_t lTimeBase = 1 + aInput.Word32() / 2;
    const std::uint32_t lOtherBase = 1 + aInput.Word32() / 2;
    const std::uint64_t lNTP = std::uint64_t{0x80000000U + aInput.Word16()} << 32 | aInput.Word32();
    const std::uint64_t lLater = std::uint64_t{aInput.Word16()} << 22;
    Stack lStack = ReportedTrack(lRate, lTimeBase, aInput.Word32() % (100 * lRate), lNTP + lLater);
    Stack lOther = ReportedTrack(lOtherRate, lOtherBase, aInput.Word32() % (100 * lOtherRate), lNTP);

    const long long lOtherBefore = lOther.GetAdjustedTimeBase();
    lStack.Synchronize(lOther);
    const long long lMoved = lStack.GetAdjustedTimeBase();
    lStack.Synchronize(lOther);
    const long long lAgain = lStack.GetAdjustedTimeBase();
    FUZZ_CHECK(lAgain - lMoved <= 1 && lMoved - lAgain <= 1);
    lOther.Synchronize(lOther);
    FUZZ_CHECK(lOtherBefore == lOther.GetAdjustedTimeBase());
    // Play times move by what the base moved.
    const long long lShift = lAgain - lTimeBase;
    lStack.Pop();
    FUZZ_CHECK(Time(lShift, lRate) == lStack.AdjustedCurrentTime() && Time(0) == lStack.CurrentTime());
}

}  // namespace

void Run(Input& aInput) {
    switch (aInput.Below(4)) {
        case 1: return KeepOrder(aInput);
        case 3: return Settle(aInput);
        default: return TakeAnything(aInput);
    }
}

}  // namespace Fuzz
