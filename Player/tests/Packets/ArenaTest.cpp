#include "Packets/Arena.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "Player/Ptr.hpp"

namespace Player {

using Packets::Arena;

namespace {

using ArenaPtr = SharedPtr<Arena, SharedObject>;

constexpr std::size_t kPacket = 1500;
constexpr std::size_t kPerBlock = Arena::kBlockSize / kPacket - 1;

ArenaPtr NewArena() {
    return ArenaPtr(new Arena);
}

/// Pieces that are given back with it.
class Pieces {
public:
    explicit Pieces(const ArenaPtr& aArena) : mArena(aArena) {}
    Pieces(const Pieces&) = delete;
    Pieces& operator=(const Pieces&) = delete;
    ~Pieces() { GiveOldest(mPieces.size()); }

    void Take(std::size_t aCount, std::size_t aSize = kPacket) {
        while (0 != aCount--) {
            mPieces.push_back(mArena->Take(aSize));
            std::memset(mPieces.back(), 0x55, aSize);
        }
    }
    void GiveOldest(std::size_t aCount) {
        while (0 != aCount--) {
            Arena::Give(mPieces.front());
            mPieces.pop_front();
        }
    }
    void* Latest() const { return mPieces.back(); }

private:
    ArenaPtr mArena;
    std::deque<void*> mPieces;
};

TEST(ArenaTest, HoldsNothingUntilSomethingIsTaken) {
    const ArenaPtr lArena = NewArena();
    EXPECT_EQ(0U, lArena->Held());
    Pieces lPieces(lArena);
    lPieces.Take(1);
    EXPECT_EQ(Arena::kBlockSize, lArena->Held());
}

TEST(ArenaTest, PiecesLieSideBySideAndAreAligned) {
    Pieces lPieces(NewArena());
    lPieces.Take(1, 1);
    const auto lFirst = reinterpret_cast<std::uintptr_t>(lPieces.Latest());
    EXPECT_EQ(0U, lFirst % alignof(std::max_align_t));
    lPieces.Take(1, 17);
    const auto lSecond = reinterpret_cast<std::uintptr_t>(lPieces.Latest());
    EXPECT_EQ(0U, lSecond % alignof(std::max_align_t));
    EXPECT_LE(lSecond - lFirst, 64U);
}

TEST(ArenaTest, UsesTheSameBlockAgainWhenAllOfItIsGone) {
    const ArenaPtr lArena = NewArena();
    Pieces lPieces(lArena);
    lPieces.Take(1);
    void* const lFirst = lPieces.Latest();
    for (int i = 0; i < 1000; ++i) {
        lPieces.GiveOldest(1);
        lPieces.Take(1);
        ASSERT_EQ(lFirst, lPieces.Latest());
    }
    EXPECT_EQ(Arena::kBlockSize, lArena->Held());
}

TEST(ArenaTest, AQueueThatMovesOnHoldsTheBlocksThatItLiesIn) {
    const ArenaPtr lArena = NewArena();
    Pieces lPieces(lArena);
    lPieces.Take(3 * kPerBlock);
    const std::size_t lHeld = lArena->Held();
    for (int i = 0; i < 1000; ++i) {
        lPieces.Take(kPerBlock / 2);
        lPieces.GiveOldest(kPerBlock / 2);
    }
    EXPECT_LE(lArena->Held(), lHeld + 2 * Arena::kBlockSize);
}

TEST(ArenaTest, KeepsSomeEmptyBlocksAndFreesTheRest) {
    const ArenaPtr lArena = NewArena();
    Pieces lPieces(lArena);
    lPieces.Take(100 * kPerBlock);
    EXPECT_LT(90 * Arena::kBlockSize, lArena->Held());
    lPieces.GiveOldest(100 * kPerBlock);
    EXPECT_EQ((Arena::kSpareBlocks + 1) * Arena::kBlockSize, lArena->Held()) << "the spare ones and the one in use";
}

TEST(ArenaTest, APieceThatFitsNoBlockHasOneOfItsOwn) {
    const ArenaPtr lArena = NewArena();
    Pieces lPieces(lArena);
    lPieces.Take(1, 65535);
    EXPECT_LT(65535U, lArena->Held());
    EXPECT_LT(lArena->Held(), 65535U + 200);
    lPieces.GiveOldest(1);
    EXPECT_EQ(0U, lArena->Held());
}

TEST(ArenaTest, PiecesOutliveTheirUser) {
    ArenaPtr lArena = NewArena();
    std::vector<void*> lPieces;
    for (std::size_t i = 0; i < 3 * kPerBlock; ++i) {
        lPieces.push_back(lArena->Take(kPacket));
    }
    lArena.Set(nullptr);
    for (void* const lPiece : lPieces) {
        std::memset(lPiece, 0xAA, kPacket);
        Arena::Give(lPiece);
    }
}

TEST(ArenaTest, AFewPiecesThatStayDoNotHoldBlocksWithoutEnd) {
    const ArenaPtr lArena = NewArena();
    Pieces lStaying(lArena);
    Pieces lPassing(lArena);
    std::size_t lStay = 0;
    for (; lStay < 1000; ++lStay) {
        lStaying.Take(1, 100);
        lPassing.Take(2 * kPerBlock);
        lPassing.GiveOldest(2 * kPerBlock);
    }
    EXPECT_LT(lArena->Held(), 2 * lStay * (100 + 200) + (2 * Arena::kSpareBlocks + 4) * Arena::kBlockSize);
}

}  // namespace
}  // namespace Player
