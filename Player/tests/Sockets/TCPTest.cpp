#include "Sockets/TCP.hpp"

#include <gtest/gtest.h>

#include <cerrno>

#include "Sockets/Loopback.hpp"
#include "Support/ExpectThrow.hpp"

namespace Player::Sockets {
namespace {

using Testing::Descriptor;
using Testing::DescriptorLimit;
using Testing::ExpectThrow;
using Testing::Server;

class OpenTCP : public TCP {
public:
    using TCP::Descriptor;
};

int OptionOf(int aFd, int aOption) {
    int lValue = -1;
    socklen_t lSize = sizeof lValue;
    EXPECT_EQ(0, ::getsockopt(aFd, SOL_SOCKET, aOption, &lValue, &lSize));
    return lValue;
}

TEST(TCP, IsAnInternetStream) {
    const OpenTCP lSocket;
    EXPECT_EQ(SOCK_STREAM, OptionOf(lSocket.Descriptor(), SO_TYPE));
    EXPECT_EQ(AF_INET, OptionOf(lSocket.Descriptor(), SO_DOMAIN));
    EXPECT_EQ(IPPROTO_TCP, OptionOf(lSocket.Descriptor(), SO_PROTOCOL));
    EXPECT_EQ(0, ::fcntl(lSocket.Descriptor(), F_GETFL) & O_NONBLOCK);
}

TEST(TCP, ResetMakesItFitToConnectAgain) {
    Server lServer;
    lServer.Listen();
    OpenTCP lSocket;
    lSocket.NonBlockingMode(true);
    lSocket.Connect(lServer.Addr(), 60);
    const Descriptor lFirst(lServer.Accept());

    lSocket.Reset();
    char lByte = 0;
    EXPECT_EQ(0, ::recv(lFirst.Get(), &lByte, 1, 0)) << "the old connection has ended";
    EXPECT_EQ(0, ::fcntl(lSocket.Descriptor(), F_GETFL) & O_NONBLOCK) << "a fresh descriptor";
    EXPECT_EQ(0, lSocket.Connect(lServer.Addr()));
    const Descriptor lSecond(lServer.Accept());
    EXPECT_EQ(1, lSocket.Write("x", 1));
    EXPECT_EQ("x", lSecond.Receive(1));
}

TEST(TCP, TellsWhenNoDescriptorIsLeft) {
    const DescriptorLimit lNone(0);
    ExpectThrow<NetworkErr>(32, "TCP::Create(): Failed to create [" + std::to_string(EMFILE) + "]", [] { TCP(); });
}

TEST(TCP, ResetNeedsNoSecondDescriptor) {
    OpenTCP lSocket;  // has the lowest number that was free
    const DescriptorLimit lNoMore(static_cast<rlim_t>(lSocket.Descriptor()) + 1);
    lSocket.Reset();
    EXPECT_EQ(SOCK_STREAM, OptionOf(lSocket.Descriptor(), SO_TYPE));
}

TEST(TCP, FailedResetMayBeRepeated) {
    OpenTCP lSocket;
    const int lOld = lSocket.Descriptor();
    {
        const DescriptorLimit lNone(0);
        ExpectThrow<NetworkErr>(32, "TCP::Create(): Failed to create [" + std::to_string(EMFILE) + "]",
                                [&] { lSocket.Reset(); });
    }
    // Somebody else has got the old number meanwhile: it is not the socket's any more.
    const Descriptor lOther(::socket(AF_INET, SOCK_DGRAM, 0));
    EXPECT_EQ(lOld, lOther.Get());
    EXPECT_TRUE(lSocket.HasClosed());
    lSocket.Reset();
    EXPECT_EQ(SOCK_STREAM, OptionOf(lSocket.Descriptor(), SO_TYPE));
    EXPECT_EQ(SOCK_DGRAM, OptionOf(lOther.Get(), SO_TYPE));
}

}  // namespace
}  // namespace Player::Sockets
