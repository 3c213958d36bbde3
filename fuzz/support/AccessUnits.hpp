#pragma once

#include "support/Depacketizing.hpp"

namespace Fuzz {

/// The widths of an AU header's fields in bits, 0 for those that are not there.
struct FieldWidths {
    unsigned mSize = 0;
    unsigned mIndex = 0;
    unsigned mIndexDelta = 0;
    unsigned mCTSDelta = 0;
    unsigned mDTSDelta = 0;
    unsigned mStreamState = 0;
    bool mHasRandomAccess = false;

    /// As a format's parameters.
    std::string Text() const;
};

/// Widths that fit the writer: a size of 1 to 16 bits, an index of at most 16.
FieldWidths ReadWidths(Input& aInput);

/// Writes the AU header section of a packet.
class AUHeaderWriter {
public:
    explicit AUHeaderWriter(const FieldWidths& aWidths) : mWidths(aWidths) {}

    void Put(unsigned aBits, std::uint32_t aValue);
    /// The optional fields are drawn from `aChoice`.
    void Header(Input& aChoice, std::uint32_t aSize, std::uint32_t aIndexOrDelta, bool aIsFirst);

    unsigned Bits() const { return mBits; }
    /// The length field, the section and the data.
    Bytes Payload(const Bytes& aData) const;

private:
    FieldWidths mWidths;
    Bytes mBytes;
    unsigned mBits = 0;
};

/// What comes out of packets of any kind: bounded by what went in, and nothing without a marker.
void TakeAnyAccessUnits(Input& aInput, const char* aFormat, const std::string& aFmtParams);

}  // namespace Fuzz
