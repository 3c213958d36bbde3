#pragma once

#include <string>

#include "Player/Types.hpp"

/// The one place that calls the cryptographic library, but for TLS. Built without it, nothing here has a result.
namespace Player::Crypto {

enum class Hash { kMD5, kSHA256 };

/// Whether the library was there when this one was built.
bool IsAvailable();

/// The hash of a text in lower-case hexadecimal digits; empty when the cryptographic library refuses that hash.
std::string HexDigest(Hash aHash, const std::string& aText);

/// That many random bytes, at most 32, in hexadecimal digits; empty when the system has none.
std::string RandomHex(UInt aBytes);

}  // namespace Player::Crypto
