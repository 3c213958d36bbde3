#include "support/Footprint.hpp"

#include <malloc.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace TestSupport {

namespace {

std::size_t Entries(const char* aFolder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(aFolder), std::filesystem::directory_iterator()));
}

}  // namespace

Footprint Footprint::Now() {
    const auto lHeap = mallinfo2();
    // One of the descriptors is that of the folder which is being read.
    return {Entries("/proc/self/fd") - 1, Entries("/proc/self/task"), lHeap.uordblks + lHeap.hblkhd};
}

std::ostream& operator<<(std::ostream& aOut, const Footprint& aFootprint) {
    return aOut << aFootprint.mDescriptors << " descriptors, " << aFootprint.mThreads << " threads, "
                << aFootprint.mHeap << " bytes of heap";
}

unsigned Repetitions(unsigned aFull) {
    return nullptr == std::getenv("VIRE_LONG") ? aFull / 20 : aFull;
}

}  // namespace TestSupport
