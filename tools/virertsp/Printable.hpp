#pragma once

#include <string>

namespace Virertsp {

/// The text in which what is not UTF-8 is replaced by U+FFFD.
std::string ValidUtf8(const std::string& aText);

/// What a server says, for a terminal: without control characters, so that it commands nothing.
std::string Printable(const std::string& aText);

/// Whether the byte is a control character of ASCII.
constexpr bool IsControl(char aCh) {
    return static_cast<unsigned char>(aCh) < 0x20 || 0x7F == aCh;
}

}  // namespace Virertsp
