#include "support/Connection.hpp"

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "support/ClientSocket.hpp"

namespace TestSupport {

namespace {

constexpr std::size_t kFrameHeader = 4;

unsigned PortOf(int aSocket, int (*aNameOf)(int, sockaddr*, socklen_t*)) {
    sockaddr_in6 lAddress = {};
    socklen_t lSize = sizeof(lAddress);
    aNameOf(aSocket, reinterpret_cast<sockaddr*>(&lAddress), &lSize);
    // It stands at the same place for both families.
    return ntohs(lAddress.sin6_port);
}

[[noreturn]] void Fail(const std::string& aText) {
    throw std::runtime_error(aText);
}

}  // namespace

Connection::Connection(int aListener, const Patience& aPatience) : mPatience(aPatience) {
    if (!mPatience.Readable(aListener)) { Fail("the client did not connect"); }
    mSocket = accept4(aListener, nullptr, nullptr, SOCK_CLOEXEC);
    if (mSocket < 0) { Fail(std::string("accept: ") + std::strerror(errno)); }
    const int lOn = 1;
    setsockopt(mSocket, IPPROTO_TCP, TCP_NODELAY, &lOn, sizeof(lOn));
    mServerPort = PortOf(mSocket, getsockname);
    mClientPort = PortOf(mSocket, getpeername);
}

Connection::~Connection() {
    if (mSocket >= 0) { close(mSocket); }
}

bool Connection::Fill() {
    char lPiece[65536];
    const ssize_t lGot = recv(mSocket, lPiece, sizeof(lPiece), 0);
    if (lGot > 0) { mIn.append(lPiece, static_cast<std::size_t>(lGot)); }
    return lGot > 0;
}

void Connection::Need(std::size_t aCount) {
    while (mIn.size() < aCount) {
        if (!mPatience.Readable(mSocket)) {
            Fail("the client sent nothing" + (mIn.empty() ? std::string() : " behind " + Quoted(mIn)));
        }
        if (!Fill()) { Fail("the client closed the connection behind " + Quoted(mIn)); }
    }
}

Connection::Frame Connection::ReadFrame() {
    Need(kFrameHeader);
    if ('$' != mIn[0]) { Fail("the client sent no frame but " + Quoted(mIn)); }
    const Bytes lHeader = ReadBytes(kFrameHeader);
    return {lHeader[1], ReadBytes(static_cast<std::size_t>(lHeader[2] << 8 | lHeader[3]))};
}

bool Connection::TakeFrame(std::vector<Frame>& aFrames) {
    if (mIn.empty() || '$' != mIn[0]) { return false; }
    aFrames.push_back(ReadFrame());
    return true;
}

std::string Connection::ReadLine(std::vector<Frame>& aFrames) {
    Need(1);
    while (TakeFrame(aFrames)) {
        Need(1);
    }
    std::size_t lEnd;
    while (std::string::npos == (lEnd = mIn.find('\n'))) {
        Need(mIn.size() + 1);
    }
    std::string lLine = mIn.substr(0, lEnd + 1);
    mIn.erase(0, lEnd + 1);
    return lLine;
}

Bytes Connection::ReadBytes(std::size_t aCount) {
    Need(aCount);
    Bytes lBytes = AsBytes(mIn.substr(0, aCount));
    mIn.erase(0, aCount);
    return lBytes;
}

void Connection::ReadEnd(std::vector<Frame>& aFrames) {
    do {
        while (TakeFrame(aFrames)) {}
        if (!mIn.empty()) { Fail("the client did not end the connection but sent " + Quoted(mIn)); }
        if (!mPatience.Readable(mSocket)) { Fail("the client did not end the connection"); }
    } while (Fill());
}

bool Connection::ReadPresent(std::string& aText, std::vector<Frame>& aFrames) {
    bool lOpen = true;
    int lPresent = 0;
    ioctl(mSocket, FIONREAD, &lPresent);
    char lByte;
    if (lPresent > 0) {
        lOpen = Fill();
    } else {
        lOpen = 0 != recv(mSocket, &lByte, 1, MSG_PEEK | MSG_DONTWAIT);
    }
    while (TakeFrame(aFrames)) {}
    aText = mIn;
    return lOpen;
}

void Connection::Send(const std::string& aText) {
    std::size_t lSent = 0;
    while (lSent < aText.size()) {
        const ssize_t lCount = send(mSocket, aText.data() + lSent, aText.size() - lSent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (lCount > 0) {
            lSent += static_cast<std::size_t>(lCount);
        } else if (EAGAIN != errno) {
            Fail(std::string("sending to the client: ") + std::strerror(errno));
        } else {
            AwaitReceived();
        }
    }
}

void Connection::AwaitReceived() const {
    const bool lDone = mPatience.Until([this] {
        int lUnsent = 0;
        return 0 != ioctl(mSocket, SIOCOUTQ, &lUnsent) || 0 == lUnsent;
    });
    if (!lDone) { Fail("the client's receive queue is full and it reads nothing"); }
}

void Connection::AwaitRead() const {
    AwaitReceived();
    if (!mPatience.Until([this] { return 0 == ClientSocket::Find(mClientPort, mServerPort).mUnread; })) {
        Fail("the client did not read what was sent");
    }
}

void Connection::AwaitEnded() const {
    if (!mPatience.Until([this] { return !ClientSocket::Find(mClientPort, mServerPort).mEstablished; })) {
        Fail("the end of the connection did not reach the client");
    }
}

void Connection::Shutdown() {
    shutdown(mSocket, SHUT_WR);
    AwaitEnded();
}

void Connection::Close() {
    close(mSocket);
    mSocket = -1;
    AwaitEnded();
}

void Connection::Reset() {
    const linger lAtOnce = {1, 0};
    setsockopt(mSocket, SOL_SOCKET, SO_LINGER, &lAtOnce, sizeof(lAtOnce));
    Close();
}

}  // namespace TestSupport
