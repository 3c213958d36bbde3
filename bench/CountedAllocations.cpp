#include "CountedAllocations.hpp"

#include <cstdlib>
#include <new>

namespace {

std::size_t gAllocations = 0;

}  // namespace

std::size_t Allocations() {
    return gAllocations;
}

void* operator new(std::size_t aSize) {
    ++gAllocations;
    if (void* const lPtr = std::malloc(aSize)) { return lPtr; }
    throw std::bad_alloc();
}

void operator delete(void* aPtr) noexcept {
    std::free(aPtr);
}

void operator delete(void* aPtr, std::size_t /*aSize*/) noexcept {
    std::free(aPtr);
}
