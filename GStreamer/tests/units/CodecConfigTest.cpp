#include <gtest/gtest.h>

#include <map>

#include "streams/StreamAAC.hpp"
#include "streams/StreamH264.hpp"
#include "support/Bytes.hpp"
#include "support/DebugCapture.hpp"

namespace ElementTest {

using nsGstVireRtspSrc::AudioSpecificConfig;
using nsGstVireRtspSrc::Stream;
using nsGstVireRtspSrc::StreamH264;
using TestSupport::AsBytes;
using TestSupport::AsText;
using TestSupport::FromHex;
using TestSupport::Hex;

namespace {

std::map<std::string, std::string> Split(const char* aText) {
    GHashTable* const lTable = Stream::split_fmt_params(aText);
    std::map<std::string, std::string> lParams;
    const auto lCopy = [](gpointer aKey, gpointer aValue, gpointer aParams) {
        (*static_cast<std::map<std::string, std::string>*>(aParams))[static_cast<const char*>(aKey)] =
            static_cast<const char*>(aValue);
    };
    g_hash_table_foreach(lTable, lCopy, &lParams);
    g_hash_table_unref(lTable);
    return lParams;
}

using Params = std::map<std::string, std::string>;

struct Record {
    std::string mBytes;
    unsigned mWidth;
    unsigned mHeight;
};

Record RecordOf(const std::string& aSprop) {
    std::string lBytes = "left over";
    Record lRecord{"", 7, 7};
    StreamH264::GetDecoderSpecificInfo(aSprop, lBytes, lRecord.mWidth, lRecord.mHeight);
    lRecord.mBytes = Hex(AsBytes(lBytes));
    return lRecord;
}

/// 320x240, Constrained Baseline, level 2.1.
constexpr const char* kSps = "Z0LAFdkBQfsBagwMDUoAAAMAAgAAAwBlHixckA==";
constexpr const char* kPps = "aMuMsg==";

// clang-format off
constexpr const char* kRecord =
    "01"                                            // version
    " 42 c0 15"                                     // profile, constraint flags, level
    " ff"                                           // NAL unit lengths of 4 bytes
    " e1 00 1c"                                     // one SPS of 28 bytes
    " 67 42 c0 15 d9 01 41 fb 01 6a 0c 0c 0d 4a 00 00 03 00 02 00 00 03 00 65 1e 2c 5c 90"
    " 01 00 04"                                     // one PPS of 4 bytes
    " 68 cb 8c b2";
// clang-format on

}  // namespace

TEST(SplitFmtParams, TrimsKeysKeepsValuesAndSkipsTheRest) {
    EXPECT_EQ((Params{{"a", "1"}, {"b", " 2"}, {"d", "x=y"}}), Split("a=1; b = 2;c;d=x=y"));
}

TEST(SplitFmtParams, EveryShapeOfText) {
    EXPECT_EQ(Params(), Split(""));
    EXPECT_EQ(Params(), Split(";;"));
    EXPECT_EQ(Params(), Split("a"));
    EXPECT_EQ((Params{{"a", ""}}), Split("a="));
    EXPECT_EQ((Params{{"", "1"}}), Split("=1"));
    EXPECT_EQ((Params{{"a", "2"}}), Split("a=1;a=2"));
    EXPECT_EQ((Params{{"a", "1 "}}), Split("\t a \t=1 ;"));
    EXPECT_EQ((Params{{"a b", "1"}, {"A", "2"}}), Split("a b=1;A=2"));
}

TEST(AvcRecord, HasBothSetsByteForByte) {
    const Record lRecord = RecordOf(std::string(kSps) + "," + kPps);
    EXPECT_EQ(kRecord, lRecord.mBytes);
    EXPECT_EQ(320U, lRecord.mWidth);
    EXPECT_EQ(240U, lRecord.mHeight);
}

TEST(AvcRecord, WhatFollowsTheSecondSetIsNotDecoded) {
    EXPECT_EQ(kRecord, RecordOf(std::string(kSps) + "," + kPps + ";packetization-mode=1").mBytes);
}

TEST(AvcRecord, OfThreeSetsTheFirstTwoCount) {
    const DebugCapture lLog("virertsp_streamH264");
    EXPECT_EQ(kRecord, RecordOf(std::string(kSps) + "," + kPps + ",aMuMsg==").mBytes);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_ERROR, "Parameter vector has size: 3 != 2\n"));
}

TEST(AvcRecord, AnEmptyPieceIsASetOfItsOwn) {
    const DebugCapture lLog("virertsp_streamH264");
    // The PPS is third and does not count; the second is empty.
    const Record lRecord = RecordOf(std::string(kSps) + ",," + kPps);
    EXPECT_EQ(1U, lLog.Count(GST_LEVEL_ERROR, "Parameter vector has size: 3 != 2\n"));
    EXPECT_EQ(
        "01 00 c0 00 ff e1 00 1c 67 42 c0 15 d9 01 41 fb 01 6a 0c 0c 0d 4a 00 00 03 00 02 00 00 03 00 65 1e 2c 5c "
        "90 01 00 00",
        lRecord.mBytes);
    EXPECT_EQ(0U, lRecord.mWidth);
    EXPECT_EQ(0U, lRecord.mHeight);
}

TEST(AvcRecord, WhatIsMissingIsZero) {
    const DebugCapture lLog("virertsp_streamH264");
    EXPECT_EQ("01 00 00 00 ff e1 00 00 01 00 00", RecordOf("").mBytes);
    EXPECT_EQ("01 00 00 00 ff e1 00 02 67 42 01 00 00", RecordOf("Z0I=").mBytes);
    EXPECT_EQ("01 00 00 00 ff e1 00 00 01 00 04 68 cb 8c b2", RecordOf("!,aMuMsg==").mBytes);
    EXPECT_EQ(2U, lLog.Count(GST_LEVEL_ERROR, "Parameter vector has size: 1 != 2\n"));
}

TEST(AvcRecord, ALongSetHasABigEndianLength) {
    // 400 characters of Base64 are 300 bytes.
    const std::string lBytes = RecordOf("Z0LA" + std::string(396, 'A') + ",aMuM").mBytes;
    EXPECT_EQ("01 00 c0 00 ff e1 01 2c", lBytes.substr(0, 23));
}

TEST(LatmConfig, MovesWhatFollowsTheFirst15BitsToTheFront) {
    const struct {
        const char* mMuxConfig;
        const char* mConfig;
    } lCases[] = {
        {"40 00 24 20", "12 10 00"}, {"40 00 23 10", "11 88 00"}, {"00 01", "80"},
        {"40 01 ff", "ff 80"},       {"7f fe 00 00", "00 00 00"}, {"40 00 8b 18 38 83 80", "45 8c 1c 41 c0 00"},
    };
    for (const auto& lCase : lCases) {
        SCOPED_TRACE(lCase.mMuxConfig);
        EXPECT_EQ(lCase.mConfig, Hex(AsBytes(AudioSpecificConfig(AsText(FromHex(lCase.mMuxConfig))))));
    }
}

TEST(LatmConfig, OneByteOrNoneIsTooLittle) {
    const DebugCapture lLog("virertsp_streamAAC");
    EXPECT_EQ("", AudioSpecificConfig(""));
    EXPECT_EQ("", AudioSpecificConfig("\x40"));
    EXPECT_EQ(2U, lLog.Count(GST_LEVEL_DEBUG, "To little config Data"));
}

TEST(LatmConfig, AudioMuxVersionOneIsNotUnderstood) {
    const DebugCapture lLog("virertsp_streamAAC");
    EXPECT_EQ("", AudioSpecificConfig(AsText(FromHex("80 00 24 20"))));
    EXPECT_EQ("", AudioSpecificConfig(AsText(FromHex("ff ff"))));
    EXPECT_EQ(2U, lLog.Count(GST_LEVEL_DEBUG, "Need audioMuxVersion 0"));
}

}  // namespace ElementTest
