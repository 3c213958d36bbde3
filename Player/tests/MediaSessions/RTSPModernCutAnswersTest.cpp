// Starts that are led on by a refusal, with any answer on the way cut short, sent twice or late.
#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <ostream>
#include <thread>

#include "Crypto/Crypto.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using ::testing::AnyOf;
using Testing::Peer;
using ::testing::StartsWith;
using TestSupport::Thrown;

/// What the server does with one of its answers.
enum class Way { Whole, Cut, Twice, Late };

struct Course {
    const char* mName;
    const char* mTransports;
    /// The status and headers of the answer to a request, without its number; empty for the one that grants it.
    std::function<std::string(const std::string& aMethod, const std::string& aRequest)> mRefusal;
    const char* mSupported = "";
    const char* mSession = "12";
};

void PrintTo(const Course& aCourse, std::ostream* aOut) {
    *aOut << aCourse.mName;
}

bool Has(const std::string& aText, const char* aPart) {
    return std::string::npos != aText.find(aPart);
}

const char* const kQuestion = "401 Unauthorized\r\nWWW-Authenticate: Digest realm=\"cam\", nonce=\"n\"\r\n";

const Course kCourses[] = {
    {"MulticastOverUDP", "udp,tcp",
     [](const std::string& aMethod, const std::string& aRequest) {
         const bool lIsUDP = "SETUP" == aMethod && !Has(aRequest, "RTP/AVP/TCP");
         return std::string(lIsUDP ? "200 OK\r\nSession: 11\r\nTransport: RTP/AVP;multicast;port=5000-5001\r\n" : "");
     }},
    {"UDPUnsupportedAtOnce", "udp,tcp",
     [](const std::string& aMethod, const std::string& aRequest) {
         const bool lIsUDP = "SETUP" == aMethod && !Has(aRequest, "RTP/AVP/TCP");
         return std::string(lIsUDP ? "461 Unsupported Transport\r\n" : "");
     },
     "Supported: 3gpp-pipelined\r\n"},
    {"QuestionsToAllAtOnce", "tcp",
     [](const std::string& aMethod, const std::string& aRequest) {
         return std::string("DESCRIBE" != aMethod && !Has(aRequest, "Authorization: Digest") ? kQuestion : "");
     },
     "Supported: 3gpp-pipelined\r\n"},
    {"RedirectedSetup", "tcp",
     [](const std::string& aMethod, const std::string& aRequest) {
         return std::string("SETUP" == aMethod && Has(aRequest, "/clip") ? "302 Found\r\nLocation: /live\r\n" : "");
     }},
    {"RedirectedPlay", "tcp",
     [](const std::string& aMethod, const std::string& aRequest) {
         return std::string("PLAY" == aMethod && Has(aRequest, "/clip") ? "307 Moved\r\nLocation: /live\r\n" : "");
     }},
};

/// Goes its course, and does otherwise with one answer.
class OddServer {
public:
    explicit OddServer(const Course& aCourse)
        : mCourse(aCourse), mListener(Peer::Listening()), mThread([this] { Run(); }) {}
    OddServer(const OddServer&) = delete;
    OddServer& operator=(const OddServer&) = delete;
    ~OddServer() {
        mStop = true;
        shutdown(mListener, SHUT_RDWR);
        mThread.join();
        close(mListener);
    }

    std::string URL() const { return "rtsp://127.0.0.1:" + std::to_string(Peer::PortOf(mListener)) + "/clip"; }
    /// From now on, does so with the answer that comes behind so many; `aSize` is what is left of a cut one.
    void Prepare(Way aWay, int aAnswer, std::size_t aSize = 0) {
        mWay = aWay;
        mSize = aSize;
        mLastSize = 0;
        mAnswersLeft = aAnswer;
    }
    bool HasDoneIt() const { return mAnswersLeft < 0; }
    /// Of the answer that was sent otherwise.
    std::size_t LastSize() const { return mLastSize; }

private:
    void Run() {
        while (!mStop) {
            const int lClient = accept(mListener, nullptr, nullptr);
            if (lClient < 0) { continue; }
            for (std::string lText; Read(lClient, lText);) {
                const std::size_t lEnd = lText.find("\r\n\r\n") + 4;
                if (!Serve(lClient, lText.substr(0, lEnd))) { break; }
                lText.erase(0, lEnd);
            }
            close(lClient);
        }
    }
    static bool Read(int aClient, std::string& aText) {
        while (!Has(aText, "\r\n\r\n")) {
            char lPiece[4096];
            const ssize_t lGot = recv(aClient, lPiece, sizeof(lPiece), 0);
            if (lGot <= 0) { return false; }
            aText.append(lPiece, static_cast<std::size_t>(lGot));
        }
        return true;
    }

    std::string Answer(const std::string& aRequest) const {
        const std::string lMethod = aRequest.substr(0, aRequest.find(' '));
        const std::size_t lCSeq = aRequest.find("CSeq: ");
        const std::string lNumber = aRequest.substr(lCSeq, aRequest.find('\r', lCSeq) - lCSeq) + "\r\n";
        const std::string lRefusal = mCourse.mRefusal(lMethod, aRequest);
        if (!lRefusal.empty()) { return "RTSP/1.0 " + lRefusal + lNumber + "\r\n"; }
        std::string lBody;
        std::string lHeaders;
        if ("DESCRIBE" == lMethod) {
            lBody = "v=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:t\r\n";
            lHeaders = mCourse.mSupported + ("Content-Length: " + std::to_string(lBody.size()) + "\r\n");
        } else if ("SETUP" == lMethod) {
            lHeaders =
                std::string("Session: ") + mCourse.mSession + "\r\nTransport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n";
        }
        return "RTSP/1.0 200 OK\r\n" + lNumber + lHeaders + "\r\n" + lBody;
    }

    /// False when that is the end of the connection: also for a response, since nothing was asked.
    bool Serve(int aClient, const std::string& aRequest) {
        if (0 == aRequest.compare(0, 5, "RTSP/")) { return false; }
        std::string lAnswer = Answer(aRequest);
        const bool lIsOdd = 0 == mAnswersLeft--;
        if (lIsOdd) { mLastSize = lAnswer.size(); }
        if (lIsOdd && Way::Cut == mWay) { lAnswer.resize(std::min<std::size_t>(mSize, lAnswer.size())); }
        if (lIsOdd && Way::Twice == mWay) { lAnswer += lAnswer; }
        if (lIsOdd && Way::Late == mWay) { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }
        send(aClient, lAnswer.data(), lAnswer.size(), MSG_NOSIGNAL);
        return !lIsOdd || Way::Cut != mWay;
    }

    const Course& mCourse;
    int mListener;
    std::atomic<bool> mStop{false};
    // Set while no request is under way.
    std::atomic<Way> mWay{Way::Whole};
    std::atomic<std::size_t> mSize{0};
    std::atomic<std::size_t> mLastSize{0};
    std::atomic<int> mAnswersLeft{-1};
    std::thread mThread;
};

void Configure(MediaPlayer& aPlayer, const char* aTransports) {
    for (const auto& lSetting : {std::pair("RTSP:Profile", "modern"), std::pair("RTSP:Transports", aTransports),
                                 std::pair("RTSP:UserName", "me"), std::pair("RTSP:Password", "secret"),
                                 std::pair("RTSP:TimeOutAfter", "5")}) {
        aPlayer.SetConfigParam(lSetting.first, lSetting.second);
    }
}

class RTSPModernCutTest : public testing::TestWithParam<Course> {
protected:
    void SetUp() override {
        if (!Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
        Configure(mPlayer, GetParam().mTransports);
    }
    std::string PlayThrough() {
        return Thrown([this] {
            mPlayer.Play(mServer.URL(), Time(0));
            mPlayer.Close();
        });
    }
    /// How many answers a play that goes as it should takes.
    int Answers() {
        for (int lAnswer = 0;; ++lAnswer) {
            mServer.Prepare(Way::Whole, lAnswer);
            EXPECT_EQ("nothing", PlayThrough());
            if (!mServer.HasDoneIt()) { return lAnswer; }
        }
    }
    void ExpectRecovery(const std::string& aFirst) {
        // A failure of the network, the dialogue or the description; or what was odd did not matter.
        EXPECT_THAT(aFirst, AnyOf("nothing", StartsWith("3/"), StartsWith("17/"), StartsWith("18/")));
        mServer.Prepare(Way::Whole, -1);
        EXPECT_EQ("nothing", PlayThrough()) << "behind " << aFirst;
    }

    const TestSupport::ReportCapture mReports;
    OddServer mServer{GetParam()};
    MediaPlayer mPlayer;
};

TEST_P(RTSPModernCutTest, AnyAnswerMayBeCutShort) {
    constexpr std::size_t kStep = 5;
    const int lAnswers = Answers();
    ASSERT_LE(4, lAnswers);
    for (int lAnswer = 0; lAnswer < lAnswers; ++lAnswer) {
        std::size_t lSize = 0;
        for (std::size_t lCut = 0; lCut <= lSize; lCut += kStep) {
            SCOPED_TRACE(std::to_string(lAnswer) + " " + std::to_string(lCut));
            mServer.Prepare(Way::Cut, lAnswer, lCut);
            const std::string lFirst = PlayThrough();
            EXPECT_TRUE(mServer.HasDoneIt());
            lSize = mServer.LastSize();
            ExpectRecovery(lFirst);
        }
    }
}

TEST_P(RTSPModernCutTest, AnyAnswerMayComeTwice) {
    const int lAnswers = Answers();
    for (int lAnswer = 0; lAnswer < lAnswers; ++lAnswer) {
        SCOPED_TRACE(lAnswer);
        mServer.Prepare(Way::Twice, lAnswer);
        ExpectRecovery(PlayThrough());
    }
}

TEST_P(RTSPModernCutTest, AnyAnswerMayBeLate) {
    const int lAnswers = Answers();
    for (int lAnswer = 0; lAnswer < lAnswers; ++lAnswer) {
        mServer.Prepare(Way::Late, lAnswer);
        EXPECT_EQ("nothing", PlayThrough()) << lAnswer;
    }
}

/// A question to a sign of life, which nothing waits for: what follows goes out on a connection that has ended in the
/// middle of an answer, or at its end.
TEST(RTSPModernKeepAliveTest, TheQuestionToItMayBeCutShort) {
    if (!Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    const Course lCourse{"QuestionToASignOfLife", "tcp",
                         [](const std::string& aMethod, const std::string& aRequest) {
                             const bool lAsks = "OPTIONS" == aMethod && !Has(aRequest, "Authorization: Digest");
                             return std::string(lAsks ? kQuestion : "");
                         },
                         "", "12;timeout=1"};
    constexpr int kAnswersBefore = 3;
    const TestSupport::ReportCapture lReports;
    OddServer lServer(lCourse);
    MediaPlayer lPlayer;
    Configure(lPlayer, lCourse.mTransports);
    for (const std::size_t lSize : {0U, 50U, 1000U}) {
        lServer.Prepare(Way::Cut, kAnswersBefore, lSize);
        const std::string lFirst = Thrown([&] {
            lPlayer.Play(lServer.URL(), Time(0));
            for (int lLook = 0; lLook < 6000 && !lServer.HasDoneIt(); ++lLook) {
                lPlayer.TakeIn();
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            EXPECT_TRUE(lServer.HasDoneIt());
            lPlayer.TakeIn();
            lPlayer.Pause();
            lPlayer.Resume();
            lPlayer.Close();
        });
        EXPECT_THAT(lFirst, AnyOf("nothing", StartsWith("3/"), StartsWith("17/"), StartsWith("18/"))) << lSize;
        lServer.Prepare(Way::Whole, -1);
        EXPECT_EQ("nothing", Thrown([&] {
                      lPlayer.Play(lServer.URL(), Time(0));
                      lPlayer.Close();
                  }))
            << lSize << " " << lFirst;
    }
}

INSTANTIATE_TEST_SUITE_P(Courses, RTSPModernCutTest, testing::ValuesIn(kCourses),
                         [](const auto& aInfo) { return std::string(aInfo.param.mName); });

}  // namespace
}  // namespace Player
