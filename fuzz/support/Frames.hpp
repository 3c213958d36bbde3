#pragma once

#include "support/Input.hpp"

namespace Fuzz {

/// An interleaved frame may have this many bytes; one that claims more ends the process, as it must. Inputs with such a
/// frame can't be asked for anything else, so wherever a frame could begin its length is made one that passes.
constexpr unsigned kMostFrameBytes = 1500;

inline bool IsFrameWithinLimit(const Bytes& aText, std::size_t aAt) {
    return '$' != aText[aAt] || aAt + 3 >= aText.size() || aText[aAt + 2] * 256U + aText[aAt + 3] <= kMostFrameBytes;
}

inline Bytes WithFramesWithinLimit(Bytes aText) {
    for (std::size_t lAt = 0; lAt < aText.size(); ++lAt) {
        if (!IsFrameWithinLimit(aText, lAt)) { aText[lAt + 2] &= 3; }
    }
    return aText;
}

inline Bytes Frame(unsigned aChannel, const Bytes& aPayload) {
    Bytes lFrame = {'$', static_cast<std::uint8_t>(aChannel), static_cast<std::uint8_t>(aPayload.size() >> 8),
                    static_cast<std::uint8_t>(aPayload.size())};
    lFrame.insert(lFrame.end(), aPayload.begin(), aPayload.end());
    return lFrame;
}

}  // namespace Fuzz
