#pragma once

#include "Player/Types.hpp"

/// Frames of AMR narrow-band: eight rates of speech, and comfort noise of AMR and of other coders.
namespace Player::AMRFrame {

/// Bytes of a frame by its type (3GPP TS 26.101), without its own byte; 0 for types without data.
inline constexpr Byte kSizes[] = {12, 13, 15, 17, 19, 20, 26, 31, 5, 6, 5, 5, 0, 0, 0, 0};
inline constexpr UInt kLargest = 31;
/// AMR's own comfort noise, the last type that AMR decoders know.
inline constexpr UInt kComfortNoise = 8;
inline constexpr UInt kNoType = sizeof kSizes;

/// A frame's own byte, in RTP and in files (RFC 4867 sections 4.3 and 5.3): one bit for RTP, type (4), quality (1),
/// padding (2).
inline UInt SizeOf(Byte aEntry) {
    return kSizes[aEntry >> 3 & 0x0F];
}
/// The byte of a good frame.
inline Byte Entry(UInt aType) {
    return static_cast<Byte>(aType << 3 | 0x04);
}
/// The first type whose frames have that size; `kNoType` for none. Of the comfort noise of 5 bytes AMR's own is first.
inline UInt TypeOf(UInt aSize) {
    UInt lType = 0;
    while (lType < kNoType && (0 == aSize || aSize != kSizes[lType])) {
        ++lType;
    }
    return lType;
}

}  // namespace Player::AMRFrame
