#include "Tunnel.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace Networks {

namespace {

constexpr char kName[] = "link";
constexpr char kMask[] = "255.255.255.0";
/// Packets that the device holds while we are not there to take them: none of them may be lost unseen.
constexpr int kQueueLength = 10000;
constexpr std::size_t kLargestPacket = 1500;

int Check(int aResult, const char* aWhat) {
    if (aResult < 0) { throw std::system_error(errno, std::generic_category(), aWhat); }
    return aResult;
}

int NewNamespace() {
    Check(::unshare(CLONE_NEWNET), "a network namespace");
    return Check(::open("/proc/self/ns/net", O_RDONLY), "/proc/self/ns/net");
}

ifreq Request() {
    ifreq lRequest{};
    std::memcpy(lRequest.ifr_name, kName, sizeof(kName));
    return lRequest;
}

int NewDevice() {
    const int lDevice = Check(::open("/dev/net/tun", O_RDWR | O_NONBLOCK), "/dev/net/tun");
    ifreq lRequest = Request();
    lRequest.ifr_flags = IFF_TUN | IFF_NO_PI;
    Check(::ioctl(lDevice, TUNSETIFF, &lRequest), "a TUN device");
    return lDevice;
}

void SetAddress(int aSocket, unsigned long aWhat, const char* aAddress) {
    sockaddr_in lAddress{};
    lAddress.sin_family = AF_INET;
    ::inet_pton(AF_INET, aAddress, &lAddress.sin_addr);
    ifreq lRequest = Request();
    std::memcpy(&lRequest.ifr_addr, &lAddress, sizeof(lAddress));
    Check(::ioctl(aSocket, aWhat, &lRequest), "the device's address");
}

void BringUp(const char* aAddress) {
    const int lSocket = Check(::socket(AF_INET, SOCK_DGRAM, 0), "a socket");
    SetAddress(lSocket, SIOCSIFADDR, aAddress);
    SetAddress(lSocket, SIOCSIFNETMASK, kMask);
    ifreq lRequest = Request();
    lRequest.ifr_qlen = kQueueLength;
    Check(::ioctl(lSocket, SIOCSIFTXQLEN, &lRequest), "the device's queue");
    lRequest = Request();
    lRequest.ifr_flags = IFF_UP;
    Check(::ioctl(lSocket, SIOCSIFFLAGS, &lRequest), "bringing the device up");
    ::close(lSocket);
}

}  // namespace

Tunnel::Tunnel(const char* aAddress) : mNamespace(NewNamespace()), mDevice(NewDevice()) {
    BringUp(aAddress);
}

Tunnel::~Tunnel() {
    ::close(mDevice);
    ::close(mNamespace);
}

std::string Tunnel::NamespacePath() const {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(mNamespace);
}

bool Tunnel::Read(Packet& aPacket) const {
    for (;;) {
        aPacket.resize(kLargestPacket);
        const ssize_t lSize = ::read(mDevice, aPacket.data(), aPacket.size());
        if (lSize <= 0) { return false; }
        aPacket.resize(static_cast<std::size_t>(lSize));
        // The system announces itself over IPv6, which nobody here speaks.
        if (4 == aPacket[0] >> 4) { return true; }
    }
}

void Tunnel::Write(const Packet& aPacket) const {
    Check(static_cast<int>(::write(mDevice, aPacket.data(), aPacket.size())), "a packet's arrival");
}

}  // namespace Networks
