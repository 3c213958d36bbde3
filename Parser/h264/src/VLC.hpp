#pragma once

#include <cstdint>

#include "Parser/Types.hpp"

namespace Parser {

/// A place in the bits of a parameter set, whose bytes it does not own and which outlive it.
struct Bitstream {
    const Byte* mData = nullptr;
    std::uint64_t mSize = 0;  ///< in bits
    std::uint64_t mPos = 0;   ///< in bits, at most `mSize`
};

// The descriptors of ITU-T H.264 clause 7.2. Each throws `std::runtime_error` when the data ends before
// the element does; the cursor is then of no more use.

/// u(n), up to 32 bits, most significant first.
UInt u_v(UInt aBits, Bitstream& aBitstream);
/// u(1)
bool u_1(Bitstream& aBitstream);
/// ue(v), 0 to 2^32 - 2. Throws also when the code stands for more than that.
UInt ue_v(Bitstream& aBitstream);
/// se(v), the codes of ue(v) taken as 0, 1, -1, 2, -2, ...
SInt se_v(Bitstream& aBitstream);

/// Whether elements are left. The trailing bits are no part of the data.
bool more_rbsp_data(const Bitstream& aBitstream);

}  // namespace Parser
