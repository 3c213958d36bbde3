// Session descriptions: what is read of them, and what of it plays.
#include "Hostile/Row.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/SessionFixture.hpp"
#include "SDP/Parser.hpp"
#include "support/HeapBlock.hpp"
#include "support/Throws.hpp"

namespace Player::Hostile {

using MediaSessions::Dialogue;
using MediaSessions::SessionTest;
using TestSupport::Thrown;

// ---------------------------------------------------------------------------- read

struct DescriptionRow {
    const char* mName;
    std::string mText;
    const char* mThrown;
    /// What is read until then.
    std::size_t mMedia;
    /// Of the last medium, or of the session where there is none.
    const char* mKey = "";
    std::string mVal = "";
    std::size_t mWarnings = 0;
};

namespace {

constexpr char kFine[] = "nothing";
constexpr char kBadSyntax[] = "18/1 NextType(): Bad SDP syntax";
constexpr char kBadBeginning[] = "18/1 ParseSDP(): Bad SDP syntax";
constexpr char kOtherVersion[] = "18/16 ParseSDP(): Unsupported SDP version";

std::string Repeated(unsigned aTimes, const std::string& aPiece) {
    std::string lText;
    for (unsigned i = 0; i < aTimes; ++i) {
        lText += aPiece;
    }
    return lText;
}

/// A description with one medium and these lines in it.
std::string Medium(const std::string& aLines) {
    return "v=0\r\nm=video 0 RTP/AVP 96\r\n" + aLines + "\r\n";
}

const std::string kNul(1, '\0');

const DescriptionRow kDescriptions[] = {
    {"OneLineOfAMegabyte", Medium("a=fmtp:96 " + std::string(1 << 20, 'x')), kFine, 1, "FmtParams",
     std::string(1 << 20, 'x')},
    {"AMegabyteOfEmptyLines", "v=0" + Repeated(1 << 19, "\r\n") + "s=x", kFine, 0, "SessionName", "x"},
    {"AMegabyteOfOneAttribute", Medium(Repeated(1 << 16, "a=control:track\n")), kFine, 1, "Id", "track"},
    {"AMegabyteOfUnknownLines", Medium(Repeated(1 << 17, "z=12345\n") + "a=control:x"), kFine, 1, "Id", "x"},
    {"TenThousandMedia", "v=0\n" + Repeated(10000, "m=video 0 RTP/AVP 96\n"), kFine, 10000, "PayloadType", "96"},
    {"AsManyMediaAsAreRead", "v=0\n" + Repeated(16383, "m=x\n") + "m=last\n", kFine, 16384, "MediaType", "last"},
    {"OneMediumTooMany", "v=0\n" + Repeated(16384, "m=x\n") + "m=last\n?", kFine, 16384, "MediaType", "x", 1},
    {"AVersionAlone", "v=0", kFine, 0},
    {"AnotherVersion", "v=1\r\n", kOtherVersion, 0},
    {"AVersionOfWords", "v=zero\r\n", kOtherVersion, 0},
    {"AByteOrderMark", "\xEF\xBB\xBFv=0\r\n", kBadBeginning, 0},
    {"ANulInFront", kNul + "v=0\r\n", kBadBeginning, 0},
    {"ABlankInFront", " v=0\r\n", kBadBeginning, 0},
    {"APage", "<html><body>404</body></html>", kBadBeginning, 0},
    {"APageBehindTheVersion", "v=0\r\n<html>", kBadSyntax, 0},
    {"NothingButAnEqualsSign", Medium("="), kBadSyntax, 1},
    {"ALineOfNuls", Medium(std::string(8, '\0')), kBadSyntax, 1},
    {"ALineOfBinary", Medium("\xFF\xFE\xFD"), kBadSyntax, 1},
    {"AFoldedLine", Medium("a=control:x\r\n y"), kBadSyntax, 1},
    {"ALetterAtTheEnd", "v=0\r\nm", kFine, 0},
    {"AMediumAtTheEnd", "v=0\r\nm=", kFine, 1, "MediaType", ""},
    {"AnAttributeAtTheEnd", Medium("a=control:x\na="), kFine, 1, "Id", "x"},
    {"ANulInAValue", Medium("a=control:a" + kNul + "b"), kFine, 1, "Id", "a" + kNul + "b"},
    {"AControlOf5000Bytes", Medium("a=control:" + std::string(5000, 'c')), kFine, 1, "Id", std::string(5000, 'c')},
    {"AMapWithoutAnything", Medium("a=rtpmap:"), kFine, 1, "Format", ""},
    {"AMapWithoutAClockRate", Medium("a=rtpmap:96 H264"), kFine, 1, "TimeRes", ""},
    {"AMapOfSlashes", Medium("a=rtpmap:96 ////"), kFine, 1, "EncParams", "//"},
    {"AClockRateOf0", Medium("a=rtpmap:96 H264/0"), kFine, 1, "TimeRes", "0"},
    {"ARangeBeyondAllNumbers", Medium("a=range:npt=1e400-"), kFine, 1, "StartTime", "1e400"},
    {"ARangeOfBlanks", Medium("a=range:npt=          "), kFine, 1, "StartTime", ""},
    {"ASizeWithoutNumbers", Medium("a=framesize:96 -"), kFine, 1, "Height", ""},
    {"ASecondVersion", Medium("a=control:x\nv=0\nm=audio\na=control:y"), kFine, 1, "Id", "x"},
};

class HostileDescriptionTest : public testing::TestWithParam<DescriptionRow> {};

TEST_P(HostileDescriptionTest, IsReadAsFarAsItGoes) {
    const DescriptionRow& lRow = GetParam();
    const TestSupport::ReportCapture lReports;
    SharedPtr<Properties, SharedObject> lSession;
    std::list<SharedPtr<Properties, SharedObject>> lMedia;
    const TestSupport::HeapBlock lBlock(lRow.mText);
    EXPECT_EQ(lRow.mThrown, Thrown([&] { ParseSDP(lBlock.Ref(), lSession, lMedia); }));
    // A medium that is broken off is not kept.
    const std::size_t lKept = lRow.mThrown == kFine ? lRow.mMedia : 0;
    ASSERT_EQ(lKept, lMedia.size());
    if ('\0' != *lRow.mKey) { EXPECT_EQ(lRow.mVal, (lMedia.empty() ? lSession : lMedia.back())->Get(lRow.mKey)); }
    EXPECT_EQ(lRow.mWarnings, lReports.Count(Severity::Warning, "ParseSDP(): Too many media"));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileDescriptionTest, testing::ValuesIn(kDescriptions), NameOfRow());

// ---------------------------------------------------------------------------- played

}  // namespace

struct MediumRow {
    const char* mName;
    /// The second medium, as lines of a script; the first is a proper one and plays in any case.
    const char* mLines;
    /// The payload type that the server sends.
    unsigned mType;
    /// How many of two samples come out.
    unsigned mSamples;
};

namespace {

const MediumRow kMedia[] = {
    {"AClockRateOf0", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/0", 96, 2},
    {"AClockRateOf33Bits", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/4294967296", 96, 2},
    {"ANegativeClockRate", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/-1", 96, 2},
    {"NoClockRate", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264", 96, 2},
    {"APayloadTypeOfWords", "S| m=video 0 RTP/AVP x\nS| a=rtpmap:x H264/90000", 33, 2},
    {"APayloadTypeOf9Bits", "S| m=video 0 RTP/AVP 300\nS| a=rtpmap:300 H264/90000", 44, 2},
    {"APayloadTypeThatIsNoneOnTheWire", "S| m=video 0 RTP/AVP 224\nS| a=rtpmap:224 H264/90000", 96, 0},
    {"AnotherPayloadTypeThanSaid", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/90000", 95, 0},
    {"AFormatInAnotherMap", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:1 x/1\nS| a=rtpmap:2 H264/90000", 96, 2},
    {"ParametersOfNoise", "S| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/90000\nS| a=fmtp:96 ;;=;==%s%n", 96, 2},
};

class HostileMediumTest : public SessionTest, public testing::WithParamInterface<MediumRow> {
protected:
    void SetPacket(const std::string& aName, unsigned aType, unsigned aSeq) {
        const auto lPacket = TestSupport::RtpPacket().Type(aType).Seq(aSeq).Timestamp(aSeq * 90000).Marker();
        mServer->Set(aName, TestSupport::Hex(TestSupport::RtpPacket(lPacket).Payload({0x44, 0x44, 1, 2, 3}).Build()));
    }
    unsigned CountSamples(TrackIdx aTrack) {
        unsigned lCount = 0;
        while (mPlayer.GetTrackPacket(aTrack)) {
            ++lCount;
        }
        return lCount;
    }
};

TEST_P(HostileMediumTest, LeavesTheOtherPlaying) {
    const MediumRow& lRow = GetParam();
    Interleave();
    // Where nothing has to be buffered, tracks are delivered whatever their clocks are.
    Serve(std::string(R"(
        > DESCRIBE clip 1
        S: RTSP/1.0 200 OK
        S: CSeq: 1
        S: Server: Quenra Strand
        S: Content-Length: {length}
        S:
        S| v=0
        S| m=audio 0 RTP/AVP 97
        S| a=rtpmap:97 AMR/8000
    )") + lRow.mLines +
          R"(
        > SETUP clip 2
        < 200 2 | Session: 5 | TCP 0
        > SETUP clip 3
        < 200 3 | TCP 1
        > PLAY clip 4
        < 200 4 | RTP-Info: url=r/video
        SPLIT
        S$ 2 {video1}
        S$ 0 {audio1}
        S$ 2 {video2}
        S$ 0 {audio2}
        NOTIFY sent
    )");
    SetPacket("video1", lRow.mType, 1);
    SetPacket("video2", lRow.mType, 2);
    SetPacket("audio1", 97, 1);
    SetPacket("audio2", 97, 2);
    Play();
    ASSERT_TRUE(mServer->Await("sent"));
    EXPECT_EQ(2U, CountSamples(0));
    EXPECT_EQ(lRow.mSamples, CountSamples(1));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileMediumTest, testing::ValuesIn(kMedia), NameOfRow());

class HostileTracksTest : public SessionTest {
protected:
    /// The dialogue of a presentation with so many tracks, of which so many are set up.
    static std::string Script(unsigned aTracks, unsigned aSetUp) {
        std::string lScript =
            "> DESCRIBE clip 1\nS: RTSP/1.0 200 OK\nS: CSeq: 1\nS: Content-Length: {length}\nS:\nS| v=0\n";
        for (unsigned i = 0; i < aTracks; ++i) {
            lScript += "S| m=audio 0 RTP/AVP 97\nS| a=rtpmap:97 AMR/8000\n";
        }
        for (unsigned i = 0; i < aSetUp; ++i) {
            const std::string lNumber = std::to_string(i + 2);
            lScript += "> SETUP clip " + lNumber + "\n< 200 " + lNumber + " | Session: 5\n";
        }
        const std::string lNumber = std::to_string(aSetUp + 2);
        return lScript + "> PLAY clip " + lNumber + "\n< 200 " + lNumber + " | RTP-Info: url=r/video";
    }

    std::size_t CountWarnings() const {
        return mReports.Count(Severity::Warning, "RTSP::DoDescribe(): Too many tracks");
    }
};

TEST_F(HostileTracksTest, AsManyAsThereAreChannelsAreSetUp) {
    Interleave();
    Serve(Script(128, 128));
    Play();
    EXPECT_EQ(128U, mPlayer.GetTrackCount());
    EXPECT_EQ(0U, CountWarnings());
}

TEST_F(HostileTracksTest, MoreTracksAreLeftAlone) {
    Interleave();
    Serve(Script(1000, 128));
    Play();
    EXPECT_EQ(128U, mPlayer.GetTrackCount());
    EXPECT_EQ(1U, CountWarnings());
}

}  // namespace
}  // namespace Player::Hostile
