#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include "support/Bytes.hpp"
#include "support/ClientSocket.hpp"
#include "support/Connection.hpp"
#include "support/Patience.hpp"

namespace Player::Testing {

/// The server's end of a control connection, moved by the test's own thread. When it ends the connection, the
/// client's socket knows when the call returns.
class Peer {
public:
    Peer() : mListener(Listening()) {}
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() { close(mListener); }

    std::string Port() const { return std::to_string(PortOf(mListener)); }
    std::string Authority() const { return "127.0.0.1:" + Port(); }
    std::string URL() const { return "rtsp://" + Authority() + "/clip"; }

    /// Takes the client's connection, which replaces the last one.
    void Accept() { mClient = std::make_unique<TestSupport::Connection>(mListener, mPatience); }
    /// False when the client went away. Whoever waits for it gets it; another thread may call this meanwhile.
    bool Send(const std::string& aText) {
        std::size_t lSent = 0;
        while (lSent < aText.size()) {
            const ssize_t lCount = send(mClient->Descriptor(), &aText[lSent], aText.size() - lSent, MSG_NOSIGNAL);
            if (lCount <= 0) { return false; }
            lSent += static_cast<std::size_t>(lCount);
        }
        return true;
    }
    /// The same for a client that does not wait: all is in its socket when the call returns.
    void Deliver(const std::string& aText) {
        const unsigned long lUnread = Unread();
        EXPECT_TRUE(Send(aText));
        EXPECT_TRUE(mPatience.Until([&] { return Unread() >= lUnread + aText.size(); }));
    }
    /// As a read of its own.
    void SendWhenRead(const std::string& aText) {
        EXPECT_TRUE(mPatience.Until([&] { return 0 == Unread(); }));
        EXPECT_TRUE(Send(aText));
    }
    void Shutdown() { mClient->Shutdown(); }
    void Close() { mClient->Close(); }
    void Reset() { mClient->Reset(); }

    /// So many bytes of what the client sends.
    std::string Read(std::size_t aSize) {
        try {
            return TestSupport::AsText(mClient->ReadBytes(aSize));
        } catch (const std::runtime_error& lError) { ADD_FAILURE() << lError.what(); }
        return std::string();
    }
    /// The client has sent this, and nothing else.
    void Expect(const std::string& aText) {
        EXPECT_EQ(aText, Read(aText.size()));
        EXPECT_EQ("", Received());
    }
    /// Sends in the client's place until its socket takes no more.
    void FillClient() {
        const std::string lBytes(1 << 16, 'x');
        const int lClient = ClientDescriptor();
        while (send(lClient, lBytes.data(), lBytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {}
        EXPECT_EQ(EAGAIN, errno);
    }
    /// What the client has sent since the last call, as far as it is there.
    std::string Received() {
        std::string lText;
        std::vector<TestSupport::Connection::Frame> lFrames;
        mClient->ReadPresent(lText, lFrames);
        mClient->ReadBytes(lText.size());
        return lText;
    }
    /// Whether the client has opened a connection that was not accepted yet.
    bool HasCaller() const {
        pollfd lPoll = {mListener, POLLIN, 0};
        return 1 == poll(&lPoll, 1, 0);
    }
    std::string ClientIP() const {
        sockaddr_in lAddress = {};
        socklen_t lSize = sizeof(lAddress);
        getpeername(mClient->Descriptor(), reinterpret_cast<sockaddr*>(&lAddress), &lSize);
        return inet_ntoa(lAddress.sin_addr);
    }

    /// A socket on a port of the loopback that the system chose.
    static int Bound() {
        const int lSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in lAddress = {};
        lAddress.sin_family = AF_INET;
        lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, bind(lSocket, reinterpret_cast<sockaddr*>(&lAddress), sizeof(lAddress)));
        return lSocket;
    }
    static int Listening() {
        const int lSocket = Bound();
        EXPECT_EQ(0, listen(lSocket, 8));
        return lSocket;
    }
    static unsigned PortOf(int aSocket) {
        sockaddr_in lAddress = {};
        socklen_t lSize = sizeof(lAddress);
        getsockname(aSocket, reinterpret_cast<sockaddr*>(&lAddress), &lSize);
        return ntohs(lAddress.sin_port);
    }

private:
    unsigned ClientPort() const {
        sockaddr_in lClient = {};
        socklen_t lSize = sizeof(lClient);
        getpeername(mClient->Descriptor(), reinterpret_cast<sockaddr*>(&lClient), &lSize);
        return ntohs(lClient.sin_port);
    }
    /// The client lives in this process.
    int ClientDescriptor() const {
        int lDescriptor = sysconf(_SC_OPEN_MAX) > 1024 ? 1024 : static_cast<int>(sysconf(_SC_OPEN_MAX));
        while (--lDescriptor > 0 && ClientPort() != PortOf(lDescriptor)) {}
        return lDescriptor;
    }
    unsigned long Unread() const { return TestSupport::ClientSocket::Find(ClientPort(), PortOf(mListener)).mUnread; }

    TestSupport::Patience mPatience{std::chrono::seconds(10)};
    int mListener;
    std::unique_ptr<TestSupport::Connection> mClient;
};

}  // namespace Player::Testing
