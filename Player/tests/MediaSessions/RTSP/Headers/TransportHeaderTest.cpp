#include "MediaSessions/RTSP/Headers/TransportHeader.hpp"

#include <gtest/gtest.h>

namespace Player::MediaSessions {
namespace {

TEST(TransportHeaderTest, EveryParameterIsRead) {
    const TransportHeader lHeader = TransportHeader::Parse(
        "RTP/AVP;unicast;client_port=5000-5001; server_port = 6970-6971 ;source=192.0.2.1;ssrc=1A2B3C4D;"
        "interleaved=2-3;seq=70000;rtptime=4294967298;mode=\"PLAY\"");
    EXPECT_EQ(0x1A2B3C4DU, lHeader.mSSRC);
    EXPECT_EQ(static_cast<unsigned short>(4464), lHeader.mSeq);
    EXPECT_EQ(2U, lHeader.mRTPTime);
    EXPECT_EQ("192.0.2.1", lHeader.mSource);
    EXPECT_EQ("6970-6971", lHeader.mServerPorts);
    EXPECT_EQ("2-3", lHeader.mChannels);
}

TEST(TransportHeaderTest, WhatIsAbsentSaysNothing) {
    for (const char* lText : {"", ";", "RTP/AVP;unicast", "SSRC=1;Seq=2", "x=;=5", "ssrcs=1"}) {
        const TransportHeader lHeader = TransportHeader::Parse(lText);
        EXPECT_FALSE(lHeader.mSSRC || lHeader.mSeq || lHeader.mRTPTime) << lText;
        EXPECT_FALSE(lHeader.mSource || lHeader.mServerPorts || lHeader.mChannels) << lText;
    }
}

TEST(TransportHeaderTest, ValuesAreReadAsFarAsTheyAreNumbers) {
    const TransportHeader lHeader = TransportHeader::Parse("ssrc=xyz;seq=;rtptime=12ab;source=");
    EXPECT_EQ(0U, lHeader.mSSRC);
    EXPECT_EQ(static_cast<unsigned short>(0), lHeader.mSeq);
    EXPECT_EQ(12U, lHeader.mRTPTime);
    EXPECT_EQ("", lHeader.mSource);
}

TEST(TransportHeaderTest, TheLastOfEqualParametersCounts) {
    EXPECT_EQ(static_cast<unsigned short>(2), TransportHeader::Parse("seq=1;seq=2").mSeq);
}

TEST(TransportHeaderTest, AServerHasTwoPortsAtMost) {
    EXPECT_EQ("6970", TransportHeader::Parse("server_port=6970").mServerPorts);
    EXPECT_EQ("6970-6971", TransportHeader::Parse("server_port=6970-6971-6972").mServerPorts);
    EXPECT_EQ("-", TransportHeader::Parse("server_port=--").mServerPorts);
}

TEST(TransportHeaderTest, MulticastIsTold) {
    EXPECT_TRUE(TransportHeader::Parse("RTP/AVP;multicast;destination=239.1.2.3;port=5000-5001").mIsMulticast);
    EXPECT_TRUE(TransportHeader::Parse("RTP/AVP; multicast ").mIsMulticast);
    for (const char* lText : {"", "RTP/AVP;unicast", "RTP/AVP", "RTP/AVP;unicast;multicast", "RTP/AVP;x=multicast"}) {
        EXPECT_FALSE(TransportHeader::Parse(lText).mIsMulticast) << lText;
    }
}

TEST(TransportHeaderTest, AnAddressMayStandInBrackets) {
    EXPECT_EQ("2001:db8::1", TransportHeader::Parse("source=[2001:db8::1]").mSource.value());
    EXPECT_EQ("::1", TransportHeader::Parse("source=::1").mSource.value());
    EXPECT_EQ("[]", TransportHeader::Parse("source=[]").mSource.value());
}

}  // namespace
}  // namespace Player::MediaSessions
