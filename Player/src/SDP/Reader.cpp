#include "SDP/Reader.hpp"

#include "Player/Assert.hpp"
#include "Throw.hpp"

namespace Player {

namespace {

constexpr char kCR = 13;
constexpr char kLF = 10;

bool IsLineEnd(char aCh) {
    return kCR == aCh || kLF == aCh;
}

/// Moves over the rest of a line end of which `aFirst` was read.
void FinishLineEnd(Reader& aReader, char aFirst) {
    if (kCR != aFirst || !aReader.Have<char>(1)) { return; }
    char lNext = 0;
    aReader.Peek(lNext, 0);
    if (kLF == lNext) { aReader.Skip<char>(1); }
}

/// Reads the rest of a line and its end; `aTake` gets each character of it.
template <typename Take>
void EachToLineEnd(Reader& aReader, Take aTake) {
    while (aReader.Have<char>(1)) {
        const char lCh = aReader.Read<char>();
        if (IsLineEnd(lCh)) { return FinishLineEnd(aReader, lCh); }
        aTake(lCh);
    }
}

/// Reads up to and over `aDelim`, or up to a line end; `aTake` gets each character before it.
template <typename Take>
bool EachToDelim(Reader& aReader, char aDelim, Take aTake) {
    while (aReader.Have<char>(1)) {
        const char lCh = aReader.Read<char>();
        if (aDelim == lCh) { return true; }
        if (IsLineEnd(lCh)) {
            aReader.Rewind<char>(1);
            return false;
        }
        aTake(lCh);
    }
    return false;
}

}  // namespace

const Byte* Reader::Ahead(std::uint64_t aSize, std::uint64_t aOff) const {
    PLAYER_ASSERT(Left() >= (aOff + aSize));
    return mRef.Begin() + mPos + aOff;
}

const Byte* Reader::Advance(UInt aSize, UInt aOff) {
    const Byte* const lPtr = Ahead(aSize, aOff);
    mPos += aOff + aSize;
    return lPtr;
}

const Byte* Reader::Here(UInt aSize, UInt aOff) const {
    return Ahead(aSize, aOff);
}

void Reader::Skip(UInt aSize) {
    PLAYER_ASSERT(Left() >= aSize);
    mPos += aSize;
}

void Reader::Rewind(UInt aSize) {
    PLAYER_ASSERT(mPos >= aSize);
    mPos -= aSize;
}

template <>
void Reader::Read<char>(char& aOut) {
    aOut = static_cast<char>(*Advance(1, 0));
}

template <>
void Reader::Peek<char>(char& aOut, UInt aOff) const {
    aOut = static_cast<char>(*Here(1, aOff));
}

void ReadLn(Reader& aReader, std::string& aOut) {
    EachToLineEnd(aReader, [&](char aCh) { aOut += aCh; });
}

bool ReadLnTo(Reader& aReader, std::string& aOut, char aDelim) {
    return EachToDelim(aReader, aDelim, [&](char aCh) { aOut += aCh; });
}

void SkipLn(Reader& aReader) {
    EachToLineEnd(aReader, [](char) {});
}

bool SkipLnTo(Reader& aReader, char aDelim) {
    return EachToDelim(aReader, aDelim, [](char) {});
}

void SkipLnWhile(Reader& aReader, char aChar) {
    if (!aReader.Have<char>(1)) { return; }
    while (aReader.Have<char>(1) && aChar == aReader.Read<char>()) {}
    aReader.Rewind<char>(1);
}

bool NextType(Reader& aReader, char& aType) {
    do {
        if (!aReader.Have<char>(1)) { return false; }
        aType = aReader.Read<char>();
    } while (IsLineEnd(aType));
    if (!aReader.Have<char>(1)) { return false; }
    if ('=' != aReader.Read<char>()) {
        PLAYER_THROW(SDPErr, ErrorCode::kBadSyntax, "NextType(): %s", "Bad SDP syntax");
    }
    return true;
}

}  // namespace Player
