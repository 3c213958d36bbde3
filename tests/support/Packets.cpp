#include "support/Packets.hpp"

#include <stdexcept>

namespace TestSupport {

namespace {

constexpr unsigned kVersionShift = 6;
constexpr std::uint8_t kPaddingBit = 0x20;
constexpr std::uint8_t kExtensionBit = 0x10;
constexpr std::uint8_t kMarkerBit = 0x80;

void Put8(Bytes& aOut, std::uint64_t aValue) {
    aOut.push_back(static_cast<std::uint8_t>(aValue & 0xff));
}
void Put16(Bytes& aOut, std::uint64_t aValue) {
    Put8(aOut, aValue >> 8);
    Put8(aOut, aValue);
}
void Put32(Bytes& aOut, std::uint64_t aValue) {
    Put16(aOut, aValue >> 16);
    Put16(aOut, aValue);
}

Bytes ExtensionHeader(unsigned aProfile, std::size_t aWords) {
    Bytes lOut;
    Put16(lOut, aProfile);
    Put16(lOut, aWords);
    return lOut;
}

}  // namespace

RtpPacket& RtpPacket::Version(unsigned aVersion) {
    mVersion = aVersion;
    return *this;
}

RtpPacket& RtpPacket::Type(unsigned aType) {
    mType = aType;
    return *this;
}

RtpPacket& RtpPacket::Marker(bool aMarker) {
    mMarker = aMarker;
    return *this;
}

RtpPacket& RtpPacket::Seq(unsigned aSeq) {
    mSeq = aSeq;
    return *this;
}

RtpPacket& RtpPacket::Timestamp(std::uint32_t aTimestamp) {
    mTimestamp = aTimestamp;
    return *this;
}

RtpPacket& RtpPacket::Ssrc(std::uint32_t aSsrc) {
    mSsrc = aSsrc;
    return *this;
}

RtpPacket& RtpPacket::Csrcs(const std::vector<std::uint32_t>& aCsrcs) {
    mCsrcs = aCsrcs;
    return *this;
}

RtpPacket& RtpPacket::Extension(unsigned aProfile, const Bytes& aWords) {
    if (0 != aWords.size() % 4) { throw std::invalid_argument("an extension consists of whole words"); }
    mExtended = true;
    mExtension = ExtensionHeader(aProfile, aWords.size() / 4) + aWords;
    return *this;
}

RtpPacket& RtpPacket::ClaimExtension(unsigned aWords, const Bytes& aData) {
    mExtended = true;
    mExtension = ExtensionHeader(kProfile, aWords) + aData;
    return *this;
}

RtpPacket& RtpPacket::Padding(unsigned aCount) {
    mPadded = 0 != aCount;
    mPadding = aCount;
    return *this;
}

RtpPacket& RtpPacket::PaddingBit() {
    mPadded = true;
    return *this;
}

RtpPacket& RtpPacket::Payload(const Bytes& aPayload) {
    mPayload = aPayload;
    return *this;
}

Bytes RtpPacket::Build() const {
    Bytes lOut;
    Put8(lOut,
         mVersion << kVersionShift | (mPadded ? kPaddingBit : 0U) | (mExtended ? kExtensionBit : 0U) | mCsrcs.size());
    Put8(lOut, (mMarker ? kMarkerBit : 0U) | mType);
    Put16(lOut, mSeq);
    Put32(lOut, mTimestamp);
    Put32(lOut, mSsrc);
    for (const auto lCsrc : mCsrcs) {
        Put32(lOut, lCsrc);
    }
    lOut.insert(lOut.end(), mExtension.begin(), mExtension.end());
    lOut.insert(lOut.end(), mPayload.begin(), mPayload.end());
    for (unsigned i = 1; i <= mPadding; ++i) {
        Put8(lOut, i == mPadding ? mPadding : 0U);
    }
    return Bytes(lOut.begin(), lOut.end());
}

RtcpCompound& RtcpCompound::Raw(unsigned aType, const std::vector<std::uint32_t>& aWords, unsigned aVersion,
                                unsigned aCount) {
    Put8(mBytes, aVersion << kVersionShift | aCount);
    Put8(mBytes, aType);
    Put16(mBytes, aWords.size());
    for (const std::uint32_t lWord : aWords) {
        Put32(mBytes, lWord);
    }
    return *this;
}

Bytes InterleavedFrame(unsigned aChannel, const Bytes& aPacket) {
    Bytes lOut;
    Put8(lOut, '$');
    Put8(lOut, aChannel);
    Put16(lOut, aPacket.size());
    return lOut + aPacket;
}

Bytes operator+(Bytes aA, const Bytes& aB) {
    aA.insert(aA.end(), aB.begin(), aB.end());
    return aA;
}

}  // namespace TestSupport
