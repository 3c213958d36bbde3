#include "writers/Writer.hpp"

#include <gtest/gtest.h>

#include "Failure.hpp"
#include "Player/String.hpp"
#include "Written.hpp"

namespace Virertsp {
namespace {

/// Neither a writer nor an extension is there, and both say why.
void ExpectRefused(const Player::Properties& aTrack, const std::string& aSentence) {
    const Scratch lScratch;
    for (const bool lAsk : {false, true}) {
        try {
            lAsk ? static_cast<void>(FileExtension(aTrack))
                 : static_cast<void>(MakeWriter(aTrack, lScratch.Path("track0")));
            ADD_FAILURE() << aSentence;
        } catch (const Failure& lFailure) {
            EXPECT_EQ(kExitNothingPlayable, lFailure.Code());
            EXPECT_EQ(aSentence, lFailure.what());
        }
    }
    EXPECT_TRUE(std::filesystem::is_empty(lScratch.Path(""))) << aSentence;
}

// clang-format off
const std::string kFrame("\x21\x00\x49", 3);
// 7 bytes and the frame: 10.
//                            sync, MPEG-4, no CRC | profile, rate, channels | length 10 | fullness
const std::string kStereo44("\xff\xf1"               "\x50\x80"                "\x01\x5f"  "\xfc", 7);
const std::string kMono48(  "\xff\xf1"               "\x4c\x40"                "\x01\x5f"  "\xfc", 7);
// clang-format on

TEST(AdtsWriterTest, HeadersFromTheAudioSpecificConfig) {
    // 12 10: object type 2, rate index 4 (44100), 2 channels.
    EXPECT_EQ(kStereo44 + kFrame + kStereo44 + kFrame,
              Written(Track("mpeg4-generic", "mode=AAC-hbr; config=1210; sizelength=13"), ".aac", {kFrame, kFrame}));
    // 11 88: object type 2, rate index 3 (48000), 1 channel. Names and digits in any case.
    EXPECT_EQ(kMono48 + kFrame, Written(Track("mpeg4-generic", "Mode=AAC-hbr;Config=1188"), ".aac", {kFrame}));
}

TEST(AdtsWriterTest, HeadersFromTheStreamMuxConfig) {
    // 0 1 000000 0000 000, then 12 10 shifted by 15 bits.
    EXPECT_EQ(kStereo44 + kFrame, Written(Track("MP4A-LATM", "cpresent=0;config=400024203fc0"), ".aac", {kFrame}));
    EXPECT_EQ(kMono48 + kFrame, Written(Track("MP4A-LATM", "config=40002310"), ".aac", {kFrame}));
}

TEST(AdtsWriterTest, EveryRateAndChannelConfigurationHasItsPlace) {
    for (unsigned lRate = 0; lRate < 13; ++lRate) {
        for (unsigned lChannels = 1; lChannels < 8; ++lChannels) {
            const unsigned lConfig = 2U << 11 | lRate << 7 | lChannels << 3;
            const std::string lText = Player::StringWithFormat("config=%04x", lConfig);
            const std::string lHeader = Written(Track("mpeg4-generic", lText), ".aac", {kFrame}).substr(0, 7);
            ASSERT_EQ(7U, lHeader.size());
            const auto lBits = static_cast<unsigned>(static_cast<unsigned char>(lHeader[2]) << 8 |
                                                     static_cast<unsigned char>(lHeader[3]));
            EXPECT_EQ(1U, lBits >> 14) << "AAC LC";
            EXPECT_EQ(lRate, lBits >> 10 & 15);
            EXPECT_EQ(lChannels, lBits >> 6 & 7);
        }
    }
}

TEST(AdtsWriterTest, TheCoreCounts) {
    // Object type 5, rate index 7 (22050), 2 channels; extension rate index 4 (44100); core object type 2.
    // 00101 0111 0010 0100 00010 0...
    EXPECT_EQ(std::string("\xff\xf1\x5c\x80\x01\x5f\xfc", 7) + kFrame,
              Written(Track("mpeg4-generic", "config=2b920800"), ".aac", {kFrame}));
    // Object type 2, index 15 and the rate 44100 written out, 2 channels.
    // 00010 1111 (000000001010110001000100) 0010 000
    EXPECT_EQ(kStereo44 + kFrame, Written(Track("mpeg4-generic", "config=1780562210"), ".aac", {kFrame}));
}

TEST(AdtsWriterTest, TheLongestFrameAndOneMore) {
    const std::string lLongest(0x1FFF - 7, 'x');
    const std::string lFile = Written(Track("mpeg4-generic", "config=1210"), ".aac", {lLongest, lLongest + "x", ""});
    EXPECT_EQ(std::string("\xff\xf1\x50\x83\xff\xff\xfc", 7) + lLongest, lFile);
}

TEST(AdtsWriterTest, WhatTheHeadersHaveNoPlaceFor) {
    struct Case {
        const char* mFormat;
        const char* mParameters;
        const char* mSentence;
    };
    for (const Case& lCase : {
             Case{"mpeg4-generic", "mode=AAC-hbr", "Its description has no audio configuration."},
             Case{"mpeg4-generic", "config=12", "Its description has no audio configuration."},
             Case{"mpeg4-generic", "config=xx1210", "Its description has no audio configuration."},
             Case{"mpeg4-generic", "config=000001b0", "Its audio configuration can't be understood."},
             // Rate index 13 is reserved.
             Case{"mpeg4-generic", "config=1690", "Its audio configuration can't be understood."},
             Case{"mpeg4-generic", "config=4210", "An .aac file can't hold MPEG-4 audio object type 8."},
             Case{"mpeg4-generic", "config=f8e42000", "An .aac file can't hold MPEG-4 audio object type 39."},
             Case{"mpeg4-generic", "config=1780562a10", "An .aac file can't hold 44116 samples per second."},
             Case{"mpeg4-generic", "config=1200", "An .aac file can't hold channel configuration 0."},
             Case{"mpeg4-generic", "config=1240", "An .aac file can't hold channel configuration 8."},
             Case{"mpeg4-generic", "config=1214", "An .aac file can't hold frames of 960 samples."},
             Case{"MP4A-LATM", "cpresent=1", "Its description has no audio configuration."},
             Case{"MP4A-LATM", "config=c0002420", "Its LATM configuration is of version 1, which is not supported."},
             Case{"MP4A-LATM", "config=40022420", "Several programs or layers are in its LATM stream."},
             Case{"MP4A-LATM", "config=40102420", "Several programs or layers are in its LATM stream."},
         }) {
        ExpectRefused(Track(lCase.mFormat, lCase.mParameters), lCase.mSentence);
    }
}

TEST(AdtsWriterTest, EveryPrefixOfAConfigurationIsSafe) {
    const std::string lConfig = "2b920800";
    for (std::size_t i = 0; i <= lConfig.size(); ++i) {
        for (const char* const lFormat : {"mpeg4-generic", "MP4A-LATM"}) {
            try {
                FileExtension(Track(lFormat, "config=" + lConfig.substr(0, i)));
            } catch (const Failure& lFailure) { EXPECT_EQ(kExitNothingPlayable, lFailure.Code()); }
        }
    }
}

TEST(M4vWriterTest, TheConfigurationThenTheSamples) {
    const std::string lFrame("\0\0\1\xb6\x10", 5);
    EXPECT_EQ(std::string("\0\0\1\xb0\x01", 5) + lFrame + lFrame,
              Written(Track("MP4V-ES", "profile-level-id=1;config=000001B001;other=1"), ".m4v", {lFrame, lFrame}));
    EXPECT_EQ(lFrame, Written(Track("MP4V-ES", ""), ".m4v", {lFrame}));
    // Half a byte is none.
    EXPECT_EQ(std::string("\0\0\1", 3), Written(Track("MP4V-ES", "config=0000011"), ".m4v", {}));
}

TEST(AmrWriterTest, TheSizeGivesTheTypeBack) {
    struct Case {
        std::size_t mSize;
        unsigned char mEntry;
    };
    for (const Case& lCase : {Case{12, 0x04}, Case{13, 0x0c}, Case{15, 0x14}, Case{17, 0x1c}, Case{19, 0x24},
                              Case{20, 0x2c}, Case{26, 0x34}, Case{31, 0x3c}, Case{5, 0x44}, Case{6, 0x4c}}) {
        const std::string lFrame(lCase.mSize, 'f');
        EXPECT_EQ("#!AMR\n" + std::string(1, static_cast<char>(lCase.mEntry)) + lFrame,
                  Written(Track("AMR", "octet-align=1"), ".amr", {lFrame}));
    }
}

TEST(AmrWriterTest, OtherSizesAreNoFrames) {
    std::vector<std::string> lOdd;
    for (const std::size_t lSize : {0U, 1U, 4U, 7U, 11U, 14U, 16U, 18U, 21U, 25U, 27U, 30U, 32U}) {
        lOdd.emplace_back(lSize, 'f');
    }
    EXPECT_EQ("#!AMR\n", Written(Track("AMR", ""), ".amr", lOdd));
}

TEST(AmrWriterTest, PayloadsThatAreNotTakenApart) {
    for (const std::string lOption : {"octet-align=0", "crc=1", "robust-sorting=1", "interleaving=4", "channels=2"}) {
        ExpectRefused(Track("AMR", "mode-set=7;" + lOption), "AMR with " + lOption + " is not supported.");
    }
    EXPECT_EQ("#!AMR\n",
              Written(Track("AMR", "octet-align=1;crc=0;robust-sorting=0;interleaving=0;channels=1"), ".amr", {}));
    Player::Properties lStereo = Track("AMR", "octet-align=1");
    lStereo.Insert("EncParams", "1");
    EXPECT_EQ(".amr", FileExtension(lStereo));
    lStereo.Insert("EncParams", "2");
    ExpectRefused(lStereo, "AMR of 2 channels is not supported.");
}

TEST(WriterTest, WhatHasNoFile) {
    ExpectRefused(Track("VP8", ""), "No file format is known for VP8.");
    ExpectRefused(Track("enc-mpeg4-generic", "mode=AAC-hbr;config=1210"), "It is encrypted, and there is no key.");
}

}  // namespace
}  // namespace Virertsp
