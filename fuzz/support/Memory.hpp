#pragma once

#include <cstddef>

namespace Fuzz {

/// Watches what is allocated while it lives. Only the address sanitizer tells: without it all is 0.
class MemoryWatch {
public:
    MemoryWatch();

    /// The most that was held at once beyond what was held at the start.
    static std::size_t Peak();
};

}  // namespace Fuzz
