#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

#include "Packets/Arena.hpp"
#include "Packets/RTP.hpp"
#include "Player/Ptr.hpp"
#include "Player/Reception.hpp"
#include "Player/Time.hpp"
#include "Player/Types.hpp"
#include "RTP/Backlog.hpp"
#include "RTP/Extension.hpp"
#include "RTP/Jitter.hpp"
#include "RTP/NTPTime.hpp"
#include "RTP/ReceiverReport.hpp"
#include "RTP/SenderClock.hpp"

namespace Player::RTP {

/// The reception of one track (RFC 3550): checks RTP and RTCP packets, extends sequence numbers and
/// timestamps to monotonic ones, queues packets in order, keeps statistics, assembles receiver reports,
/// maps RTP time to the server's NTP clock and knows when the track has ended.
/// No sockets, no clock: arrival times come in as arguments. Nothing here throws; a packet that is bad or
/// unwanted is dropped and the call returns false.
class Stack {
public:
    using Queue = std::deque<SharedPtr<Packets::RTP, SharedObject>>;

    // Configuration. 0 stands for "any, learnt from the first packet" where a packet has it.
    void SetExpectedPT(unsigned char aPT) { mExpectedPT = aPT; }
    void SetExpectedSSRC(unsigned int aSSRC) {
        mExpectedSSRC = aSSRC;
        mSSRCIsHint = false;
    }
    /// A sender that may be wrong: its reports count until the first packet shows who sends media.
    void SuggestSSRC(unsigned int aSSRC) {
        mExpectedSSRC = aSSRC;
        mSSRCIsHint = true;
    }
    /// Our own identity in receiver reports.
    void SetLocalSSRC(unsigned int aSSRC) { mLocalSSRC = aSSRC; }
    /// The clock rate in Hz; 0 makes all times zero.
    void SetTimeRes(unsigned int aTimeRes) { mTimeRes = aTimeRes; }
    /// First sequence number of the play range; indices continue from where they are.
    /// They begin `aStep` after the last one; without a step the first packet counts as that one. With a step the range
    /// may begin a few numbers earlier than that.
    void SetSeqBase(unsigned short aSeq, UInt aStep = 0);
    /// RTP timestamp at the start of the play range; play times go on from where they are. What is numbered within the
    /// range may be up to `aLead` before it.
    void SetTimeBase(unsigned int aTimestamp, UInt aLead = 0) {
        mTimestamp.SetBase(aTimestamp);
        mTimestamp.Admit(aLead);
        mLearnsTime = false;
    }
    /// The next packet says where both begin, unless they are set before; its number then follows by `aStep`.
    void LearnAnew(UInt aStep) {
        mLearnsSeq = mLearnsTime = 0 != mRun.mPacketsReceived;
        mStep = aStep;
    }
    /// Play time of the packet whose timestamp is the time base.
    void SetBeginTime(const Time& aTime);
    /// Where the track ends; 0 for none.
    void SetEndTime(const Time& aTime) { mEndTime = aTime; }
    /// Silence after which the track has timed out; 0 for none.
    void SetTimeoutTime(const Time& aTime) { mTimeoutTime = aTime; }
    /// The account that the tracks of a session share, each with all that its packets occupy; a stack begins with
    /// one of its own. For a stack that holds nothing.
    void SetBacklog(const SharedPtr<Backlog, SharedObject>& aBacklog) { mHeld = BacklogShare(aBacklog); }

    /// Takes an RTP packet. True when it was queued.
    bool HandleRTP(const unsigned char* aData, unsigned int aSize, Time aArrival);
    /// Takes a compound RTCP packet. True when it was accepted.
    bool HandleRTCP(const unsigned char* aData, unsigned int aSize, Time aArrival);
    /// Writes a receiver report of 32 bytes; 0 when it does not fit or nothing was received yet.
    unsigned int AssembleRTCP_RR(unsigned char* aBuf, unsigned int aSize, Time aNow);

    /// The oldest packet, with its play time set; null when there is none.
    SharedPtr<Packets::RTP, SharedObject> Pop();
    bool Empty() const { return mRun.mQueue.empty(); }
    /// The tracks of the session hold all that they may.
    bool Full() const { return mHeld.Full(); }
    /// Whether more is to be read for this track: what is left in its socket need not be dropped here.
    bool WantsMore() const { return mHeld.Wants(); }
    /// From the oldest to the newest packet queued.
    Time SizeInTime() const;
    /// Play time of the packet popped last.
    Time CurrentTime() const;
    /// Play time of the newest packet.
    Time LatestTime() const;
    // The same on the time line that `Synchronize` shares between tracks.
    Time AdjustedCurrentTime() const;
    Time AdjustedLatestTime() const;

    /// 0 running, 1 timed out, 2 end time reached, 3 BYE received. Sticky until a flush.
    UInt Ended(Time aNow);

    /// Time-outs count from now.
    void Preflight(Time aNow);
    /// Drops all that was received and learnt from reports; the configuration stays.
    void Flush(Time aNow);
    /// Back to the state after construction, but for the account of bytes.
    void Reset();
    /// Shifts this track's play times so that they match `aOther`'s by the server's clock. Does nothing
    /// until both have had a sender report and know where their time begins.
    void Synchronize(const Stack& aOther);

    UInt GetTimeRes() const { return mTimeRes; }
    /// 32.32 fixed point; 0 before the first sender report.
    unsigned long long GetLastNTPTime() const { return mRun.mClock.NTPTime(); }
    /// RTP time of the last sender report, wraps of these counted.
    unsigned long long GetLastRTPTimeExt() const { return mRun.mClock.RTPTimeExt(); }
    long long GetAdjustedTimeBase() const { return static_cast<long long>(mTimestamp.Base()) + mRun.mAdjustment; }
    /// Figures for tools.
    Reception GetReception() const;

private:
    /// All that a flush forgets.
    struct Run {
        UInt mPacketsReceived = 0;
        /// What was expected before the play range at hand, and received for it.
        UInt mExpectedBefore = 0;
        UInt mReceivedBefore = 0;
        UInt mReceivedAtPreflight = 0;
        UInt mPacketsReordered = 0;
        UInt mPacketsLate = 0;
        UInt mPacketsDuplicate = 0;
        UInt mPacketsDropped = 0;
        std::uint64_t mBytes = 0;
        UInt mRTCPPacketsReceived = 0;
        Time mLastRTPArrival;
        Time mLastRTCPArrival;
        Jitter mJitter;
        LossInterval mLosses;
        SenderClock mClock;
        /// Timestamp units that `Synchronize` adds to play times; wraps.
        SInt mAdjustment = 0;
        Reception::End mEnd = Reception::End::kRunning;
        /// Ascending by index; two can be equal.
        Queue mQueue;
        bool mHasPopped = false;
        UInt mPoppedIndex = 0;
        long long mPoppedTimestamp = 0;
    };

    void LearnFrom(const Byte* aData, Time aArrival);
    /// Some servers number the first packet of a range before the one that they name.
    void BeginEarlier(unsigned short aSeq);
    bool TakeRTP(const Byte* aData, UInt aSize, const Packets::RTP::Lengths& aLengths, Time aArrival);
    bool Enqueue(const Byte* aData, UInt aSize, const Packets::RTP::Lengths& aLengths, UInt aIndex,
                 long long aTimestamp);
    // One packet of a compound each.
    void HandleRTCP_SR(const Byte* aData, UInt aSize, Time aArrival);
    static void HandleRTCP_RR(const Byte* aData, UInt aSize);
    static void HandleRTCP_SDES(const Byte* aData, UInt aSize);
    void HandleRTCP_BYE(const Byte* aData, UInt aSize);
    static void HandleRTCP_APP(const Byte* aData, UInt aSize);
    static void HandleRTCP_UDEF(const Byte* aData, UInt aSize);

    /// By sequence numbers, since the flush.
    UInt Expected() const;
    /// The arrival in timestamp units less the timestamp, modulo 2^32.
    UInt Transit(Time aArrival, UInt aTimestamp) const;
    long long LatestTimestamp() const;
    Time PlayTime(long long aTimestamp) const { return Time(aTimestamp, mTimeRes); }
    Time AdjustedPlayTime(long long aTimestamp) const;
    bool HasTimeBase() const { return 0 != mTimestamp.Base() || 0 != mRun.mPacketsReceived; }
    /// From the time base to the last sender report, 32.32 fixed point.
    std::uint64_t NTPSinceTimeBase() const;
    /// Whether the first packet of a run decides who the sender is.
    bool LearnsSSRC() const { return 0 == mExpectedSSRC || (mSSRCIsHint && 0 == mRun.mPacketsReceived); }

    unsigned char mExpectedPT = 0;
    UInt mExpectedSSRC = 0;
    bool mSSRCIsHint = false;
    UInt mLocalSSRC = 0;
    UInt mTimeRes = 0;
    Time mEndTime;
    Time mTimeoutTime;
    SequenceExtension mSeq;
    TimestampExtension mTimestamp;
    bool mLearnsSeq = false;
    /// The next packet may bear a number before the base.
    bool mMayBeginEarlier = false;
    bool mLearnsTime = false;
    UInt mStep = 0;
    /// Where packets lie. A copy of the stack shares it, as it shares the packets.
    SharedPtr<Packets::Arena, SharedObject> mArena{new Packets::Arena};
    Run mRun;
    /// What is queued.
    BacklogShare mHeld;
};

}  // namespace Player::RTP
