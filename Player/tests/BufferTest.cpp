#include "Player/Buffer.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "Player/Mem.hpp"
#include "support/HeapBlock.hpp"

namespace Player {
namespace {

using TestSupport::HeapBlock;

Buffer Bytes(const char* aText) {
    return Buffer(aText, static_cast<UInt>(std::strlen(aText)));
}

std::string Text(const BufferRef& aRef) {
    return std::string(aRef.Begin(), aRef.End());
}

TEST(BufferRef, EmptyHasNoData) {
    const BufferRef lRef;
    EXPECT_EQ(0U, lRef.Size());
    EXPECT_TRUE(lRef.Empty());
    EXPECT_EQ(nullptr, lRef.Begin());
    EXPECT_EQ(lRef.Begin(), lRef.End());
}

TEST(BufferRef, ViewsWithoutCopying) {
    Byte lBytes[] = {1, 2, 3};
    BufferRef lRef(lBytes, 3);
    EXPECT_EQ(lBytes, lRef.Begin());
    EXPECT_EQ(lBytes + 3, lRef.End());
    EXPECT_EQ(3U, lRef.Size());
    EXPECT_FALSE(lRef.Empty());
    lRef[2] = 9;
    EXPECT_EQ(9, lBytes[2]);
    const BufferRef& lConst = lRef;
    EXPECT_EQ(lBytes, lConst.Begin());
    EXPECT_EQ(9, lConst[2]);
    lRef.Clear();
    EXPECT_TRUE(lRef.Empty());
    EXPECT_EQ(lBytes, lRef.Begin()) << "the bytes stay";
}

TEST(BufferRefDeathTest, IndexBehindTheEnd) {
    Byte lBytes[] = {1, 2, 3};
    BufferRef lRef(lBytes, 2);
    const BufferRef& lConst = lRef;
    EXPECT_DEATH(lRef[2] = 0, "aIdx < mSize");
    EXPECT_DEATH(static_cast<void>(lConst[2]), "aIdx < mSize");
    EXPECT_DEATH(static_cast<void>(BufferRef()[0]), "aIdx < mSize");
}

TEST(BufferRef, Comparison) {
    enum Order { kLess, kEqual, kGreater };
    const struct {
        std::string mA;
        std::string mB;
        Order mOrder;
    } kCases[] = {
        {"ab", "abc", kLess},
        {"abc", "ab", kGreater},
        {"ab", "ab", kEqual},
        {"", "", kEqual},
        {"", "a", kLess},
        {"a", "", kGreater},
        {"b", "aa", kGreater},
        {"aa", "b", kLess},
        {"ab", "ac", kLess},
        {"\x80", "a", kGreater},
        {"a", std::string(1, 0), kGreater},
        {"\xFF", "\x01", kGreater},
        // The bytes after a NUL count as well.
        {std::string("a\0b", 3), std::string("a\0c", 3), kLess},
    };
    for (const auto& lCase : kCases) {
        SCOPED_TRACE(lCase.mA + " : " + lCase.mB);
        const HeapBlock lA(lCase.mA);
        const HeapBlock lB(lCase.mB);
        EXPECT_EQ(kEqual == lCase.mOrder, lA.Ref() == lB.Ref());
        EXPECT_EQ(kEqual != lCase.mOrder, lA.Ref() != lB.Ref());
        EXPECT_EQ(kLess == lCase.mOrder, lA.Ref() < lB.Ref());
        EXPECT_EQ(kGreater == lCase.mOrder, lA.Ref() > lB.Ref());
    }
}

TEST(BufferRef, EmptyViewsAreEqualWhateverTheyPointAt) {
    Byte lByte = 1;
    const BufferRef lNull;
    const BufferRef lEmpty(&lByte, 0);
    EXPECT_TRUE(lNull == lEmpty);
    EXPECT_FALSE(lNull != lEmpty);
    EXPECT_FALSE(lNull < lEmpty);
    EXPECT_FALSE(lNull > lEmpty);
}

TEST(Buffer, ConstructorsTakeExactlyTheSource) {
    const Buffer lEmpty;
    EXPECT_EQ(0U, lEmpty.Size());
    EXPECT_EQ(0U, lEmpty.Capacity());
    EXPECT_EQ(nullptr, lEmpty.Begin());

    const Buffer lRoom(5);
    EXPECT_EQ(0U, lRoom.Size());
    EXPECT_EQ(5U, lRoom.Capacity());

    const Buffer lCopied("abc", 3);
    EXPECT_EQ("abc", Text(lCopied));
    EXPECT_EQ(3U, lCopied.Capacity());

    const Byte lBytes[] = {'x', 'y'};
    const Buffer lRange(lBytes, lBytes + 2);
    EXPECT_EQ("xy", Text(lRange));
    EXPECT_EQ(2U, lRange.Capacity());

    Buffer lMuch(100);
    lMuch.Append("pq", 2);
    const Buffer lFromRef(static_cast<const BufferRef&>(lMuch));
    EXPECT_EQ("pq", Text(lFromRef));
    EXPECT_EQ(2U, lFromRef.Capacity());
    const Buffer lCopy(lMuch);
    EXPECT_EQ("pq", Text(lCopy));
    EXPECT_EQ(2U, lCopy.Capacity());
    EXPECT_NE(lMuch.Begin(), lCopy.Begin());
}

TEST(Buffer, LiteralSizeZeroIsEmpty) {
    const Byte lBytes[] = {1, 2};
    const Buffer lBuffer(lBytes, 0);
    EXPECT_TRUE(lBuffer.Empty());
    EXPECT_TRUE(Buffer(nullptr, 0U).Empty());
}

TEST(Buffer, AssignmentCopies) {
    Buffer lA = Bytes("one");
    const Buffer lB = Bytes("other");
    lA = lB;
    EXPECT_EQ("other", Text(lA));
    EXPECT_NE(lA.Begin(), lB.Begin());
    const Buffer& lSelf = lA;
    lA = lSelf;
    EXPECT_EQ("other", Text(lA));
    lA = Buffer();
    EXPECT_TRUE(lA.Empty());
}

TEST(Buffer, ReserveGrowsAtLeastTwofoldAndKeepsTheSize) {
    Buffer lBuffer = Bytes("abcd");
    lBuffer.Reserve(5);
    EXPECT_EQ(8U, lBuffer.Capacity()) << "twice the old capacity";
    EXPECT_EQ("abcd", Text(lBuffer));
    lBuffer.Reserve(17);
    EXPECT_EQ(17U, lBuffer.Capacity()) << "more than twice is taken as asked for";
    EXPECT_EQ("abcd", Text(lBuffer));
    const Byte* const lData = lBuffer.Begin();
    lBuffer.Reserve(17);
    lBuffer.Reserve(3);
    lBuffer.Reserve(0);
    EXPECT_EQ(17U, lBuffer.Capacity());
    EXPECT_EQ(lData, lBuffer.Begin());
}

TEST(Buffer, GrowingResizeTakesTheWholeCapacity) {
    Buffer lEmpty;
    lEmpty.Resize(10);
    EXPECT_EQ(10U, lEmpty.Size());
    EXPECT_EQ(10U, lEmpty.Capacity());
    EXPECT_EQ(std::string(10, '\0'), Text(lEmpty));

    Buffer lBuffer(8);
    std::memset(lBuffer + 0, 'z', 8);  // also in the room after the size
    lBuffer.Resize(3);
    lBuffer.Resize(10);
    EXPECT_EQ(16U, lBuffer.Size());
    EXPECT_EQ(16U, lBuffer.Capacity());
    EXPECT_EQ("zzz" + std::string(13, '\0'), Text(lBuffer)) << "zero from the old size on";
}

TEST(Buffer, ResizeWithinTheCapacityIsExactAndClearsNothing) {
    Buffer lBuffer = Bytes("abcdef");
    lBuffer.Resize(2);
    EXPECT_EQ("ab", Text(lBuffer));
    EXPECT_EQ(6U, lBuffer.Capacity());
    lBuffer.Resize(6);
    EXPECT_EQ("abcdef", Text(lBuffer));
    lBuffer.Resize(0);
    EXPECT_TRUE(lBuffer.Empty());
    EXPECT_EQ(6U, lBuffer.Capacity());
}

TEST(Buffer, Appends) {
    Buffer lBuffer;
    lBuffer.Append("", 0);
    EXPECT_EQ(nullptr, lBuffer.Begin()) << "nothing is allocated for nothing";
    EXPECT_EQ(0U, lBuffer.Capacity());
    lBuffer.Append("abc", 3);
    EXPECT_EQ(3U, lBuffer.Capacity());
    lBuffer.Append(Byte{'d'});
    EXPECT_EQ(6U, lBuffer.Capacity());
    lBuffer.Append("efg", 3);
    EXPECT_EQ("abcdefg", Text(lBuffer));
    EXPECT_EQ(12U, lBuffer.Capacity());
}

TEST(Buffer, AppendingIsAmortised) {
    Buffer lBuffer;
    UInt lMoves = 0;
    for (UInt i = 0; i < 100000; ++i) {
        const UInt lOld = lBuffer.Capacity();
        lBuffer.Append(static_cast<Byte>(i));
        if (lOld != lBuffer.Capacity()) { ++lMoves; }
    }
    EXPECT_LE(lMoves, 18U);
    for (UInt i = 0; i < 100000; ++i)
        ASSERT_EQ(static_cast<Byte>(i), lBuffer[i]);
}

TEST(Buffer, AssignReplaces) {
    Buffer lBuffer = Bytes("abcdef");
    lBuffer.Assign("xy", 2);
    EXPECT_EQ("xy", Text(lBuffer));
    EXPECT_EQ(6U, lBuffer.Capacity());
    lBuffer.Assign("1234567", 7);
    EXPECT_EQ("1234567", Text(lBuffer));
    EXPECT_EQ(12U, lBuffer.Capacity());
    lBuffer.Assign("", 0);
    EXPECT_TRUE(lBuffer.Empty());
}

TEST(Buffer, OffsetReachesReservedRoom) {
    Buffer lBuffer(4);
    std::memcpy(lBuffer + 1, "xyz", 3);
    *(lBuffer + 0) = 'w';
    lBuffer.Resize(4);
    EXPECT_EQ("wxyz", Text(lBuffer));
    const Buffer& lConst = lBuffer;
    EXPECT_EQ('z', *(lConst + 3));
}

TEST(BufferDeathTest, OffsetBehindTheCapacity) {
    Buffer lBuffer(4);
    const Buffer& lConst = lBuffer;
    EXPECT_DEATH(static_cast<void>(lBuffer + 4), "aIdx < mCapacity");
    EXPECT_DEATH(static_cast<void>(lConst + 4), "aIdx < mCapacity");
    EXPECT_DEATH(lBuffer[0] = 1, "aIdx < mSize") << "the index keeps to the size";
}

TEST(Buffer, SizesBeyond32BitsAreRefusedBeforeAnythingChanges) {
    Buffer lBuffer = Bytes("abc");
    const Byte* const lData = lBuffer.Begin();
    // The source is never read: its size alone is refused.
    EXPECT_THROW(lBuffer.Append("x", 0xFFFFFFFD), std::length_error);
    EXPECT_THROW(lBuffer.Append("x", 0xFFFFFFFF), std::length_error);
    EXPECT_EQ("abc", Text(lBuffer));
    EXPECT_EQ(3U, lBuffer.Capacity());
    EXPECT_EQ(lData, lBuffer.Begin());

    const Byte lByte = 0;
    EXPECT_THROW(Buffer(&lByte + 1, &lByte), std::length_error);
}

TEST(Buffer, GivesItsBytesAway) {
    Buffer lBuffer = Bytes("abc");
    const Byte* const lData = lBuffer.Begin();
    Byte* const lGiven = lBuffer.Detach();
    EXPECT_EQ(lData, lGiven);
    EXPECT_EQ("abc", std::string(lGiven, lGiven + 3));
    Mem::Free(lGiven);
    EXPECT_TRUE(lBuffer.Empty());
    EXPECT_EQ(0U, lBuffer.Capacity());
    EXPECT_EQ(nullptr, lBuffer.Detach());
    lBuffer.Append("xyz", 3);
    EXPECT_EQ("xyz", Text(lBuffer)) << "and takes others";
}

}  // namespace
}  // namespace Player
