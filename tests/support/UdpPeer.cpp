#include "support/UdpPeer.hpp"

#include <stdexcept>

namespace TestSupport {

namespace {

constexpr int kTries = 1000;

std::pair<UdpSocket, UdpSocket> MakePair() {
    for (int lTry = 0; lTry < kTries; ++lTry) {
        UdpSocket lRtp;
        if (0 != lRtp.Port() % 2) { continue; }
        try {
            UdpSocket lRtcp(lRtp.Port() + 1);
            return {std::move(lRtp), std::move(lRtcp)};
        } catch (const std::runtime_error&) {
            // Another program has the second port.
            continue;
        }
    }
    throw std::runtime_error("no pair of UDP ports");
}

}  // namespace

UdpPeer::UdpPeer() : mSockets(MakePair()) {}

std::string UdpPeer::Ports() const {
    return std::to_string(RtpPort()) + "-" + std::to_string(RtpPort() + 1);
}

}  // namespace TestSupport
