#include "support/UdpPeer.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace TestSupport {

namespace {

constexpr int kPatienceMs = 10000;
constexpr int kTries = 1000;
constexpr std::size_t kLongestDatagram = 65535;

sockaddr_in Loopback(unsigned aPort) {
    sockaddr_in lAddress = {};
    lAddress.sin_family = AF_INET;
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    lAddress.sin_port = htons(static_cast<std::uint16_t>(aPort));
    return lAddress;
}

/// A bound socket; port 0 lets the system choose. Negative when the port is taken.
int Bound(unsigned& aPort) {
    const int lSocket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in lAddress = Loopback(aPort);
    socklen_t lSize = sizeof(lAddress);
    auto* const lGeneric = reinterpret_cast<sockaddr*>(&lAddress);
    if (lSocket < 0 || 0 != bind(lSocket, lGeneric, lSize) || 0 != getsockname(lSocket, lGeneric, &lSize)) {
        if (lSocket >= 0) { close(lSocket); }
        return -1;
    }
    aPort = ntohs(lAddress.sin_port);
    return lSocket;
}

}  // namespace

UdpPeer::UdpPeer() {
    for (int lTry = 0; lTry < kTries; ++lTry) {
        mPort = 0;
        mRtp = Bound(mPort);
        unsigned lNext = mPort + 1;
        mRtcp = mRtp >= 0 && 0 == mPort % 2 ? Bound(lNext) : -1;
        if (mRtcp >= 0) { return; }
        if (mRtp >= 0) { close(mRtp); }
    }
    throw std::runtime_error("no pair of UDP ports");
}

UdpPeer::UdpPeer(UdpPeer&& aOther) noexcept
    : mRtp(std::exchange(aOther.mRtp, -1)),
      mRtcp(std::exchange(aOther.mRtcp, -1)),
      mPort(aOther.mPort),
      mClientPort(aOther.mClientPort.load()) {}

UdpPeer::~UdpPeer() {
    for (const int lSocket : {mRtp, mRtcp}) {
        if (lSocket >= 0) { close(lSocket); }
    }
}

std::string UdpPeer::Ports() const {
    return std::to_string(mPort) + "-" + std::to_string(mPort + 1);
}

void UdpPeer::Send(int aSocket, unsigned aPort, const Bytes& aDatagram) {
    if (aPort <= 1) { throw std::runtime_error("no client port to send to"); }
    const sockaddr_in lTo = Loopback(aPort);
    const ssize_t lSent =
        sendto(aSocket, aDatagram.data(), aDatagram.size(), 0, reinterpret_cast<const sockaddr*>(&lTo), sizeof(lTo));
    if (lSent < 0) { throw std::runtime_error(std::string("sending a datagram: ") + std::strerror(errno)); }
}

bool UdpPeer::Has(int aSocket) {
    pollfd lPoll = {aSocket, POLLIN, 0};
    return poll(&lPoll, 1, 0) > 0;
}

Bytes UdpPeer::Receive(int aSocket) {
    pollfd lPoll = {aSocket, POLLIN, 0};
    if (poll(&lPoll, 1, kPatienceMs) <= 0) { return Bytes(); }
    Bytes lDatagram(kLongestDatagram);
    const ssize_t lSize = recv(aSocket, lDatagram.data(), lDatagram.size(), 0);
    lDatagram.resize(lSize > 0 ? static_cast<std::size_t>(lSize) : 0);
    return lDatagram;
}

}  // namespace TestSupport
