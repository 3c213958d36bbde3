#include "support/ScriptedServer.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "support/Listener.hpp"
#include "support/Packets.hpp"

namespace TestSupport {

namespace {

constexpr unsigned kTracks = 2;
constexpr int kLingerSliceMs = 10;

[[noreturn]] void Fail(const std::string& aText) {
    throw std::runtime_error(aText);
}

/// Hexadecimal bytes, "??" for any.
bool MatchesHex(const std::string& aPattern, const Bytes& aBytes) {
    std::string lPattern;
    for (const char lChar : aPattern) {
        if (' ' != lChar) { lPattern += lChar; }
    }
    if (lPattern.size() != 2 * aBytes.size()) { return false; }
    for (std::size_t i = 0; i < aBytes.size(); ++i) {
        const std::string lPair = lPattern.substr(2 * i, 2);
        if ("??" != lPair && FromHex(lPair)[0] != aBytes[i]) { return false; }
    }
    return true;
}

std::size_t HexSize(const std::string& aPattern) {
    std::size_t lDigits = 0;
    for (const char lChar : aPattern) {
        lDigits += ' ' != lChar ? 1 : 0;
    }
    return lDigits / 2;
}

std::string Difference(const std::string& aExpected, const std::string& aReceived) {
    return "\n    the client sent " + aReceived + "\n    instead of      " + aExpected;
}

}  // namespace

ScriptedServer::ScriptedServer(const std::string& aScript, std::chrono::milliseconds aPatience, int aFamily)
    : mSteps(ParseScript(aScript)), mPatience(aPatience), mListener(ListenOnLoopback(mPort, aFamily)) {
    mVariables.Set("port", std::to_string(mPort));
    for (unsigned lTrack = 0; lTrack < kTracks; ++lTrack) {
        mMedia.emplace_back();
        mVariables.Set("server_port" + std::to_string(lTrack), mMedia.back().Ports());
    }
    mThread = std::thread([this] { Run(); });
}

ScriptedServer::~ScriptedServer() {
    Failure();
    close(mListener);
}

std::string ScriptedServer::URL(const std::string& aPath) const {
    return "rtsp://127.0.0.1:" + std::to_string(mPort) + "/" + aPath;
}

UdpPeer& ScriptedServer::Media(unsigned aTrack) {
    UdpPeer& lPeer = mMedia.at(aTrack);
    const std::string lPort = mVariables.Get("client_port" + std::to_string(aTrack));
    if (!lPort.empty()) { lPeer.SetClientPort(static_cast<unsigned>(std::stoul(lPort))); }
    return lPeer;
}

void ScriptedServer::Notify(const std::string& aName) {
    const std::lock_guard<std::mutex> lLock(mMutex);
    mNotified.insert(aName);
}

bool ScriptedServer::Await(const std::string& aName) {
    return mPatience.Until([&] {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return mFailed || 0 != mNotified.count(aName);
    }) && !mFailed;
}

std::string ScriptedServer::Failure() {
    mPatience.Stop();
    if (mThread.joinable()) { mThread.join(); }
    return mFailure;
}

void ScriptedServer::Run() {
    std::string lWhere;
    try {
        if (mSteps.empty() || Step::Kind::kAccept != mSteps.front().mKind) {
            lWhere = "before the first line of the script: ";
            Accept();
        }
        for (const auto& lStep : mSteps) {
            lWhere = "line " + std::to_string(lStep.mLine) + " of the script: ";
            Play(lStep);
        }
        Flush();
        lWhere = "behind the last line of the script: ";
        Linger();
    } catch (const std::exception& lError) {
        mFailure = lWhere + lError.what();
        mFailed = true;
    }
    mClient.reset();
}

void ScriptedServer::Play(const Step& aStep) {
    using Kind = Step::Kind;
    if (aStep.IsSend()) { return Collect(aStep); }
    Flush();
    switch (aStep.mKind) {
        case Kind::kExpectLine: return ExpectLine(aStep.mText);
        case Kind::kExpectRest: return ExpectRest();
        case Kind::kExpectBytes: return ExpectBytes(aStep.mText);
        case Kind::kExpectFrame: return ExpectFrame(aStep);
        case Kind::kExpectEnd: return Client().ReadEnd(mFrames);
        case Kind::kSendRtp:
        case Kind::kSendRtcp: return SendDatagram(aStep);
        case Kind::kSplit: return Client().AwaitRead();
        case Kind::kClose: return End(&Connection::Close);
        case Kind::kReset: return End(&Connection::Reset);
        case Kind::kShutdown: return Client().Shutdown();
        case Kind::kAccept: return Accept();
        case Kind::kNotify:
            if (mClient) { mClient->AwaitReceived(); }
            return Notify(aStep.mText);
        case Kind::kAwait: return AwaitNotified(aStep.mText);
        default: Fail("not a step");
    }
}

void ScriptedServer::Linger() {
    bool lOpen = nullptr != mClient;
    bool lLast = false;
    while (!lLast) {
        // Looking once more after the stop sees all that the client sent before it.
        lLast = mPatience.Stopped();
        std::string lText;
        if (lOpen) { lOpen = mClient->ReadPresent(lText, mFrames); }
        if (!lText.empty()) { Fail("the client sent " + Quoted(lText)); }
        pollfd lPolls[] = {{mListener, POLLIN, 0}, {lOpen ? mClient->Descriptor() : -1, POLLIN, 0}};
        poll(lPolls, 2, lLast ? 0 : kLingerSliceMs);
        if (0 != lPolls[0].revents) { Fail("the client opened another connection"); }
    }
}

void ScriptedServer::ExpectLine(const std::string& aPattern) {
    const std::string lLine = Client().ReadLine(mFrames);
    if (!mVariables.Match(aPattern + "\r\n", lLine)) {
        Fail(Difference(Quoted(mVariables.ExpandKnown(aPattern) + "\r\n"), Quoted(lLine)));
    }
}

void ScriptedServer::ExpectRest() {
    while ("\r\n" != Client().ReadLine(mFrames)) {}
}

void ScriptedServer::ExpectBytes(const std::string& aPattern) {
    const std::string lPattern = mVariables.Expand(aPattern);
    const Bytes lBytes = Client().ReadBytes(HexSize(lPattern));
    if (!MatchesHex(lPattern, lBytes)) { Fail(Difference(lPattern, Hex(lBytes))); }
}

void ScriptedServer::ExpectFrame(const Step& aStep) {
    if (mFrames.empty()) { mFrames.push_back(Client().ReadFrame()); }
    const Connection::Frame lFrame = mFrames.front();
    mFrames.erase(mFrames.begin());
    const std::string lPattern = mVariables.Expand(aStep.mText);
    if (lFrame.mChannel != aStep.mIndex || !MatchesHex(lPattern, lFrame.mPayload)) {
        Fail(Difference(std::to_string(aStep.mIndex) + " " + lPattern,
                        std::to_string(lFrame.mChannel) + " " + Hex(lFrame.mPayload)));
    }
}

void ScriptedServer::Collect(const Step& aStep) {
    using Kind = Step::Kind;
    switch (aStep.mKind) {
        case Kind::kSendLine:
            if (std::string::npos != aStep.mText.find("{length}")) {
                mVariables.Set("length", std::to_string(BodySize(aStep)));
            }
            mOut += mVariables.Expand(aStep.mText) + "\r\n";
            break;
        case Kind::kSendBody: mOut += mVariables.Expand(aStep.mText) + "\r\n"; break;
        case Kind::kSendText: mOut += Unescaped(mVariables.Expand(aStep.mText)); break;
        case Kind::kSendBytes: mOut += AsText(FromHex(mVariables.Expand(aStep.mText))); break;
        default: {
            const Bytes lPayload = FromHex(mVariables.Expand(aStep.mText));
            mOut += AsText(InterleavedFrame(aStep.mIndex, lPayload));
        }
    }
}

std::size_t ScriptedServer::BodySize(const Step& aHeader) const {
    std::size_t lSize = 0;
    for (const Step* lStep = &aHeader + 1; lStep != mSteps.data() + mSteps.size(); ++lStep) {
        if (Step::Kind::kSendBody == lStep->mKind) {
            lSize += mVariables.Expand(lStep->mText).size() + 2;
        } else if (Step::Kind::kSendLine != lStep->mKind || 0 != lSize) {
            break;
        }
    }
    return lSize;
}

void ScriptedServer::SendDatagram(const Step& aStep) {
    const UdpPeer& lPeer = Media(aStep.mIndex);
    const Bytes lBytes = FromHex(mVariables.Expand(aStep.mText));
    if (Step::Kind::kSendRtp == aStep.mKind) {
        lPeer.SendRtp(lBytes);
    } else {
        lPeer.SendRtcp(lBytes);
    }
}

void ScriptedServer::Flush() {
    if (mOut.empty()) { return; }
    Client().Send(mOut);
    mOut.clear();
}

void ScriptedServer::End(void (Connection::*aHow)()) {
    std::string lText;
    Client().ReadPresent(lText, mFrames);
    if (!lText.empty()) { Fail("the client sent " + Quoted(lText)); }
    ((*mClient).*aHow)();
    mClient.reset();
}

void ScriptedServer::Accept() {
    mClient = std::make_unique<Connection>(mListener, mPatience);
}

void ScriptedServer::AwaitNotified(const std::string& aName) {
    const bool lDone = mPatience.Until([&] {
        const std::lock_guard<std::mutex> lLock(mMutex);
        return 0 != mNotified.count(aName);
    });
    if (!lDone) { Fail("nobody notified " + aName); }
}

Connection& ScriptedServer::Client() {
    if (!mClient) { Fail("there is no connection"); }
    return *mClient;
}

}  // namespace TestSupport
