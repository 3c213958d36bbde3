#pragma once

#include <gtest/gtest.h>

#include <cstdio>

#include "RTP/Transports/OverUDP.hpp"
#include "support/UdpSocket.hpp"

namespace Player::Testing {

inline constexpr UInt kPortsBegin = 20000;
inline constexpr UInt kPortsEnd = 60000;

/// Its RTP port, once the text of the pair is known to be right.
inline UInt LocalPort(const RTP::Transports::OverUDP& aTransport, TrackIdx aIdx) {
    unsigned int lRTP = 0;
    unsigned int lRTCP = 0;
    // NOLINTNEXTLINE(cert-err34-c): the text is our own
    EXPECT_EQ(2, std::sscanf(aTransport.GetTrackLocalPorts(aIdx).c_str(), "%u-%u", &lRTP, &lRTCP));
    EXPECT_EQ(lRTP + 1, lRTCP);
    return lRTP;
}

/// This process's socket on that port; others may have the same port on other addresses.
inline int DescriptorOf(UInt aPort) {
    for (int lDescriptor = 3; lDescriptor < 1024; ++lDescriptor) {
        if (aPort == TestSupport::UdpSocket::BoundPort(lDescriptor)) { return lDescriptor; }
    }
    ADD_FAILURE() << "no socket on port " << aPort;
    return -1;
}

}  // namespace Player::Testing
