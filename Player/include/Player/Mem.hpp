#pragma once

#include <cstring>

#include "Player/Types.hpp"

namespace Player {

namespace Util {

template <typename T>
const T& Min(const T& aA, const T& aB) {
    return aB < aA ? aB : aA;
}

template <typename T>
const T& Max(const T& aA, const T& aB) {
    return aA < aB ? aB : aA;
}

/// The magnitude; the smallest int, which has none, stays as it is.
inline int Abs(int aValue) {
    return aValue < 0 ? static_cast<int>(0U - static_cast<unsigned>(aValue)) : aValue;
}

}  // namespace Util

/// Raw arrays of trivially copyable elements. Counts are in elements.
/// The caller owns what is returned and gives it back to `Free`; a failed allocation throws `std::bad_alloc`.
namespace Mem {

/// Blocks that do not overlap.
inline void Copy(void* aDst, const void* aSrc, UInt aBytes) {
    if (0 != aBytes) { std::memcpy(aDst, aSrc, aBytes); }
}

template <typename T>
void Copy(T* aDst, const T* aSrc, UInt aCount) {
    if (0 != aCount) { std::memcpy(aDst, aSrc, aCount * sizeof(T)); }
}

/// Blocks that may overlap.
template <typename T>
void Move(T* aDst, const T* aSrc, UInt aCount) {
    if (0 != aCount) { std::memmove(aDst, aSrc, aCount * sizeof(T)); }
}

template <typename T>
void Clear(T* aPtr, UInt aCount) {
    if (0 != aCount) { std::memset(aPtr, 0, aCount * sizeof(T)); }
}

template <typename T>
T* Alloc(UInt aCount) {
    return new T[aCount];
}

template <typename T>
T* AllocAndClear(UInt aCount) {
    T* lPtr = Alloc<T>(aCount);
    Clear(lPtr, aCount);
    return lPtr;
}

template <typename T>
T* AllocAndCopy(const T* aSrc, UInt aCount) {
    T* lPtr = Alloc<T>(aCount);
    Copy(lPtr, aSrc, aCount);
    return lPtr;
}

template <typename T>
void Free(T* aPtr) {
    delete[] aPtr;
}

/// Always moves to a new block: copies `aOldCount` elements, or what fits, and frees the old block.
template <typename T>
T* Realloc(T* aOld, UInt aOldCount, UInt aNewCount) {
    T* lPtr = Alloc<T>(aNewCount);
    Copy(lPtr, aOld, Util::Min(aOldCount, aNewCount));
    Free(aOld);
    return lPtr;
}

/// `Realloc`, with the elements from `aOldCount` on set to zero.
template <typename T>
T* ReallocAndClear(T* aOld, UInt aOldCount, UInt aNewCount) {
    T* lPtr = Realloc(aOld, aOldCount, aNewCount);
    if (aNewCount > aOldCount) { Clear(lPtr + aOldCount, aNewCount - aOldCount); }
    return lPtr;
}

}  // namespace Mem
}  // namespace Player
