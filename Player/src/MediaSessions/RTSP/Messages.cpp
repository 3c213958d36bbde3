#include "MediaSessions/RTSP/Messages.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "Player/MediaHandler.hpp"
#include "Player/String.hpp"
#include "RTP/Transports/OverRTSP.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

constexpr char kFrameMagic = '$';
constexpr UInt kFrameHeaderSize = 4;
constexpr UInt kLargestFrame = kFrameHeaderSize + 1500;
constexpr char kBlanks[] = " \t\n\v\f\r";
/// Of one message. Each costs many times its bytes; servers send a dozen.
constexpr std::size_t kMostHeaders = 16384;

constexpr char kGotResponse[] = "Got RTSP response: %03x %s";
/// While an answer is awaited: a key frame of a high-resolution camera, and more.
constexpr std::size_t kMostFramesHeld = 16384;
constexpr std::size_t kMostBytesHeld = 16 << 20;
/// Headers that ask who the client is, of one message.
constexpr std::size_t kMostChallenges = 16;

constexpr UInt kStatusNotImplemented = 501;
constexpr char kNotImplemented[] = "Not Implemented";

/// The word at or after `aPos`; `aPos` moves past it.
std::string NextWord(const std::string& aLine, std::size_t& aPos) {
    const std::size_t lBegin = std::min(aLine.find_first_not_of(kBlanks, aPos), aLine.size());
    aPos = std::min(aLine.find_first_of(kBlanks, lBegin), aLine.size());
    return aLine.substr(lBegin, aPos - lBegin);
}

struct Status {
    /// The digits read as a hexadecimal number: 0x200.
    UInt mCode = 0;
    std::string mText;

    UInt Class() const { return mCode >> 8; }
    const char* TextOrUnknown() const { return mText.empty() ? "Unknown" : mText.c_str(); }
};

/// "RTSP/1.0 200 OK": version, status, reason. The reason begins where the number ends, blanks or not.
Status ParseStatusLine(const std::string& aLine) {
    std::size_t lPos = 0;
    NextWord(aLine, lPos);
    const char* const lDigits = aLine.c_str() + lPos;
    char* lEnd = nullptr;
    Status lStatus;
    lStatus.mCode = static_cast<UInt>(std::strtoull(lDigits, &lEnd, 16));
    const std::size_t lReason = aLine.find_first_not_of(kBlanks, lPos + static_cast<std::size_t>(lEnd - lDigits));
    if (std::string::npos != lReason) { lStatus.mText = aLine.substr(lReason); }
    return lStatus;
}

/// A number that 32 bits can't hold stays one that they can't: it must not pass for a small one.
unsigned long long Decimal(const std::string& aText) {
    return std::strtoull(aText.c_str(), nullptr, 10);
}

bool IsStatusLine(const std::string& aLine) {
    constexpr char kVersion[] = "RTSP/";
    return 0 == strncasecmp(aLine.c_str(), kVersion, sizeof(kVersion) - 1);
}

/// What a line of a message may begin with, its end included.
bool IsText(char aCh) {
    return ('A' <= aCh && aCh <= 'Z') || ('a' <= aCh && aCh <= 'z') || '\r' == aCh || '\n' == aCh;
}

}  // namespace

void Messages::BeginRequest() {
    if (mConnection.IsUsable()) { return; }
    // Media that came whole is delivered; nothing else that is left can belong to this request.
    if (!mConnection.IsOutOfStep()) { HandleInterleavedData(false); }
    mConnection.DoConnectionReset();
}

void Messages::NotifySent(const std::string& aMethod, const std::string& aURL) const {
    if (nullptr != mListener) { mListener->RequestSent(aMethod, aURL); }
}

bool Messages::RecvResponse(UInt aCSeq) {
    Headers lHeaders;
    return RecvResponse(lHeaders, aCSeq);
}

bool Messages::RecvResponse(Headers& aHeaders, UInt aCSeq) {
    Buffer lBody;
    return RecvResponse(aHeaders, lBody, aCSeq);
}

bool Messages::RecvResponse(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused) {
    try {
        return AwaitResponse(aHeaders, aBody, aCSeq, aRefused);
    } catch (...) {
        // The answer may still come; it would be taken for that to a later request.
        mConnection.SetOutOfStep();
        throw;
    }
}

bool Messages::AwaitResponse(Headers& aHeaders, Buffer& aBody, UInt aCSeq, Severity aRefused) {
    mWhyLost = nullptr;
    mConnection.StartWait(Connection::Clock::now());
    mConnection.Normalize();
    Status lStatus;
    bool lIsOver = false;
    do {
        aHeaders.clear();
        aBody.Clear();
        mChallenges.clear();
        lStatus = Status();
        std::string lLine = NextLine();
        for (; !lLine.empty() && !IsStatusLine(lLine); lLine = NextLine()) {
            HandleRequest(lLine);
        }
        if (lLine.empty()) {
            if (mWhyLost) { std::rethrow_exception(mWhyLost); }
            break;
        }
        lStatus = ParseStatusLine(lLine);
        RecvHeaders(aHeaders);
        if (!RecvBody(aHeaders, aBody)) {
            PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvResponse(): %s: %s", "Invalid response",
                         "Bad Content-Length");
        }
        if (IsUnawaited(lStatus.mCode, aHeaders)) {
            lStatus = Status();
            lIsOver = false;
            continue;
        }
        CheckCSeq(aHeaders, aCSeq);
        lIsOver = 1 != lStatus.Class();
    } while (!lIsOver);
    mConnection.Normalize();

    if (nullptr != mListener) {
        mListener->ResponseReceived(lStatus.mCode, lStatus.TextOrUnknown(), HeaderValue(aHeaders, "Server"));
    }
    if (2 == lStatus.Class()) {
        Report(__FILE__, __LINE__, Severity::Info, kGotResponse, lStatus.mCode, lStatus.TextOrUnknown());
        return true;
    }
    mRefusal = {lStatus.mCode, lStatus.TextOrUnknown(), aHeaders, mChallenges};
    ReportRefusal(aRefused);
    return false;
}

void Messages::ReportRefusal(Severity aSeverity) const {
    Report(__FILE__, __LINE__, aSeverity, kGotResponse, StatusCode(), StatusText().c_str());
}

std::string Messages::NextLine() {
    std::string lLine;
    char lCh = 0;
    while (lLine.empty() && mConnection.PeekCh(lCh, 0)) {
        if (kFrameMagic == lCh) {
            HandleInterleavedData(true);
            // The connection ended within a frame: nothing after it can be a line.
            if (mConnection.Left() > 0 && mConnection.PeekCh(lCh, 0) && kFrameMagic == lCh) { break; }
        } else if (mConnection.Speaks().Resynchronizes() && HasFrameReceiver() && !IsText(lCh)) {
            SkipGarbage();
        } else {
            mConnection.ReadLn(lLine);
        }
    }
    return lLine;
}

void Messages::RecvHeaders(Headers& aHeaders) {
    const bool lIsLoose = mConnection.Speaks().UnfoldsHeaders();
    std::string lLine;
    while (ReadHeader(lLine)) {
        if (kMostHeaders == aHeaders.size()) {
            mConnection.SetOutOfStep();
            PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvHeaders(): %s: %s", "Invalid message",
                         "Too many headers");
        }
        const std::size_t lColon = lLine.find(':');
        const std::string lName = lIsLoose ? Trimmed(lLine.substr(0, lColon)) : lLine.substr(0, lColon);
        const std::size_t lBegin = std::string::npos == lColon ? lColon : lLine.find_first_not_of(' ', lColon + 1);
        const std::string lValue = std::string::npos == lBegin ? std::string() : lLine.substr(lBegin);
        std::string& lKept = aHeaders[lName];
        lKept = lIsLoose ? Trimmed(lValue) : lValue;
        KeepChallenge(lName, lKept);
    }
}

bool Messages::ReadHeader(std::string& aLine) {
    if (!mConnection.ReadLn(aLine) || aLine.empty()) { return false; }
    char lCh = 0;
    while (mConnection.Speaks().UnfoldsHeaders() && mConnection.PeekCh(lCh, 0) && (' ' == lCh || '\t' == lCh)) {
        std::string lMore;
        mConnection.ReadLn(lMore);
        aLine += lMore;
    }
    return true;
}

void Messages::KeepChallenge(const std::string& aName, const std::string& aValue) {
    const bool lAsks =
        0 == strcasecmp(aName.c_str(), "WWW-Authenticate") || 0 == strcasecmp(aName.c_str(), "Proxy-Authenticate");
    if (lAsks && mChallenges.size() < kMostChallenges) { mChallenges.push_back(aValue); }
}

bool Messages::RecvBody(const Headers& aHeaders, Buffer& aBody) {
    constexpr unsigned long long kLargest = std::numeric_limits<UInt>::max();
    const UInt lSize = static_cast<UInt>(std::min(Decimal(HeaderValue(aHeaders, "Content-Length")), kLargest));
    if (0 == lSize) { return true; }
    const Byte* const lBody = mConnection.Take(lSize);
    if (nullptr == lBody) {
        mConnection.SetOutOfStep();
        return false;
    }
    aBody.Assign(lBody, lSize);
    return true;
}

void Messages::LeaveUnanswered(UInt aCSeq) {
    constexpr std::size_t kMostUnawaited = 64;
    // A server that answers none of them will not begin with the oldest.
    if (HasUnawaited() && mUnawaited.size() >= kMostUnawaited) { mUnawaited.erase(mUnawaited.begin()); }
    mUnawaited.insert(aCSeq);
}

bool Messages::HasUnawaited() {
    if (mConnection.Count() != mUnawaitedOn) {
        mUnawaitedOn = mConnection.Count();
        mUnawaited.clear();
        mUnawaitedRefusal = Refusal();
    }
    return !mUnawaited.empty();
}

bool Messages::IsUnawaited(UInt aStatus, const Headers& aHeaders) {
    if (!HasUnawaited() || 0 == aHeaders.count("CSeq")) { return false; }
    const unsigned long long lCSeq = Decimal(HeaderValue(aHeaders, "CSeq"));
    if (lCSeq > std::numeric_limits<UInt>::max() || 0 == mUnawaited.erase(static_cast<UInt>(lCSeq))) { return false; }
    if (aStatus >= 0x300) { mUnawaitedRefusal = {aStatus, std::string(), {}, mChallenges}; }
    return true;
}

void Messages::DropUnawaited() {
    if (!HasUnawaited() || HasFrameReceiver() || !mConnection.IsOpen()) { return; }
    mConnection.FillInterleavedBuf();
    std::string lLine;
    while (!mUnawaited.empty() && mConnection.HoldsEmptyLine() && mConnection.PeekLn(lLine)) {
        if (!IsStatusLine(lLine)) { return; }
        mConnection.SkipLn();
        DropResponse(lLine);
    }
    mConnection.Normalize();
}

bool Messages::MayBegin(UInt aOff) {
    constexpr char kResponse[] = "RTSP/";
    char lCh = 0;
    mConnection.PeekCh(lCh, aOff);
    if (kFrameMagic == lCh) {
        // What is not there yet can't be ruled out.
        if (!mConnection.Have(aOff + 2)) { return true; }
        mConnection.PeekCh(lCh, aOff + 1);
        return mFrameReceiver->GetTrackByChannelId(static_cast<unsigned char>(lCh)) >= 0;
    }
    for (UInt i = 0; i < sizeof(kResponse) - 1; ++i) {
        if (!mConnection.Have(aOff + i + 1)) { return i > 0; }
        mConnection.PeekCh(lCh, aOff + i);
        if (kResponse[i] != lCh) { return false; }
    }
    return true;
}

void Messages::SkipGarbage() {
    UInt lSize = 1;
    while (lSize < mConnection.Left() && (nullptr == mFrameReceiver || !MayBegin(lSize))) {
        ++lSize;
    }
    mConnection.Skip(lSize);
    mGarbage += lSize;
    Report(__FILE__, __LINE__, Severity::Warning, "RTSP: skipped %u bytes that are no message, %u in all", lSize,
           mGarbage);
}

void Messages::DropResponse(const std::string& aStatusLine) {
    Headers lHeaders;
    Buffer lBody;
    mChallenges.clear();
    RecvHeaders(lHeaders);
    RecvBody(lHeaders, lBody);
    IsUnawaited(ParseStatusLine(aStatusLine).mCode, lHeaders);
}

void Messages::CheckCSeq(const Headers& aHeaders, UInt aCSeq) const {
    const std::string lNumber = HeaderValue(aHeaders, "CSeq");
    const bool lHasNumber = !lNumber.empty() && '0' <= lNumber[0] && lNumber[0] <= '9';
    if (!lHasNumber && mConnection.Speaks().TakesUnnumbered()) {
        Report(__FILE__, __LINE__, Severity::Warning, "RTSP::RecvResponse(): %s", "Response without a number");
        return;
    }
    if (0 == aHeaders.count("CSeq")) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvResponse(): %s: %s", "Invalid response",
                     "CSeq missing");
    }
    if (Decimal(HeaderValue(aHeaders, "CSeq")) != aCSeq) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::RecvResponse(): %s: %s", "Invalid response",
                     "CSeq mismatch");
    }
}

void Messages::HandleRequest(const std::string& aRequestLine) {
    std::size_t lPos = 0;
    const std::string lMethod = NextWord(aRequestLine, lPos);
    const std::string lURL = NextWord(aRequestLine, lPos);
    Report(__FILE__, __LINE__, Severity::Info, "Got RTSP %s request for URL: %s", lMethod.c_str(), lURL.c_str());

    Headers lHeaders;
    RecvHeaders(lHeaders);
    Buffer lBody;
    if (!RecvBody(lHeaders, lBody)) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::HandleRequest(): %s: %s", "Invalid request",
                     "Bad Content-Length");
    }

    mConnection.WriteLn(StringWithFormat("RTSP/1.0 %u %s", kStatusNotImplemented, kNotImplemented));
    if (0 != lHeaders.count("CSeq")) { mConnection.WriteLn("CSeq: " + HeaderValue(lHeaders, "CSeq")); }
    mConnection.WriteLn();
    Report(__FILE__, __LINE__, Severity::Info, "Sending RTSP response: %u %s", kStatusNotImplemented, kNotImplemented);
    mConnection.Flush();
}

void Messages::TakeFrame(Byte aChannel, Byte* aData, UInt aSize) {
    if (!mHoldsFrames) {
        mFrameReceiver->HandlePacketData(aChannel, aData, static_cast<unsigned short>(aSize));
    } else if (mFramesHeld.size() < kMostFramesHeld && mBytesHeld + aSize <= kMostBytesHeld) {
        mFramesHeld.emplace_back(aChannel, Buffer(aData, aSize));
        mBytesHeld += aSize;
    }
}

Messages::HoldingFrames::~HoldingFrames() {
    mMessages.mHoldsFrames = false;
    mMessages.mFramesHeld.clear();
    mMessages.mBytesHeld = 0;
}

void Messages::HoldingFrames::Release() {
    mMessages.mHoldsFrames = false;
    for (auto& [lChannel, lFrame] : std::exchange(mMessages.mFramesHeld, {})) {
        mMessages.TakeFrame(lChannel, lFrame.Begin(), lFrame.Size());
    }
}

bool Messages::HandleInterleavedData(bool aBlocking) {
    bool lDelivered = false;
    char lCh = 0;
    mConnection.SkipLineEnds();
    while ((aBlocking || mConnection.Have(kFrameHeaderSize)) && mConnection.PeekCh(lCh, 0) && kFrameMagic == lCh) {
        // Any number of frames may stand before a response: those that were delivered make room for more.
        if (aBlocking && !mConnection.Have(kLargestFrame)) { mConnection.Normalize(); }
        const UInt lLeftBefore = mConnection.Left();
        Byte lHeader[kFrameHeaderSize] = {};
        Byte* lFrame = nullptr;
        if (mConnection.Peek(lHeader, kFrameHeaderSize)) {
            const UInt lSize = lHeader[2] * 256U + lHeader[3];
            if (lSize > mConnection.Speaks().LargestFrame()) { PLAYER_ASSERT(1500 >= lSize); }
            if (!aBlocking && !mConnection.Have(lSize + kFrameHeaderSize)) { break; }
            lFrame = mConnection.Take(lSize + kFrameHeaderSize);
            if (nullptr != lFrame && nullptr != mFrameReceiver) {
                TakeFrame(lHeader[1], lFrame + kFrameHeaderSize, lSize);
                lDelivered = true;
            }
            mConnection.SkipLineEnds();
        }
        // Each try reads once. One that brought nothing met the end of the data.
        if (nullptr == lFrame && mConnection.Left() == lLeftBefore) { break; }
    }
    mConnection.Normalize();
    return lDelivered;
}

bool Messages::RecvInterleavedPackets() {
    if (!mConnection.IsOpen() || mConnection.IsOutOfStep()) { return false; }
    // What came with an answer goes first: it may be all there is.
    bool lDelivered = HandleInterleavedData(false);
    const bool lIsMore = mConnection.FillInterleavedBuf();
    lDelivered = HandleInterleavedData(false) || lDelivered;
    return lDelivered || AnswerRequest(lIsMore);
}

bool Messages::AnswerRequest(bool aMayWait) {
    char lCh = 0;
    if (0 == mConnection.Left() || !mConnection.PeekCh(lCh, 0) || kFrameMagic == lCh) { return false; }
    if (mConnection.Speaks().Resynchronizes() && !IsText(lCh)) {
        SkipGarbage();
        return HandleInterleavedData(false);
    }
    if (!aMayWait && !mConnection.HoldsEmptyLine()) { return false; }
    mConnection.StartWait(Connection::Clock::now());
    try {
        std::string lLine;
        mConnection.ReadLn(lLine);
        if (IsStatusLine(lLine) && HasUnawaited()) {
            DropResponse(lLine);
            return HandleInterleavedData(false);
        }
        HandleRequest(lLine);
    } catch (...) {
        // What is left of the request is no message.
        mConnection.SetOutOfStep();
        throw;
    }
    mConnection.Normalize();
    return true;
}

int Messages::Send_RR(const void* aData, UInt aSize) {
    try {
        return mConnection.WriteDirectly(aData, aSize);
    } catch (...) {
        mWhyLost = std::current_exception();
        throw;
    }
}

}  // namespace Player::MediaSessions
