#pragma once

#include <algorithm>

#include "support/Input.hpp"

namespace Fuzz {

/// An interleaved frame may have this many bytes; one that claims more ends the process, as it must. Inputs with such a
/// frame can't be asked for anything else, so wherever a frame could begin its length is made one that passes.
constexpr unsigned kMostFrameBytes = 1500;

/// Does so with a stream that comes in pieces: a frame may begin in one and have its length in the next.
class FramesWithinLimit {
public:
    Bytes operator()(Bytes aPiece) {
        for (std::uint8_t& lByte : aPiece) {
            if ('$' == mBefore[1] && lByte > kMostHigh) { lByte &= 3; }
            if ('$' == mBefore[0] && kMostHigh == mBefore[2] && lByte > kMostLow) { lByte &= 0x7F; }
            mBefore[0] = mBefore[1];
            mBefore[1] = mBefore[2];
            mBefore[2] = lByte;
        }
        return aPiece;
    }

private:
    static constexpr std::uint8_t kMostHigh = kMostFrameBytes >> 8;
    static constexpr std::uint8_t kMostLow = kMostFrameBytes & 0xFF;

    std::uint8_t mBefore[3] = {};
};

inline Bytes Frame(unsigned aChannel, const Bytes& aPayload) {
    const std::uint8_t lHeader[] = {'$', static_cast<std::uint8_t>(aChannel),
                                    static_cast<std::uint8_t>(aPayload.size() >> 8),
                                    static_cast<std::uint8_t>(aPayload.size())};
    // Sized at once: gcc 12 takes the growth of a short vector for an access out of bounds.
    Bytes lFrame(sizeof(lHeader) + aPayload.size());
    std::copy(aPayload.begin(), aPayload.end(), std::copy(std::begin(lHeader), std::end(lHeader), lFrame.begin()));
    return lFrame;
}

}  // namespace Fuzz
