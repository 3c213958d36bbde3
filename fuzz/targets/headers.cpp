// The headers that say how a presentation is played: Session, Transport, RTP-Info and Range. Values that were written
// by hand, with others around them, are obeyed: the identifier comes back in every request, media of the announced
// channel, source and numbers is played at the announced time, and no other. Values of any kind do no harm.

#include <optional>

#include "Player/Exception.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/Dialogue.hpp"
#include "support/Frames.hpp"
#include "support/Network.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{kConnectionBytes, 1024};

namespace {

using Player::Time;

constexpr char kURL[] = "rtsp://127.0.0.1/clip";
constexpr unsigned kTracks = 2;

/// What ends a line can't be part of a value.
std::string WithoutLineEnds(const Bytes& aBytes) {
    std::string lText;
    for (const std::uint8_t lByte : aBytes) {
        if ('\r' != lByte && '\n' != lByte) { lText += static_cast<char>(lByte); }
    }
    return lText;
}

/// An element that stands beside those that count; it says nothing of its own about them.
std::string Bystander(Input& aInput) {
    std::string lText = WithoutLineEnds(aInput.Take(aInput.Below(16)));
    for (char& lCh : lText) {
        if (std::string::npos != std::string(";,=/-").find(lCh) || '\0' == lCh) { lCh = '_'; }
    }
    return "x" + lText + (aInput.Flag() ? "=7" : "");
}

struct Answers {
    std::string mSession;
    std::string mTransport[kTracks];
    std::string mRTPInfo;
    std::string mRange;

    void Write(Network& aNetwork) const {
        aNetwork.Send(Dialogue::Describe(1));
        for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
            aNetwork.Send(
                Dialogue::Response(2 + lIdx, "Session: " + mSession + "\r\nTransport: " + mTransport[lIdx] + "\r\n"));
        }
        aNetwork.Send(Dialogue::Response(2 + kTracks, "RTP-Info: " + mRTPInfo + "\r\nRange: " + mRange + "\r\n"));
    }
};

/// False when it could not be played.
bool Play(Player::MediaPlayer& aPlayer) {
    try {
        aPlayer.Play(kURL, Time(0));
        return true;
    } catch (const Player::Exception&) { return false; }
}

void Close(Player::MediaPlayer& aPlayer) {
    try {
        aPlayer.Close();
    } catch (const Player::Exception&) {
        // The server has closed its side.
    }
}

void CheckRequests(const Network& aNetwork, const std::string& aSession) {
    unsigned lCSeq = 0;
    for (const std::string& lRequest : RequestsIn(aNetwork.Sent())) {
        FUZZ_CHECK(std::to_string(++lCSeq) == HeaderIn(lRequest, "CSeq"));
        // The first two have no session yet.
        FUZZ_CHECK(HeaderIn(lRequest, "Session") == (lCSeq <= 2 ? "" : aSession));
    }
}

/// As the session takes it.
std::string Identifier(const std::string& aSession) {
    const std::size_t lBegin = aSession.find_first_not_of(' ');
    const std::string lValue = std::string::npos == lBegin ? std::string() : aSession.substr(lBegin);
    return lValue.substr(0, lValue.find(';'));
}

void TakeAnything(Input& aInput) {
    Answers lAnswers;
    lAnswers.mSession = WithoutLineEnds(aInput.Chunk());
    for (std::string& lTransport : lAnswers.mTransport) {
        lTransport = WithoutLineEnds(aInput.Chunk());
    }
    lAnswers.mRTPInfo = WithoutLineEnds(aInput.Chunk());
    lAnswers.mRange = WithoutLineEnds(aInput.Chunk());
    const bool lIsInterleaved = aInput.Flag();

    Network lNetwork;
    lAnswers.Write(lNetwork);
    Player::MediaPlayer lPlayer;
    lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", lIsInterleaved ? "1" : "0");
    if (Play(lPlayer)) {
        for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
            const Bytes lSpeech = Dialogue::Speech(1, 1, 1);
            lNetwork.Send(Frame(2 * lIdx, lSpeech));
            lNetwork.Deliver(2 * lIdx, lSpeech);
            while (lPlayer.GetTrackPacket(lIdx)) {}
        }
    }
    // A long status line or none: what was sent is whole all the same.
    Close(lPlayer);
    const std::string lSession = Identifier(lAnswers.mSession);
    for (const std::string& lRequest : RequestsIn(lNetwork.Sent())) {
        const std::string lSent = HeaderIn(lRequest, "Session");
        FUZZ_CHECK(lSent.empty() || lSent == lSession);
    }
}

/// What is announced for a track.
struct Announcement {
    unsigned mChannel = 0;
    std::uint32_t mSsrc = 0;
    std::uint16_t mSeq = 0;
    std::uint32_t mTime = 0;
};

/// Sends one packet of the first track and gives its play time when it is played.
std::optional<Time> PlayTimeOf(Network& aNetwork, Player::MediaPlayer& aPlayer, unsigned aChannel,
                               const Bytes& aPacket) {
    aNetwork.Send(Frame(aChannel, aPacket));
    const auto lSample = aPlayer.GetTrackPacket(0);
    if (!lSample) { return std::nullopt; }
    FUZZ_CHECK(Dialogue::kSpeechBytes == lSample->Size());
    return lSample->PlayTime();
}

std::string Seconds(std::uint32_t aMilliseconds) {
    const std::string lFraction = std::to_string(1000 + aMilliseconds % 1000).substr(1);
    return std::to_string(aMilliseconds / 1000) + "." + lFraction;
}

/// A sequence or time base of 0 stands for one that is not known.
bool IsKnownBase(const Announcement& aAnnounced) {
    return 0 != aAnnounced.mSeq && 0 != aAnnounced.mTime;
}

void Obey(Input& aInput) {
    Answers lAnswers;
    const std::string lSession = "S" + Bystander(aInput);
    lAnswers.mSession = lSession + ";timeout=" + std::to_string(aInput.Byte());

    Announcement lTracks[kTracks];
    for (unsigned lIdx = 0; lIdx < kTracks; ++lIdx) {
        Announcement& lTrack = lTracks[lIdx];
        // Even, and another than the other track's.
        lTrack.mChannel = aInput.Below(64) * 4U + 2 * lIdx;
        lTrack.mSsrc = 1 | aInput.Word32();
        lTrack.mSeq = static_cast<std::uint16_t>(aInput.Word16());
        lTrack.mTime = aInput.Word32();
        if (!IsKnownBase(lTrack)) { return; }
        char lSsrc[16];
        std::snprintf(lSsrc, sizeof lSsrc, "%08X", lTrack.mSsrc);
        lAnswers.mTransport[lIdx] = "RTP/AVP/TCP;" + Bystander(aInput) +
                                    "; interleaved=" + std::to_string(lTrack.mChannel) + "-" +
                                    std::to_string(lTrack.mChannel + 1) + " ;ssrc=" + lSsrc + ";" + Bystander(aInput);
        lAnswers.mRTPInfo += "url=rtsp://h/trackID=" + std::to_string(lIdx + 1) + ";" + Bystander(aInput) +
                             ";seq=" + std::to_string(lTrack.mSeq) + " ;rtptime=" + std::to_string(lTrack.mTime) +
                             ", url=rtsp://h/" + Bystander(aInput) + ";seq=1;rtptime=1,";
    }
    const std::uint32_t lBegin = aInput.Word16();
    const std::uint32_t lEnd = lBegin + 1 + aInput.Word16();
    lAnswers.mRange = Bystander(aInput) + ";npt=" + Seconds(lBegin) + "-" + Seconds(lEnd);

    Network lNetwork;
    lAnswers.Write(lNetwork);
    Player::MediaPlayer lPlayer;
    lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", "1");
    FUZZ_CHECK(Play(lPlayer) && kTracks == lPlayer.GetTrackCount());
    CheckRequests(lNetwork, lSession);

    Time lPlaysFrom;
    Time lPlaysTo;
    lPlayer.GetPlayingRange(lPlaysFrom, lPlaysTo);
    FUZZ_CHECK(Time(lBegin, 1000) == lPlaysFrom && Time(lEnd, 1000) == lPlaysTo);

    const Announcement& lTrack = lTracks[0];
    const std::uint16_t lAhead = static_cast<std::uint16_t>(aInput.Word16() % 0x7FFF);
    const std::uint32_t lLater = aInput.Word32() % 0x7FFFFFFF;
    const std::uint16_t lSeq = static_cast<std::uint16_t>(lTrack.mSeq + lAhead);
    const std::uint32_t lTimestamp = lTrack.mTime + lLater;
    // From another source, on another channel, from before the range: not played.
    const auto lStray = Dialogue::Speech(lSeq, lTimestamp, lTrack.mSsrc ^ 0x100);
    FUZZ_CHECK(!PlayTimeOf(lNetwork, lPlayer, lTrack.mChannel, lStray));
    const auto lSpeech = Dialogue::Speech(lSeq, lTimestamp, lTrack.mSsrc);
    FUZZ_CHECK(!PlayTimeOf(lNetwork, lPlayer, lTrack.mChannel ^ 0x40, lSpeech));
    const auto lEarly = Dialogue::Speech(static_cast<std::uint16_t>(lTrack.mSeq - 1), lTimestamp, lTrack.mSsrc);
    FUZZ_CHECK(!PlayTimeOf(lNetwork, lPlayer, lTrack.mChannel, lEarly));

    const std::optional<Time> lPlayTime = PlayTimeOf(lNetwork, lPlayer, lTrack.mChannel, lSpeech);
    const long long lTicks = Time(lBegin, 1000).Scale(Dialogue::kSpeechRate, 1) + lLater;
    FUZZ_CHECK(lPlayTime && Time(lTicks, Dialogue::kSpeechRate) == *lPlayTime);
    Close(lPlayer);
    CheckRequests(lNetwork, lSession);
}

}  // namespace

void Run(Input& aInput) {
    if (aInput.Flag()) {
        Obey(aInput);
    } else {
        TakeAnything(aInput);
    }
}

}  // namespace Fuzz
