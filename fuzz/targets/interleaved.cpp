// Interleaved frames: cut into pieces of any sizes they give every track what it gets when each frame is handed over by
// itself, and frames on channels that nobody has are dropped.

#include "MediaSessions/RTSP/Connection.hpp"
#include "MediaSessions/RTSP/Messages.hpp"
#include "RTP/Transports/OverRTSP.hpp"
#include "support/Frames.hpp"
#include "support/Network.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{1 << 20, 512};

namespace {

using Player::Time;
using Player::RTP::Transports::OverRTSP;
using PacketPtr = Player::SharedPtr<Player::Packets::RTP, Player::SharedObject>;

struct Piece {
    unsigned mChannel;
    Bytes mPayload;
};

/// Channel and payload; no frame is beyond the limit.
std::vector<Piece> ReadFrames(Input& aInput) {
    std::vector<Piece> lFrames;
    while (!aInput.Empty()) {
        const unsigned lChannel = aInput.Byte();
        lFrames.push_back({lChannel, aInput.Take(aInput.Word16() % (kMostFrameBytes + 1))});
    }
    return lFrames;
}

void AddTracks(OverRTSP& aTransport, const std::string* aChannels, unsigned aTracks) {
    for (unsigned lIdx = 0; lIdx < aTracks; ++lIdx) {
        aTransport.AddTrack();
        aTransport.SetInterLeavedChannelIdentifier(lIdx, aChannels[lIdx]);
        aTransport.ModifyTrackRTPStack(lIdx).SetTimeRes(90000);
        aTransport.ModifyTrackRTPStack(lIdx).SetLocalSSRC(lIdx);
    }
}

/// Where frames that are handed over directly leave their reports.
class Answers final : public Player::RTP::Transports::InterleavedConnection {
public:
    bool RecvInterleavedPackets() override { return false; }
    int Send_RR(const void* aData, Player::UInt aSize) override {
        mSent.append(static_cast<const char*>(aData), aSize);
        return static_cast<int>(aSize);
    }
    std::string mSent;
};

void CheckEqual(OverRTSP& aA, OverRTSP& aB, unsigned aTrack, std::uint64_t& aDelivered) {
    const Player::Reception lA = aA.GetTrackRTPStack(aTrack).GetReception();
    const Player::Reception lB = aB.GetTrackRTPStack(aTrack).GetReception();
    FUZZ_CHECK(lA.mPacketsReceived == lB.mPacketsReceived && lA.mBytes == lB.mBytes);
    FUZZ_CHECK(lA.mPacketsLost == lB.mPacketsLost && lA.mJitter == lB.mJitter && lA.mEnd == lB.mEnd);
    aDelivered += lA.mBytes;
    for (;;) {
        const PacketPtr lPacketA = aA.ModifyTrackRTPStack(aTrack).Pop();
        const PacketPtr lPacketB = aB.ModifyTrackRTPStack(aTrack).Pop();
        FUZZ_CHECK(!lPacketA == !lPacketB);
        if (!lPacketA) { return; }
        FUZZ_CHECK(lPacketA->PlayTime() == lPacketB->PlayTime());
        FUZZ_CHECK(Bytes(lPacketA->Begin(), lPacketA->End()) == Bytes(lPacketB->Begin(), lPacketB->End()));
    }
}

}  // namespace

void Run(Input& aInput) {
    constexpr unsigned kTracks = 3;
    const bool lHasOddChannels = aInput.Flag();
    std::string lChannels[kTracks] = {"0-1", "2-3", "4-5"};
    if (lHasOddChannels) {
        for (std::string& lChannel : lChannels) {
            lChannel = std::to_string(aInput.Byte()) + "-" + std::to_string(aInput.Byte());
        }
    }
    const Bytes lSizes = aInput.Take(aInput.Below(16));
    const std::vector<Piece> lFrames = ReadFrames(aInput);

    Network lNetwork;
    Answers lAnswers;
    OverRTSP lDirect(&lAnswers);
    AddTracks(lDirect, lChannels, kTracks);
    Bytes lStream;
    std::size_t lSent = 0;
    for (const Piece& lFrame : lFrames) {
        Bytes lPayload = lFrame.mPayload;
        lDirect.HandlePacketData(static_cast<unsigned char>(lFrame.mChannel), lPayload.data(),
                                 static_cast<unsigned short>(lPayload.size()));
        const Bytes lBytes = Frame(lFrame.mChannel, lFrame.mPayload);
        lStream.insert(lStream.end(), lBytes.begin(), lBytes.end());
        lSent += lFrame.mPayload.size();
    }

    const Player::MediaSessions::Configuration lConfiguration;
    Player::MediaSessions::Connection lConnection(lConfiguration);
    Player::MediaSessions::Messages lMessages(lConnection);
    OverRTSP lTransport(&lMessages);
    AddTracks(lTransport, lChannels, kTracks);
    lMessages.SetFrameReceiver(&lTransport);
    lConnection.DoConnect("127.0.0.1");
    const std::vector<Bytes> lPieces = Cut(lStream, lSizes);
    lNetwork.Send(lPieces);
    // A read may take less than a piece, never nothing: after so many nothing is left.
    for (std::size_t lReads = 0; lReads <= lPieces.size() + lStream.size() / 1024 && !lNetwork.IsPlayed(); ++lReads) {
        // Both read; without chains nothing goes any further.
        FUZZ_CHECK(0 != lReads % 2 || !lTransport.Produce());
        lTransport.Receive();
    }
    FUZZ_CHECK(lNetwork.IsPlayed() && 0 == lConnection.Left());

    Time lShortest = lTransport.GetTrackRTPStack(0).SizeInTime();
    for (unsigned lIdx = 1; lIdx < kTracks; ++lIdx) {
        const Time lSpan = lTransport.GetTrackRTPStack(lIdx).SizeInTime();
        lShortest = lSpan < lShortest ? lSpan : lShortest;
    }
    FUZZ_CHECK(lShortest == lTransport.GetBufferSizeInTime() || lShortest > Time::Now());

    std::uint64_t lDelivered = 0;
    for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
        CheckEqual(lDirect, lTransport, lIdx, lDelivered);
    }
    FUZZ_CHECK(lDelivered <= lSent);
    // Once the server has closed its side no report goes out any more.
    FUZZ_CHECK(0 == lAnswers.mSent.compare(0, lNetwork.Sent().size(), lNetwork.Sent()));
}

}  // namespace Fuzz
