#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include "BigEndian.hpp"
#include "Packets/RTP.hpp"
#include "Player/Ptr.hpp"

namespace Player::Testing {

using Bytes = std::vector<Byte>;

/// A copy in a heap block of exactly that size, so that the address sanitizer guards the byte behind it.
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

/// Builds an RTP packet: `Packet().Seq(3).Marker().Payload({0x65, 0x88})`. Unless told otherwise it has
/// payload type 96, SSRC 0x11223344, number and timestamp 1 and a payload of one byte.
class PacketBuilder {
public:
    PacketBuilder& Version(UInt aVersion) { return Set(mVersion, aVersion); }
    PacketBuilder& PT(UInt aPT) { return Set(mPT, aPT); }
    PacketBuilder& Marker(bool aMarker = true) { return Set(mMarker, aMarker); }
    PacketBuilder& Seq(UInt aSeq) { return Set(mSeq, aSeq & 0xFFFF); }
    PacketBuilder& Timestamp(UInt aTimestamp) { return Set(mTimestamp, aTimestamp); }
    PacketBuilder& SSRC(UInt aSSRC) { return Set(mSSRC, aSSRC); }
    PacketBuilder& CSRCs(std::vector<UInt> aCSRCs) { return Set(mCSRCs, std::move(aCSRCs)); }
    /// Sets the extension bit; `aData` follows the extension's header, which claims `aWords` words.
    PacketBuilder& Extension(UInt aWords, Bytes aData) {
        mHasExtension = true;
        mExtensionWords = aWords;
        return Set(mExtension, std::move(aData));
    }
    PacketBuilder& Extension(const Bytes& aData) { return Extension(SizeOf(aData) / 4, aData); }
    PacketBuilder& Payload(Bytes aPayload) { return Set(mPayload, std::move(aPayload)); }
    PacketBuilder& PayloadSize(UInt aSize, Byte aFill = 0xAB) { return Set(mPayload, Bytes(aSize, aFill)); }
    /// Sets the padding bit and appends `aSize` bytes, the last of which tells the size.
    PacketBuilder& Padding(Byte aSize) {
        mHasPadding = true;
        return Set(mPadding, aSize);
    }
    /// Sets the padding bit alone: the last byte of the payload tells the size.
    PacketBuilder& PaddingBit() { return Set(mHasPadding, true); }

    /// The datagram, in a heap block of exactly its size.
    Bytes Build() const {
        Bytes lBytes;
        const UInt lFlags = (mHasPadding ? 0x20U : 0U) | (mHasExtension ? 0x10U : 0U);
        lBytes.push_back(static_cast<Byte>(mVersion << 6 | lFlags | mCSRCs.size()));
        lBytes.push_back(static_cast<Byte>((mMarker ? 0x80U : 0U) | mPT));
        Append16(lBytes, mSeq);
        Append32(lBytes, mTimestamp);
        Append32(lBytes, mSSRC);
        for (const UInt lCSRC : mCSRCs) {
            Append32(lBytes, lCSRC);
        }
        if (mHasExtension) {
            Append16(lBytes, 0xBEDE);
            Append16(lBytes, mExtensionWords);
            lBytes.insert(lBytes.end(), mExtension.begin(), mExtension.end());
        }
        lBytes.insert(lBytes.end(), mPayload.begin(), mPayload.end());
        if (0 != mPadding) {
            lBytes.insert(lBytes.end(), mPadding - 1U, 0);
            lBytes.push_back(mPadding);
        }
        return Exactly(lBytes);
    }

    /// The packet as a stack would hand it out, its number and timestamp taken as the extended ones.
    SharedPtr<Packets::RTP, SharedObject> Make(Time aPlayTime = Time(0)) const {
        Packets::RTP::Lengths lLengths;
        lLengths.mHeader = static_cast<Byte>(12 + 4 * mCSRCs.size());
        if (mHasExtension) { lLengths.mExtension = 4 + 4 * mExtensionWords; }
        lLengths.mPadding = mPadding;
        const Bytes lBytes = Build();
        SharedPtr<Packets::RTP, SharedObject> lPacket(
            new Packets::RTP(lBytes.data(), SizeOf(lBytes), lLengths, mSeq, mTimestamp));
        lPacket->SetPlayTime(aPlayTime);
        return lPacket;
    }

private:
    template <typename T, typename V>
    PacketBuilder& Set(T& aMember, V&& aValue) {
        aMember = std::forward<V>(aValue);
        return *this;
    }

    UInt mVersion = 2;
    UInt mPT = 96;
    bool mMarker = false;
    UInt mSeq = 1;
    UInt mTimestamp = 1;
    UInt mSSRC = 0x11223344;
    std::vector<UInt> mCSRCs;
    bool mHasExtension = false;
    UInt mExtensionWords = 0;
    Bytes mExtension;
    Bytes mPayload{0xAB};
    bool mHasPadding = false;
    Byte mPadding = 0;
};

inline PacketBuilder Packet() {
    return PacketBuilder();
}

/// Builds a compound RTCP packet: `Compound().SR(seconds, fraction, rtp).BYE()`, sent by 0x11223344
/// unless told otherwise.
class CompoundBuilder {
public:
    explicit CompoundBuilder(UInt aSSRC) : mSSRC(aSSRC) {}

    CompoundBuilder& SR(UInt aSeconds, UInt aFraction, UInt aRTPTime) {
        return Raw(200, {mSSRC, aSeconds, aFraction, aRTPTime, 10, 1000});
    }
    CompoundBuilder& RR() { return Raw(201, {mSSRC}); }
    CompoundBuilder& SDES() { return Raw(202, {mSSRC, 0x01020000}); }
    CompoundBuilder& BYE() { return Raw(203, {mSSRC}); }
    CompoundBuilder& APP() { return Raw(204, {mSSRC, 0x6E616D65}); }
    /// A packet of any type, with these words behind its header.
    CompoundBuilder& Raw(Byte aType, const std::vector<UInt>& aWords, UInt aVersion = 2) {
        mBytes.push_back(static_cast<Byte>(aVersion << 6));
        mBytes.push_back(aType);
        Append16(mBytes, static_cast<UInt>(aWords.size()));
        for (const UInt lWord : aWords) {
            Append32(mBytes, lWord);
        }
        return *this;
    }

    Bytes Build() const { return Exactly(mBytes); }

private:
    UInt mSSRC;
    Bytes mBytes;
};

inline CompoundBuilder Compound(UInt aSSRC = 0x11223344) {
    return CompoundBuilder(aSSRC);
}

}  // namespace Player::Testing
