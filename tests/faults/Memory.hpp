#pragma once

namespace Faults {

/// While it lives, the thread's `aNumber`th allocation through `new`, from 1, finds no memory.
class OutOfMemory {
public:
    explicit OutOfMemory(unsigned aNumber);
    OutOfMemory(const OutOfMemory&) = delete;
    OutOfMemory& operator=(const OutOfMemory&) = delete;
    ~OutOfMemory();

    /// Whether it found none.
    static bool Happened();
};

}  // namespace Faults
