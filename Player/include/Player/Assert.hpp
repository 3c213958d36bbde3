#pragma once

namespace Player {

/// Prints the expression and its place to standard error and aborts the process.
[[noreturn]] void AssertionFailed(const char* aExpression, const char* aFile, int aLine) noexcept;

}  // namespace Player

/// Guards against our own and the embedder's mistakes, never against what a server sends.
/// Stays on in every build type; the text of the expression is what is printed.
#define PLAYER_ASSERT(aExpression) \
    ((aExpression) ? static_cast<void>(0) : ::Player::AssertionFailed(#aExpression, __FILE__, __LINE__))
