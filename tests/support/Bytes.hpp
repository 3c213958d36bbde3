#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TestSupport {

using Bytes = std::vector<std::uint8_t>;

/// "80 60 0a", as the scripts of `ScriptedServer` read it.
std::string Hex(const Bytes& aBytes);
/// Pairs of hexadecimal digits, blanks anywhere between pairs. Throws `std::invalid_argument`.
Bytes FromHex(const std::string& aText);

inline std::string AsText(const Bytes& aBytes) {
    return std::string(aBytes.begin(), aBytes.end());
}
inline Bytes AsBytes(const std::string& aText) {
    return Bytes(aText.begin(), aText.end());
}

/// Text for a message: "CSeq: 1\r\n" with its control characters spelled out.
std::string Quoted(const std::string& aText);

}  // namespace TestSupport
