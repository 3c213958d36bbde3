#include "writers/RandomAccess.hpp"

#include <strings.h>

#include "writers/AvcAccess.hpp"

namespace Virertsp {

namespace {

unsigned ByteAt(std::string_view aText, std::size_t aAt) {
    return static_cast<unsigned char>(aText[aAt]);
}

/// The start code of a picture, and its type in two bits: 0 for one of its own.
bool HasIntraPicture(std::string_view aSample) {
    const std::size_t lAt = aSample.find(std::string_view("\0\0\1\xB6", 4));
    return std::string_view::npos != lAt && lAt + 4 < aSample.size() && 0 == ByteAt(aSample, lAt + 4) >> 6;
}

}  // namespace

Coding CodingOf(const Player::Properties& aTrack) {
    const std::string lFormat = aTrack.Get("Format");
    if (0 == strcasecmp("H264", lFormat.c_str())) { return Coding::kH264; }
    return 0 == strcasecmp("MP4V-ES", lFormat.c_str()) ? Coding::kVisual : Coding::kSound;
}

bool IsRandomAccess(Coding aCoding, std::string_view aSample) {
    switch (aCoding) {
        case Coding::kH264: return IsAvcRandomAccess(aSample);
        case Coding::kVisual: return HasIntraPicture(aSample);
        case Coding::kSound: break;
    }
    return true;
}

}  // namespace Virertsp
