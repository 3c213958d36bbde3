#pragma once

#include <deque>

#include "Packets/RTP.hpp"
#include "Player/Ptr.hpp"
#include "Player/Reception.hpp"
#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player::RTP {

/// The reception of one track (RFC 3550): checks RTP and RTCP packets, extends sequence numbers and
/// timestamps to monotonic ones, queues packets in order, keeps statistics, assembles receiver reports,
/// maps RTP time to the server's NTP clock and knows when the track has ended.
/// No sockets, no clock: arrival times come in as arguments. Nothing here throws; a packet that is bad or
/// unwanted is dropped and the call returns false.
class Stack {
public:
    using Queue = std::deque<SharedPtr<Packets::RTP, SharedObject>>;

    // Configuration. 0 stands for "any, learnt from the first packet" where a packet can tell.
    void SetExpectedPT(unsigned char aPT) { mExpectedPT = aPT; }
    void SetExpectedSSRC(unsigned int aSSRC) { mExpectedSSRC = aSSRC; }
    /// Our own identity in receiver reports.
    void SetLocalSSRC(unsigned int aSSRC) { mLocalSSRC = aSSRC; }
    /// The clock rate in Hz; 0 makes all times zero.
    void SetTimeRes(unsigned int aTimeRes) { mTimeRes = aTimeRes; }
    /// First sequence number of the play range; indices go on from where they are.
    void SetSeqBase(unsigned short aSeq);
    /// RTP timestamp at the start of the play range; play times go on from where they are.
    void SetTimeBase(unsigned int aTimestamp);
    /// Play time of the packet whose timestamp is the time base.
    void SetBeginTime(const Time& aTime);
    /// Where the track ends; 0 for none.
    void SetEndTime(const Time& aTime) { mEndTime = aTime; }
    /// Silence after which the track has timed out; 0 for none.
    void SetTimeoutTime(const Time& aTime) { mTimeoutTime = aTime; }

    /// Takes an RTP packet. True when it was queued.
    bool HandleRTP(const unsigned char* aData, unsigned int aSize, Time aArrival);
    /// Takes a compound RTCP packet. True when it was accepted.
    bool HandleRTCP(const unsigned char* aData, unsigned int aSize, Time aArrival);
    /// Writes a receiver report of 32 bytes; 0 when it does not fit or nothing was received yet.
    unsigned int AssembleRTCP_RR(unsigned char* aBuf, unsigned int aSize, Time aNow);

    /// The oldest packet, with its play time set; null when there is none.
    SharedPtr<Packets::RTP, SharedObject> Pop();
    bool Empty() const { return mQueue.empty(); }
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
    /// Back to the state after construction.
    void Reset();
    /// Shifts this track's play times so that they match `aOther`'s by the server's clock. Does nothing
    /// until both have had a sender report and know where their time begins.
    void Synchronize(const Stack& aOther);

    UInt GetTimeRes() const { return mTimeRes; }
    /// 32.32 fixed point; 0 before the first sender report.
    unsigned long long GetLastNTPTime() const { return mLastNTPTime; }
    unsigned long long GetLastRTPTimeExt() const;
    long long GetAdjustedTimeBase() const { return static_cast<long long>(mTimeBase) + mAdjustment; }
    /// Figures for tools.
    Reception GetReception() const;

private:
    unsigned char mExpectedPT = 0;
    UInt mExpectedSSRC = 0;
    UInt mLocalSSRC = 0;
    UInt mTimeRes = 0;
    unsigned short mSeqBase = 0;
    UInt mTimeBase = 0;
    Time mEndTime;
    Time mTimeoutTime;
    unsigned long long mLastNTPTime = 0;
    SInt mAdjustment = 0;
    Queue mQueue;
};

}  // namespace Player::RTP
