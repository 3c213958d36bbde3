#include "MediaSessions/RTSP/Connection.hpp"

#include <cerrno>
#include <vector>

#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "Player/Mem.hpp"
#include "Player/URL.hpp"
#include "Throw.hpp"

namespace Player::MediaSessions {

namespace {

constexpr UInt kOutCapacity = 2048;
constexpr UInt kInCapacity = 4096;
/// A single read can't bring more than this, so no more room is made for a message that claims to be larger.
constexpr UInt kMaxRead = 2 * 1024 * 1024;
/// Consumed and unconsumed bytes of one message: wide enough for any description, an end for one that never ends.
constexpr UInt kMaxBuffered = 4 * 1024 * 1024;
/// One drain reads at most this much; the rest waits in the socket for the next.
constexpr UInt kMaxDrain = 128 * 1024;
/// A message may take this many time-outs: neither one that trickles in, nor one that never comes while media flows,
/// keeps the session waiting for ever.
constexpr UInt kMostTimeOuts = 10;

constexpr char kCR = 13;
constexpr char kLF = 10;

bool IsLineEnd(Byte aByte) {
    return kCR == aByte || kLF == aByte;
}

}  // namespace

Connection::Connection(const Configuration& aConfig) : mConfig(aConfig), mOutBuf(kOutCapacity), mInBuf(kInCapacity) {}

void Connection::DoConnect(const std::string& aAuthority) {
    DoConnectionReset();
    DoReconnect(aAuthority);
}

void Connection::DoReconnect(const std::string& aAuthority) {
    const std::string& lProxy = mConfig.mUseProxy;
    // Names and passwords are for the server alone.
    const std::string lServer = URL::WithoutUserInfo(aAuthority);
    const std::string lVia = lProxy.empty() ? "None" : URL::WithoutUserInfo(lProxy);
    Report(__FILE__, __LINE__, Severity::Info, "Connecting to RTSP server: %s, Via proxy: %s", lServer.c_str(),
           lVia.c_str());
    try {
        if (mIsSecure && !lProxy.empty()) {
            PLAYER_THROW(NetworkErr, ErrorCode::kTLSFailed, "RTSP::DoReconnect(): %s", "No rtsps through a proxy");
        }
        const auto [lHost, lPort] = Speaks().Address(lProxy.empty() ? aAuthority : lProxy, mIsSecure);
        if (Speaks().TriesAllAddresses()) {
            ReachAny(Address::All(lHost.c_str(), lPort.c_str()));
        } else {
            ReachHost(lHost, lPort);
        }
        if (mIsSecure) { mSocket->Secure(lHost, mConfig.mTLSAuthorities, mConfig.mTimeOutAfter); }
        Report(__FILE__, __LINE__, Severity::Info, "Connected to IP: %s", mServerAddress.HostAsString(true).c_str());
    } catch (...) {
        mSocket.Set(nullptr);
        Report(__FILE__, __LINE__, Severity::Error, "Failed to connect to RTSP server: %s, Via proxy: %s",
               lServer.c_str(), lVia.c_str());
        throw;
    }
}

void Connection::Open(SInt aFamily) {
    mSocket.Set(new Sockets::SecureTCP(aFamily));
    ++mCount;
    if (!mConfig.mUseLocalIP.empty()) { mSocket->Bind(Address(mConfig.mUseLocalIP.c_str(), nullptr, aFamily)); }
}

void Connection::Reach() {
    mSocket->NonBlockingMode(true);
    mSocket->Connect(mServerAddress, mConfig.mTimeOutAfter);
    mSocket->NonBlockingMode(false);
}

void Connection::ReachHost(const std::string& aHost, const std::string& aPort) {
    Open(AF_INET);
    mServerAddress.Lookup(aHost.c_str(), aPort.c_str());
    Reach();
}

void Connection::ReachAny(const std::vector<Address>& aAddresses) {
    for (const Address& lAddress : aAddresses) {
        try {
            Open(lAddress.Family());
            mServerAddress = lAddress;
            return Reach();
        } catch (const NetworkErr& lException) {
            if (&lAddress == &aAddresses.back()) { throw; }
            Report(__FILE__, __LINE__, Severity::Info, "Trying the next address: %s", lException.Message());
        }
    }
}

void Connection::DoConnectionReset() {
    mReadPos = 0;
    mInBuf.Clear();
    mOutBuf.Clear();
    mSocket.Set(nullptr);
    mLineFeedMayFollow = false;
    mOutOfStep = false;
}

bool Connection::IsUsable() const {
    return IsOpen() && !mOutOfStep && !mSocket->HasClosed();
}

void Connection::StartWait(Clock::time_point aNow) {
    mWaitsSince = aNow;
}

bool Connection::HasWaitedTooLong() const {
    const std::chrono::duration<double> lWaited = Clock::now() - mWaitsSince;
    return lWaited.count() > static_cast<double>(kMostTimeOuts) * mConfig.mTimeOutAfter;
}

void Connection::Normalize() {
    if (0 == mReadPos) { return; }
    const UInt lLeft = Left();
    Mem::Move(mInBuf.Begin(), mInBuf.Begin() + mReadPos, lLeft);
    mInBuf.Resize(lLeft);
    mReadPos = 0;
}

bool Connection::FillBuf(UInt aSize) {
    try {
        bool lSettled = false;
        do {
            if (!IsOpen() || 0 == ReadOnce(aSize)) { return false; }
            // The read that shows how the last line ended is not the one that was asked for.
            lSettled = SettleLineEnd();
        } while (lSettled && !Have(aSize));
        return Have(aSize);
    } catch (...) {
        DoConnectionReset();
        throw;
    }
}

UInt Connection::ReadOnce(UInt aSize) {
    if (mInBuf.Size() >= kMaxBuffered) {
        PLAYER_THROW(RTSPErr, ErrorCode::kMalformed, "RTSP::FillBuf(): %s: %s", "Invalid response", "Message too long");
    }
    mInBuf.Reserve(mReadPos + Util::Max(Util::Min(aSize, kMaxRead), Left() + 1));
    const UInt lEnd = mInBuf.Size();
    const UInt lFree = mInBuf.Capacity() - lEnd;
    const SInt lResult =
        HasWaitedTooLong() ? Socket::kTimeOut : mSocket->Read(mInBuf + lEnd, lFree, mConfig.mTimeOutAfter);
    if (lResult < 0) {
        const int lErrno = errno;
        PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kReadFailed, Socket::kTimeOut == lResult ? ETIMEDOUT : lErrno,
                            "RTSP::FillBuf(): %s [%u, %d]", "Failed to read from RTSP socket",
                            static_cast<UInt>(lErrno), lResult);
    }
    mInBuf.Resize(lEnd + static_cast<UInt>(lResult));
    return static_cast<UInt>(lResult);
}

bool Connection::FillInterleavedBuf() {
    const UInt lLeftBefore = Left();
    try {
        for (bool lMore = IsOpen(); lMore;) {
            const UInt lEnd = mInBuf.Size();
            if (lEnd == mInBuf.Capacity()) {
                if (lEnd >= kMaxDrain) { break; }
                mInBuf.Reserve(lEnd + 1);
            }
            const UInt lFree = mInBuf.Capacity() - lEnd;
            const SInt lResult = mSocket->ReadAvailable(mInBuf + lEnd, lFree);
            if (lResult > 0) { mInBuf.Resize(lEnd + static_cast<UInt>(lResult)); }
            lMore = lResult > 0 && static_cast<UInt>(lResult) == lFree;
        }
    } catch (...) {
        DoConnectionReset();
        throw;
    }
    SettleLineEnd();
    return Left() > lLeftBefore;
}

bool Connection::SettleLineEnd() {
    if (!mLineFeedMayFollow || 0 == Left()) { return false; }
    mLineFeedMayFollow = false;
    if (kLF == static_cast<char>(mInBuf[mReadPos])) { ++mReadPos; }
    return true;
}

bool Connection::PeekCh(char& aCh, UInt aOff) {
    if (!Have(aOff + 1) && !FillBuf(aOff + 1)) { return false; }
    aCh = static_cast<char>(mInBuf[mReadPos + aOff]);
    return true;
}

bool Connection::Peek(void* aOut, UInt aSize) {
    if (!Have(aSize) && !FillBuf(aSize)) { return false; }
    Mem::Copy(aOut, static_cast<const void*>(mInBuf.Begin() + mReadPos), aSize);
    return true;
}

bool Connection::Skip(UInt aSize) {
    return nullptr != Take(aSize);
}

Byte* Connection::Take(UInt aSize) {
    if (!Have(aSize) && !FillBuf(aSize)) { return nullptr; }
    Byte* const lHere = mInBuf.Begin() + mReadPos;
    mReadPos += aSize;
    return lHere;
}

bool Connection::MeasureLn(Line& aLine) {
    char lCh = 0;
    UInt lCount = 0;
    bool lMore = PeekCh(lCh, 0);
    if (!lMore) { return false; }
    while (lMore && kCR != lCh && kLF != lCh) {
        lMore = PeekCh(lCh, ++lCount);
    }

    UInt lTerminator = lMore ? 1 : 0;
    if (lMore && kCR == lCh && Have(lCount + 2) && kLF == static_cast<char>(mInBuf[mReadPos + lCount + 1])) {
        lTerminator = 2;
    }
    aLine = {lCount, lTerminator};
    return true;
}

std::string Connection::LineText(const Line& aLine) const {
    return std::string(reinterpret_cast<const char*>(mInBuf.Begin() + mReadPos), aLine.mLength);
}

void Connection::Consume(const Line& aLine) {
    mReadPos += aLine.mLength + aLine.mTerminator;
    // Whether the last CR received ends the line alone is seen when more comes. Waiting for that here would
    // stall on a server that ends its lines so.
    mLineFeedMayFollow = 1 == aLine.mTerminator && 0 == Left() && kCR == static_cast<char>(mInBuf[mReadPos - 1]);
}

bool Connection::PeekLn(std::string& aLine) {
    Line lLine{};
    if (!MeasureLn(lLine)) { return false; }
    aLine = LineText(lLine);
    return true;
}

bool Connection::ReadLn(std::string& aLine) {
    Line lLine{};
    if (!MeasureLn(lLine)) { return false; }
    aLine = LineText(lLine);
    Consume(lLine);
    return true;
}

bool Connection::SkipLn() {
    Line lLine{};
    if (!MeasureLn(lLine)) { return false; }
    Consume(lLine);
    return true;
}

void Connection::SkipLineEnds() {
    while (Have(1) && IsLineEnd(mInBuf[mReadPos])) {
        ++mReadPos;
        mLineFeedMayFollow = false;
    }
}

bool Connection::HoldsEmptyLine() const {
    UInt lEnds = 0;
    for (UInt i = mReadPos; i < mInBuf.Size() && lEnds < 2; ++i) {
        const bool lIsSecondHalf = i > mReadPos && kLF == mInBuf[i] && kCR == mInBuf[i - 1];
        if (!lIsSecondHalf) { lEnds = IsLineEnd(mInBuf[i]) ? lEnds + 1 : 0; }
    }
    return 2 == lEnds;
}

void Connection::WriteLn() {
    mOutBuf.Append("\r\n", 2);
}

void Connection::WriteLn(const std::string& aLine) {
    mOutBuf.Append(aLine.data(), static_cast<UInt>(aLine.size()));
    WriteLn();
}

void Connection::Flush() {
    try {
        if (!IsOpen() || mSocket->HasClosed()) { DoReconnect(URL::Authority(mURL)); }
        WriteAll(mOutBuf.Begin(), mOutBuf.Size());
        mOutBuf.Clear();
    } catch (...) {
        DoConnectionReset();
        throw;
    }
}

int Connection::WriteDirectly(const void* aData, UInt aSize) {
    if (!IsOpen() || mSocket->HasClosed()) { return 0; }
    try {
        WriteAll(static_cast<const Byte*>(aData), aSize);
    } catch (...) {
        DoConnectionReset();
        throw;
    }
    return static_cast<int>(aSize);
}

void Connection::WriteAll(const Byte* aData, UInt aSize) {
    for (UInt lSent = 0; lSent < aSize;) {
        const SInt lResult = mSocket->Write(aData + lSent, aSize - lSent, mConfig.mTimeOutAfter);
        if (Socket::kTimeOut == lResult) {
            PLAYER_THROW_SYSTEM(NetworkErr, ErrorCode::kWriteFailed, ETIMEDOUT, "RTSP::Flush(): %s",
                                "The server reads nothing");
        }
        if (lResult > 0) { lSent += static_cast<UInt>(lResult); }
    }
}

}  // namespace Player::MediaSessions
