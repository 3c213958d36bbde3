// Answers cut short anywhere, in the middle of everything that a player does.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "MediaSessions/RTSP/Peer.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using Testing::Peer;
using ::testing::StartsWith;
using TestSupport::ReportCapture;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- ending in the middle

/// Answers every request, but one answer is cut short and ends the connection.
class CuttingServer {
public:
    explicit CuttingServer(const std::string& aTransport)
        : mTransport(aTransport), mListener(Peer::Listening()), mThread([this] { Run(); }) {}
    CuttingServer(const CuttingServer&) = delete;
    CuttingServer& operator=(const CuttingServer&) = delete;
    ~CuttingServer() {
        mStop = true;
        shutdown(mListener, SHUT_RDWR);
        mThread.join();
        close(mListener);
    }

    std::string URL() const { return "rtsp://127.0.0.1:" + std::to_string(Peer::PortOf(mListener)) + "/clip"; }
    /// From now on the first answer to this method has so many bytes.
    void Cut(const std::string& aMethod, std::size_t aSize) {
        mMethod = aMethod;
        mSize = aSize;
        mIsCut = true;
    }
    /// False when the answer came up, and was cut.
    bool IsStillToCut() const { return mIsCut; }

    std::string Answer(const std::string& aMethod, const std::string& aCSeq) const {
        std::string lHeaders;
        std::string lBody;
        if ("DESCRIBE" == aMethod) {
            lBody = "v=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:t\r\n";
            lHeaders = "Content-Base: " + URL() + "/\r\nContent-Length: " + std::to_string(lBody.size()) + "\r\n";
        } else if ("SETUP" == aMethod) {
            lHeaders = "Session: 12;timeout=60\r\nTransport: " + mTransport + "\r\n";
        } else if ("PLAY" == aMethod) {
            lHeaders = "Range: npt=0-10\r\nRTP-Info: url=" + URL() + "/t;seq=9;rtptime=8\r\n";
        } else if ("TEARDOWN" == aMethod) {
            lHeaders = "Connection: close\r\n";
        }
        return "RTSP/1.0 200 OK\r\nCSeq: " + aCSeq + "\r\n" + lHeaders + "\r\n" + lBody;
    }

private:
    void Run() {
        while (!mStop) {
            const int lClient = accept(mListener, nullptr, nullptr);
            if (lClient < 0) { continue; }
            for (std::string lText; Read(lClient, lText) && Serve(lClient, lText);) {
                lText.erase(0, lText.find("\r\n\r\n") + 4);
            }
            close(lClient);
        }
    }
    static bool Read(int aClient, std::string& aText) {
        while (std::string::npos == aText.find("\r\n\r\n")) {
            char lPiece[4096];
            const ssize_t lGot = recv(aClient, lPiece, sizeof(lPiece), 0);
            if (lGot <= 0) { return false; }
            aText.append(lPiece, static_cast<std::size_t>(lGot));
        }
        return true;
    }
    /// False when that is the end of the connection: also for a response, since nothing was asked.
    bool Serve(int aClient, const std::string& aText) {
        const std::string lMethod = aText.substr(0, aText.find(' '));
        if (0 == lMethod.compare(0, 5, "RTSP/")) { return false; }
        const std::size_t lCSeq = aText.find("CSeq: ") + 6;
        std::string lAnswer = Answer(lMethod, aText.substr(lCSeq, aText.find('\r', lCSeq) - lCSeq));
        const bool lCut = mIsCut && lMethod == mMethod;
        if (lCut) {
            lAnswer.resize(mSize);
            mIsCut = false;
        }
        send(aClient, lAnswer.data(), lAnswer.size(), MSG_NOSIGNAL);
        return !lCut;
    }

    std::string mTransport;
    int mListener;
    std::atomic<bool> mStop{false};
    // Set while no request is under way.
    std::string mMethod;
    std::size_t mSize = 0;
    std::atomic<bool> mIsCut{false};
    std::thread mThread;
};

/// Plays to the end, and tells how that went.
std::string PlayThrough(MediaPlayer& aPlayer, const std::string& aURL) {
    return Thrown([&] {
        aPlayer.Play(aURL, Time(0));
        aPlayer.Pause();
        aPlayer.Resume();
        aPlayer.Close();
    });
}

void ExpectEveryCutSurvived(CuttingServer& aServer, const char* aInterleaved, const char* aMethod) {
    const ReportCapture lReports;
    MediaPlayer lPlayer;
    lPlayer.SetConfigParam("RTSP:UseInterleavedRTP", aInterleaved);
    lPlayer.SetConfigParam("RTSP:TimeOutAfter", "5");
    const std::size_t lSize = aServer.Answer(aMethod, "1").size();
    for (std::size_t lCut = 0; lCut < lSize; ++lCut) {
        aServer.Cut(aMethod, lCut);
        const std::string lFirst = PlayThrough(lPlayer, aServer.URL());
        EXPECT_FALSE(aServer.IsStillToCut());
        // A failure of the network, the dialogue or the description; or what was cut did not matter.
        EXPECT_THAT(lFirst, ::testing::AnyOf("nothing", StartsWith("3/"), StartsWith("17/"), StartsWith("18/")))
            << aMethod << " " << lCut;
        // A TEARDOWN that is not granted is none the less the end.
        if (lCut < 20 && std::string("TEARDOWN") != aMethod) { EXPECT_NE("nothing", lFirst) << aMethod << " " << lCut; }
        EXPECT_EQ("nothing", PlayThrough(lPlayer, aServer.URL())) << aMethod << " " << lCut << " " << lFirst;
    }
}

TEST(RTSPCutShortTest, AnyAnswerMayEndAnywhereAndTheNextPlayWorks) {
    CuttingServer lServer("RTP/AVP/TCP;unicast;interleaved=0-1");
    for (const char* lMethod : {"DESCRIBE", "SETUP", "PLAY", "PAUSE", "TEARDOWN"}) {
        ExpectEveryCutSurvived(lServer, "1", lMethod);
    }
}

TEST(RTSPCutShortTest, SoMayAnAnswerAboutPorts) {
    CuttingServer lServer("RTP/AVP;unicast;source=127.0.0.1;server_port=9-9;ssrc=1A2B3C4D");
    ExpectEveryCutSurvived(lServer, "0", "SETUP");
}

}  // namespace
}  // namespace Player
