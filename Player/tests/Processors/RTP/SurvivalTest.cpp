#include <gtest/gtest.h>

#include <functional>

#include "Packets/H264Sample.hpp"
#include "Processors/RTP/AUHeaders.hpp"

/// What a broken or hostile sender can write: nothing may be touched outside the packet (the sanitizer
/// watches), and what comes out is bounded by what went in.
namespace Player::Testing {
namespace {

/// One format, good packets of it, and what holds for all that comes out whatever goes in.
struct Format {
    const char* mName;
    const char* mFmtParams;
    std::vector<Bytes> mPayloads;
    std::function<void(const Bytes& aSample)> mCheck;
};

void ExpectWholeNALUnits(const Bytes& aSample) {
    UInt lAt = 0;
    const UInt lEnd = static_cast<UInt>(aSample.size());
    EXPECT_LT(lAt, lEnd);
    while (lAt < lEnd) {
        ASSERT_GT(lEnd - lAt, 4U);
        const UInt lSize =
            static_cast<UInt>(aSample[lAt] << 24 | aSample[lAt + 1] << 16 | aSample[lAt + 2] << 8 | aSample[lAt + 3]);
        ASSERT_GT(lSize, 0U);
        ASSERT_LE(lSize, lEnd - lAt - 4);
        lAt += 4 + lSize;
    }
}

void ExpectBytes(const Bytes& aSample) {
    EXPECT_FALSE(aSample.empty());
}

void ExpectFrame(const Bytes& aSample) {
    EXPECT_GE(aSample.size(), 5U);
    EXPECT_LE(aSample.size(), 31U);
}

const Format kFormats[] = {
    {"H264",
     "",
     {
         {0x67, 0x42, 0x00, 0x1E},                          // single unit
         {0x78, 0, 3, 0x67, 1, 2, 0, 2, 0x68, 3, 0, 1, 6},  // STAP-A
         {0x7C, 0x85, 1, 2, 3},                             // FU-A, start
         {0x7C, 0x05, 4, 5, 6},                             // FU-A
         {0x7C, 0x45, 7, 8, 9},                             // FU-A, end
     },
     ExpectWholeNALUnits},
    {"MP4V-ES", "", {{0, 0, 1, 0xB6, 1, 2}, {3, 4, 5}, {6, 7}}, ExpectBytes},
    {"MP4A-LATM", "", {{5, 1, 2, 3, 4, 5, 3, 1, 2, 3}, Bytes{0xFF, 0x02} + Counted(257) + Bytes{1, 9}}, ExpectBytes},
    {"AMR", "", {Bytes{0xF0, 0xBC, 0xC4, 0xFC, 0x24} + Counted(31 + 5 + 19)}, ExpectFrame},
    {"mpeg4-generic",
     "sizelength=13;indexlength=3;indexdeltalength=3",
     {AUHeaders().Put(13, 4).Put(3, 0).Put(13, 5).Put(3, 0).Payload(Counted(9)),
      AUHeaders().Put(13, 6).Put(3, 0).Payload(Counted(6)), AUHeaders().Put(13, 90).Put(3, 0).Payload(Counted(7))},
     [](const Bytes&) {}},
    {"mpeg4-generic",
     "sizelength=5;indexlength=2;indexdeltalength=2;ctsdeltalength=7;dtsdeltalength=33;randomaccessindication=1;"
     "streamstateindication=3;auxiliarydatasizelength=4",
     {AUHeaders().Put(5, 4).Put(2, 1).Put(1, 1).Put(7, 9).Put(1, 1).Put(33, 1).Put(1, 1).Put(3, 2).Payload(
         Counted(20))},
     [](const Bytes&) {}},
    {"enc-mpeg4-generic",
     "mode=AAC-hbr;sizelength=13;indexlength=3;ismarypselectiveencryption=1;isamcrypivlength=5;"
     "ismacrypkeyindicatorlength=1",
     {AUHeaders().Put(8, 0x80).Put(40, 7).Put(8, 1).Put(13, 4).Put(3, 0).Payload(Counted(6))},
     [](const Bytes&) {}},
    {"enc-mpeg4-generic",
     "mode=mpeg4-video;sizelength=16;isamcrypivlength=4",
     {AUHeaders().Put(32, 7).Put(16, 4).Payload(Counted(6)), AUHeaders().Put(32, 8).Put(16, 4).Payload(Counted(6))},
     [](const Bytes&) {}},
};

/// Sends the payloads as one access unit, the marker on the last packet, and ends the stream.
void Send(const Format& aFormat, const std::vector<Bytes>& aPayloads) {
    Chain lChain(aFormat.mName, aFormat.mFmtParams);
    unsigned short lSeq = 100;
    std::size_t lSent = 0;
    for (std::size_t lIdx = 0; lIdx < aPayloads.size(); ++lIdx) {
        TestSupport::RtpPacket lPacket = PacketWith(aPayloads[lIdx]);
        lChain.Push(lIdx + 1 == aPayloads.size() ? lPacket.Seq(lSeq++).Marker() : lPacket.Seq(lSeq++));
        lSent += aPayloads[lIdx].size();
    }
    lChain.Link().Param("EndOfStream", "Bye");

    std::size_t lReceived = 0;
    for (const Bytes& lSample : lChain.Samples()) {
        aFormat.mCheck(lSample);
        lReceived += lSample.size();
    }
    EXPECT_LE(lReceived, 32 * lSent);
}

TEST(SurvivalTest, EveryPrefixOfAGoodPacket) {
    for (const Format& lFormat : kFormats) {
        for (std::size_t lIdx = 0; lIdx < lFormat.mPayloads.size(); ++lIdx) {
            for (std::size_t lSize = 1; lSize <= lFormat.mPayloads[lIdx].size(); ++lSize) {
                std::vector<Bytes> lPayloads = lFormat.mPayloads;
                lPayloads[lIdx].resize(lSize);
                lPayloads[lIdx].shrink_to_fit();
                Send(lFormat, lPayloads);
                Send(lFormat, {lPayloads[lIdx]});
            }
        }
    }
}

TEST(SurvivalTest, EverySingleByteCorruptionOfAGoodPacket) {
    for (const Format& lFormat : kFormats) {
        for (std::size_t lIdx = 0; lIdx < lFormat.mPayloads.size(); ++lIdx) {
            for (std::size_t lAt = 0; lAt < std::min<std::size_t>(lFormat.mPayloads[lIdx].size(), 64); ++lAt) {
                for (UInt lValue = 0; lValue < 256; ++lValue) {
                    std::vector<Bytes> lPayloads = lFormat.mPayloads;
                    lPayloads[lIdx][lAt] = static_cast<Byte>(lValue);
                    Send(lFormat, lPayloads);
                }
            }
        }
    }
}

TEST(SurvivalTest, EveryPacketLost) {
    for (const Format& lFormat : kFormats) {
        for (std::size_t lIdx = 0; lIdx < lFormat.mPayloads.size(); ++lIdx) {
            std::vector<Bytes> lPayloads = lFormat.mPayloads;
            lPayloads.erase(lPayloads.begin() + static_cast<std::ptrdiff_t>(lIdx));
            Send(lFormat, lPayloads);
        }
    }
}

TEST(SurvivalTest, Noise) {
    UInt lState = 1;
    const auto lNext = [&lState] { return (lState = lState * 1664525 + 1013904223) >> 16; };
    for (const Format& lFormat : kFormats) {
        for (int lRound = 0; lRound < 500; ++lRound) {
            std::vector<Bytes> lPayloads;
            for (UInt lIdx = 0; lIdx < 1 + lNext() % 5; ++lIdx) {
                Bytes lPayload(1 + lNext() % 40);
                for (Byte& lByte : lPayload) {
                    lByte = static_cast<Byte>(lNext());
                }
                lPayloads.push_back(lPayload);
            }
            Send(lFormat, lPayloads);
        }
    }
}

}  // namespace
}  // namespace Player::Testing
