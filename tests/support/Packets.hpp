#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/Bytes.hpp"

namespace TestSupport {

/// Writes an RTP packet (RFC 3550 section 5.1): `RtpPacket().Seq(3).Marker().Payload({0x65, 0x88}).Build()`. A wrong
/// version, an extension of another length than its header says and a padding bit without padding are possible, too.
class RtpPacket {
public:
    RtpPacket& Version(unsigned aVersion);
    RtpPacket& Type(unsigned aType);
    RtpPacket& Marker(bool aMarker = true);
    RtpPacket& Seq(unsigned aSeq);
    RtpPacket& Timestamp(std::uint32_t aTimestamp);
    RtpPacket& Ssrc(std::uint32_t aSsrc);
    RtpPacket& Csrcs(const std::vector<std::uint32_t>& aCsrcs);
    /// `aWords`: the extension's data, a multiple of four bytes.
    RtpPacket& Extension(unsigned aProfile, const Bytes& aWords);
    RtpPacket& Extension(const Bytes& aWords) { return Extension(kProfile, aWords); }
    /// The header of an extension of `aWords` words, with this data after it.
    RtpPacket& ClaimExtension(unsigned aWords, const Bytes& aData);
    /// Sets the padding bit and appends `aCount` bytes; the last byte holds the count.
    RtpPacket& Padding(unsigned aCount);
    /// Sets the padding bit alone: the last byte of the payload is read as the count.
    RtpPacket& PaddingBit();
    RtpPacket& Payload(const Bytes& aPayload);
    RtpPacket& PayloadSize(std::size_t aSize, std::uint8_t aFill = 0xAB) { return Payload(Bytes(aSize, aFill)); }

    /// The datagram, in a heap block of exactly its size.
    Bytes Build() const;

private:
    /// Extensions of one byte (RFC 8285).
    static constexpr unsigned kProfile = 0xBEDE;

    unsigned mVersion = 2;
    unsigned mType = 96;
    bool mMarker = false;
    unsigned mSeq = 0;
    std::uint32_t mTimestamp = 0;
    std::uint32_t mSsrc = 0;
    std::vector<std::uint32_t> mCsrcs;
    bool mExtended = false;
    Bytes mExtension;
    bool mPadded = false;
    unsigned mPadding = 0;
    Bytes mPayload;
};

/// Writes a compound RTCP packet (RFC 3550 section 6): `RtcpCompound(7).RR().BYE().Build()`, all of it sent by 7.
class RtcpCompound {
public:
    explicit RtcpCompound(std::uint32_t aSsrc) : mSsrc(aSsrc) {}

    /// At this time, in seconds since 1900 and fractions of 2^-32, the source's clock showed `aRtpTime`.
    RtcpCompound& SR(std::uint32_t aSeconds, std::uint32_t aFraction, std::uint32_t aRtpTime,
                     std::uint32_t aPackets = 10, std::uint32_t aOctets = 1000) {
        return Raw(200, {mSsrc, aSeconds, aFraction, aRtpTime, aPackets, aOctets});
    }
    /// Without a report.
    RtcpCompound& RR() { return Raw(201, {mSsrc}); }
    RtcpCompound& SDES() { return Raw(202, {mSsrc, 0x01020000}, 2, 1); }
    RtcpCompound& BYE() { return Raw(203, {mSsrc}, 2, 1); }
    RtcpCompound& APP() { return Raw(204, {mSsrc, 0x6E616D65}); }
    /// A packet of any type, with these words after its header.
    RtcpCompound& Raw(unsigned aType, const std::vector<std::uint32_t>& aWords, unsigned aVersion = 2,
                      unsigned aCount = 0);

    /// The datagram, in a heap block of exactly its size.
    Bytes Build() const { return Bytes(mBytes.begin(), mBytes.end()); }

private:
    std::uint32_t mSsrc;
    Bytes mBytes;
};

/// "$", the channel, the length in two bytes, the packet (RFC 2326 section 10.12).
Bytes InterleavedFrame(unsigned aChannel, const Bytes& aPacket);

Bytes operator+(Bytes aA, const Bytes& aB);

}  // namespace TestSupport
