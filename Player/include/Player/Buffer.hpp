#pragma once

#include "Player/Assert.hpp"
#include "Player/Types.hpp"

namespace Player {

/// A view of bytes that it does not own and that outlive it.
class BufferRef {
public:
    BufferRef() = default;
    BufferRef(void* aData, UInt aSize) : mSize(aSize), mData(static_cast<Byte*>(aData)) {}

    Byte* Begin() { return mData; }
    const Byte* Begin() const { return mData; }
    Byte* End() { return mData + mSize; }
    const Byte* End() const { return mData + mSize; }
    UInt Size() const { return mSize; }
    bool Empty() const { return 0 == mSize; }
    /// Size 0; the bytes stay where they are.
    void Clear() { mSize = 0; }

    Byte& operator[](UInt aIdx) {
        PLAYER_ASSERT(aIdx < mSize);
        return mData[aIdx];
    }
    const Byte& operator[](UInt aIdx) const {
        PLAYER_ASSERT(aIdx < mSize);
        return mData[aIdx];
    }

protected:
    UInt mSize = 0;
    Byte* mData = nullptr;
};

bool operator==(const BufferRef& aA, const BufferRef& aB);
bool operator!=(const BufferRef& aA, const BufferRef& aB);
/// Lexicographic by unsigned bytes; of two views with a common prefix the shorter is the lesser.
bool operator<(const BufferRef& aA, const BufferRef& aB);
bool operator>(const BufferRef& aA, const BufferRef& aB);

/// Owns its bytes and grows geometrically (at least doubling).
/// A size that would not fit 32 bits throws `std::length_error`, a failed allocation `std::bad_alloc`;
/// the buffer keeps its old bytes then.
class Buffer : public BufferRef {
public:
    Buffer() = default;
    /// Room for `aCapacity` bytes, size 0.
    explicit Buffer(UInt aCapacity);
    Buffer(const void* aData, UInt aSize);
    /// A null end is an empty range: `Buffer(lBytes, 0)` means this constructor.
    Buffer(const Byte* aBegin, const Byte* aEnd);
    explicit Buffer(const BufferRef& aOther);
    Buffer(const Buffer& aOther);
    Buffer& operator=(const Buffer& aOther);
    ~Buffer();

    UInt Capacity() const { return mCapacity; }

    /// Capacity of at least `aCapacity`; new room is not cleared, the size does not change.
    void Reserve(UInt aCapacity);
    /// Within the capacity the size becomes `aSize`. Beyond it the buffer grows, the new bytes are
    /// zero, and the size becomes the whole new capacity: a caller that wants less resizes again.
    void Resize(UInt aSize);
    /// `aData` does not point into this buffer.
    void Append(const void* aData, UInt aSize);
    void Append(Byte aByte);
    /// Replaces the contents. `aData` does not point into this buffer.
    void Assign(const void* aData, UInt aSize);

    /// Gives the bytes away, to be freed with `Mem::Free`; the buffer is empty afterwards. Null when it has none.
    Byte* Detach();

    /// Pointer to byte `aIdx`, checked against the capacity: reserved room may be written before a resize.
    Byte* operator+(UInt aIdx) {
        PLAYER_ASSERT(aIdx < mCapacity);
        return mData + aIdx;
    }
    const Byte* operator+(UInt aIdx) const {
        PLAYER_ASSERT(aIdx < mCapacity);
        return mData + aIdx;
    }

private:
    UInt GrownCapacity(UInt aAtLeast) const;

    UInt mCapacity = 0;
};

}  // namespace Player
