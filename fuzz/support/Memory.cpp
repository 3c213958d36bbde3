#include "support/Memory.hpp"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_HAS_HOOKS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define FUZZ_HAS_HOOKS
#endif

#ifdef FUZZ_HAS_HOOKS
// The header that declares them does not come with every compiler.
extern "C" {
std::size_t __sanitizer_get_allocated_size(const volatile void* aBlock);
int __sanitizer_install_malloc_and_free_hooks(void (*aOnAllocation)(const volatile void*, std::size_t),
                                              void (*aOnRelease)(const volatile void*));
}
#endif

namespace Fuzz {

namespace {

std::ptrdiff_t gHeld = 0;
std::ptrdiff_t gPeak = 0;

#ifdef FUZZ_HAS_HOOKS
void OnAllocation(const volatile void* /*aBlock*/, std::size_t aSize) {
    gHeld += static_cast<std::ptrdiff_t>(aSize);
    gPeak = gHeld > gPeak ? gHeld : gPeak;
}

void OnRelease(const volatile void* aBlock) {
    if (nullptr == aBlock) { return; }
    gHeld -= static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(aBlock));
}

bool Install() {
    return 0 != __sanitizer_install_malloc_and_free_hooks(OnAllocation, OnRelease);
}
#else
bool Install() {
    return false;
}
#endif

}  // namespace

MemoryWatch::MemoryWatch() {
    static const bool sInstalled = Install();
    static_cast<void>(sInstalled);
    gHeld = gPeak = 0;
}

std::size_t MemoryWatch::Peak() {
    return static_cast<std::size_t>(gPeak);
}

}  // namespace Fuzz
