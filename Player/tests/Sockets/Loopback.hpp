#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "Sockets/Socket.hpp"

namespace Player::Testing {

/// A descriptor of the test's own.
class Descriptor {
public:
    explicit Descriptor(int aFd) : mFd(aFd) { EXPECT_LE(0, aFd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    int Get() const { return mFd; }
    void Close() {
        if (0 <= mFd) { ::close(mFd); }
        mFd = -1;
    }
    void Send(const std::string& aBytes) const {
        EXPECT_EQ(static_cast<ssize_t>(aBytes.size()), ::send(mFd, aBytes.data(), aBytes.size(), MSG_NOSIGNAL));
    }
    /// Waits for exactly so many bytes.
    std::string Receive(std::size_t aSize) const {
        std::string lBytes(aSize, '\0');
        EXPECT_EQ(static_cast<ssize_t>(aSize), ::recv(mFd, lBytes.data(), aSize, MSG_WAITALL));
        return lBytes;
    }

private:
    int mFd;
};

inline Address Loopback(UInt aPort) {
    return Address("127.0.0.1", std::to_string(aPort).c_str());
}

/// The port that a descriptor is bound to.
inline UInt PortOf(int aFd) {
    sockaddr_in lAddr{};
    socklen_t lSize = sizeof lAddr;
    EXPECT_EQ(0, ::getsockname(aFd, reinterpret_cast<sockaddr*>(&lAddr), &lSize));
    return ntohs(lAddr.sin_port);
}

/// A TCP socket bound to a free loopback port. Nobody else gets the port; connecting is refused until `Listen`.
class Server {
public:
    Server() : mFd(::socket(AF_INET, SOCK_STREAM, 0)) {
        const Address lAny = Loopback(0);
        EXPECT_EQ(0, ::bind(mFd.Get(), lAny.Begin(), lAny.Size()));
    }

    void Listen(int aBacklog = 8) { EXPECT_EQ(0, ::listen(mFd.Get(), aBacklog)); }
    Address Addr() const { return Loopback(PortOf(mFd.Get())); }
    int Accept() const { return ::accept(mFd.Get(), nullptr, nullptr); }

private:
    Descriptor mFd;
};

/// Whether it has a figure for a connection that has just been made: emulators may not know the question.
inline bool SystemTellsRoundTrips() {
#ifdef TCP_INFO
    Server lServer;
    lServer.Listen();
    const Descriptor lSocket(::socket(AF_INET, SOCK_STREAM, 0));
    const Address lAddr = lServer.Addr();
    EXPECT_EQ(0, ::connect(lSocket.Get(), lAddr.Begin(), lAddr.Size()));
    tcp_info lInfo{};
    socklen_t lSize = sizeof lInfo;
    return 0 == ::getsockopt(lSocket.Get(), IPPROTO_TCP, TCP_INFO, &lInfo, &lSize) && 0 != lInfo.tcpi_rtt;
#else
    return false;
#endif
}

/// A listening server whose queue is full: further connecting gets no answer.
class DeafServer : public Server {
public:
    DeafServer() {
        Listen(0);
        for (auto& lFiller : mFillers) {
            lFiller = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            const Address lAddr = Addr();
            static_cast<void>(::connect(lFiller, lAddr.Begin(), lAddr.Size()));
        }
    }
    DeafServer(const DeafServer&) = delete;
    DeafServer& operator=(const DeafServer&) = delete;
    ~DeafServer() {
        for (const int lFiller : mFillers)
            ::close(lFiller);
    }

private:
    int mFillers[4] = {};
};

/// Both ends of a connection: one adopted by a `Socket`, one left to the test.
class Connection {
public:
    explicit Connection(int aType = SOCK_STREAM) : Connection(Pair(aType)) {}

    Socket mSocket;
    Descriptor mPeer;
    const int mFd;  ///< of `mSocket`

private:
    struct Fds {
        int mFd[2];
    };
    static Fds Pair(int aType) {
        Fds lFds{};
        EXPECT_EQ(0, ::socketpair(AF_UNIX, aType, 0, lFds.mFd));
        return lFds;
    }
    explicit Connection(Fds aFds) : mSocket(static_cast<UInt>(aFds.mFd[0])), mPeer(aFds.mFd[1]), mFd(aFds.mFd[0]) {}
};

/// Allows descriptors up to below `aLimit` for its life.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t aLimit) {
        EXPECT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &mOld));
        const rlimit lNew{aLimit, mOld.rlim_max};
        mSet = aLimit <= mOld.rlim_max && 0 == ::setrlimit(RLIMIT_NOFILE, &lNew);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &mOld); }

    bool IsSet() const { return mSet; }

private:
    rlimit mOld{};
    bool mSet = false;
};

/// Interrupts this process every so many milliseconds for its life; system calls are not restarted. Counts,
/// and calls `aOnTick` with the count so far.
class Interruptions {
public:
    explicit Interruptions(void (*aOnTick)(int) = nullptr, int aMilliseconds = 20) {
        sTicks = 0;
        sOnTick = aOnTick;
        struct sigaction lAction {};
        lAction.sa_handler = &Tick;
        EXPECT_EQ(0, ::sigaction(SIGALRM, &lAction, &mOldAction));
        const timeval lPeriod{aMilliseconds / 1000, aMilliseconds % 1000 * 1000L};
        const itimerval lTimer{lPeriod, lPeriod};
        EXPECT_EQ(0, ::setitimer(ITIMER_REAL, &lTimer, nullptr));
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() {
        const itimerval lOff{};
        ::setitimer(ITIMER_REAL, &lOff, nullptr);
        ::sigaction(SIGALRM, &mOldAction, nullptr);
    }

    static int Count() { return sTicks; }

private:
    static void Tick(int) {
        const int lErrno = errno;
        sTicks = sTicks + 1;
        if (nullptr != sOnTick) { sOnTick(sTicks); }
        errno = lErrno;
    }

    static inline volatile sig_atomic_t sTicks = 0;
    static inline void (*sOnTick)(int) = nullptr;
    struct sigaction mOldAction {};
};

}  // namespace Player::Testing
