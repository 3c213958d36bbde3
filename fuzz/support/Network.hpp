#pragma once

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "support/Input.hpp"

namespace Fuzz {

/// What a control connection may hold. A message may claim any size, and room for 2 MiB of it is made; when that is
/// outgrown there is room for twice as much, while the old room is still there.
constexpr std::size_t kConnectionBytes = 7 << 20;

/// What lies between the library and a server, without a system in between: while one lives, the library's calls for
/// sockets, names and the time of day are answered here, from a script. Nothing leaves the process and nothing waits.
///
/// Control connections, one after the other, read the one script. Each read gets one piece at most, so that pieces are
/// what arrives at once. Behind the script the server has closed its side.
class Network {
public:
    Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
    ~Network();

    // The script of the control connection.
    void Send(const Bytes& aPiece);
    void Send(const std::string& aText) { Send(Bytes(aText.begin(), aText.end())); }
    void Send(const std::vector<Bytes>& aPieces);
    /// Until it is waited for, nothing more is there.
    void Pause() { mScript.push_back({Event::kPause, {}}); }
    /// Nothing comes for as long as is waited.
    void Silence() { mScript.push_back({Event::kSilence, {}}); }
    /// The connection ends; the script goes on with the next one.
    void Close() { mScript.push_back({Event::kClose, {}}); }
    void Reset() { mScript.push_back({Event::kReset, {}}); }
    bool IsPlayed() const { return mScript.empty(); }

    /// The system refuses the next call of this kind with this `errno`; several are lined up.
    enum class Call { kSocket, kConnect, kPending, kBind, kWait, kRead, kWrite };
    void Refuse(Call aCall, int aError) { mRefusals[aCall].push_back(aError); }
    /// A write to a control connection takes so many bytes at most; with 0 there is never room for any.
    void TakeAtMost(std::size_t aBytes) { mMostTaken = aBytes; }
    /// The system and the server are as at the start.
    void Recover();

    /// A datagram to the media socket that was bound as the `aIdx`th: RTP of the first track, its RTCP, RTP of the
    /// second and so on. Nobody gets it when there is none.
    void Deliver(std::size_t aIdx, const Bytes& aDatagram);
    /// All clocks go on.
    void Advance(unsigned aMilliseconds) { mMicroseconds += aMilliseconds * 1000LL; }

    /// What the library has written to control connections.
    const std::string& Sent() const { return mSent; }
    void ForgetSent() { mSent.clear(); }
    std::size_t Datagrams() const { return mDatagrams; }
    std::size_t OpenSockets() const { return mSockets.size(); }

    // The calls, as the system answers them: -1 and `errno` for failures.
    int OpenSocket(int aType);
    bool Has(int aSocket) const { return 0 != mSockets.count(aSocket); }
    int CloseSocket(int aSocket);
    int Connect(int aSocket);
    int Bind(int aSocket);
    /// 1, or 0 after so many microseconds.
    int IsReadable(int aSocket, long long aWait);
    int IsWritable(int aSocket, long long aWait);
    int Unread(int aSocket) const;
    ssize_t Receive(int aSocket, void* aData, std::size_t aSize);
    ssize_t Write(int aSocket, const void* aData, std::size_t aSize);
    /// The refusal that is next, or 0.
    int Refusal(Call aCall);
    long long Microseconds() const { return mMicroseconds; }

    /// The one that lives, or null.
    static Network* Current();

private:
    static constexpr std::size_t kNoLimit = ~std::size_t{0};
    enum class Event { kPiece, kPause, kSilence, kClose, kReset };
    struct Step {
        Event mEvent;
        Bytes mPiece;
    };
    struct Socket {
        bool mIsStream = false;
        bool mIsConnected = false;
        bool mIsBound = false;
        /// The server has ended this connection.
        bool mIsEnded = false;
        std::deque<Bytes> mDatagrams;
    };

    Socket& At(int aSocket);
    ssize_t ReceivePiece(Socket& aSocket, void* aData, std::size_t aSize);
    static ssize_t ReceiveDatagram(Socket& aSocket, void* aData, std::size_t aSize);

    std::deque<Step> mScript;
    std::map<int, Socket> mSockets;
    /// Datagram sockets in the order in which they were bound.
    std::vector<int> mBound;
    std::map<Call, std::deque<int>> mRefusals;
    std::size_t mMostTaken = kNoLimit;
    std::string mSent;
    std::size_t mDatagrams = 0;
    long long mMicroseconds = 1700000000000000;
};

}  // namespace Fuzz
