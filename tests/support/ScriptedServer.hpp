#pragma once

#include <sys/socket.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/Bytes.hpp"
#include "support/Connection.hpp"
#include "support/Patience.hpp"
#include "support/Script.hpp"
#include "support/UdpPeer.hpp"
#include "support/Variables.hpp"

namespace TestSupport {

/// A server on the loopback that plays one written dialogue on a thread of its own and remembers where the
/// client departed from it. It never hangs: every wait ends after ten seconds with words.
///
///     ScriptedServer lServer(R"(
///         C: DESCRIBE rtsp://127.0.0.1:{port}/clip RTSP/1.0
///         C: CSeq: 1
///         C:
///         S: RTSP/1.0 200 OK
///         S: CSeq: 1
///         S: Content-Length: {length}
///         S:
///         S| v=0
///     )");
///     ...
///     EXPECT_EQ("", lServer.Failure());
///
/// The client must send (frames that it sends where a line is expected are put aside, see `C$`):
///     C: text         exactly this line, ended by CR LF; without text the empty line
///     C...            any lines up to and including the empty one
///     C# 80 ?? 0a     exactly these bytes; ?? is any byte
///     C$ 1 81 c9 ??   an interleaved frame on channel 1: the next one, be it put aside or still to come
///     END             the end of its side of the connection
/// The server sends; neighbouring lines leave in one write:
///     S: text         a line, with CR LF; {length} is the size of the S| lines that follow
///     S| text         a line of a body, with CR LF
///     S~ text\r       text as it is; \r \n \t \\ \x24 are understood
///     S# 24 00 00 01  bytes
///     S$ 0 80 60 ...  an interleaved frame on channel 0 around these bytes
///     RTP 0 80 60 ... a datagram from Media(0)'s RTP port to port {client_port0}; RTCP 0: to {client_port0+1}
/// The server acts:
///     SPLIT           goes on when the client has read all that was sent: what follows is another read
///     SHUTDOWN        ends its side, goes on reading
///     CLOSE, RESET    ends the connection, with FIN or with RST
///     ACCEPT          takes the client's next connection (the first is taken without being told)
///     NOTIFY name     all that was sent is with the client's system: wakes Await("name")
///     AWAIT name      waits for Notify("name")
///
/// {port} is the server's port, {server_port0} and {server_port1} the port pairs of Media(0) and Media(1). A name
/// that has no value takes it from the first C: line in which it stands, for example {client_port0}-{client_port0+1}.
/// {*} in a C: line is any text. Once the script is played, whatever else the client sends is a failure.
class ScriptedServer {
public:
    /// Throws `std::invalid_argument` for a script that can't be read.
    explicit ScriptedServer(const std::string& aScript, std::chrono::milliseconds aPatience = std::chrono::seconds(10),
                            int aFamily = AF_INET);
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;
    ~ScriptedServer();

    unsigned Port() const { return mPort; }
    /// "rtsp://127.0.0.1:<port>/<path>"
    std::string URL(const std::string& aPath = "clip") const;

    void Set(const std::string& aName, const std::string& aValue) { mVariables.Set(aName, aValue); }
    std::string Get(const std::string& aName) const { return mVariables.Get(aName); }
    /// The UDP ports of track 0 or 1; sends to {client_port0} or {client_port1} once the script knows them.
    UdpPeer& Media(unsigned aTrack);

    void Notify(const std::string& aName);
    /// False when the script did not come that far in time, or has failed.
    bool Await(const std::string& aName);

    /// Ends the dialogue; to be called when the client is done. Empty text: it went as written.
    std::string Failure();
    /// Interleaved frames from the client that no C$ asked for. After `Failure`.
    const std::vector<Connection::Frame>& Frames() const { return mFrames; }

private:
    void Run();
    void Play(const Step& aStep);
    /// Requires that the client sends nothing more.
    void Linger();

    void ExpectLine(const std::string& aPattern);
    void ExpectRest();
    void ExpectBytes(const std::string& aPattern);
    void ExpectFrame(const Step& aStep);
    void SendDatagram(const Step& aStep);
    void Collect(const Step& aStep);
    void Flush();
    void End(void (Connection::*aHow)());
    void Accept();
    void AwaitNotified(const std::string& aName);
    std::size_t BodySize(const Step& aHeader) const;
    Connection& Client();

    std::vector<Step> mSteps;
    Patience mPatience;
    unsigned mPort = 0;
    int mListener = -1;
    Variables mVariables;
    std::vector<UdpPeer> mMedia;

    // The thread's own until it is joined.
    std::unique_ptr<Connection> mClient;
    std::string mOut;
    std::vector<Connection::Frame> mFrames;
    std::string mFailure;

    std::mutex mMutex;
    /// What has been notified, by either side.
    std::set<std::string> mNotified;
    std::atomic<bool> mFailed{false};

    std::thread mThread;
};

}  // namespace TestSupport
