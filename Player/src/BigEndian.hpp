#pragma once

#include "Player/Types.hpp"

/// Numbers in network byte order. The caller has made sure that the bytes are there.
namespace Player::BigEndian {

inline unsigned short Read16(const Byte* aData) {
    return static_cast<unsigned short>(aData[0] << 8 | aData[1]);
}

inline UInt Read32(const Byte* aData) {
    return static_cast<UInt>(Read16(aData)) << 16 | Read16(aData + 2);
}

inline void Write16(Byte* aData, UInt aValue) {
    aData[0] = static_cast<Byte>(aValue >> 8);
    aData[1] = static_cast<Byte>(aValue);
}

inline void Write32(Byte* aData, UInt aValue) {
    Write16(aData, aValue >> 16);
    Write16(aData + 2, aValue);
}

}  // namespace Player::BigEndian
