#pragma once

#include <string_view>

namespace Virertsp {

/// Whether a decoder of H.264 can begin with this sample, whose NAL units have their lengths in four bytes in front:
/// with an instantaneous refresh, or with a picture coded for itself that a recovery point announces as exact or nearly
/// so from this picture on (recovery_frame_cnt 0, ITU-T H.264 clause D.2.8). Streams of open groups of pictures have no
/// other beginnings after their first.
bool IsAvcRandomAccess(std::string_view aSample);

}  // namespace Virertsp
