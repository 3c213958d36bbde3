#pragma once

#include <cstddef>

#include "ParameterSets.hpp"
#include "VLC.hpp"

namespace Parser {

// Readers of the parameter sets. All but the first four throw `std::runtime_error` when the data ends too
// early, a code is too long, or a value is beyond the limit of a list or of the syntax that hangs on it.
// Other values are taken as they are: who needs the size of a picture can have it from an odd stream too.

SeqParameterSet* AllocSPS();
PicParameterSet* AllocPPS();
void FreeSPS(SeqParameterSet* aSps);
void FreePPS(PicParameterSet* aPps);

/// A NAL unit with its header byte, whose type is not looked at. The bytes are unescaped in place.
void ProcessSPS(SeqParameterSet& aSps, Byte* aBytes, std::size_t aLength);
/// The number of scaling lists depends on the chroma format of `aSps`.
void ProcessPPS(PicParameterSet& aPps, Byte* aBytes, std::size_t aLength, const SeqParameterSet& aSps);

void InterpretSPS(Bitstream& aBitstream, SeqParameterSet& aSps);
void InterpretPPS(Bitstream& aBitstream, PicParameterSet& aPps, const SeqParameterSet& aSps);
void ReadVUI(Bitstream& aBitstream, VUIParameters& aVui);
void ReadHRDParameters(Bitstream& aBitstream, HRDParameters& aHrd);
/// When the list says that the default one is to be used, `aUseDefault` is set and `aList` is all 8.
void Scaling_List(Byte* aList, std::size_t aSize, bool& aUseDefault, Bitstream& aBitstream);

}  // namespace Parser
