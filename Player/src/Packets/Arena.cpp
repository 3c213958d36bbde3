#include "Packets/Arena.hpp"

#include <new>

// The address sanitizer sees what reads outside a piece, or one that was given back.
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(aBegin, aSize) (static_cast<void>(aBegin), static_cast<void>(aSize))
#define ASAN_UNPOISON_MEMORY_REGION(aBegin, aSize) (static_cast<void>(aBegin), static_cast<void>(aSize))
#endif

namespace Player::Packets {

/// Stands at the beginning of its memory.
struct alignas(std::max_align_t) Arena::Block {
    Arena* mArena;
    std::size_t mSize;
    /// Bytes from the beginning that are used up.
    std::size_t mUsed;
    /// How many are not given back.
    std::size_t mPieces;
    Block* mNext;
};

/// Stands before each piece.
struct alignas(std::max_align_t) Arena::Header {
    Block* mBlock;
    /// Size of the piece, header included.
    std::size_t mSize;
};

Arena::~Arena() {
    // Others hold pieces, and those this arena.
    if (nullptr != mCurrent) { Free(mCurrent); }
    while (0 != mSpares) {
        Free(TakeSpare());
    }
}

void* Arena::Take(std::size_t aSize) {
    constexpr std::size_t kAlign = alignof(std::max_align_t);
    const std::size_t lSize = sizeof(Header) + (aSize + kAlign - 1) / kAlign * kAlign;
    Block& lBlock = BlockFor(lSize);
    Byte* const lAt = reinterpret_cast<Byte*>(&lBlock) + lBlock.mUsed;
    ASAN_UNPOISON_MEMORY_REGION(lAt, sizeof(Header) + aSize);
    Header* const lHeader = new (lAt) Header{&lBlock, lSize};
    ASAN_POISON_MEMORY_REGION(lHeader, sizeof(Header));
    lBlock.mUsed += lSize;
    ++lBlock.mPieces;
    mInUse += lSize;
    Retain();
    return lHeader + 1;
}

void Arena::Give(void* aPiece) {
    Header* const lHeader = static_cast<Header*>(aPiece) - 1;
    ASAN_UNPOISON_MEMORY_REGION(lHeader, sizeof(Header));
    Block* const lBlock = lHeader->mBlock;
    Arena& lArena = *lBlock->mArena;
    lArena.mInUse -= lHeader->mSize;
    ASAN_POISON_MEMORY_REGION(lHeader, lHeader->mSize);
    if (0 == --lBlock->mPieces) { lArena.Empty(lBlock); }
    lArena.Release();
}

Arena::Block& Arena::BlockFor(std::size_t aSize) {
    if (nullptr != mCurrent && aSize <= kBlockSize - mCurrent->mUsed) { return *mCurrent; }
    if (aSize > kBlockSize - sizeof(Block) || IsWasteful()) { return *NewBlock(sizeof(Block) + aSize); }
    mCurrent = 0 == mSpares ? NewBlock(kBlockSize) : TakeSpare();
    return *mCurrent;
}

Arena::Block* Arena::NewBlock(std::size_t aSize) {
    Block* const lBlock = new (::operator new(aSize)) Block{this, aSize, sizeof(Block), 0, nullptr};
    ASAN_POISON_MEMORY_REGION(lBlock + 1, aSize - sizeof(Block));
    mHeld += aSize;
    return lBlock;
}

void Arena::Free(Block* aBlock) {
    mHeld -= aBlock->mSize;
    ::operator delete(aBlock);
}

void Arena::Empty(Block* aBlock) {
    aBlock->mUsed = sizeof(Block);
    if (mCurrent == aBlock) { return; }
    if (kBlockSize != aBlock->mSize) {
        Free(aBlock);
        return;
    }
    aBlock->mNext = mSpare;
    mSpare = aBlock;
    ++mSpares;
    // A long queue is emptied and filled again by larger parts than a short one.
    const std::size_t lUsed = mHeld / kBlockSize - mSpares;
    while (mSpares > kSpareBlocks + lUsed / 8) {
        Free(TakeSpare());
    }
}

Arena::Block* Arena::TakeSpare() {
    Block* const lBlock = mSpare;
    mSpare = lBlock->mNext;
    --mSpares;
    return lBlock;
}

}  // namespace Player::Packets
