#pragma once

#include <map>
#include <string>
#include <vector>

#include "Player/Types.hpp"

namespace Player {

/// The white space that the library trims around list elements, keys and values.
inline constexpr const char* kTrim = " \t\n\r";

/// Without the characters of `aTrim` at both ends.
std::string Trimmed(const std::string& aText, const char* aTrim = kTrim);

/// Appends the pieces of `aText` between separators to `aOut`, each trimmed of the characters in `aTrim`.
/// Empty pieces count, but a trailing separator adds none: "a, b,,c," gives "a", "b", "", "c".
void Split(const std::string& aText, char aSep, std::vector<std::string>& aOut, const char* aTrim = kTrim);

/// Adds the pairs of a text such as "mode=AAC-hbr; sizeLength=13" to `aOut`, keys and values trimmed.
/// Only the first key/value separator of a pair counts; the last pair of a key wins; an element without
/// a key/value separator is a key with an empty value.
void SplitToMap(const std::string& aText, char aPairSep, char aKeyValSep, std::map<std::string, std::string>& aOut,
                const char* aTrim = kTrim);

/// What `strtoul` reads with base 10 (0 when there are no digits), low 32 bits; `aDefault` for empty text.
UInt DecimalToUInt(const std::string& aText, UInt aDefault = 0);
/// What `strtoul` reads with base 16, low 32 bits.
UInt HexToUInt(const std::string& aText);
/// The value of a hexadecimal digit in either case; -1 for any other character.
SInt HexDigit(Char aDigit);
/// The bytes that pairs of hexadecimal digits spell, up to the first that is no pair. Returns whether the whole text
/// was pairs.
bool HexToBytes(const std::string& aText, std::string& aBytes);
/// ASCII letters in lower case, whatever the locale.
std::string LowerCased(std::string aText);

/// printf into a new string; a null format gives an empty string.
std::string StringWithFormat(const char* aFmt, ...) __attribute__((format(printf, 1, 2)));
/// `aArgs` is the address of a `va_list`, which stays usable: it is copied before it is read. Null for none.
std::string StringWithVAFormat(const char* aFmt, void* aArgs);

/// printf into `aDst` of `aSize` bytes, always terminated; returns what `vsnprintf` returns.
/// Nothing is written to a size below 0.
SInt CStrWithFormat(Char* aDst, SInt aSize, const Char* aFmt, ...) __attribute__((format(printf, 3, 4)));
/// `aArgs` is the address of a `va_list`, which stays usable; null for none.
SInt CStrWithFormatVA(Char* aDst, SInt aSize, const Char* aFmt, void* aArgs);

}  // namespace Player
