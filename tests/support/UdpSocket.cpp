#include "support/UdpSocket.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace TestSupport {

namespace {

constexpr int kPatienceMs = 10000;
constexpr std::size_t kLongestDatagram = 65535;

[[noreturn]] void Fail(const char* aWhat) {
    throw std::runtime_error(std::string(aWhat) + ": " + std::strerror(errno));
}

sockaddr_in Loopback(unsigned aPort) {
    sockaddr_in lAddress = {};
    lAddress.sin_family = AF_INET;
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    lAddress.sin_port = htons(static_cast<std::uint16_t>(aPort));
    return lAddress;
}

}  // namespace

UdpSocket::UdpSocket(unsigned aPort) : mDescriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    if (mDescriptor < 0) { Fail("a UDP socket"); }
    const sockaddr_in lAddress = Loopback(aPort);
    if (0 != bind(mDescriptor, reinterpret_cast<const sockaddr*>(&lAddress), sizeof(lAddress))) {
        close(mDescriptor);
        Fail("binding a UDP socket");
    }
}

UdpSocket::~UdpSocket() {
    if (mDescriptor >= 0) { close(mDescriptor); }
}

void UdpSocket::Send(const Bytes& aDatagram, unsigned aToPort) const {
    const sockaddr_in lTo = Loopback(aToPort);
    const ssize_t lSent = sendto(mDescriptor, aDatagram.data(), aDatagram.size(), 0,
                                 reinterpret_cast<const sockaddr*>(&lTo), sizeof(lTo));
    if (lSent < 0) { Fail("sending a datagram"); }
}

std::pair<Bytes, unsigned> UdpSocket::Receive() const {
    pollfd lPoll = {mDescriptor, POLLIN, 0};
    if (poll(&lPoll, 1, kPatienceMs) <= 0) { throw std::runtime_error("no datagram came"); }
    Bytes lDatagram(kLongestDatagram);
    sockaddr_in lFrom = {};
    socklen_t lSize = sizeof(lFrom);
    const ssize_t lReceived =
        recvfrom(mDescriptor, lDatagram.data(), lDatagram.size(), 0, reinterpret_cast<sockaddr*>(&lFrom), &lSize);
    if (lReceived < 0) { Fail("receiving a datagram"); }
    lDatagram.resize(static_cast<std::size_t>(lReceived));
    return {lDatagram, ntohs(lFrom.sin_port)};
}

bool UdpSocket::Has() const {
    pollfd lPoll = {mDescriptor, POLLIN, 0};
    return poll(&lPoll, 1, 0) > 0;
}

unsigned UdpSocket::BoundPort(int aDescriptor) {
    sockaddr_in lAddress = {};
    socklen_t lSize = sizeof(lAddress);
    if (0 != getsockname(aDescriptor, reinterpret_cast<sockaddr*>(&lAddress), &lSize)) { return 0; }
    return AF_INET == lAddress.sin_family ? ntohs(lAddress.sin_port) : 0;
}

}  // namespace TestSupport
