#pragma once

#include <cstddef>
#include <cstdint>

#include "Parser/Types.hpp"

namespace Parser {

/// Removes the emulation prevention bytes of a NAL unit (ITU-T H.264 clause 7.4.1) in place, from byte
/// `aBegin` to byte `aLength`. Returns where the bytes end now, or -1 when they cannot be those of a NAL
/// unit: a byte below 3 after two zero bytes, or a removed byte before anything above 3.
std::ptrdiff_t EBSPtoRBSP(Byte* aBytes, std::size_t aLength, std::size_t aBegin);

/// Number of bits in front of the trailing bits, which are a one and then only zeros; 0 when there is no one.
std::uint64_t RBSPtoSODB(const Byte* aBytes, std::size_t aLength);

}  // namespace Parser
