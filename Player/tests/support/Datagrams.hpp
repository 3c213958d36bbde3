#pragma once

#include <vector>

#include "BigEndian.hpp"
#include "Packets/RTP.hpp"
#include "Player/Ptr.hpp"
#include "support/Bytes.hpp"
#include "support/Packets.hpp"

namespace Player::Testing {

using TestSupport::Bytes;

/// A copy in a heap block of exactly that size, so that the address sanitizer guards the byte after it.
inline Bytes Exactly(const Bytes& aBytes) {
    return Bytes(aBytes.begin(), aBytes.end());
}

inline Bytes Prefix(const Bytes& aBytes, std::size_t aSize) {
    return Bytes(aBytes.begin(), aBytes.begin() + static_cast<std::ptrdiff_t>(aSize));
}

inline void Append16(Bytes& aBytes, UInt aValue) {
    aBytes.resize(aBytes.size() + 2);
    BigEndian::Write16(&*(aBytes.end() - 2), aValue);
}

inline void Append32(Bytes& aBytes, UInt aValue) {
    aBytes.resize(aBytes.size() + 4);
    BigEndian::Write32(&*(aBytes.end() - 4), aValue);
}

inline UInt SizeOf(const Bytes& aBytes) {
    return static_cast<UInt>(aBytes.size());
}

/// Payload type 96, SSRC 0x11223344, number and timestamp 1 and a payload of one byte unless set otherwise.
inline TestSupport::RtpPacket Packet() {
    return TestSupport::RtpPacket().Seq(1).Timestamp(1).Ssrc(0x11223344).Payload({0xAB});
}

/// The packet as a stack would hand it out, its number and timestamp taken as the extended ones.
inline SharedPtr<Packets::RTP, SharedObject> HandedOut(const TestSupport::RtpPacket& aPacket) {
    const Bytes lBytes = aPacket.Build();
    Packets::RTP::Lengths lLengths;
    lLengths.mHeader = static_cast<Byte>(12 + 4 * (lBytes[0] & 0x0F));
    if (0 != (lBytes[0] & 0x10)) { lLengths.mExtension = 4 + 4U * BigEndian::Read16(&lBytes[lLengths.mHeader + 2U]); }
    if (0 != (lBytes[0] & 0x20)) { lLengths.mPadding = lBytes.back(); }
    return SharedPtr<Packets::RTP, SharedObject>(new Packets::RTP(
        lBytes.data(), SizeOf(lBytes), lLengths, BigEndian::Read16(&lBytes[2]), BigEndian::Read32(&lBytes[4])));
}

/// Sent by the source of `Packet` unless another is given.
inline TestSupport::RtcpCompound Compound(UInt aSSRC = 0x11223344) {
    return TestSupport::RtcpCompound(aSSRC);
}

}  // namespace Player::Testing
