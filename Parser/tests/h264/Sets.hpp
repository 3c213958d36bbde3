#pragma once

#include "Parser/Types.hpp"
#include "support/BitWriter.hpp"

namespace Parser::Test {

using TestSupport::BitWriter;

// Pieces of parameter sets, in the order of the syntax.

inline BitWriter SpsHead(UInt aProfile, UInt aLevel = 30, UInt aId = 0) {
    return BitWriter().u(8, aProfile).u(8, 0).u(8, aLevel).ue(aId);
}

/// 4:2:0, 8 bits, no scaling lists.
inline BitWriter PlainChroma() {
    return BitWriter().ue(1).ue(0).ue(0).u(1, 0).u(1, 0);
}

/// log2_max_frame_num, then the picture order count of type 0.
inline BitWriter PlainOrder() {
    return BitWriter().ue(0).ue(0).ue(4);
}

/// References, size in macroblocks less one, frames only, no cropping, and whether a VUI follows.
inline BitWriter SpsTail(UInt aWidth, UInt aHeight, bool aVui = false) {
    return BitWriter().ue(1).u(1, 0).ue(aWidth).ue(aHeight).u(1, 1).u(1, 1).u(1, 0).u(1, aVui ? 1 : 0);
}

/// 176x144.
inline BitWriter PlainSps(UInt aProfile = 66, UInt aLevel = 30) {
    return SpsHead(aProfile, aLevel).Append(PlainOrder()).Append(SpsTail(10, 8));
}

inline BitWriter PpsHead(UInt aId = 0, UInt aSpsId = 0) {
    return BitWriter().ue(aId).ue(aSpsId).u(1, 1).u(1, 0);
}

inline BitWriter PpsTail() {
    return BitWriter().ue(2).ue(1).u(1, 1).u(2, 2).se(-3).se(4).se(-2).u(1, 1).u(1, 0).u(1, 1);
}

inline BitWriter PlainPps() {
    return PpsHead().ue(0).Append(PpsTail());
}

}  // namespace Parser::Test
