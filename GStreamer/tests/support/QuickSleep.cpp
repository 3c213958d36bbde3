#include "support/QuickSleep.hpp"

#include <unistd.h>

#include <atomic>

namespace {

std::atomic<useconds_t> gDivisor{1};

}  // namespace

extern "C" {

int __real_usleep(useconds_t aTime);
int __wrap_usleep(useconds_t aTime);

/// The linker has every call of `usleep` come here.
int __wrap_usleep(useconds_t aTime) {
    return __real_usleep(aTime / gDivisor);
}
}

namespace ElementTest {

QuickSleep::QuickSleep() {
    gDivisor = 100;
}

QuickSleep::~QuickSleep() {
    gDivisor = 1;
}

}  // namespace ElementTest
