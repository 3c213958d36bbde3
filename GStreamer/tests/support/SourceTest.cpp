#include "support/SourceTest.hpp"

#include <map>
#include <sstream>

#include "MediaSessions/Dialogue.hpp"
#include "Player/MediaPlayer.hpp"
#include "support/Packets.hpp"
#include "threads/PlayerAccess.hpp"

namespace ElementTest {

using Byte = std::uint8_t;
using TestSupport::Bytes;
using TestSupport::RtpPacket;

const char* const kClip = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video range=0-20
    > SETUP clip/video 2 | UDP 0
    < 200 2 | Session: 5 | UDP 0
    > PLAY clip 3 | Session: 5 | Range: npt=0.000000-
    < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000 | Range: npt=0-20
    VIDEO 1 0.0 0.5
)";

const char* const kLive = R"(
    > DESCRIBE live 1
    < 200 1 | SDP live/ video
    > SETUP live/video 2 | UDP 0
    < 200 2 | Session: 5 | UDP 0
    > PLAY live 3 | Session: 5 | Range: npt=0.000000-
    < 200 3 | RTP-Info: url=r/video;seq=1;rtptime=90000
    VIDEO 1 0.0 0.5
)";

const char* const kTwoTracks = R"(
    > DESCRIBE clip 1
    < 200 1 | SDP clip/ video AAC range=0-20
    > SETUP clip/video 2 | UDP 0
    < 200 2 | Session: 5 | UDP 0
    > SETUP clip/audio 3 | Session: 5 | UDP 1
    < 200 3 | UDP 1
    > PLAY clip 4 | Session: 5 | Range: npt=0.000000-
    < 200 4 | RTP-Info: url=r/video;seq=1;rtptime=90000,url=r/audio;seq=1;rtptime=44100 | Range: npt=0-20
    VIDEO 1 0.0 0.5
    AUDIO 1 0.0 0.5
)";

namespace {

constexpr std::uint32_t kSsrc = 7;
unsigned gTimeOut = 0;
bool gInterleave = false;

Player::MediaPlayer* MakePlayer() {
    auto* const lPlayer = new Player::MediaPlayer;
    lPlayer->SetConfigParam("RTSP:TargetRTPBuffer", "0");
    if (gInterleave) { lPlayer->SetConfigParam("RTSP:UseInterleavedRTP", "1"); }
    if (0 != gTimeOut) {
        lPlayer->SetConfigParam("RTSP:TimeOutAfter", std::to_string(gTimeOut));
        lPlayer->SetConfigParam("RTSP:TimeOutRTPAfter", std::to_string(gTimeOut));
    }
    return lPlayer;
}

/// What a word for media stands for.
struct Kind {
    const char* mWay;  ///< "RTP 0" to the ports of track 0, "S$ 0" on channel 0.
    unsigned mPayloadType;
    unsigned mClockRate;
    Bytes mPayload;  ///< Of a packet; the sequence number follows.
    bool mMarker = true;
};

const Bytes kUnit = {0x65};
const Bytes kPicture = {0x00, 0x00, 0x01, 0xb6};
const Bytes kFrame = {0x02, 0xaa};  // two bytes of audio

/// Null when the word is none for media.
const Kind* KindOf(const std::string& aWord) {
    static const std::map<std::string, Kind> kKinds = {
        {"VIDEO", {"RTP 0", 96, 90000, kUnit}},     {"VIDEO1", {"RTP 1", 96, 90000, kUnit}},
        {"VIDEO$", {"S$ 0", 96, 90000, kUnit}},     {"OPEN", {"RTP 0", 96, 90000, kUnit, false}},
        {"VISUAL", {"RTP 0", 96, 90000, kPicture}}, {"AUDIO", {"RTP 1", 97, 44100, kFrame}},
        {"AUDIO$", {"S$ 2", 97, 44100, kFrame}}};
    const auto lFound = kKinds.find(aWord);
    return kKinds.end() == lFound ? nullptr : &lFound->second;
}

/// "VIDEO 1 0.0 0.5", of which the first word is read: a packet per time.
std::string Media(std::istringstream& aWords, const Kind& aKind) {
    using TestSupport::operator+;
    std::string lScript;
    unsigned lSeq = 0;
    aWords >> lSeq;
    for (double lTime = 0; aWords >> lTime; ++lSeq) {
        const RtpPacket lPacket = RtpPacket()
                                      .Type(aKind.mPayloadType)
                                      .Ssrc(kSsrc)
                                      .Seq(lSeq)
                                      .Timestamp(static_cast<std::uint32_t>((1 + lTime) * aKind.mClockRate))
                                      .Marker(aKind.mMarker)
                                      .Payload(aKind.mPayload + Bytes{static_cast<Byte>(lSeq)});
        lScript += std::string(aKind.mWay) + " " + TestSupport::Hex(lPacket.Build()) + "\n";
    }
    return lScript;
}

std::string Bye(std::istringstream& aWords) {
    std::string lTrack;
    aWords >> lTrack;
    const Bytes lBytes = TestSupport::RtcpCompound(kSsrc).RR().BYE().Build();
    return "RTCP " + lTrack + " " + TestSupport::Hex(lBytes) + "\n";
}

/// A request with any number, which succeeds. `aTimes`: how many came before.
std::string Any(const std::string& aMethod, unsigned aTimes) {
    const std::string lNumber = "{any" + std::to_string(aTimes) + "}";
    return "C: " + aMethod + " {*} RTSP/1.0\nC: CSeq: " + lNumber + "\nC...\nS: RTSP/1.0 200 OK\nS: CSeq: " + lNumber +
           "\nS:\n";
}

std::string WithAAC(const std::string& aLine) {
    std::string lLine = aLine;
    const auto lFound = lLine.find(" AAC");
    if (std::string::npos != lFound) { lLine.replace(lFound, 4, " audio:97:44100:MP4A-LATM"); }
    return lLine;
}

std::string Script(const std::string& aDialogue) {
    std::string lScript;
    unsigned lAny = 0;
    std::istringstream lLines(aDialogue);
    for (std::string lLine; std::getline(lLines, lLine);) {
        std::istringstream lWords(lLine);
        std::string lWord;
        lWords >> lWord;
        if (const Kind* const lKind = KindOf(lWord)) {
            lScript += Media(lWords, *lKind);
        } else if ("BYE" == lWord) {
            lScript += Bye(lWords);
        } else if ("PAUSE" == lWord || "TEARDOWN" == lWord) {
            lScript += Any(lWord, lAny++);
        } else {
            lScript += WithAAC(lLine) + "\n";
        }
    }
    return Player::MediaSessions::Dialogue(lScript);
}

}  // namespace

SourceTest::SourceTest() {
    TimeOutAfter(0);
    gInterleave = false;
    nsGstVireRtspSrc::PlayerAccess::SetMaker(MakePlayer);
    mElement = std::make_unique<ElementUnderTest>();
}

SourceTest::~SourceTest() {
    mElement.reset();
    nsGstVireRtspSrc::PlayerAccess::SetMaker(nullptr);
}

void SourceTest::TimeOutAfter(unsigned aSeconds) {
    gTimeOut = aSeconds;
}

void SourceTest::Interleave() {
    gInterleave = true;
}

void SourceTest::TearDown() {
    Finish();
}

void SourceTest::Finish() {
    mElement.reset();
    for (const auto& lServer : mServers) {
        EXPECT_EQ("", lServer->Failure());
    }
    mServers.clear();
}

ScriptedServer& SourceTest::Serve(const std::string& aDialogue) {
    mServers.push_back(std::make_unique<ScriptedServer>(Script(aDialogue)));
    return *mServers.back();
}

void SourceTest::To(GstState aState) {
    GstState lState = Element().State();
    while (lState != aState) {
        lState = static_cast<GstState>(lState < aState ? lState + 1 : lState - 1);
        ASSERT_NE(GST_STATE_CHANGE_FAILURE, Element().Set(lState)) << "to " << gst_element_state_get_name(lState);
    }
}

void SourceTest::Start(const std::string& aDialogue, GstState aState) {
    const ScriptedServer& lServer = Serve(aDialogue);
    SetLocation(lServer.URL(std::string::npos == aDialogue.find("DESCRIBE live 1") ? "clip" : "live"));
    To(aState);
}

std::vector<std::string> SourceTest::Messages(const std::vector<std::string>& aKinds) {
    return Element().TakeMessages(aKinds);
}

}  // namespace ElementTest
