#include "Memory.hpp"

#include <cstdlib>
#include <new>

namespace {

/// 0: none fails.
thread_local unsigned tAllocationsLeft = 0;

}  // namespace

namespace Faults {

OutOfMemory::OutOfMemory(unsigned aNumber) {
    tAllocationsLeft = aNumber;
}

OutOfMemory::~OutOfMemory() {
    tAllocationsLeft = 0;
}

bool OutOfMemory::Happened() {
    return 0 == tAllocationsLeft;
}

}  // namespace Faults

void* operator new(std::size_t aSize) {
    const bool lFails = 0 != tAllocationsLeft && 0 == --tAllocationsLeft;
    void* const lMemory = lFails ? nullptr : std::malloc(0 == aSize ? 1 : aSize);
    if (nullptr == lMemory) { throw std::bad_alloc(); }
    return lMemory;
}

// The address sanitizer has arrays of its own, which do not come here by themselves.
void* operator new[](std::size_t aSize) {
    return operator new(aSize);
}

void operator delete(void* aMemory) noexcept {
    std::free(aMemory);
}

void operator delete(void* aMemory, std::size_t /*aSize*/) noexcept {
    std::free(aMemory);
}

void operator delete[](void* aMemory) noexcept {
    std::free(aMemory);
}

void operator delete[](void* aMemory, std::size_t /*aSize*/) noexcept {
    std::free(aMemory);
}
