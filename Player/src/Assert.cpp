#include "Player/Assert.hpp"

#include <cstdio>
#include <cstdlib>

namespace Player {

void AssertionFailed(const char* aExpression, const char* aFile, int aLine) noexcept {
    std::fprintf(stderr, "%s:%d: Assertion failed: %s\n", aFile, aLine, aExpression);
    std::abort();
}

}  // namespace Player
