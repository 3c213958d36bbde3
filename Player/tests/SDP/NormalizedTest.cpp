#include "SDP/Normalized.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

/// Lines separated by "|".
std::string Lines(const std::string& aLines) {
    std::string lText;
    for (const char lCh : aLines) {
        lText += '|' == lCh ? std::string("\r\n") : std::string(1, lCh);
    }
    return lText.empty() ? lText : lText + "\r\n";
}

TEST(NormalizedSDPTest, DescriptionsAreWrittenAsTheyAreMeant) {
    struct Case {
        const char* mName;
        const char* mBefore;
        const char* mAfter;
    };
    for (const Case& lCase : {
             Case{"nothing to do", "v=0|s=a b|m=video 0 RTP/AVP 96|a=rtpmap:96 H264/90000|a=control:1",
                  "v=0|s=a b|m=video 0 RTP/AVP 96|a=rtpmap:96 H264/90000|a=control:1"},
             Case{"case of encodings", "m=audio 0 RTP/AVP 97|a=rtpmap:97 MPEG4-GENERIC/44100/2",
                  "m=audio 0 RTP/AVP 97|a=rtpmap:97 mpeg4-generic/44100/2"},
             Case{"case of parameters", "m=audio 0 RTP/AVP 97|a=fmtp:97 Config=AbC;MODE=AAC-hbr;SizeLength=13",
                  "m=audio 0 RTP/AVP 97|a=fmtp:97 config=AbC;mode=AAC-hbr;SizeLength=13"},
             Case{"a value of its own case", "m=video 0 RTP/AVP 96|a=fmtp:96 Sprop-Parameter-Sets=Z0I=,aM4=",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=Z0I=,aM4="},
             // 67 42, 68 ce 3c 80: with 00 00 00 01 in front, 00 00 after, and both in one entry.
             Case{"parameter sets as they stand in a file",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=AAAAAWdC,aM48gAAA;a=1",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=Z0I=,aM48gA==;a=1"},
             Case{"parameter sets in one entry",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=AAAAAWdCAAAAAWjOPIAAAA==",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=Z0I=,aM48gA=="},
             Case{"parameter sets that can't be read",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=AA!AAWdC,,AAAB,A,Z0I",
                  "m=video 0 RTP/AVP 96|a=fmtp:96 sprop-parameter-sets=AA!AAWdC,,AAAB,A,Z0I"},
             Case{"blanks",
                  "v=0 |m=video  0 RTP/AVP\t96 |a=rtpmap:96  h264/90000 |a=control: 1 |a=fmtp:96 a = 1 ; b=2; ",
                  "v=0|m=video 0 RTP/AVP 96|a=rtpmap:96 H264/90000|a=control:1|a=fmtp:96 a=1;b=2"},
             Case{"the payload type that is played",
                  "m=video 0 RTP/AVP 98 96 97|a=rtpmap:97 H264/90000|a=fmtp:97 x=97|a=rtpmap:98 VP8/90000|"
                  "a=rtpmap:96 H264/90000|a=fmtp:96 x=96|a=fmtp:98 x=98",
                  "m=video 0 RTP/AVP 96 98 97|a=rtpmap:96 H264/90000|a=fmtp:96 x=96"},
             Case{"the first of those that are played",
                  "m=video 0 RTP/AVP 97 96|a=rtpmap:96 H264/90000|a=rtpmap:97 MP4V-ES/90000",
                  "m=video 0 RTP/AVP 97 96|a=rtpmap:97 MP4V-ES/90000"},
             Case{"none that is played", "m=audio 0 RTP/AVP 0 8|a=rtpmap:8 PCMA/8000|a=rtpmap:0 PCMU/8000",
                  "m=audio 0 RTP/AVP 0 8|a=rtpmap:0 PCMU/8000"},
             Case{"numbers that are at odds", "m=video 0 RTP/AVP 96|a=rtpmap:97 H264/90000|a=fmtp:97 x=1",
                  "m=video 0 RTP/AVP 96|a=rtpmap:97 H264/90000|a=fmtp:97 x=1"},
             Case{"of a type that the medium lacks", "m=video 0 RTP/AVP 96|a=rtpmap:96 H264/90000|a=rtpmap:97 x/1",
                  "m=video 0 RTP/AVP 96|a=rtpmap:96 H264/90000"},
             Case{"a frame size", "m=video 0 RTP/AVP 96|a=framesize:96  176-144",
                  "m=video 0 RTP/AVP 96|a=framesize:96 176-144"},
             Case{"a back channel", "m=a 0 x 96|a=recvonly|m=b 0 x 97|a=sendonly |m=c 0 x 98",
                  "m=a 0 x 96|a=recvonly|m=c 0 x 98"},
             Case{"nothing but back channels", "m=a 0 x 96|a=sendonly|m=b 0 x 97|a=sendonly",
                  "m=a 0 x 96|a=sendonly|m=b 0 x 97|a=sendonly"},
             Case{"media apart", "m=a 0 x 96|a=rtpmap:96 h264/1|m=b 0 x 96|a=rtpmap:96 amr/1",
                  "m=a 0 x 96|a=rtpmap:96 H264/1|m=b 0 x 96|a=rtpmap:96 AMR/1"},
             Case{"attributes without a value", "a=recvonly|a=x:|m=video|a=sendonly ",
                  "a=recvonly|a=x:|m=video|a=sendonly"},
             Case{"an empty medium", "m=|a=rtpmap:96 h264/1", "m=|a=rtpmap:96 H264/1"},
             Case{"nothing", "", ""},
         }) {
        EXPECT_EQ(Lines(lCase.mAfter), NormalizedSDP(Lines(lCase.mBefore))) << lCase.mName;
        EXPECT_EQ(Lines(lCase.mAfter), NormalizedSDP(Lines(lCase.mAfter))) << lCase.mName;
    }
}

TEST(NormalizedSDPTest, AllEndsOfLinesAreTheSame) {
    EXPECT_EQ("v=0\r\ns=x\r\nt=0\r\n", NormalizedSDP("v=0\ns=x\r\r\n\nt=0"));
}

}  // namespace
}  // namespace Player
