#pragma once

#include <cstdint>
#include <memory>

#include "Parser/Types.hpp"

namespace Parser {

template <typename T>
class reader;

/// Finds the size of the pictures in the headers of an MPEG-4 visual stream (ISO/IEC 14496-2).
class ParserMpeg4 {
public:
    /// Keeps a copy of the bytes.
    ParserMpeg4(const unsigned char* aData, unsigned int aSize);
    ~ParserMpeg4();

    /// Goes through all start codes. Never throws; what is missing from data that ends early stays 0.
    void Parse();

    // In luma samples, of the last rectangular video object layer that has them; 0 when there is none.
    UInt GetVOLWidth() const { return mWidth; }
    UInt GetVOLHeight() const { return mHeight; }

private:
    bool FindNextStartCode(std::uint8_t& aCode);
    void ReadElement(std::uint8_t aCode);
    void ReadVisualObject();
    void ReadVideoObjectLayer();
    void ReadControlParameters();
    void ReadSide(UInt& aSide);

    UInt Read(std::uint8_t aBits);
    bool ReadFlag() { return 0 != Read(1); }

    std::unique_ptr<Byte[]> mData;
    UInt mSize;
    std::unique_ptr<reader<UInt>> mReader;
    UInt mWidth = 0;
    UInt mHeight = 0;
};

/// How often 2 can be doubled and still be at most `x`, counting the 2 itself: the logarithm to base 2
/// rounded down, and 0 for 0.
unsigned int myLog2(unsigned int x);

}  // namespace Parser
