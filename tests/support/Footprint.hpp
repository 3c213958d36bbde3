#pragma once

#include <cstddef>
#include <ostream>

namespace TestSupport {

/// What this process holds of the system now.
struct Footprint {
    std::size_t mDescriptors;
    std::size_t mThreads;
    /// Bytes that were allocated and not freed; 0 where another allocator keeps the books.
    std::size_t mHeap;

    static Footprint Now();
};

std::ostream& operator<<(std::ostream& aOut, const Footprint& aFootprint);

/// How often a test of endurance does its thing: `aFull` times where VIRE_LONG is set, a twentieth of that otherwise.
unsigned Repetitions(unsigned aFull);

}  // namespace TestSupport
