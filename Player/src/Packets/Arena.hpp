#pragma once

#include <cstddef>

#include "Player/SharedObject.hpp"

namespace Player::Packets {

/// Memory for what comes and goes in about the same order, as the packets of a track do: pieces of blocks that are
/// filled front to back and used again when the last piece of them is gone. Some empty blocks are kept: giving them
/// to the system and getting them back costs more than the packets themselves.
///
/// A few pieces that stay can hold whole blocks. Where blocks take more than twice what is in use, and some more,
/// pieces get a block each that is no larger than they are.
///
/// Pieces keep their arena alive, which is not locked: they are given back by the thread that uses it.
class Arena : public SharedObject {
public:
    static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;
    /// Empty blocks that are kept, beside an eighth of those in use; blocks that do not count as waste.
    static constexpr std::size_t kSpareBlocks = 16;

    Arena() : SharedObject(0) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() override;

    /// Aligned for every type. Throws `std::bad_alloc`.
    void* Take(std::size_t aSize);
    /// Gives a piece back to where it came from.
    static void Give(void* aPiece);

    /// Memory that is held, empty blocks included.
    std::size_t Held() const { return mHeld; }

private:
    struct Block;
    struct Header;

    /// The block that has room for this many bytes.
    Block& BlockFor(std::size_t aSize);
    Block* NewBlock(std::size_t aSize);
    void Free(Block* aBlock);
    Block* TakeSpare();
    /// For a block of which the last piece is gone.
    void Empty(Block* aBlock);
    bool IsWasteful() const { return mHeld > 2 * mInUse + 2 * kSpareBlocks * kBlockSize; }

    /// The one that is being filled; null before the first piece.
    Block* mCurrent = nullptr;
    /// Empty blocks, each knowing the next.
    Block* mSpare = nullptr;
    std::size_t mSpares = 0;
    /// Bytes of all blocks.
    std::size_t mHeld = 0;
    /// Bytes of all pieces.
    std::size_t mInUse = 0;
};

}  // namespace Player::Packets
