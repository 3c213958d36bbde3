#pragma once

#include <cstddef>

#include "support/Check.hpp"
#include "support/Input.hpp"

namespace Fuzz {

/// The memory that an input may make a target hold at any moment: `mBase` and `mPerByte` for each byte of the input.
struct Bounds {
    std::size_t mBase;
    std::size_t mPerByte;
};

// What each target defines.
extern const Bounds kBounds;
void Run(Input& aInput);

}  // namespace Fuzz
