#include "Parser/ParserMpeg4.hpp"

#include <algorithm>

#include "reader.hpp"

namespace Parser {

namespace {

enum : std::uint8_t {
    kLastVideoObject = 0x1F,
    kLastVideoObjectLayer = 0x3F,
    kVisualObjectSequence = 0xB0,
    kSequenceEnd = 0xB1,
    kUserData = 0xB2,
    kVisualObject = 0xB5,
};

constexpr UInt kVideo = 1;
constexpr UInt kStillTexture = 2;
constexpr UInt kExtendedPAR = 15;
constexpr UInt kRectangular = 0;
constexpr UInt kGrayscale = 3;

constexpr std::uint8_t kStartCodeBits = 32;
constexpr std::uint8_t kSideBits = 13;

/// Bit rate, buffer size and occupancy of the buffer model, in halves with a marker bit after each.
constexpr std::uint8_t kBufferModelBits[] = {15, 1, 15, 1, 15, 1, 3, 11, 1, 15, 1};

}  // namespace

unsigned int myLog2(unsigned int x) {
    unsigned int lLog = 0;
    while (x > 1) {
        x >>= 1;
        ++lLog;
    }
    return lLog;
}

ParserMpeg4::ParserMpeg4(const unsigned char* aData, unsigned int aSize)
    : mData(new Byte[aSize]), mSize(aSize), mReader(new reader<UInt>(mData.get(), aSize)) {
    std::copy_n(aData, mSize, mData.get());
}

ParserMpeg4::~ParserMpeg4() = default;

UInt ParserMpeg4::Read(std::uint8_t aBits) {
    return mReader->read(aBits);
}

void ParserMpeg4::Parse() {
    std::uint8_t lCode = 0;
    while (FindNextStartCode(lCode)) {
        ReadElement(lCode);
        // To a word, not to a byte: a start code that begins in the same word is not seen.
        mReader->trim();
    }
}

/// The reader stands in front of the start code then.
bool ParserMpeg4::FindNextStartCode(std::uint8_t& aCode) {
    while (mReader->has_bits(kStartCodeBits)) {
        const UInt lBits = Read(kStartCodeBits);
        if (0x000001 == lBits >> 8) {
            aCode = static_cast<std::uint8_t>(lBits & 0xff);
            mReader->seek(-32, seek_mode::kCurrent);
            return true;
        }
        mReader->seek(-24, seek_mode::kCurrent);
    }
    aCode = 0;
    return false;
}

void ParserMpeg4::ReadElement(std::uint8_t aCode) {
    if (aCode <= kLastVideoObject || kSequenceEnd == aCode || kUserData == aCode) {
        Read(kStartCodeBits);
    } else if (aCode <= kLastVideoObjectLayer) {
        ReadVideoObjectLayer();
    } else if (kVisualObjectSequence == aCode) {
        Read(kStartCodeBits);
        Read(8);  // profile and level
    } else if (kVisualObject == aCode) {
        ReadVisualObject();
    } else {
        Read(8);
    }
}

void ParserMpeg4::ReadVisualObject() {
    Read(kStartCodeBits);
    if (ReadFlag()) {  // is_visual_object_identifier
        Read(4);       // verid
        Read(3);       // priority
    }
    const UInt lType = Read(4);
    if (kVideo != lType && kStillTexture != lType) { return; }
    if (!ReadFlag()) { return; }  // video_signal_type
    Read(3);                      // video_format
    Read(1);                      // video_range
    if (ReadFlag()) {             // colour_description
        Read(8);
        Read(8);
        Read(8);
    }
}

/// Marker bits are not checked.
void ParserMpeg4::ReadVideoObjectLayer() {
    Read(kStartCodeBits);
    Read(1);  // random_accessible_vol
    Read(8);  // video_object_type_indication
    UInt lVerId = 0;
    if (ReadFlag()) {  // is_object_layer_identifier
        lVerId = Read(4);
        Read(3);  // priority
    }
    if (kExtendedPAR == Read(4)) {  // aspect_ratio_info
        Read(8);                    // par_width
        Read(8);                    // par_height
    }
    if (ReadFlag()) { ReadControlParameters(); }
    const UInt lShape = Read(2);
    if (kGrayscale == lShape && 1 != lVerId) { Read(4); }  // shape_extension
    Read(1);
    const UInt lResolution = Read(16);  // vop_time_increment_resolution
    Read(1);
    if (ReadFlag()) {  // fixed_vop_rate; a resolution of 0 wraps to a whole word of increment
        Read(static_cast<std::uint8_t>(myLog2(lResolution - 1) + 1));
    }
    if (kRectangular != lShape) { return; }
    ReadSide(mWidth);
    ReadSide(mHeight);
    Read(1);
}

void ParserMpeg4::ReadControlParameters() {
    Read(2);  // chroma_format
    Read(1);  // low_delay
    if (!ReadFlag()) { return; }
    for (const std::uint8_t lBits : kBufferModelBits) {
        Read(lBits);
    }
}

/// Half a number is worse than none: it is kept only when all of its bits are there.
void ParserMpeg4::ReadSide(UInt& aSide) {
    Read(1);
    const bool lWhole = mReader->has_bits(kSideBits);
    const UInt lSide = Read(kSideBits);
    if (lWhole) { aSide = lSide; }
}

}  // namespace Parser
