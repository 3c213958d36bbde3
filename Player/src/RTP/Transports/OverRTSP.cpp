#include "RTP/Transports/OverRTSP.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "BigEndian.hpp"
#include "Player/Exception.hpp"
#include "Player/Mem.hpp"
#include "Player/Report.hpp"

namespace Player::RTP::Transports {

namespace {

/// '$', the channel, and the length in 16 bits.
constexpr UInt kFrameHeader = 4;

}  // namespace

TrackIdx OverRTSP::AddTrack() {
    return Add(ScopedPtr<RTSPTrack>(new RTSPTrack));
}

void OverRTSP::Reset() {
    RemoveAll();
}

void OverRTSP::SetInterLeavedChannelIdentifier(TrackIdx aIdx, const String& aChannels) {
    // A number that is too large stays one: cut to its low bits it would name a channel.
    constexpr long kNone = std::numeric_limits<int>::max();
    const long lChannel = std::strtol(aChannels.c_str(), nullptr, 10);
    At(aIdx).mChannelId = static_cast<int>(Util::Max(-kNone, Util::Min(lChannel, kNone)));
}

int OverRTSP::GetTrackByChannelId(int aChannel) const {
    for (const int lChannel : {aChannel, aChannel - 1}) {
        for (TrackIdx i = 0; i < Held().size(); ++i) {
            if (lChannel == At(i).mChannelId) { return static_cast<int>(i); }
        }
    }
    return -1;
}

bool OverRTSP::HandlePacketData(unsigned char aChannel, unsigned char* aData, unsigned short aSize) {
    const int lIdx = GetTrackByChannelId(aChannel);
    if (lIdx < 0) { return false; }
    const TrackIdx lTrack = static_cast<TrackIdx>(lIdx);
    if (0 == aChannel % 2) { return At(lTrack).mStack.HandleRTP(aData, aSize, Time::Now()); }
    HandleRTCP(lTrack, aData, aSize);
    return false;
}

void OverRTSP::HandleRTCP(TrackIdx aIdx, const Byte* aData, UInt aSize) {
    Byte lFrame[kFrameHeader + ReceiverReport::kSize];
    const UInt lSize = AnswerRTCP(At(aIdx), aData, aSize, lFrame + kFrameHeader, ReceiverReport::kSize);
    if (0 == lSize) { return; }
    lFrame[0] = '$';
    // By the track's index, not by the channel that the packet came on.
    lFrame[1] = static_cast<Byte>(aIdx + 1);
    BigEndian::Write16(lFrame + 2, lSize);
    try {
        mRTSPSession->Send_RR(lFrame, kFrameHeader + lSize);
    } catch (const NetworkErr& lError) {
        // The server does without this report; whoever reads next finds out about the connection.
        Report(__FILE__, __LINE__, Severity::Warning, "OverRTSP::HandleRTCP(): %s", lError.Message());
    }
}

bool OverRTSP::Receive() {
    try {
        const bool lHasRead = mRTSPSession->RecvInterleavedPackets();
        mFails = false;
        return lHasRead;
    } catch (const NetworkErr& lError) {
        // What is queued is still played, and the tracks time out. Whoever sends the next request connects anew.
        if (!mFails) {
            Report(__FILE__, __LINE__, Severity::Warning, "OverRTSP::Receive(): Nothing can be read: %s",
                   lError.Message());
        }
        mFails = true;
        return false;
    }
}

Time OverRTSP::GetBufferSizeInTime() const {
    Time lShortest = Time::Now();  // longer than any span of media
    for (const auto& lTrack : All()) {
        lShortest = Util::Min(lShortest, lTrack->mStack.SizeInTime());
    }
    return lShortest;
}

void OverRTSP::Preflight() {
    PLAYER_ASSERT(mRTSPSession);
}

bool OverRTSP::FillOrHave() {
    ReceiveForAny();
    return TrackTransport::FillOrHave();
}

bool OverRTSP::Produce() {
    ReceiveForAny();
    return TrackTransport::Produce();
}

void OverRTSP::ReceiveForAny() {
    const Time lNow = Time::Now();
    const auto lWants = [lNow](const auto& aTrack) { return aTrack->WantsMore(lNow); };
    if (std::any_of(All().begin(), All().end(), lWants)) { Receive(); }
}

bool OverRTSP::TakeIn(RTSPTrack& aTrack) {
    const Time lNow = Time::Now();
    if (!aTrack.WantsMore(lNow) || aTrack.NotifyEnd(lNow)) { return false; }
    return Receive() && !aTrack.mStack.Empty();
}

}  // namespace Player::RTP::Transports
