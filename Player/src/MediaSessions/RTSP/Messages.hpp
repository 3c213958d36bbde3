#pragma once

#include <exception>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MediaSessions/RTSP/Connection.hpp"
#include "MediaSessions/RTSP/Headers/Headers.hpp"
#include "MediaSessions/RTSP/Refusal.hpp"
#include "Player/Buffer.hpp"
#include "Player/Report.hpp"
#include "RTP/Transports/InterleavedConnection.hpp"

namespace Player {
class MediaHandler;
}

namespace Player::RTP::Transports {
class OverRTSP;
}

namespace Player::MediaSessions {

/// Separates what the server sends on the control connection: responses, requests of its own, and
/// interleaved "$" frames with media (RFC 2326 sections 6, 7 and 10.12).
///
///      0        1         2        3
///     +--------+---------+--------+--------+----------------
///     | "$"    | channel | length          | RTP or RTCP ...
///     +--------+---------+--------+--------+----------------
class Messages final : public RTP::Transports::InterleavedConnection {
public:
    explicit Messages(Connection& aConnection) : mConnection(aConnection) {}

    /// Who gets the frames; null drops them. Not owned: unset before it goes.
    void SetFrameReceiver(RTP::Transports::OverRTSP* aReceiver) { mFrameReceiver = aReceiver; }
    bool HasFrameReceiver() const { return nullptr != mFrameReceiver; }

    /// Reports requests and responses to the handler for as long as this lives.
    class Listening {
    public:
        Listening(Messages& aMessages, MediaHandler& aHandler)
            : mMessages(aMessages), mBefore(std::exchange(aMessages.mListener, &aHandler)) {}
        Listening(const Listening&) = delete;
        Listening& operator=(const Listening&) = delete;
        ~Listening() { mMessages.mListener = mBefore; }

    private:
        Messages& mMessages;
        MediaHandler* mBefore;
    };
    /// Frames that come meanwhile wait until they are released, or are dropped: what the answer to come says of the
    /// media counts for them.
    class HoldingFrames {
    public:
        HoldingFrames(Messages& aMessages, bool aHolds) : mMessages(aMessages) { mMessages.mHoldsFrames = aHolds; }
        HoldingFrames(const HoldingFrames&) = delete;
        HoldingFrames& operator=(const HoldingFrames&) = delete;
        ~HoldingFrames();
        void Release();

    private:
        Messages& mMessages;
    };
    void NotifySent(const std::string& aMethod, const std::string& aURL) const;

    /// Before a request of ours is written: leaves a connection that the server has closed, or on which
    /// messages can't be separated any more; sending opens another.
    void BeginRequest();
    /// Receives the response to the request numbered `aCSeq`; frames and requests in front of it are dealt
    /// with, 1xx responses dropped. True for a 2xx response; otherwise `StatusCode` and `StatusText` say why.
    /// Throws `RTSPErr` `kMalformed` for a response that is malformed or not the one awaited. Whatever is thrown, the
    /// connection is out of step then: the answer may still come.
    bool RecvResponse(UInt aCSeq);
    bool RecvResponse(Headers& aHeaders, UInt aCSeq);
    /// `aRefused` is how a response that is no success is reported.
    bool RecvResponse(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused = Severity::Error);
    /// Reports the last response that was no success.
    void ReportRefusal(Severity aSeverity) const;

    /// The response to the request with this number, which is sent, will not be awaited: whenever it comes, it is
    /// dropped.
    void LeaveUnanswered(UInt aCSeq);
    /// Drops what has come of such responses, without waiting; frames between them are delivered.
    void DropUnawaited();

    /// The last response that was no success.
    const Refusal& LastRefusal() const { return mRefusal; }
    UInt StatusCode() const { return mRefusal.mStatus; }
    const std::string& StatusText() const { return mRefusal.mText; }
    /// The last request gets no response.
    void SetUnanswered() { SetRefused(0, "Unknown"); }
    /// What the last response says amounts to that.
    void SetRefused(UInt aStatus, const std::string& aText) { mRefusal = {aStatus, aText, {}, {}}; }
    /// The last of the responses that were not awaited and no success; status 0 when none came since the last call.
    Refusal TakeUnawaitedRefusal() { return std::exchange(mUnawaitedRefusal, Refusal()); }

    bool RecvInterleavedPackets() override;
    int Send_RR(const void* aData, UInt aSize) override;

private:
    bool AwaitResponse(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused);
    void RecvHeaders(Headers& aHeaders);
    /// False after the last header.
    bool ReadHeader(std::string& aLine);
    void KeepChallenge(const std::string& aName, const std::string& aValue);
    /// The next line that is not empty, with the frames before it delivered; empty at the end of the data.
    std::string NextLine();
    /// Consumes the body that the headers announce. False when it is not all there.
    bool RecvBody(const Headers& aHeaders, Buffer& aBody);
    void CheckCSeq(const Headers& aHeaders, UInt aCSeq) const;
    /// Whether a response that is not waited for may still come. None does that was due on an earlier connection.
    bool HasUnawaited();
    /// Whether it is a response that is not waited for. What it refuses is kept.
    bool IsUnawaited(UInt aStatus, const Headers& aHeaders);
    /// Drops a response that came where none is awaited.
    void DropResponse(const std::string& aStatusLine);
    /// Steps over what is neither a frame nor a line, up to what may be one; where there is none, over all of it.
    void SkipGarbage();
    /// Whether a frame of a known channel begins that many bytes ahead, or a response.
    bool MayBegin(UInt aOff);
    /// Every request of a server is answered with 501.
    void HandleRequest(const std::string& aRequestLine);
    /// Answers the request that comes next. One that is not whole is waited for if allowed, else it stays.
    bool AnswerRequest(bool aMayWait);
    void TakeFrame(Byte aChannel, Byte* aData, UInt aSize);
    /// Delivers the frames that come next. Blocking, an incomplete one is waited for; otherwise it stays for
    /// the next call. True when any was delivered.
    bool HandleInterleavedData(bool aBlocking);

    Connection& mConnection;
    RTP::Transports::OverRTSP* mFrameReceiver = nullptr;
    /// What lost the connection while a report was written, which the transport keeps to itself.
    std::exception_ptr mWhyLost;
    MediaHandler* mListener = nullptr;
    Refusal mRefusal;
    Refusal mUnawaitedRefusal;
    /// Of the message that is being received.
    std::vector<std::string> mChallenges;
    bool mHoldsFrames = false;
    /// Channel and payload.
    std::vector<std::pair<Byte, Buffer>> mFramesHeld;
    std::size_t mBytesHeld = 0;
    /// Bytes skipped.
    UInt mGarbage = 0;
    /// Numbers of requests whose responses are not awaited.
    std::set<UInt> mUnawaited;
    /// The connection on which they went out.
    UInt mUnawaitedOn = 0;
};

}  // namespace Player::MediaSessions
