#include "Sockets/TCP.hpp"

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <memory>
#include <string>

#include "Sockets/HiddenCalls.hpp"
#include "Sockets/Loopback.hpp"
#include "support/Throws.hpp"

namespace Player::Sockets {
namespace {

using Testing::Descriptor;
using Testing::Server;
using TestSupport::ExpectThrow;

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

TEST(TCP, ResetNeedsNoSecondDescriptor) {
    OpenTCP lSocket;  // has the lowest number that was free
    const int lNumber = lSocket.Descriptor();
    lSocket.Reset();
    EXPECT_EQ(lNumber, lSocket.Descriptor()) << "given back before another is taken";
    EXPECT_EQ(SOCK_STREAM, OptionOf(lSocket.Descriptor(), SO_TYPE));
}

TEST(TCPDeathTest, TellsWhenNoDescriptorIsLeft) {
    Testing::ExpectPassesInChild([] {
        const std::string lMessage = "TCP::Create(): Failed to create [" + std::to_string(EMFILE) + "]";
        auto lSocket = std::make_unique<OpenTCP>();
        const int lNumber = lSocket->Descriptor();
        Testing::HideCalls({SYS_socket}, EMFILE);
        ExpectThrow<NetworkErr>(32, lMessage, [] { TCP(); });
        ExpectThrow<NetworkErr>(32, lMessage, [&] { lSocket->Reset(); });
        // Somebody else gets the old number: it is not the socket's any more.
        const Descriptor lOther(::dup(STDERR_FILENO));
        EXPECT_EQ(lNumber, lOther.Get());
        EXPECT_TRUE(lSocket->HasClosed());
        lSocket.reset();
        EXPECT_NE(-1, ::fcntl(lOther.Get(), F_GETFD));
    });
}

}  // namespace
}  // namespace Player::Sockets
