#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "MediaSessions/RTSP/Configuration.hpp"
#include "Player/Buffer.hpp"
#include "Player/Ptr.hpp"
#include "Sockets/SecureTCP.hpp"

namespace Player::MediaSessions {

/// The control connection to the RTSP server or proxy: the socket, what was received from it and not yet
/// consumed, and the message being written. Reads wait for the configured time-out at most.
///
/// What fails on the socket throws `NetworkErr` and leaves the connection reset: closed, buffers empty.
class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// `aConfig` outlives the connection and is read anew each time.
    explicit Connection(const Configuration& aConfig);

    /// The presentation, whose server a lost connection is opened to again.
    const std::string& URL() const { return mURL; }
    const Dialect& Speaks() const { return *mConfig.mDialect; }
    void SetURL(const std::string& aURL) { mURL = aURL; }
    /// Where the socket was connected to: the server, or the proxy.
    const Address& ServerAddress() const { return mServerAddress; }
    bool IsOpen() const { return nullptr != mSocket.Ptr(); }
    /// How many there have been: what was sent on one is not answered on another.
    UInt Count() const { return mCount; }
    /// Readable when something has arrived; -1 when it is not open.
    SInt Descriptor() const { return IsOpen() ? mSocket->Descriptor() : -1; }
    /// Of the socket, in microseconds; 0 while it is unknown.
    UInt RoundTrip() const { return IsOpen() ? mSocket->RoundTrip() : 0; }

    /// Whether the next connections, lost ones that are opened again included, go within TLS.
    void SetSecure(bool aIsSecure) { mIsSecure = aIsSecure; }
    bool IsSecure() const { return mIsSecure; }

    /// Resets and opens a connection.
    void DoConnect(const std::string& aAuthority);
    /// Opens a new connection and keeps what is buffered.
    void DoReconnect(const std::string& aAuthority);
    /// Opens a connection to the first of the addresses, one at least, that can be reached.
    void ReachAny(const std::vector<Address>& aAddresses);
    void DoConnectionReset();
    /// Whether another request can go out on it: open at both ends, and in step.
    bool IsUsable() const;
    /// What is received next does not begin with a message: part of an earlier one was left behind.
    void SetOutOfStep() { mOutOfStep = true; }
    bool IsOutOfStep() const { return mOutOfStep; }

    /// From now on a message is awaited: for ten time-outs at most, however steadily bytes trickle in.
    void StartWait(Clock::time_point aNow);

    // Reading. What is asked for beyond the buffered bytes is tried with one read of the socket, never
    // more; where the bytes are still missing then, nothing is consumed and the answer is false.
    UInt Left() const { return mInBuf.Size() - mReadPos; }
    bool Have(UInt aSize) const { return Left() >= aSize; }
    /// Discards the consumed bytes.
    void Normalize();
    /// One read that waits. True when `aSize` bytes are there afterwards; false also at the end of the data.
    bool FillBuf(UInt aSize);
    /// Takes in what has arrived, without waiting. True when anything had.
    bool FillInterleavedBuf();
    /// The byte that many ahead.
    bool PeekCh(char& aCh, UInt aOff);
    bool Peek(void* aOut, UInt aSize);
    bool Skip(UInt aSize);
    /// Consumes bytes and returns where they lie, or null. Good until the next read.
    Byte* Take(UInt aSize);

    // A line ends with CR LF, CR, LF or the end of the data. False when there is no byte at all.
    bool ReadLn(std::string& aLine);
    bool PeekLn(std::string& aLine);
    bool SkipLn();
    /// Consumes what is buffered of empty lines.
    void SkipLineEnds();
    /// Whether an empty line ends what is buffered of a message's head.
    bool HoldsEmptyLine() const;

    // Writing: a message is assembled line by line and leaves in one piece.
    void WriteLn();
    void WriteLn(const std::string& aLine);
    /// Sends the message, opening the connection again first when the server has closed it.
    void Flush();
    /// Sends bytes past the message. The count, 0 when there is no open connection.
    int WriteDirectly(const void* aData, UInt aSize);

private:
    struct Line {
        UInt mLength;
        UInt mTerminator;
    };

    /// Makes the socket.
    void Open(SInt aFamily);
    /// Connects it to the server's address.
    void Reach();
    /// The host's first IPv4 address.
    void ReachHost(const std::string& aHost, const std::string& aPort);
    bool HasWaitedTooLong() const;
    /// Reads what comes next, with room for `aSize` bytes. The count, 0 at the end of the data.
    UInt ReadOnce(UInt aSize);
    bool MeasureLn(Line& aLine);
    std::string LineText(const Line& aLine) const;
    void Consume(const Line& aLine);
    /// Takes the first byte received after a CR, if it belongs to that CR. False when nothing was open.
    bool SettleLineEnd();
    void WriteAll(const Byte* aData, UInt aSize);

    const Configuration& mConfig;
    std::string mURL;
    Address mServerAddress;
    ScopedPtr<Sockets::SecureTCP> mSocket;
    UInt mCount = 0;
    bool mIsSecure = false;
    Buffer mOutBuf;
    Buffer mInBuf;
    /// Index in `mInBuf` of the first byte that is not consumed.
    UInt mReadPos = 0;
    /// The last byte consumed was a CR, and nothing was received after it yet.
    bool mLineFeedMayFollow = false;
    bool mOutOfStep = false;
    Clock::time_point mWaitsSince = Clock::now();
};

}  // namespace Player::MediaSessions
