#include "Packets/H264Sample.hpp"

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "BigEndian.hpp"
#include "Player/Mem.hpp"

namespace Player::Packets {

namespace {

constexpr Byte kNALRefIdc = 0x60;

}  // namespace

void H264Sample::Reserve(UInt aMore, UInt aOverhead) {
    const std::uint64_t lTotal = std::uint64_t{Mark()} + aMore + aOverhead;
    if (lTotal > std::numeric_limits<UInt>::max()) { throw std::length_error("H264Sample: size beyond 32 bits"); }
    Data().Reserve(static_cast<UInt>(lTotal));
}

void H264Sample::AppendSize(UInt aSize) {
    Byte lField[kSizeBytes];
    BigEndian::Write32(lField, aSize);
    Append(lField, kSizeBytes);
}

void H264Sample::AppendNAL(const void* aData, UInt aSize) {
    Reserve(aSize, kSizeBytes);
    AppendSize(aSize);
    Append(aData, aSize);
}

void H264Sample::ModifySize(UInt aAt, UInt aSize) {
    PLAYER_ASSERT(aAt <= Mark() && kSizeBytes <= Mark() - aAt);
    BigEndian::Write32(Data() + aAt, aSize);
}

void H264Sample::Revert(UInt aAt) {
    Data().Resize(Util::Min(aAt, Mark()));
}

bool H264Sample::IsDisposable() const {
    return Data().Size() > kSizeBytes && 0 == (Data()[kSizeBytes] & kNALRefIdc);
}

}  // namespace Player::Packets
