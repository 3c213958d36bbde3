#include "SDP/Parser.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/HeapBlock.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::ExpectThrow;
using TestSupport::HeapBlock;
using TestSupport::ReportCapture;

std::string Listed(const Properties& aProps) {
    std::string lText;
    for (auto lEntry = aProps.Begin(); lEntry != aProps.End(); ++lEntry) {
        lText += lEntry->Key() + "=" + lEntry->Val() + ";";
    }
    return lText;
}

/// The bags of a description, each as text: "key=value;" in order.
struct Parsed {
    explicit Parsed(const std::string& aText) { Parse(aText); }
    void Parse(const std::string& aText) {
        const HeapBlock lBlock(aText);
        ParseSDP(lBlock.Ref(), mSession, mMedia);
    }
    std::string Session() const { return Listed(*mSession); }
    std::vector<std::string> Media() const {
        std::vector<std::string> lTexts;
        for (const auto& lMedia : mMedia)
            lTexts.push_back(Listed(*lMedia));
        return lTexts;
    }

    SharedPtr<Properties, SharedObject> mSession;
    std::list<SharedPtr<Properties, SharedObject>> mMedia;
};

/// What the attribute line writes into the session's bag.
std::string Attribute(const std::string& aLine) {
    return Parsed("v=0\r\n" + aLine + "\r\n").Session();
}

TEST(ParseSDP, OneVideoTrack) {
    const Parsed lParsed("v=0\r\ns=Test\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:trackID=1\r\n");
    EXPECT_EQ("SessionName=Test;", lParsed.Session());
    EXPECT_THAT(lParsed.Media(), ElementsAre("MediaType=video;Port=0;Transport=RTP/AVP;PayloadType=96;"
                                             "Format=H264;TimeRes=90000;EncParams=;Id=trackID=1;"));
}

const char kFull[] =
    "v=0\r\n"
    "o=- 1274535 7 IN IP4 10.0.0.1\r\n"
    "s=A clip, \"quoted\"\r\n"
    "i=skipped\r\n"
    "u=http://skipped/\r\n"
    "c=IN IP4 0.0.0.0\r\n"
    "b=AS:578\r\n"
    "t=0 0\r\n"
    "a=control:*\r\n"
    "a=range:npt=0-596.48\r\n"
    "a=tool:skipped\r\n"
    "m=video 5000 RTP/AVP 96 97\r\n"
    "c=IN IP4 224.1.2.3/127\r\n"
    "b=AS:464\r\n"
    "a=rtpmap:96 H264/90000\r\n"
    "a=fmtp:96 packetization-mode=1;profile-level-id=42E01E;sprop-parameter-sets=Z0LgHtoC0Eg=,aM4wpIA=\r\n"
    "a=framesize:96 640-360\r\n"
    "a=control:trackID=1\r\n"
    "a=recvonly\r\n"
    "m=audio 0 RTP/AVP 97\r\n"
    "a=rtpmap:97 mpeg4-generic/44100/2\r\n"
    "a=fmtp:97 mode=AAC-hbr; config=1210; sizeLength=13\r\n"
    "a=range:clock=20110907T0-\r\n"
    "a=control:rtsp://10.0.0.1/clip/trackID=2\r\n";

const char kFullSession[] =
    "UserName=-;SessionId=1274535;SessionVersion=7;OriginNetworkType=IN;OriginAddressType=IP4;"
    "OriginAddress=10.0.0.1;SessionName=A clip, \"quoted\";ConnectionNetworkType=IN;ConnectionAddressType=IP4;"
    "ConnectionAddress=0.0.0.0;Id=*;StartTime=0;EndTime=596.48;";
const char kFullVideo[] =
    "MediaType=video;Port=5000;Transport=RTP/AVP;PayloadType=96;ConnectionNetworkType=IN;"
    "ConnectionAddressType=IP4;ConnectionAddress=224.1.2.3/127;Format=H264;TimeRes=90000;EncParams=;"
    "FmtParams=packetization-mode=1;profile-level-id=42E01E;sprop-parameter-sets=Z0LgHtoC0Eg=,aM4wpIA=;"
    "Width=640;Height=360;Id=trackID=1;";
const char kFullAudio[] =
    "MediaType=audio;Port=0;Transport=RTP/AVP;PayloadType=97;Format=mpeg4-generic;TimeRes=44100;EncParams=2;"
    "FmtParams=mode=AAC-hbr; config=1210; sizeLength=13;Id=rtsp://10.0.0.1/clip/trackID=2;";

void Replace(std::string& aText, const std::string& aFrom, const std::string& aTo) {
    for (std::size_t lPos = aText.find(aFrom); std::string::npos != lPos; lPos = aText.find(aFrom, lPos)) {
        aText.replace(lPos, aFrom.size(), aTo);
        lPos += aTo.size();
    }
}

TEST(ParseSDP, EveryLineTypeAndAttribute) {
    const Parsed lParsed(kFull);
    EXPECT_EQ(kFullSession, lParsed.Session());
    EXPECT_THAT(lParsed.Media(), ElementsAre(kFullVideo, kFullAudio));
}

TEST(ParseSDP, AnyLineEndAndBlankLines) {
    for (const char* lEnd : {"\n", "\r", "\r\n\r\n", "\n\n\n", "\r\r"}) {
        std::string lText = kFull;
        Replace(lText, "\r\n", lEnd);
        const Parsed lParsed(lText);
        EXPECT_EQ(kFullSession, lParsed.Session());
        EXPECT_THAT(lParsed.Media(), ElementsAre(kFullVideo, kFullAudio));
    }
}

TEST(ParseSDP, LastLineNeedsNoEnd) {
    std::string lText = kFull;
    lText.resize(lText.size() - 2);
    EXPECT_THAT(Parsed(lText).Media(), ElementsAre(kFullVideo, kFullAudio));
}

TEST(ParseSDP, VersionLine) {
    EXPECT_EQ("", Parsed("v=0").Session());
    EXPECT_EQ("SessionName=n;", Parsed("v=0123 whatever\r\ns=n\r\n").Session()) << "only the first digit is looked at";
    SharedPtr<Properties, SharedObject> lSession;
    std::list<SharedPtr<Properties, SharedObject>> lMedia;
    for (const char* lText : {"x0", "v:", "vv=0", "V=0", "=v0", "\r\nv=0", " v=0"}) {
        const HeapBlock lBlock(lText);
        ExpectThrow<SDPErr>(1, "ParseSDP(): Bad SDP syntax", [&] { ParseSDP(lBlock.Ref(), lSession, lMedia); });
    }
    for (const char* lText : {"v=1", "v=1\r\n", "v= 0", "v=\r\n"}) {
        const HeapBlock lBlock(lText);
        ExpectThrow<SDPErr>(16, "ParseSDP(): Unsupported SDP version",
                            [&] { ParseSDP(lBlock.Ref(), lSession, lMedia); });
    }
    EXPECT_EQ(nullptr, lSession.Ptr());
}

TEST(ParseSDPDeathTest, TooShortForAVersion) {
    SharedPtr<Properties, SharedObject> lSession;
    std::list<SharedPtr<Properties, SharedObject>> lMedia;
    for (const char* lText : {"", "v", "x", "v="}) {
        const HeapBlock lBlock(lText);
        EXPECT_DEATH(ParseSDP(lBlock.Ref(), lSession, lMedia), "Left\\(\\) >= \\(aOff \\+ aSize\\)") << lText;
    }
}

TEST(ParseSDP, RefusedVersionLeavesWhatWasThere) {
    Parsed lParsed("v=0\r\ns=old\r\nm=video 0 RTP/AVP 96\r\n");
    ExpectThrow<SDPErr>(16, "ParseSDP(): Unsupported SDP version", [&] { lParsed.Parse("v=2\r\ns=new\r\n"); });
    EXPECT_EQ("SessionName=old;", lParsed.Session());
    EXPECT_EQ(1U, lParsed.mMedia.size());
}

TEST(ParseSDP, StartsAnew) {
    Parsed lParsed("v=0\r\ns=old\r\nm=video 0 RTP/AVP 96\r\n");
    const SharedPtr<Properties, SharedObject> lOld(lParsed.mSession);
    lParsed.Parse("v=0\r\nm=audio 0 RTP/AVP 97\r\n");
    EXPECT_EQ("", lParsed.Session());
    EXPECT_EQ("SessionName=old;", Listed(*lOld)) << "a new bag, not the old one emptied";
    EXPECT_THAT(lParsed.Media(), ElementsAre("MediaType=audio;Port=0;Transport=RTP/AVP;PayloadType=97;"));
}

TEST(ParseSDP, BadLineKeepsWhatWasParsed) {
    Parsed lParsed("v=0\r\n");
    ExpectThrow<SDPErr>(1, "NextType(): Bad SDP syntax", [&] {
        lParsed.Parse("v=0\r\ns=n\r\nm=video 0 RTP/AVP 96\r\nm=audio 0 RTP/AVP 97\r\nb:AS=64\r\nm=text 0 x 1\r\n");
    });
    EXPECT_EQ("SessionName=n;", lParsed.Session());
    // The section of the bad line was not finished.
    EXPECT_THAT(lParsed.Media(), ElementsAre("MediaType=video;Port=0;Transport=RTP/AVP;PayloadType=96;"));
}

TEST(ParseSDP, SecondVersionLineEnds) {
    const Parsed lInSession("v=0\r\ns=n\r\nv=0\r\ns=m\r\nm=video 0 RTP/AVP 96\r\nbad\r\n");
    EXPECT_EQ("SessionName=n;", lInSession.Session());
    EXPECT_THAT(lInSession.Media(), IsEmpty());
    const Parsed lInMedia("v=0\r\nm=video 0 RTP/AVP 96\r\nv=0\r\nm=audio 0 RTP/AVP 97\r\nbad\r\n");
    EXPECT_THAT(lInMedia.Media(), ElementsAre("MediaType=video;Port=0;Transport=RTP/AVP;PayloadType=96;"));
}

TEST(ParseSDP, UnknownLinesAreSkipped) {
    EXPECT_EQ(
        "",
        Parsed("v=0\r\ni=a=control:x\r\nu=\r\ne=1\r\np=2\r\nb=3\r\nt=4\r\nr=5\r\nz=6\r\nk=7\r\nX=8\r\n==9").Session());
    EXPECT_THAT(Parsed("v=0\r\nm=video 0 RTP/AVP 96\r\ns=n\r\no=a b c d e f\r\ni=x\r\n").Media(),
                ElementsAre("MediaType=video;Port=0;Transport=RTP/AVP;PayloadType=96;"))
        << "session lines inside a media section";
}

TEST(ParseSDP, MissingAndExtraFields) {
    EXPECT_EQ(
        "UserName=-;SessionId=1;SessionVersion=;OriginNetworkType=;OriginAddressType=;OriginAddress=;"
        "SessionName=n;",
        Parsed("v=0\r\no=- 1\r\ns=n\r\n").Session());
    EXPECT_EQ("UserName=a;SessionId=b;SessionVersion=c;OriginNetworkType=d;OriginAddressType=e;OriginAddress=f g;",
              Parsed("v=0\r\no=a b c d e f g\r\n").Session());
    EXPECT_EQ("ConnectionNetworkType=IN;ConnectionAddressType=;ConnectionAddress=IP4 1.2.3.4;",
              Parsed("v=0\r\nc=IN  IP4 1.2.3.4\r\n").Session())
        << "one blank separates, two leave an empty field";
    EXPECT_THAT(
        Parsed("v=0\r\nm=audio 0 RTP/AVP 97 98\r\nm=\r\nm=video\r\nm= \r\nm=text  1").Media(),
        ElementsAre("MediaType=audio;Port=0;Transport=RTP/AVP;PayloadType=97;",
                    "MediaType=;Port=;Transport=;PayloadType=;",       //
                    "MediaType=video;Port=;Transport=;PayloadType=;",  //
                    "MediaType=;Port=;Transport=;PayloadType=;", "MediaType=text;Port=;Transport=1;PayloadType=;"));
}

TEST(ParseSDP, RepeatedKeysTakeTheLastValue) {
    EXPECT_EQ("SessionName=second;", Parsed("v=0\r\ns=first\r\ns=second\r\n").Session());
    EXPECT_EQ("Format=B;TimeRes=2;EncParams=;", Parsed("v=0\r\na=rtpmap:96 A/1/9\r\na=rtpmap:97 B/2\r\n").Session())
        << "payload types are not matched, and a shorter value leaves nothing of the longer";
}

TEST(ParseSDP, AttributesLandWhereTheyStand) {
    const Parsed lParsed(
        "v=0\r\na=range:npt=0-10\r\na=control:*\r\nm=video 0 RTP/AVP 96\r\na=control:1\r\nm=audio 0 RTP/AVP 97\r\n"
        "a=range:npt=2-3\r\n");
    EXPECT_EQ("StartTime=0;EndTime=10;Id=*;", lParsed.Session());
    EXPECT_THAT(lParsed.Media(),
                ElementsAre("MediaType=video;Port=0;Transport=RTP/AVP;PayloadType=96;Id=1;",
                            "MediaType=audio;Port=0;Transport=RTP/AVP;PayloadType=97;StartTime=2;EndTime=3;"));
}

TEST(ParseSDP, Attributes) {
    const struct {
        const char* mLine;
        const char* mExpected;
    } kCases[] = {
        {"a=rtpmap:97 mpeg4-generic/44100/2", "Format=mpeg4-generic;TimeRes=44100;EncParams=2;"},
        {"a=rtpmap:97 X/1/2/3 4", "Format=X;TimeRes=1;EncParams=2/3 4;"},
        {"a=rtpmap:97 X", "Format=X;TimeRes=;EncParams=;"},
        {"a=rtpmap:97  X/1", "Format= X;TimeRes=1;EncParams=;"},
        {"a=rtpmap:97", "Format=;TimeRes=;EncParams=;"},
        {"a=rtpmap:", "Format=;TimeRes=;EncParams=;"},
        {"a=control:trackID=1", "Id=trackID=1;"},
        {"a=control:rtsp://h:1/a b", "Id=rtsp://h:1/a b;"},
        {"a=control: x ", "Id= x ;"},
        {"a=control:", "Id=;"},
        {"a=range:npt=0-123.45", "StartTime=0;EndTime=123.45;"},
        {"a=range:npt=  0-  123.45 ", "StartTime=0;EndTime=123.45 ;"},
        {"a=range:npt=0 - 5", "StartTime=0 ;EndTime=5;"},
        {"a=range:npt=0-", "StartTime=0;EndTime=;"},
        {"a=range:npt=now-", "StartTime=now;EndTime=;"},
        {"a=range:npt=5", "StartTime=5;EndTime=;"},
        {"a=range:clock=19961108T142300Z-19961108T143520Z", ""},
        {"a=range:smpte=0:10:20-", ""},
        {"a=range:NPT=0-1", ""},
        {"a=range: npt=0-1", ""},
        {"a=range:npt =0-1", ""},
        {"a=range:", ""},
        {"a=fmtp:96 a=1; b=2", "FmtParams=a=1; b=2;"},
        {"a=fmtp:96", "FmtParams=;"},
        {"a=framesize:96 176-144", "Width=176;Height=144;"},
        {"a=framesize:  96 176-  144", "Width=176;Height=144;"},
        {"a=framesize:96  176-144", "Width= 176;Height=144;"},
        {"a=framesize:96 176", "Width=176;Height=;"},
        {"a=framesize:", "Width=;Height=;"},
        {"a=tool:x", ""},
        {"a=Control:x", ""},
        {"a=control :x", ""},
        {"a= control:x", ""},
        {"a=:x", ""},
        {"a=", ""},
        {"a=recvonly", ""},
        // Known names without a value write no key at all.
        {"a=control", ""},
        {"a=rtpmap", ""},
        {"a=range", ""},
        {"a=fmtp", ""},
        {"a=framesize", ""},
    };
    for (const auto& lCase : kCases) {
        EXPECT_EQ(lCase.mExpected, Attribute(lCase.mLine)) << lCase.mLine;
        // The line after it is found, and the end of the data does instead of a line end.
        EXPECT_EQ(std::string(lCase.mExpected) + "SessionName=n;", Attribute(std::string(lCase.mLine) + "\ns=n"))
            << lCase.mLine;
        EXPECT_EQ(lCase.mExpected, Parsed(std::string("v=0\n") + lCase.mLine).Session()) << lCase.mLine;
    }
}

TEST(ParseSDP, RunOfBlanksAtTheEndOfTheDataLeavesOne) {
    EXPECT_EQ("StartTime=0;EndTime= ;", Parsed("v=0\na=range:npt=0-   ").Session());
    EXPECT_EQ("StartTime=0;EndTime=;", Parsed("v=0\na=range:npt=0-   \n").Session());
}

/// Parses or refuses. What was parsed has the keys that every section has.
void ExpectHarmless(const std::string& aText) {
    const HeapBlock lBlock(aText);
    SharedPtr<Properties, SharedObject> lSession;
    std::list<SharedPtr<Properties, SharedObject>> lMedia;
    bool lRefused = false;
    try {
        ParseSDP(lBlock.Ref(), lSession, lMedia);
    } catch (const SDPErr& aException) {
        lRefused = true;
        EXPECT_TRUE(1 == aException.Error() || 16 == aException.Error());
    }
    EXPECT_TRUE(lRefused || nullptr != lSession.Ptr());
    for (const auto& lBag : lMedia) {
        for (const char* lKey : {"MediaType", "Port", "Transport", "PayloadType"})
            EXPECT_TRUE(lBag->Has(lKey));
    }
}

TEST(ParseSDP, EveryPrefix) {
    const ReportCapture lReports;
    const std::string lText = kFull;
    for (std::size_t lSize = 3; lSize <= lText.size(); ++lSize)
        ExpectHarmless(lText.substr(0, lSize));
}

TEST(ParseSDP, EveryPrefixKeepsTheLinesBeforeIt) {
    const ReportCapture lReports;
    const std::string lText = kFull;
    const std::size_t lAudio = lText.find("m=audio");
    for (std::size_t lSize = lAudio + 2; lSize <= lText.size(); ++lSize) {
        const Parsed lParsed(lText.substr(0, lSize));
        ASSERT_EQ(kFullSession, lParsed.Session());
        ASSERT_EQ(kFullVideo, lParsed.Media().at(0));
        ASSERT_EQ(2U, lParsed.mMedia.size());
    }
}

TEST(ParseSDP, EveryByteCorrupted) {
    const ReportCapture lReports;
    const std::string lText = kFull;
    for (std::size_t lPos = 0; lPos < lText.size(); ++lPos) {
        const char lOriginal = lText[lPos];
        for (const char lByte : {'\0', '\r', '\n', '=', ':', ' ', '-', '/', 'a', 'c', 'm', 's', 'v', '\x7F', '\x80',
                                 '\xFF', static_cast<char>(lOriginal ^ 1), static_cast<char>(lOriginal ^ 0x20)}) {
            std::string lCorrupted = lText;
            lCorrupted[lPos] = lByte;
            ExpectHarmless(lCorrupted);
        }
    }
}

TEST(ParseSDP, EveryByteDroppedOrDoubled) {
    const ReportCapture lReports;
    const std::string lText = kFull;
    for (std::size_t lPos = 0; lPos < lText.size(); ++lPos) {
        ExpectHarmless(lText.substr(0, lPos) + lText.substr(lPos + 1));
        ExpectHarmless(lText.substr(0, lPos) + lText[lPos] + lText.substr(lPos));
    }
}

TEST(ParseSDP, ManySections) {
    std::string lText = "v=0\n";
    for (int i = 0; i < 2000; ++i)
        lText += "m=x\n";
    EXPECT_EQ(2000U, Parsed(lText).mMedia.size());
}

}  // namespace
}  // namespace Player
