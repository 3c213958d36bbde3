#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The header that declares it does not come with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();  // NOLINT(bugprone-reserved-identifier)
#endif

namespace Player::Testing {

/// What the process has allocated and not freed.
inline std::size_t AllocatedBytes() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const auto lInfo = mallinfo2();
    return lInfo.uordblks + lInfo.hblkhd;
#endif
}

}  // namespace Player::Testing
