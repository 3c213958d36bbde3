#include "Player/String.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "Player/Assert.hpp"
#include "Player/Ptr.hpp"

namespace Player {

namespace {

constexpr SInt kLocalSize = 1024;

std::string Trimmed(const std::string& aText, std::size_t aBegin, std::size_t aEnd, const char* aTrim) {
    return Player::Trimmed(aText.substr(aBegin, aEnd - aBegin), aTrim);
}

/// Position of the separator at or after `aFrom`, or the end of the text.
std::size_t FindOrEnd(const std::string& aText, char aSep, std::size_t aFrom) {
    const std::size_t lPos = aText.find(aSep, aFrom);
    return std::string::npos == lPos ? aText.size() : lPos;
}

/// 64-bit on every machine, so that overlong numbers read alike on all of them.
UInt LowBits(const std::string& aText, int aBase) {
    return static_cast<UInt>(std::strtoull(aText.c_str(), nullptr, aBase));
}

/// Formats a text that takes no arguments.
SInt FormatAlone(Char* aDst, std::size_t aSize, const Char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    const SInt lLength = std::vsnprintf(aDst, aSize, aFmt, lArgs);
    va_end(lArgs);
    return lLength;
}

}  // namespace

std::string Trimmed(const std::string& aText, const char* aTrim) {
    const std::size_t lFirst = aText.find_first_not_of(aTrim);
    if (std::string::npos == lFirst) { return std::string(); }
    return aText.substr(lFirst, aText.find_last_not_of(aTrim) - lFirst + 1);
}

void Split(const std::string& aText, char aSep, std::vector<std::string>& aOut, const char* aTrim) {
    for (std::size_t lBegin = 0; lBegin < aText.size();) {
        const std::size_t lEnd = FindOrEnd(aText, aSep, lBegin);
        aOut.push_back(Trimmed(aText, lBegin, lEnd, aTrim));
        lBegin = lEnd + 1;
    }
}

void SplitToMap(const std::string& aText, char aPairSep, char aKeyValSep, std::map<std::string, std::string>& aOut,
                const char* aTrim) {
    const char lSeps[] = {aKeyValSep, aPairSep};
    for (std::size_t lBegin = 0; lBegin < aText.size();) {
        const std::size_t lKeyEnd = std::min(aText.find_first_of(lSeps, lBegin, sizeof lSeps), aText.size());
        const std::size_t lEnd = FindOrEnd(aText, aPairSep, lKeyEnd);
        const std::size_t lValBegin = std::min(lKeyEnd + 1, lEnd);
        aOut[Trimmed(aText, lBegin, lKeyEnd, aTrim)] = Trimmed(aText, lValBegin, lEnd, aTrim);
        lBegin = lEnd + 1;
    }
}

UInt DecimalToUInt(const std::string& aText, UInt aDefault) {
    return aText.empty() ? aDefault : LowBits(aText, 10);
}

UInt HexToUInt(const std::string& aText) {
    return LowBits(aText, 16);
}

SInt HexDigit(Char aDigit) {
    if ('0' <= aDigit && aDigit <= '9') { return aDigit - '0'; }
    if ('a' <= aDigit && aDigit <= 'f') { return aDigit - 'a' + 10; }
    if ('A' <= aDigit && aDigit <= 'F') { return aDigit - 'A' + 10; }
    return -1;
}

bool HexToBytes(const std::string& aText, std::string& aBytes) {
    aBytes.clear();
    for (std::size_t lAt = 0; lAt < aText.size(); lAt += 2) {
        const SInt lHigh = HexDigit(aText[lAt]);
        const SInt lLow = lAt + 1 < aText.size() ? HexDigit(aText[lAt + 1]) : -1;
        if (lHigh < 0 || lLow < 0) { return false; }
        aBytes += static_cast<char>(lHigh * 16 + lLow);
    }
    return true;
}

std::string LowerCased(std::string aText) {
    std::transform(aText.begin(), aText.end(), aText.begin(),
                   [](char aCh) { return 'A' <= aCh && aCh <= 'Z' ? static_cast<char>(aCh - 'A' + 'a') : aCh; });
    return aText;
}

std::string StringWithFormat(const char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    std::string lText = StringWithVAFormat(aFmt, &lArgs);
    va_end(lArgs);
    return lText;
}

std::string StringWithVAFormat(const char* aFmt, void* aArgs) {
    if (nullptr == aFmt) { return std::string(); }
    Char lLocal[kLocalSize];
    const SInt lLength = CStrWithFormatVA(lLocal, kLocalSize, aFmt, aArgs);
    if (lLength < 0) { return std::string(); }
    if (lLength < kLocalSize) { return std::string(lLocal, static_cast<std::size_t>(lLength)); }

    const ScopedArray<Char> lHeap(new Char[static_cast<std::size_t>(lLength) + 1]);
    CStrWithFormatVA(lHeap.Ptr(), lLength + 1, aFmt, aArgs);
    return std::string(lHeap.Ptr(), static_cast<std::size_t>(lLength));
}

SInt CStrWithFormat(Char* aDst, SInt aSize, const Char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    const SInt lLength = CStrWithFormatVA(aDst, aSize, aFmt, &lArgs);
    va_end(lArgs);
    return lLength;
}

SInt CStrWithFormatVA(Char* aDst, SInt aSize, const Char* aFmt, void* aArgs) {
    PLAYER_ASSERT(0 != aDst && 0 != aSize && 0 != aFmt);
    if (aSize < 0) { return -1; }
    if (nullptr == aArgs) { return FormatAlone(aDst, static_cast<std::size_t>(aSize), aFmt); }
    va_list lArgs;
    va_copy(lArgs, *static_cast<va_list*>(aArgs));
    // The analyzer loses sight of the list behind a `void*`.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const SInt lLength = std::vsnprintf(aDst, static_cast<std::size_t>(aSize), aFmt, lArgs);
    va_end(lArgs);
    return lLength;
}

}  // namespace Player
