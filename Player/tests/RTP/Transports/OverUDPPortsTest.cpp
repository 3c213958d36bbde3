// How the UDP transport comes by its sockets.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "Player/Exception.hpp"
#include "RTP/Transports/LocalPorts.hpp"
#include "RTP/Transports/OverUDP.hpp"
#include "support/ReportCapture.hpp"
#include "support/UdpSocket.hpp"

namespace Player::RTP::Transports {

using Testing::DescriptorOf;
using Testing::kPortsBegin;
using Testing::kPortsEnd;
using Testing::LocalPort;
using TestSupport::ReportCapture;
using TestSupport::UdpSocket;

namespace {

/// The first of so many consecutive even ports that were free a moment ago.
UInt FreePorts(UInt aPairs) {
    const UInt lPlaces = (kPortsEnd - kPortsBegin) / (2 * aPairs);
    // Other processes look for ports of their own at the same time: each begins elsewhere.
    const UInt lFirst = static_cast<UInt>(getpid()) * 37;
    for (UInt lPlace = 0; lPlace < lPlaces; ++lPlace) {
        const UInt lBegin = kPortsBegin + (lFirst + lPlace) % lPlaces * 2 * aPairs;
        try {
            std::vector<UdpSocket> lPeers;
            for (UInt i = 0; i < 2 * aPairs; ++i) {
                lPeers.emplace_back(lBegin + i);
            }
            return lBegin;
        } catch (const std::runtime_error&) { continue; }
    }
    ADD_FAILURE() << "no free ports";
    return 0;
}

TEST(OverUDPPortsTest, TracksGetEvenPortsWithinTheRange) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    std::vector<UInt> lPorts;
    for (TrackIdx i = 0; i < 4; ++i) {
        EXPECT_EQ(i, lTransport.AddTrack());
        const UInt lPort = LocalPort(lTransport, i);
        EXPECT_EQ(0U, lPort % 2);
        EXPECT_LE(kPortsBegin, lPort);
        EXPECT_GT(kPortsEnd, lPort);
        EXPECT_EQ(std::to_string(lPort) + "-" + std::to_string(lPort + 1), lTransport.GetTrackLocalPorts(i));
        DescriptorOf(lPort);
        DescriptorOf(lPort + 1);
        for (const UInt lOther : lPorts) {
            EXPECT_NE(lOther, lPort);
        }
        lPorts.push_back(lPort);
    }
}

TEST(OverUDPPortsTest, SearchBeginsAtARandomPort) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    UInt lAsDrawn = 0;
    for (TrackIdx i = 0; i < 10; ++i) {
        // Another process that runs this test draws other ports.
        const unsigned lSeed = static_cast<unsigned>(getpid()) * 100 + i;
        std::srand(lSeed);
        const UInt lDrawn = static_cast<UInt>(std::rand()) * 2 % (kPortsEnd - kPortsBegin) + kPortsBegin;
        std::srand(lSeed);
        lTransport.AddTrack();
        if (lDrawn == LocalPort(lTransport, i)) { ++lAsDrawn; }
    }
    EXPECT_LE(5U, lAsDrawn) << "the others were taken by somebody";
}

TEST(OverUDPPortsTest, OnePairIsTriedOnce) {
    const UInt lBegin = FreePorts(1);
    OverUDP lTransport(lBegin, lBegin + 2, "");
    EXPECT_EQ(0U, lTransport.AddTrack());
    EXPECT_EQ(lBegin, LocalPort(lTransport, 0));

    const ReportCapture lReports;
    try {
        lTransport.AddTrack();
        FAIL() << "a second pair from a range of one";
    } catch (const RTPErr& lError) {
        EXPECT_EQ(19U << 16 | 1, lError.Code());
        EXPECT_STREQ("OverUDP::Track(): Failed to create UDP port pair", lError.Message());
    }
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Error, "Socket::Bind()"));
    EXPECT_EQ(1U, lReports.CountBeginning(Severity::Error, "OverUDP::Track(): Failed to create UDP port pair"));
    EXPECT_DEATH(lTransport.FillTrack(1), "aIdx < mTracks.size\\(\\)") << "no track was made";
}

TEST(OverUDPPortsTest, EveryPairOfTheRangeIsTriedOnce) {
    constexpr UInt kPairs = 4;
    const UInt lBegin = FreePorts(kPairs);
    const ReportCapture lReports;
    for (UInt lFree = 0; lFree < kPairs; ++lFree) {
        std::vector<UdpSocket> lTaken;
        for (UInt i = 0; i < kPairs; ++i) {
            if (i != lFree) { lTaken.emplace_back(lBegin + 2 * i); }
        }
        for (UInt lSeed = 0; lSeed < 8; ++lSeed) {
            std::srand(lSeed);
            OverUDP lTransport(lBegin, lBegin + 2 * kPairs, "");
            lTransport.AddTrack();
            EXPECT_EQ(lBegin + 2 * lFree, LocalPort(lTransport, 0));
            const std::size_t lBefore = lReports.CountBeginning(Severity::Error, "Socket::Bind()");
            EXPECT_THROW(lTransport.AddTrack(), RTPErr);
            EXPECT_EQ(lBefore + kPairs, lReports.CountBeginning(Severity::Error, "Socket::Bind()"));
        }
    }
}

TEST(OverUDPPortsTest, TakenRTCPPortMovesThePairOn) {
    const UInt lBegin = FreePorts(2);
    const ReportCapture lReports;
    const UdpSocket lTaken(lBegin + 1);
    for (UInt lSeed = 0; lSeed < 8; ++lSeed) {
        std::srand(lSeed);
        OverUDP lTransport(lBegin, lBegin + 4, "");
        lTransport.AddTrack();
        EXPECT_EQ(lBegin + 2, LocalPort(lTransport, 0));
        EXPECT_NO_THROW(UdpSocket{lBegin}) << "the half of the pair that was free is free again";
    }
}

TEST(OverUDPPortsTest, BindsToTheLocalAddress) {
    const UInt lBegin = FreePorts(1);
    const ReportCapture lReports;
    OverUDP lFirst(lBegin, lBegin + 2, "127.0.0.1");
    OverUDP lSecond(lBegin, lBegin + 2, "127.0.0.2");
    EXPECT_EQ(0U, lFirst.AddTrack());
    EXPECT_EQ(0U, lSecond.AddTrack()) << "the same ports of another address";
    OverUDP lThird(lBegin, lBegin + 2, "127.0.0.1");
    EXPECT_THROW(lThird.AddTrack(), RTPErr);
    OverUDP lFourth(lBegin, lBegin + 2, "not an address");
    EXPECT_THROW(lFourth.AddTrack(), RTPErr);
}

TEST(OverUDPPortsTest, SocketsAreNonBlockingAndHaveTheirBuffers) {
    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    lTransport.AddTrack();
    const struct {
        UInt mPort;
        int mBuffer;
    } kCases[] = {{LocalPort(lTransport, 0), 300000}, {LocalPort(lTransport, 0) + 1, 6000}};
    for (const auto& lCase : kCases) {
        const int lSocket = DescriptorOf(lCase.mPort);
        EXPECT_EQ(O_NONBLOCK, ::fcntl(lSocket, F_GETFL) & O_NONBLOCK);
        const auto lBufferOf = [](int aSocket) {
            int lSize = 0;
            socklen_t lLength = sizeof(lSize);
            ::getsockopt(aSocket, SOL_SOCKET, SO_RCVBUF, &lSize, &lLength);
            return lSize;
        };
        // The system makes of the wish what it likes, but the same each time.
        const int lReference = ::socket(AF_INET, SOCK_DGRAM, 0);
        ::setsockopt(lReference, SOL_SOCKET, SO_RCVBUF, &lCase.mBuffer, sizeof(lCase.mBuffer));
        EXPECT_EQ(lBufferOf(lReference), lBufferOf(lSocket)) << lCase.mBuffer;
        ::close(lReference);
    }
}

TEST(OverUDPDeathTest, Mistakes) {
    const char* const kRange = "\\(0 == aPortsBeg % 2\\) && 0 == \\(aPortsEnd % 2\\) && aPortsEnd > aPortsBeg";
    EXPECT_DEATH(OverUDP(5001, 5004, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5000, 5003, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5002, 5000, "").AddTrack(), kRange);
    EXPECT_DEATH(OverUDP(5000, 5000, "").AddTrack(), kRange);

    OverUDP lTransport(kPortsBegin, kPortsEnd, "");
    const char* const kIndex = "aIdx < mTracks.size\\(\\)";
    EXPECT_DEATH(lTransport.GetTrackLocalPorts(0), kIndex);
    EXPECT_DEATH(lTransport.SetTrackRemoteIP(0, ""), kIndex);
    EXPECT_DEATH(lTransport.SetTrackRemotePorts(0, ""), kIndex);
    EXPECT_DEATH(lTransport.Preflight(), "0 != mTracks.size\\(\\)");
}

TEST(OverUDPPortsTest, SessionIsSmall) {
    EXPECT_GT(64U * 1024, sizeof(OverUDP)) << "one batch for all tracks";
    EXPECT_GT(4U * 1024, sizeof(OverUDP::Track));
}

}  // namespace
}  // namespace Player::RTP::Transports
