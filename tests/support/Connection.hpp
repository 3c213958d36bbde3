#pragma once

#include <string>
#include <vector>

#include "support/Bytes.hpp"
#include "support/Patience.hpp"

namespace TestSupport {

/// The server's end of one TCP connection to a client on this machine. What goes wrong is thrown as
/// `std::runtime_error`.
class Connection {
public:
    /// An interleaved frame.
    struct Frame {
        unsigned mChannel;
        Bytes mPayload;
    };

    /// Accepts one from a listening socket.
    Connection(int aListener, const Patience& aPatience);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    /// Up to and including LF. Frames in front of it go to `aFrames`.
    std::string ReadLine(std::vector<Frame>& aFrames);
    Bytes ReadBytes(std::size_t aCount);
    Frame ReadFrame();
    /// Waits until the client has ended its side; frames in front of that go to `aFrames`.
    void ReadEnd(std::vector<Frame>& aFrames);
    /// What is there now, without waiting; false when nothing more can come.
    bool ReadPresent(std::string& aText, std::vector<Frame>& aFrames);

    void Send(const std::string& aText);
    /// Waits until everything sent is in the client's receive queue.
    void AwaitReceived() const;
    /// Waits until the client has read everything that was sent.
    void AwaitRead() const;

    /// Ends the server's side; returns when the client's socket knows.
    void Shutdown();
    void Close();
    /// Ends the connection with RST.
    void Reset();

    int Descriptor() const { return mSocket; }

private:
    /// Adds to `mIn`; false at the connection's end.
    bool Fill();
    void Need(std::size_t aCount);
    bool TakeFrame(std::vector<Frame>& aFrames);
    void AwaitEnded() const;

    const Patience& mPatience;
    int mSocket;
    unsigned mServerPort = 0;
    unsigned mClientPort = 0;
    std::string mIn;
};

}  // namespace TestSupport
