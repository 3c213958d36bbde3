#pragma once

#include <string>

namespace Parser {

/// RFC 4648 section 4, with '=' padding.
std::string Base64Encode(const unsigned char* aData, unsigned int aSize);

/// The bytes of `aText` up to its first '=' or other foreign character, or its end; what follows is
/// ignored. Never fails: bits that do not fill a byte are dropped.
std::string Base64Decode(const std::string& aText);

/// A letter, a digit, '+' or '/', in every locale. The padding character is none of them.
bool IsBase64(unsigned char c);

}  // namespace Parser
