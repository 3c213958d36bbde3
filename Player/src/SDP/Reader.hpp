#pragma once

#include <cstdint>
#include <string>

#include "Player/Buffer.hpp"
#include "Player/Types.hpp"

namespace Player {

/// A cursor over bytes that it does not own and that outlive it. Moving beyond them is a mistake of the
/// caller (an assertion): ask `Have` first.
class Reader {
public:
    explicit Reader(const BufferRef& aRef) : mRef(aRef) {}

    UInt Left() const { return mRef.Size() - mPos; }
    bool Have(UInt aSize) const { return Left() >= aSize; }
    template <typename T>
    bool Have(UInt aCount) const {
        return Left() / sizeof(T) >= aCount;
    }

    /// The bytes `aOff` ahead; the cursor moves past them.
    const Byte* Advance(UInt aSize, UInt aOff);
    /// The bytes `aOff` ahead; the cursor stays.
    const Byte* Here(UInt aSize, UInt aOff) const;
    void Skip(UInt aSize);
    void Rewind(UInt aSize);

    template <typename T>
    void Read(T& aOut);
    template <typename T>
    T Read() {
        T lOut;
        Read<T>(lOut);
        return lOut;
    }
    template <typename T>
    void Peek(T& aOut, UInt aOff) const;
    template <typename T>
    void Skip(UInt aCount) {
        Skip(static_cast<UInt>(aCount * sizeof(T)));
    }
    template <typename T>
    void Rewind(UInt aCount) {
        Rewind(static_cast<UInt>(aCount * sizeof(T)));
    }

private:
    /// 64-bit: the sum of two sizes does not wrap.
    const Byte* Ahead(std::uint64_t aSize, std::uint64_t aOff) const;

    BufferRef mRef;
    UInt mPos = 0;
};

template <>
void Reader::Read<char>(char& aOut);
template <>
void Reader::Peek<char>(char& aOut, UInt aOff) const;

// Lines end in CR LF (one line end), CR or LF.

/// Appends the rest of the line to `aOut` and moves over its end.
void ReadLn(Reader& aReader, std::string& aOut);
/// Appends what stands before `aDelim` to `aOut` and moves over `aDelim`; stops in front of a line end.
/// Returns whether `aDelim` was there.
bool ReadLnTo(Reader& aReader, std::string& aOut, char aDelim);
void SkipLn(Reader& aReader);
/// As `ReadLnTo`, but appends nothing.
bool SkipLnTo(Reader& aReader, char aDelim);
/// Moves over a run of `aChar`. Meant for places where another character follows: the last one read is
/// put back, also at the end of the data.
void SkipLnWhile(Reader& aReader, char aChar);
/// Moves over line ends and over the "x=" that opens a line. False at the end of the data.
/// Throws `SDPErr` `kBadSyntax` when the letter is not followed by '='.
bool NextType(Reader& aReader, char& aType);

}  // namespace Player
