// A whole session: a player, and a server that says and sends anything at any moment. Failures are those of the
// library; what goes out is whole requests, numbered one by one; samples are no more than what came in; when all is
// closed no descriptor is left, and the same player then plays from a server that behaves.

#include <cerrno>

#include "Player/Exception.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/Dialogue.hpp"
#include "support/Frames.hpp"
#include "support/Network.hpp"
#include "support/Target.hpp"

namespace Fuzz {

/// A media section of 3 bytes is a track; the sockets of a transport share a batch of datagrams.
const Bounds kBounds{kConnectionBytes + (1 << 20), 2048};

namespace {

using Player::Time;

constexpr char kURL[] = "rtsp://127.0.0.1/clip";
/// Each asks every track once for all that it has.
constexpr unsigned kMostRounds = 64;
/// Sample headers and copies: as much as the depacketizers allow.
constexpr std::size_t kMostCopies = 32;

/// What the input says, step by step: what the server does is laid out until the player does something, which then
/// meets it.
class Story {
public:
    explicit Story(Input& aInput) : mInput(aInput), mSize(aInput.Left()) {
        const unsigned lFlags = aInput.Byte();
        mPlayer.SetConfigParam("RTSP:UseInterleavedRTP", 0 != (lFlags & 1) ? "1" : "0");
        mPlayer.SetConfigParam("RTSP:TargetRTPBuffer", std::to_string(lFlags >> 1 & 3));
        if (0 != (lFlags & 8)) { mPlayer.SetConfigParam("RTSP:Profile", "modern"); }
        mHasPassword = 0 != (lFlags & 16);
        if (!mHasPassword) { return; }
        mPlayer.SetConfigParam("RTSP:UserName", "me");
        mPlayer.SetConfigParam("RTSP:Password", "secret");
    }

    void Tell() {
        while (!mInput.Empty()) {
            Next();
        }
        Try([this] { mPlayer.Close(); });
        CheckSent();
    }

    /// Whatever happened, another play works.
    void PlayAgain() {
        mNetwork.Recover();
        mNetwork.Send(Dialogue::Describe(1));
        mNetwork.Send(Dialogue::Response(2, "Session: 1\r\nTransport: RTP/AVP/TCP;interleaved=0-1\r\n"));
        mNetwork.Send(Dialogue::Response(3, "Transport: RTP/AVP/TCP;interleaved=2-3\r\n"));
        mNetwork.Send(Dialogue::Response(4, "RTP-Info: url=rtsp://127.0.0.1/clip/trackID=1;seq=5;rtptime=8000\r\n"));
        mPlayer.Play(kURL, Time(0));
        FUZZ_CHECK(2 == mPlayer.GetTrackCount());
        const Bytes lSpeech = Dialogue::Speech(5, 16000, 9);
        mNetwork.Send(Frame(0, lSpeech));
        mNetwork.Deliver(0, lSpeech);
        const auto lSample = mPlayer.GetTrackPacket(0);
        FUZZ_CHECK(lSample && Dialogue::kSpeechBytes == lSample->Size() && Time(1, 1) == lSample->PlayTime());
        mNetwork.Send(Dialogue::Response(5));
        mPlayer.Close();
        FUZZ_CHECK(0 == mNetwork.OpenSockets());
    }

private:
    void Next() {
        switch (mInput.Below(16)) {
            case 0: return Act();
            case 1: return mNetwork.Pause();
            case 2: return mNetwork.Close();
            case 3: return mNetwork.Reset();
            case 4: return mNetwork.Advance(100U * mInput.Byte());
            case 5:
            case 6:
            case 7: {
                const unsigned lSocket = mInput.Byte();
                return mNetwork.Deliver(lSocket, mInput.Chunk());
            }
            case 8: {
                const unsigned lChannel = mInput.Byte();
                return Send(Frame(lChannel, mInput.Take(mInput.Word16() % (kMostFrameBytes + 1))));
            }
            case 10: return Refuse();
            case 11: return TakeAtMost(mInput.Byte());
            case 12: return mNetwork.Silence();
            default: return Send(mInput.Chunk());
        }
    }

    void Send(const Bytes& aPiece) { mNetwork.Send(mFramesWithinLimit(aPiece)); }

    /// Something that the system may say at any time.
    void Refuse() {
        constexpr int kErrors[] = {EINTR,  EAGAIN,      ENOBUFS,    ECONNREFUSED, EINPROGRESS,
                                   EMFILE, ENETUNREACH, EADDRINUSE, ENOSYS,       EPIPE};
        const unsigned lCall = mInput.Below(7);
        mIsRefused = true;
        mNetwork.Refuse(static_cast<Network::Call>(lCall), kErrors[mInput.Below(10)]);
    }

    void TakeAtMost(unsigned aBytes) {
        mIsRefused = mIsRefused || 0 == aBytes;
        mNetwork.TakeAtMost(aBytes);
    }

    void Act() {
        switch (mInput.Below(16)) {
            case 0: return Play(kURL, mInput.Byte());
            case 1: return Play("rtsp://127.0.0.1/other", 0);
            case 2: return Play("rtsp://127.0.0.2:8554/clip", 0);
            case 3: return Try([this] { mPlayer.Pause(); });
            case 4: return Try([this] { mPlayer.Resume(); });
            case 5: return Try([this] { mPlayer.Seek(Time(mInput.Byte(), 1)); });
            case 6: mHasPlayed = false; return Try([this] { mPlayer.Stop(); });
            case 7: mHasPlayed = false; return Try([this] { mPlayer.Close(); });
            case 8: return Try([this] { mPlayer.TakeIn(); });
            case 9: return Try([this] { mPlayer.Fill(mInput.Below(4)); });
            case 10:
                if (HasTransport()) {
                    Try([this] { mPlayer.Fetch(mInput.Below(4)); });
                }
                return;
            default: return Pump();
        }
    }

    void Play(const char* aURL, unsigned aFrom) {
        mHasPlayed = false;
        Try([&] {
            mPlayer.Play(aURL, Time(aFrom, 1));
            mHasPlayed = true;
        });
    }

    /// Fetching before anything was set up is a mistake of the caller, an assertion.
    bool HasTransport() const { return mHasPlayed && 0 != mPlayer.GetTrackCount(); }

    void Pump() {
        bool lMore = true;
        for (unsigned lRound = 0; lMore && lRound < kMostRounds; ++lRound) {
            lMore = false;
            for (Player::TrackIdx lIdx = 0; lIdx < mPlayer.GetTrackCount() && lIdx < 8; ++lIdx) {
                Try([&] {
                    const auto lSample = mPlayer.GetTrackPacket(lIdx);
                    if (!lSample) { return; }
                    lMore = true;
                    FUZZ_CHECK(lSample->End() == lSample->Begin() + lSample->Size());
                    mDelivered += lSample->Size();
                    FUZZ_CHECK(mDelivered <= kMostCopies * mSize);
                });
                mPlayer.GetTrackReception(lIdx);
                mPlayer.TrackTimeAvailable(lIdx);
            }
        }
        mPlayer.IsEnded();
        mPlayer.HasTimedOut();
        CheckSent();
    }

    /// Where the system refused a connection or took half of a message, a number is left out.
    bool IsAllSent() const { return !mIsRefused; }

    void CheckSent() {
        // A connection, and two sockets for each track.
        FUZZ_CHECK(mNetwork.OpenSockets() <= 1 + 2 * mSize);
        if (!IsAllSent()) { return; }
        unsigned long lLast = 0;
        for (const std::string& lRequest : RequestsIn(mNetwork.Sent())) {
            const unsigned long lCSeq = std::stoul(HeaderIn(lRequest, "CSeq"));
            // Closing begins a new count. An answer that met the end of its connection goes out once more.
            FUZZ_CHECK(lLast + 1 == lCSeq || 1 == lCSeq || (mHasPassword && lLast == lCSeq));
            lLast = lCSeq;
        }
    }

    /// Failures are the library's own kinds.
    template <typename Action>
    void Try(Action aAction) {
        try {
            aAction();
        } catch (const Player::Exception& lException) { FUZZ_CHECK('\0' != lException.Message()[0]); }
    }

    Input& mInput;
    std::size_t mSize;
    // Lives longer than the player, which gives its sockets back.
    Network mNetwork;
    FramesWithinLimit mFramesWithinLimit;
    Player::MediaPlayer mPlayer;
    std::size_t mDelivered = 0;
    bool mHasPlayed = false;
    bool mIsRefused = false;
    bool mHasPassword = false;
};

}  // namespace

void Run(Input& aInput) {
    Story lStory(aInput);
    lStory.Tell();
    lStory.PlayAgain();
}

}  // namespace Fuzz
