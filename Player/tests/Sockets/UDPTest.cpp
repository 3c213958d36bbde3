#include "Sockets/UDP.hpp"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "Sockets/HiddenCalls.hpp"
#include "Sockets/Loopback.hpp"
#include "support/Throws.hpp"

namespace Player::Sockets {
namespace {

using Testing::ExpectPassesInChild;
using Testing::HideCalls;
using Testing::Loopback;
using Testing::PortOf;
using TestSupport::ExpectThrow;

constexpr UInt kTooMuch = 0x80000000;

/// A UDP socket on a free loopback port.
class Bound : public UDP {
public:
    Bound() { Bind(Loopback(0)); }
    using UDP::Descriptor;

    Address Addr() const { return Loopback(PortOf(Descriptor())); }
    void SendTo(const Bound& aTo, const std::string& aBytes) {
        EXPECT_EQ(static_cast<SInt>(aBytes.size()),
                  WriteTo(aBytes.data(), static_cast<UInt>(aBytes.size()), aTo.Addr()));
    }
};

class OpenUDP : public UDP {
public:
    using UDP::Descriptor;
};

std::vector<std::string> Texts(const DatagramBatch& aBatch) {
    std::vector<std::string> lTexts;
    for (UInt i = 0; i < aBatch.Count(); ++i)
        lTexts.emplace_back(aBatch.Data(i), aBatch.Data(i) + aBatch.Size(i));
    return lTexts;
}

TEST(UDP, IsAnInternetDatagramSocket) {
    const OpenUDP lSocket;
    int lValue = 0;
    socklen_t lSize = sizeof lValue;
    EXPECT_EQ(0, ::getsockopt(lSocket.Descriptor(), SOL_SOCKET, SO_PROTOCOL, &lValue, &lSize));
    EXPECT_EQ(IPPROTO_UDP, lValue);
    EXPECT_EQ(0, ::getsockopt(lSocket.Descriptor(), SOL_SOCKET, SO_DOMAIN, &lValue, &lSize));
    EXPECT_EQ(AF_INET, lValue);
}

TEST(UDP, CarriesDatagramsAndTellsTheSender) {
    Bound lA;
    Bound lB;
    lA.SendTo(lB, "one");
    lA.SendTo(lB, "");
    lA.SendTo(lB, "three");
    char lBytes[8] = {};
    Address lFrom;
    EXPECT_EQ(3, lB.ReadFrom(lBytes, sizeof lBytes, lFrom));
    EXPECT_STREQ("one", lBytes);
    ASSERT_EQ(16U, lFrom.Size());
    EXPECT_EQ(0, std::memcmp(lA.Addr().Begin(), lFrom.Begin(), 8)) << "family, port and address";
    EXPECT_EQ(0, lB.ReadFrom(lBytes, sizeof lBytes, lFrom)) << "an empty datagram is one";
    EXPECT_EQ(2, lB.ReadFrom(lBytes, 2, lFrom)) << "the rest of a datagram is lost";
    lB.NonBlockingMode(true);
    EXPECT_EQ(Socket::kNoData, lB.ReadFrom(lBytes, sizeof lBytes, lFrom));
    EXPECT_EQ(16U, lFrom.Size()) << "the sender stays when nothing came";
    EXPECT_EQ(0, std::memcmp(lA.Addr().Begin(), lFrom.Begin(), 8));
}

TEST(UDP, TellsItsErrors) {
    Bound lBound;
    const std::string lTooLong(70000, 'x');
    ExpectThrow<NetworkErr>(39, "UDP::WriteTo(): Failed to write [" + std::to_string(EMSGSIZE) + "]",
                            [&] { lBound.WriteTo(lTooLong.data(), 70000, lBound.Addr()); });
    // A connected socket hears that nobody listens.
    const auto lGone = std::make_unique<Bound>();
    const Address lAddr = lGone->Addr();
    OpenUDP lSocket;
    ASSERT_EQ(0, lSocket.Connect(lAddr));
    lGone->Reset();
    lSocket.NonBlockingMode(true);
    char lByte = 0;
    Address lFrom;
    EXPECT_EQ(1, lSocket.Write("x", 1));
    ExpectThrow<NetworkErr>(38, "UDP::ReadFrom(): Failed to read [" + std::to_string(ECONNREFUSED) + "]",
                            [&] { lSocket.ReadFrom(&lByte, 1, lFrom); });
    DatagramBatch lBatch;
    EXPECT_EQ(1, lSocket.Write("x", 1));
    ExpectThrow<NetworkErr>(38, "UDP::ReadFrom(): Failed to read [" + std::to_string(ECONNREFUSED) + "]",
                            [&] { lSocket.ReadMany(lBatch); });
    EXPECT_EQ(0U, lBatch.Count());
    EXPECT_EQ(0U, lSocket.ReadMany(lBatch)) << "and goes on";
}

TEST(UDP, ResetGivesUpThePort) {
    Bound lBound;
    const Address lAddr = lBound.Addr();
    lBound.Reset();
    EXPECT_EQ(0U, PortOf(lBound.Descriptor()));
    EXPECT_EQ(0, lBound.Bind(lAddr)) << "free again";
}

TEST(UDP, ResetNeedsNoSecondDescriptor) {
    OpenUDP lSocket;  // has the lowest number that was free
    const int lNumber = lSocket.Descriptor();
    lSocket.Reset();
    EXPECT_EQ(lNumber, lSocket.Descriptor()) << "given back before another is taken";
    EXPECT_EQ(0U, PortOf(lSocket.Descriptor()));
}

TEST(UDPDeathTest, TellsWhenNoDescriptorIsLeft) {
    ExpectPassesInChild([] {
        const std::string lMessage = "UDP::Create(): Failed to create [" + std::to_string(EMFILE) + "]";
        OpenUDP lSocket;
        HideCalls({SYS_socket}, EMFILE);
        ExpectThrow<NetworkErr>(32, lMessage, [] { UDP(); });
        ExpectThrow<NetworkErr>(32, lMessage, [&] { lSocket.Reset(); });
        EXPECT_TRUE(lSocket.HasClosed());
    });
}

TEST(UDP, ReadManyDrainsTheSocket) {
    Bound lA;
    Bound lB;  // in blocking mode: never waits all the same
    DatagramBatch lBatch;
    EXPECT_EQ(0U, lBatch.Count());
    EXPECT_EQ(0U, lB.ReadMany(lBatch));
    lA.SendTo(lB, "one");
    lA.SendTo(lB, "");
    lA.SendTo(lB, "three");
    EXPECT_EQ(3U, lB.ReadMany(lBatch));
    EXPECT_EQ((std::vector<std::string>{"one", "", "three"}), Texts(lBatch));
    EXPECT_EQ(0U, lB.ReadMany(lBatch));
    EXPECT_EQ(0U, lBatch.Count());
}

TEST(UDP, ReadManyTakesAFullBatchAndThenTheRest) {
    Bound lA;
    Bound lB;
    std::vector<std::string> lSent;
    for (UInt i = 0; i < DatagramBatch::kSlots + 1; ++i) {
        lSent.push_back("datagram " + std::to_string(i));
        lA.SendTo(lB, lSent.back());
    }
    DatagramBatch lBatch;
    EXPECT_EQ(32U, lB.ReadMany(lBatch));
    EXPECT_EQ(std::vector<std::string>(lSent.begin(), lSent.end() - 1), Texts(lBatch));
    EXPECT_EQ(1U, lB.ReadMany(lBatch));
    EXPECT_EQ((std::vector<std::string>{lSent.back()}), Texts(lBatch));
}

TEST(UDP, ReadManyCutsLongDatagrams) {
    Bound lA;
    Bound lB;
    const std::string lLong = std::string(1499, 'a') + "b" + std::string(3000, 'c');
    DatagramBatch lBatch;
    for (int lRound = 0; lRound < 2; ++lRound) {
        for (const std::size_t lSize : {std::size_t{1499}, std::size_t{1500}, std::size_t{1501}, lLong.size()}) {
            lA.SendTo(lB, lLong.substr(0, lSize));
        }
        lA.SendTo(lB, "x");
        ASSERT_EQ(5U, lB.ReadMany(lBatch));
        const std::string lCut = lLong.substr(0, 1500);
        EXPECT_EQ((std::vector<std::string>{lCut.substr(0, 1499), lCut, lCut, lCut, "x"}), Texts(lBatch));
    }
}

TEST(UDPDeathTest, ReadManyDoesWithoutTheSystemsHelp) {
    ExpectPassesInChild([] {
        Bound lA;
        Bound lB;
        DatagramBatch lBatch;
        HideCalls({SYS_recvmmsg}, ENOSYS);
        EXPECT_EQ(0U, lB.ReadMany(lBatch));
        const std::string lLong(1501, 'l');
        lA.SendTo(lB, "one");
        lA.SendTo(lB, "");
        lA.SendTo(lB, lLong);
        EXPECT_EQ(3U, lB.ReadMany(lBatch));
        EXPECT_EQ((std::vector<std::string>{"one", "", lLong.substr(0, 1500)}), Texts(lBatch));
        for (int i = 0; i < 33; ++i)
            lA.SendTo(lB, std::to_string(i));
        EXPECT_EQ(32U, lB.ReadMany(lBatch));
        EXPECT_EQ("31", Texts(lBatch).back());
        EXPECT_EQ(1U, lB.ReadMany(lBatch));
        EXPECT_EQ("32", Texts(lBatch).back());

        lB.Connect(lA.Addr());
        lA.Reset();
        lB.Write("x", 1);
        ExpectThrow<NetworkErr>(38, "UDP::ReadFrom(): Failed to read [" + std::to_string(ECONNREFUSED) + "]",
                                [&] { lB.ReadMany(lBatch); });
        EXPECT_EQ(0U, lBatch.Count());
    });
}

TEST(UDPDeathTest, BatchKnowsItsCount) {
    const DatagramBatch lBatch;
    EXPECT_DEATH(static_cast<void>(lBatch.Data(0)), "aIdx < mCount");
    EXPECT_DEATH(static_cast<void>(lBatch.Size(0)), "aIdx < mCount");
}

TEST(UDPDeathTest, SizesAreBelow2To31) {
    Bound lBound;
    const Address lAddr = lBound.Addr();
    Address lFrom;
    char lByte = 0;
    EXPECT_DEATH(lBound.WriteTo(&lByte, kTooMuch, lAddr), "0 == \\(aSize >> 31\\)");
    EXPECT_DEATH(lBound.ReadFrom(&lByte, kTooMuch, lFrom), "0 == \\(aSize >> 31\\)");
}

}  // namespace
}  // namespace Player::Sockets
