#include "Packets/RTP.hpp"

#include "BigEndian.hpp"
#include "Player/Mem.hpp"

namespace Player::Packets {

namespace {

constexpr UInt kFixedHeader = 12;
constexpr UInt kExtensionHeader = 4;
constexpr UInt kCSRC = 4;

const RTP::Lengths& Checked(const RTP::Lengths& aLengths, UInt aSize) {
    PLAYER_ASSERT(kFixedHeader <= aLengths.mHeader && aLengths.Overhead() <= aSize);
    return aLengths;
}

}  // namespace

RTP::RTP(const Byte* aData, UInt aSize, const Lengths& aLengths, UInt aSeqNumberExt, long long aTimestampExt)
    : Media(Time(0), aData, aSize),
      mDatagram(static_cast<const BufferRef&>(Data())),
      mLengths(Checked(aLengths, aSize)),
      mSeqNumberExt(aSeqNumberExt),
      mTimestampExt(aTimestampExt) {}

RTP::RTP(const BufferRef& aDatagram, const Lengths& aLengths, UInt aSeqNumberExt, long long aTimestampExt)
    : Media(Time(0)),
      mDatagram(aDatagram),
      mLengths(Checked(aLengths, aDatagram.Size())),
      mSeqNumberExt(aSeqNumberExt),
      mTimestampExt(aTimestampExt) {}

unsigned short RTP::SeqNumber() const {
    return BigEndian::Read16(Datagram().Begin() + 2);
}

UInt RTP::Timestamp() const {
    return BigEndian::Read32(Datagram().Begin() + 4);
}

bool RTP::HasMarker() const {
    return 0 != (Datagram()[1] & 0x80);
}

Byte RTP::NumCSRCs() const {
    return Datagram()[0] & 0x0F;
}

void RTP::CopyCSRCs(UInt* aDst, unsigned short aMax) const {
    const UInt lHeld = (mLengths.mHeader - kFixedHeader) / kCSRC;
    const UInt lCount = Util::Min<UInt>(Util::Min<UInt>(NumCSRCs(), lHeld), aMax);
    const Byte* lCSRC = Datagram().Begin() + kFixedHeader;
    for (UInt i = 0; i < lCount; ++i, lCSRC += kCSRC) {
        aDst[i] = BigEndian::Read32(lCSRC);
    }
}

void RTP::CopyExtension(Byte* aDst, unsigned short aMax) const {
    if (mLengths.mExtension < kExtensionHeader) { return; }
    const Byte* const lBytes = Datagram().Begin() + mLengths.mHeader + kExtensionHeader;
    Mem::Copy(aDst, lBytes, Util::Min<UInt>(ExtensionSize(), aMax));
}

}  // namespace Player::Packets
