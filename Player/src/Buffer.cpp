#include "Player/Buffer.hpp"

#include <cstring>
#include <limits>
#include <stdexcept>

#include "Player/Mem.hpp"

namespace Player {

namespace {

int CompareCommon(const BufferRef& aA, const BufferRef& aB) {
    const UInt lCommon = Util::Min(aA.Size(), aB.Size());
    return 0 == lCommon ? 0 : std::memcmp(aA.Begin(), aB.Begin(), lCommon);
}

/// A size that was worked out in more than 32 bits.
UInt CheckedSize(std::uint64_t aSize) {
    if (aSize > std::numeric_limits<UInt>::max()) { throw std::length_error("Buffer: size beyond 32 bits"); }
    return static_cast<UInt>(aSize);
}

UInt CheckedSum(UInt aA, UInt aB) {
    return CheckedSize(std::uint64_t{aA} + aB);
}

UInt RangeSize(const Byte* aBegin, const Byte* aEnd) {
    return nullptr == aEnd ? 0 : CheckedSize(static_cast<std::uint64_t>(aEnd - aBegin));
}

}  // namespace

bool operator==(const BufferRef& aA, const BufferRef& aB) {
    return aA.Size() == aB.Size() && 0 == CompareCommon(aA, aB);
}

bool operator!=(const BufferRef& aA, const BufferRef& aB) {
    return !(aA == aB);
}

bool operator<(const BufferRef& aA, const BufferRef& aB) {
    const int lOrder = CompareCommon(aA, aB);
    return 0 != lOrder ? lOrder < 0 : aA.Size() < aB.Size();
}

bool operator>(const BufferRef& aA, const BufferRef& aB) {
    return aB < aA;
}

Buffer::Buffer(UInt aCapacity) {
    mData = Mem::Alloc<Byte>(aCapacity);
    mCapacity = aCapacity;
}

Buffer::Buffer(const void* aData, UInt aSize) {
    mData = Mem::AllocAndCopy(static_cast<const Byte*>(aData), aSize);
    mSize = mCapacity = aSize;
}

Buffer::Buffer(const Byte* aBegin, const Byte* aEnd) : Buffer(aBegin, RangeSize(aBegin, aEnd)) {}

Buffer::Buffer(const BufferRef& aOther) : Buffer(aOther.Begin(), aOther.Size()) {}

Buffer::Buffer(const Buffer& aOther) : Buffer(aOther.Begin(), aOther.Size()) {}

Buffer& Buffer::operator=(const Buffer& aOther) {
    if (this != &aOther) { Assign(aOther.mData, aOther.mSize); }
    return *this;
}

Buffer::~Buffer() {
    Mem::Free(mData);
}

UInt Buffer::GrownCapacity(UInt aAtLeast) const {
    return Util::Max(aAtLeast, CheckedSum(mCapacity, mCapacity));
}

void Buffer::Reserve(UInt aCapacity) {
    if (mCapacity >= aCapacity) { return; }
    const UInt lCapacity = GrownCapacity(aCapacity);
    mData = nullptr == mData ? Mem::Alloc<Byte>(lCapacity) : Mem::Realloc(mData, mSize, lCapacity);
    mCapacity = lCapacity;
}

void Buffer::Resize(UInt aSize) {
    if (mCapacity >= aSize) {
        mSize = aSize;
        return;
    }
    const UInt lCapacity = GrownCapacity(aSize);
    mData = nullptr == mData ? Mem::AllocAndClear<Byte>(lCapacity) : Mem::ReallocAndClear(mData, mSize, lCapacity);
    mSize = mCapacity = lCapacity;
}

void Buffer::Append(const void* aData, UInt aSize) {
    Reserve(CheckedSum(mSize, aSize));
    Mem::Copy(mData + mSize, static_cast<const Byte*>(aData), aSize);
    mSize += aSize;
}

void Buffer::Append(Byte aByte) {
    Reserve(CheckedSum(mSize, 1));
    mData[mSize] = aByte;
    mSize += 1;
}

void Buffer::Assign(const void* aData, UInt aSize) {
    Reserve(aSize);
    Mem::Copy(mData, static_cast<const Byte*>(aData), aSize);
    mSize = aSize;
}

Byte* Buffer::Detach() {
    Byte* const lData = mData;
    mData = nullptr;
    mSize = mCapacity = 0;
    return lData;
}

}  // namespace Player
