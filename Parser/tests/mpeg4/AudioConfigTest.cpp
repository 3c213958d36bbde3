#include "Parser/AudioConfig.hpp"

#include <gtest/gtest.h>

namespace Parser {
namespace {

std::string Bytes(std::initializer_list<int> aBytes) {
    std::string lText;
    for (const int lByte : aBytes) {
        lText += static_cast<char>(lByte);
    }
    return lText;
}

TEST(StreamMuxConfig, WhatFollowsTheFirst15BitsMovesToTheFront) {
    const StreamMuxConfig lMux(Bytes({0x40, 0x00, 0x24, 0x20}));
    EXPECT_EQ(0U, lMux.mVersion);
    EXPECT_TRUE(lMux.mIsOneLayer);
    EXPECT_EQ(Bytes({0x12, 0x10, 0x00}), lMux.mAudioSpecificConfig);
    EXPECT_EQ(Bytes({0x80}), StreamMuxConfig(Bytes({0, 1})).mAudioSpecificConfig);
}

TEST(StreamMuxConfig, ThereIsNoneInOneByteAndNoneInVersion1) {
    EXPECT_EQ("", StreamMuxConfig("").mAudioSpecificConfig);
    EXPECT_EQ("", StreamMuxConfig("\x40").mAudioSpecificConfig);
    const StreamMuxConfig lMux(Bytes({0xC0, 0x00, 0x24, 0x20}));
    EXPECT_EQ(1U, lMux.mVersion);
    EXPECT_EQ("", lMux.mAudioSpecificConfig);
}

TEST(StreamMuxConfig, ProgramsAndLayersAreSeen) {
    EXPECT_FALSE(StreamMuxConfig(Bytes({0x40, 0x10, 0x24, 0x20})).mIsOneLayer);
    EXPECT_FALSE(StreamMuxConfig(Bytes({0x40, 0x02, 0x24, 0x20})).mIsOneLayer);
}

TEST(AudioConfig, OfTheCoreAloneAndWithAnExtensionInFront) {
    const AudioConfig lCore(Bytes({0x12, 0x10}));
    EXPECT_TRUE(lCore.IsUnderstood());
    EXPECT_EQ("AAC LC", lCore.Name());
    EXPECT_EQ(44100U, lCore.mRate);
    EXPECT_EQ(44100U, lCore.mOutputRate);
    EXPECT_EQ(2U, lCore.Channels());
    EXPECT_FALSE(lCore.mShortFrames);
    EXPECT_TRUE(AudioConfig(Bytes({0x12, 0x14})).mShortFrames);

    // Object type 29, rate index 7, 1 channel; extension rate index 4; core object type 2.
    const AudioConfig lExtended(Bytes({0xeb, 0x8a, 0x08, 0x00}));
    EXPECT_EQ("HE-AAC v2", lExtended.Name());
    EXPECT_EQ(UInt{AudioConfig::kLC}, lExtended.mObjectType);
    EXPECT_EQ(22050U, lExtended.mRate);
    EXPECT_EQ(44100U, lExtended.mOutputRate);
    EXPECT_EQ(2U, lExtended.Channels());
}

TEST(AudioConfig, NumbersThatEscapeTheirTables) {
    // Object type 31, and 1 in 6 bits: 33; rate index 15 and 24 bits: 1000; 1 channel.
    const AudioConfig lConfig(Bytes({0xf8, 0x3e, 0x00, 0x07, 0xd0, 0x20}));
    EXPECT_EQ(33U, lConfig.mObjectType);
    EXPECT_EQ(1000U, lConfig.mRate);
    EXPECT_EQ(1U, lConfig.Channels());
    EXPECT_EQ("MPEG-4 audio object type 33", lConfig.Name());
}

TEST(AudioConfig, WhatIsMissingOrReservedIsNotUnderstood) {
    EXPECT_FALSE(AudioConfig("").IsUnderstood());
    EXPECT_FALSE(AudioConfig(Bytes({0x16, 0x90})).IsUnderstood());  // rate index 13
    EXPECT_FALSE(AudioConfig(Bytes({0x02, 0x10})).IsUnderstood());  // object type 0
}

TEST(AudioConfig, IndexesOfRates) {
    EXPECT_EQ(0U, RateIndex(96000));
    EXPECT_EQ(12U, RateIndex(7350));
    EXPECT_EQ(15U, RateIndex(44101));
}

}  // namespace
}  // namespace Parser
