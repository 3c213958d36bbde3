#pragma once

#include "Player/Packet.hpp"

namespace Player::Packets {

/// A received RTP packet (RFC 3550 section 5.1), header included, with its place in the stream.
/// Begin, End and Size speak of the payload. Its maker has checked that the header, extension and padding
/// leave at least one byte of payload; no accessor reads outside the packet whatever the bytes say.
class RTP : public Media {
public:
    /// How a datagram divides up; all in bytes.
    struct Lengths {
        /// 12 + 4 for each contributing source.
        Byte mHeader = 0;
        /// 0, or the extension with its own 4-byte header. Up to 4 * 65536: wider than the field on the wire.
        UInt mExtension = 0;
        /// 0, or what the last byte says when the padding bit is set.
        Byte mPadding = 0;

        UInt Overhead() const { return mHeader + mExtension + mPadding; }
    };

    /// Copies the datagram. `aSeqNumberExt`: monotonic index; `aTimestampExt`: monotonic timestamp in
    /// units of the track's clock.
    RTP(const Byte* aData, UInt aSize, const Lengths& aLengths, UInt aSeqNumberExt, long long aTimestampExt);

    RTP(const RTP&) = delete;
    RTP& operator=(const RTP&) = delete;

    const Byte* Begin() const override { return Datagram().Begin() + mLengths.mHeader + mLengths.mExtension; }
    const Byte* End() const override { return Begin() + Size(); }
    UInt Size() const override { return Datagram().Size() - mLengths.Overhead(); }

    /// The whole packet as it came.
    const BufferRef& Datagram() const { return mDatagram; }

    unsigned short SeqNumber() const;
    UInt Timestamp() const;
    bool HasMarker() const;
    Byte NumCSRCs() const;
    UInt SeqNumberExt() const { return mSeqNumberExt; }
    long long TimestampExt() const { return mTimestampExt; }

    /// The extension's data without its header, modulo 65536: 65532 when there is no extension.
    unsigned short ExtensionSize() const { return static_cast<unsigned short>(mLengths.mExtension - 4); }
    /// At most `aMax` sources, in host byte order.
    void CopyCSRCs(UInt* aDst, unsigned short aMax) const;
    /// At most `aMax` bytes of the extension's data; nothing when there is no extension.
    void CopyExtension(Byte* aDst, unsigned short aMax) const;

protected:
    /// The datagram stays the caller's and outlives the packet.
    RTP(const BufferRef& aDatagram, const Lengths& aLengths, UInt aSeqNumberExt, long long aTimestampExt);

private:
    BufferRef mDatagram;
    Lengths mLengths;
    UInt mSeqNumberExt;
    long long mTimestampExt;
};

}  // namespace Player::Packets
