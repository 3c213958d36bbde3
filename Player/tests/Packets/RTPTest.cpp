#include "Packets/RTP.hpp"

#include <gtest/gtest.h>

#include "support/Datagrams.hpp"

namespace Player {

using Packets::RTP;
using Testing::Bytes;
using Testing::SizeOf;

namespace {

// clang-format off
const Bytes kFull = {
    0xB2, 0xE0, 0x12, 0x34,  // version 2, padding, extension, two sources; marker, type 96; number 0x1234
    0x89, 0xAB, 0xCD, 0xEF,  // timestamp
    0x11, 0x22, 0x33, 0x44,  // SSRC
    0xA1, 0xA2, 0xA3, 0xA4,  // contributing sources
    0xB1, 0xB2, 0xB3, 0xB4,
    0xBE, 0xDE, 0x00, 0x02,  // extension of two words
    0xC1, 0xC2, 0xC3, 0xC4,
    0xC5, 0xC6, 0xC7, 0xC8,
    0xD1, 0xD2, 0xD3,        // payload
    0x00, 0x02,              // padding
};
// clang-format on

RTP::Lengths FullLengths() {
    RTP::Lengths lLengths;
    lLengths.mHeader = 20;
    lLengths.mExtension = 12;
    lLengths.mPadding = 2;
    return lLengths;
}

RTP::Lengths HeaderOnly() {
    RTP::Lengths lLengths;
    lLengths.mHeader = 12;
    return lLengths;
}

TEST(RTPPacketTest, TellsEveryFieldOfAFullPacket) {
    const RTP lPacket(kFull.data(), SizeOf(kFull), FullLengths(), 0xFFFFFFFE, -5);

    EXPECT_EQ(0x1234, lPacket.SeqNumber());
    EXPECT_EQ(0x89ABCDEFU, lPacket.Timestamp());
    EXPECT_TRUE(lPacket.HasMarker());
    EXPECT_EQ(2, lPacket.NumCSRCs());
    EXPECT_EQ(0xFFFFFFFEU, lPacket.SeqNumberExt());
    EXPECT_EQ(-5, lPacket.TimestampExt());
    EXPECT_EQ(Time(0), lPacket.PlayTime());
    EXPECT_FALSE(lPacket.IsDisposable());
}

TEST(RTPPacketTest, BeginsAndEndsWithThePayload) {
    const RTP lPacket(kFull.data(), SizeOf(kFull), FullLengths(), 0, 0);

    EXPECT_EQ(3U, lPacket.Size());
    EXPECT_EQ((Bytes{0xD1, 0xD2, 0xD3}), Bytes(lPacket.Begin(), lPacket.End()));
}

TEST(RTPPacketTest, CopiesTheDatagram) {
    Bytes lBytes = Testing::Packet().Payload({7}).Build();
    const RTP lPacket(lBytes.data(), SizeOf(lBytes), HeaderOnly(), 0, 0);
    lBytes.back() = 8;
    EXPECT_EQ(7, *lPacket.Begin());
}

TEST(RTPPacketTest, CopiesAtMostTheSourcesAskedFor) {
    const RTP lPacket(kFull.data(), SizeOf(kFull), FullLengths(), 0, 0);
    const struct {
        unsigned short mMax;
        std::vector<UInt> mExpected;
    } kCases[] = {
        {0, {9, 9, 9}},
        {1, {0xA1A2A3A4, 9, 9}},
        {2, {0xA1A2A3A4, 0xB1B2B3B4, 9}},
        {3, {0xA1A2A3A4, 0xB1B2B3B4, 9}},
    };
    for (const auto& lCase : kCases) {
        std::vector<UInt> lSources(3, 9);
        lPacket.CopyCSRCs(lSources.data(), lCase.mMax);
        EXPECT_EQ(lCase.mExpected, lSources) << lCase.mMax;
    }
}

TEST(RTPPacketTest, CopiesNoSourcesThatThePacketOnlyClaims) {
    Bytes lBytes = Testing::Packet().Build();
    lBytes[0] |= 0x0F;
    const RTP lPacket(lBytes.data(), SizeOf(lBytes), HeaderOnly(), 0, 0);
    EXPECT_EQ(15, lPacket.NumCSRCs());
    std::vector<UInt> lSources(15, 9);
    lPacket.CopyCSRCs(lSources.data(), 15);
    EXPECT_EQ(std::vector<UInt>(15, 9), lSources);
}

TEST(RTPPacketTest, CopiesAtMostTheExtensionBytesAskedFor) {
    const RTP lPacket(kFull.data(), SizeOf(kFull), FullLengths(), 0, 0);
    EXPECT_EQ(8, lPacket.ExtensionSize());
    const struct {
        unsigned short mMax;
        Bytes mExpected;
    } kCases[] = {
        {0, Bytes(10, 9)},
        {5, {0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 9, 9, 9, 9, 9}},
        {8, {0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 9, 9}},
        {10, {0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 9, 9}},
    };
    for (const auto& lCase : kCases) {
        Bytes lData(10, 9);
        lPacket.CopyExtension(lData.data(), lCase.mMax);
        EXPECT_EQ(lCase.mExpected, lData) << lCase.mMax;
    }
}

TEST(RTPPacketTest, HasNoExtensionDataWithoutAnExtension) {
    const Bytes lBytes = Testing::Packet().PayloadSize(40).Build();
    const RTP lPacket(lBytes.data(), SizeOf(lBytes), HeaderOnly(), 0, 0);
    EXPECT_EQ(65532, lPacket.ExtensionSize());
    Bytes lData(10, 9);
    lPacket.CopyExtension(lData.data(), 0xFFFF);
    EXPECT_EQ(Bytes(10, 9), lData);
}

TEST(RTPPacketTest, ExtensionOfOnlyItsHeaderIsEmpty) {
    const Bytes lBytes = Testing::Packet().Extension({}).Build();
    RTP::Lengths lLengths = HeaderOnly();
    lLengths.mExtension = 4;
    const RTP lPacket(lBytes.data(), SizeOf(lBytes), lLengths, 0, 0);
    EXPECT_EQ(0, lPacket.ExtensionSize());
    Bytes lData(2, 9);
    lPacket.CopyExtension(lData.data(), 2);
    EXPECT_EQ(Bytes(2, 9), lData);
    EXPECT_EQ(1U, lPacket.Size());
}

TEST(RTPPacketTest, ExtensionSizeIsModulo65536) {
    const Bytes lBytes = Testing::Packet().Extension(Bytes(65540, 5)).Build();
    RTP::Lengths lLengths = HeaderOnly();
    lLengths.mExtension = 65544;
    const RTP lPacket(lBytes.data(), SizeOf(lBytes), lLengths, 0, 0);
    EXPECT_EQ(4, lPacket.ExtensionSize());
    EXPECT_EQ(1U, lPacket.Size());
}

TEST(RTPPacketDeathTest, LengthsBeyondTheDatagramAreAMistake) {
    const Bytes lBytes = Testing::Packet().Build();
    RTP::Lengths lTooLong = HeaderOnly();
    lTooLong.mPadding = 2;
    EXPECT_DEATH(RTP(lBytes.data(), SizeOf(lBytes), lTooLong, 0, 0), "Overhead");
    EXPECT_DEATH(RTP(lBytes.data(), SizeOf(lBytes), RTP::Lengths(), 0, 0), "kFixedHeader");
}

TEST(RTPPacketTest, MarkerIsTheTopBitOfTheTypeByte) {
    EXPECT_FALSE(Testing::HandedOut(Testing::Packet().Type(127))->HasMarker());
    EXPECT_TRUE(Testing::HandedOut(Testing::Packet().Type(0).Marker())->HasMarker());
}

}  // namespace
}  // namespace Player
