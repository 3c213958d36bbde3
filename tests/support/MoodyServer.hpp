#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/Connection.hpp"
#include "support/Patience.hpp"
#include "support/UdpPeer.hpp"

namespace TestSupport {

/// A server on the loopback that serves one client after the other, as often as they come, with a clip of H.264 and
/// AAC that never ends, over UDP or within the connection, and lets each request feel its mood. It checks nothing of
/// what the client says.
class MoodyServer {
public:
    enum class Mood {
        kFine,     ///< Answers as it should.
        kStall,    ///< Says nothing more on this connection.
        kClose,    ///< Ends the connection instead of an answer.
        kReset,    ///< The same with RST.
        kHalf,     ///< Ends the connection in the middle of the answer.
        kRefuse,   ///< Answers with an error.
        kRubbish,  ///< Sends what is no answer.
        kMute,     ///< Answers, and sends no media from then on.
        kBye,      ///< Answers, and ends the media with BYE.
    };
    static constexpr unsigned kMoods = 9;

    /// Asked on the server's thread for each request, with its method.
    using Moods = std::function<Mood(const std::string& aMethod)>;

    explicit MoodyServer(Moods aMoods = nullptr);
    MoodyServer(const MoodyServer&) = delete;
    MoodyServer& operator=(const MoodyServer&) = delete;
    ~MoodyServer();

    /// "rtsp://127.0.0.1:<port>/<path>"; a path "live" is described without a range.
    std::string URL(const std::string& aPath = "clip") const;
    /// Whether one is connected, as far as the server has noticed.
    bool HasClient() const {
        const std::lock_guard<std::mutex> lLock(mSending);
        return nullptr != mClient;
    }
    /// Requests seen.
    unsigned Requests() const { return mRequests; }

private:
    static constexpr unsigned kTracks = 2;

    struct Request {
        std::string mMethod;
        std::string mURL;
        std::string mCSeq;
        std::string mTransport;
    };

    void Serve();
    void ServeClient();
    bool ReadRequest(Request& aRequest);
    /// False when the connection has ended.
    bool Answer(const Request& aRequest);
    void Send(const std::string& aText);
    std::string GoodAnswer(const Request& aRequest);
    std::string SetUp(const Request& aRequest);
    void SendMedia();
    void SendPackets();
    void SendPacket(unsigned aTrack, const Bytes& aPacket);
    void SayGoodbye();

    const Moods mMoods;
    Patience mPatience;
    unsigned mPort = 0;
    const int mListener;
    std::vector<UdpPeer> mMedia;
    mutable std::mutex mSending;  ///< Held for each piece that goes over the connection, and while it comes and goes.
    std::unique_ptr<Connection> mClient;
    std::atomic<bool> mInterleaved{false};
    std::atomic<bool> mStopped{false};
    std::atomic<bool> mPlaying{false};
    std::atomic<unsigned> mNumber{0};  ///< Of the next packet of both tracks.
    std::atomic<unsigned> mRequests{0};
    std::thread mServer;
    std::thread mSender;
};

}  // namespace TestSupport
