#pragma once

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

[[noreturn]] inline void CheckFailed(const char* aExpression, const char* aFile, int aLine) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", aFile, aLine, aExpression);
    std::abort();
}

}  // namespace Fuzz

/// What must hold whatever the input is. The fuzzer takes the end of the process for a find.
#define FUZZ_CHECK(aExpression) \
    ((aExpression) ? static_cast<void>(0) : ::Fuzz::CheckFailed(#aExpression, __FILE__, __LINE__))
