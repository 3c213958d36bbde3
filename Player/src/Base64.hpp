#pragma once

#include <optional>
#include <string>

/// Bytes as text (RFC 4648 section 4).
namespace Player::Base64 {

std::string Encode(const std::string& aBytes);

/// Nothing for a text with other characters than the alphabet's and "=" at the end.
std::optional<std::string> Decode(const std::string& aText);

}  // namespace Player::Base64
