#pragma once

#include <cstdint>

#include "support/Bytes.hpp"

namespace TestSupport {

/// Writes an RTP packet (RFC 3550 section 5.1): `RtpPacket().Seq(3).Marker().Payload({0x65, 0x88}).Build()`.
class RtpPacket {
public:
    RtpPacket& Type(unsigned aType);
    RtpPacket& Marker(bool aMarker = true);
    RtpPacket& Seq(unsigned aSeq);
    RtpPacket& Timestamp(std::uint32_t aTimestamp);
    RtpPacket& Ssrc(std::uint32_t aSsrc);
    RtpPacket& Csrcs(const std::vector<std::uint32_t>& aCsrcs);
    /// `aWords`: the extension's data, a multiple of four bytes.
    RtpPacket& Extension(unsigned aProfile, const Bytes& aWords);
    /// So many bytes, the last of which says how many.
    RtpPacket& Padding(unsigned aCount);
    RtpPacket& Payload(const Bytes& aPayload);

    Bytes Build() const;

private:
    unsigned mType = 96;
    bool mMarker = false;
    unsigned mSeq = 0;
    std::uint32_t mTimestamp = 0;
    std::uint32_t mSsrc = 0;
    std::vector<std::uint32_t> mCsrcs;
    bool mExtended = false;
    Bytes mExtension;
    unsigned mPadding = 0;
    Bytes mPayload;
};

/// RTCP packets (RFC 3550 section 6); a compound packet is their concatenation with `+`.
Bytes SenderReport(std::uint32_t aSsrc, std::uint64_t aNtp, std::uint32_t aRtpTime, std::uint32_t aPackets = 0,
                   std::uint32_t aOctets = 0);
Bytes EmptyReceiverReport(std::uint32_t aSsrc);
Bytes Goodbye(std::uint32_t aSsrc);

/// "$", the channel, the length in two bytes, the packet (RFC 2326 section 10.12).
Bytes InterleavedFrame(unsigned aChannel, const Bytes& aPacket);

Bytes operator+(Bytes aA, const Bytes& aB);

}  // namespace TestSupport
