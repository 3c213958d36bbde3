#include "SDP/Reader.hpp"

#include <gtest/gtest.h>

#include "support/HeapBlock.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using TestSupport::ExpectThrow;
using TestSupport::HeapBlock;

/// What is left to read.
std::string Rest(Reader& aReader) {
    std::string lText;
    while (aReader.Have<char>(1))
        lText += aReader.Read<char>();
    return lText;
}

TEST(Reader, MovesOverItsBytes) {
    const HeapBlock lBlock("abcdef");
    Reader lReader(lBlock.Ref());
    EXPECT_EQ(6U, lReader.Left());
    EXPECT_TRUE(lReader.Have(6));
    EXPECT_FALSE(lReader.Have(7));
    EXPECT_FALSE(lReader.Have(0xFFFFFFFF));
    EXPECT_TRUE(lReader.Have<char>(6));
    EXPECT_FALSE(lReader.Have<char>(7));
    EXPECT_TRUE(lReader.Have<UInt>(1));
    EXPECT_FALSE(lReader.Have<UInt>(2));
    EXPECT_FALSE(lReader.Have<UInt>(0x40000001)) << "the byte count does not wrap";

    EXPECT_EQ('c', *lReader.Here(2, 2));
    EXPECT_EQ(6U, lReader.Left()) << "Here stays";
    EXPECT_EQ('c', *lReader.Advance(2, 2)) << "behind the offset ...";
    EXPECT_EQ(2U, lReader.Left()) << "... and over it and the bytes";
    EXPECT_EQ('e', *lReader.Here(2, 0));
    lReader.Skip(2);
    EXPECT_EQ(0U, lReader.Left());
    EXPECT_TRUE(lReader.Have(0));
    EXPECT_FALSE(lReader.Have(1));
    lReader.Rewind(6);
    EXPECT_EQ(6U, lReader.Left());
    EXPECT_EQ("abcdef", Rest(lReader));
}

TEST(Reader, Characters) {
    const HeapBlock lBlock("ab\xFF");
    Reader lReader(lBlock.Ref());
    char lCh = 0;
    lReader.Peek<char>(lCh, 2);
    EXPECT_EQ('\xFF', lCh);
    EXPECT_EQ('a', lReader.Read<char>());
    lReader.Read<char>(lCh);
    EXPECT_EQ('b', lCh);
    lReader.Rewind<char>(2);
    lReader.Skip<char>(1);
    EXPECT_EQ("b\xFF", Rest(lReader));
}

TEST(Reader, EmptyViewHasNothing) {
    const Reader lReader{BufferRef()};
    EXPECT_EQ(0U, lReader.Left());
    EXPECT_TRUE(lReader.Have(0));
    EXPECT_FALSE(lReader.Have(1));
}

TEST(ReaderDeathTest, LeavingTheBytes) {
    const HeapBlock lBlock("abc");
    Reader lReader(lBlock.Ref());
    const char kAhead[] = "Left\\(\\) >= \\(aOff \\+ aSize\\)";
    EXPECT_DEATH(lReader.Advance(2, 2), kAhead);
    EXPECT_DEATH(lReader.Here(4, 0), kAhead);
    EXPECT_DEATH(lReader.Here(1, 0xFFFFFFFF), kAhead) << "the sum does not wrap";
    EXPECT_DEATH(lReader.Advance(0xFFFFFFFF, 1), kAhead);
    EXPECT_DEATH(lReader.Skip(4), "Left\\(\\) >= aSize");
    lReader.Skip(3);
    EXPECT_DEATH(lReader.Rewind(4), "mPos >= aSize");
    EXPECT_DEATH(lReader.Read<char>(), kAhead);
    char lCh = 0;
    EXPECT_DEATH(lReader.Peek<char>(lCh, 0), kAhead);
}

TEST(ReadLn, TakesOneLineAndItsEnd) {
    const struct {
        std::string mText;
        std::string mLine;
        std::string mRest;
    } kCases[] = {
        {"one\r\ntwo", "one", "two"},
        {"one\ntwo", "one", "two"},
        {"one\rtwo", "one", "two"},
        {"one\r\n\r\ntwo", "one", "\r\ntwo"},
        {"one\n\ntwo", "one", "\ntwo"},
        {"one\r\rtwo", "one", "\rtwo"},
        {"one\n\rtwo", "one", "\rtwo"},  // only CR LF is one end
        {"one\r", "one", ""},
        {"one\r\n", "one", ""},
        {"one", "one", ""},
        {"\r\n", "", ""},
        {"", "", ""},
        {std::string("a\0b\nc", 5), std::string("a\0b", 3), "c"},
    };
    for (const auto& lCase : kCases) {
        const HeapBlock lBlock(lCase.mText);
        Reader lRead(lBlock.Ref());
        std::string lLine = "<";
        ReadLn(lRead, lLine);
        EXPECT_EQ("<" + lCase.mLine, lLine) << "appended";
        EXPECT_EQ(lCase.mRest, Rest(lRead));
        Reader lSkip(lBlock.Ref());
        SkipLn(lSkip);
        EXPECT_EQ(lCase.mRest, Rest(lSkip));
    }
}

TEST(ReadLnTo, StopsBehindTheDelimiterOrInFrontOfTheLineEnd) {
    const struct {
        std::string mText;
        std::string mPiece;
        bool mFound;
        std::string mRest;
    } kCases[] = {
        {"one two\r\n", "one", true, "two\r\n"},
        {"one  two", "one", true, " two"},
        {" one", "", true, "one"},
        {"one\r\ntwo three", "one", false, "\r\ntwo three"},
        {"one\ntwo three", "one", false, "\ntwo three"},
        {"one\rtwo three", "one", false, "\rtwo three"},
        {"one", "one", false, ""},
        {"one ", "one", true, ""},
        {"\n", "", false, "\n"},
        {"", "", false, ""},
    };
    for (const auto& lCase : kCases) {
        SCOPED_TRACE(lCase.mText);
        const HeapBlock lBlock(lCase.mText);
        Reader lRead(lBlock.Ref());
        std::string lPiece = "<";
        EXPECT_EQ(lCase.mFound, ReadLnTo(lRead, lPiece, ' '));
        EXPECT_EQ("<" + lCase.mPiece, lPiece) << "appended";
        EXPECT_EQ(lCase.mRest, Rest(lRead));
        Reader lSkip(lBlock.Ref());
        EXPECT_EQ(lCase.mFound, SkipLnTo(lSkip, ' '));
        EXPECT_EQ(lCase.mRest, Rest(lSkip));
    }
}

TEST(SkipLnWhile, LeavesTheFirstOtherCharacter) {
    const struct {
        std::string mText;
        std::string mRest;
    } kCases[] = {
        {"   x y", "x y"},
        {"x", "x"},
        {" \r\n", "\r\n"},
        {"", ""},
        // At the end of the data the last of the run is put back.
        {"   ", " "},
    };
    for (const auto& lCase : kCases) {
        const HeapBlock lBlock(lCase.mText);
        Reader lReader(lBlock.Ref());
        SkipLnWhile(lReader, ' ');
        EXPECT_EQ(lCase.mRest, Rest(lReader)) << '"' << lCase.mText << '"';
    }
}

TEST(SkipLnWhile, PutsBackNothingThatItDidNotRead) {
    const HeapBlock lBlock("-");
    Reader lReader(lBlock.Ref());
    lReader.Skip<char>(1);
    SkipLnWhile(lReader, ' ');
    EXPECT_EQ(0U, lReader.Left());
}

TEST(NextType, ReadsTheLetterOfALine) {
    const HeapBlock lBlock("\r\n\n\rs=name");
    Reader lReader(lBlock.Ref());
    char lType = 0;
    EXPECT_TRUE(NextType(lReader, lType));
    EXPECT_EQ('s', lType);
    EXPECT_EQ("name", Rest(lReader));
}

TEST(NextType, EndsWithTheData) {
    for (const char* lText : {"", "\r\n", "\n\r\n", "s", "\ns", "="}) {
        const HeapBlock lBlock(lText);
        Reader lReader(lBlock.Ref());
        char lType = 0;
        EXPECT_FALSE(NextType(lReader, lType)) << lText;
        EXPECT_EQ(0U, lReader.Left()) << lText;
    }
}

TEST(NextType, LetterNeedsAnEqualsSign) {
    for (const char* lText : {"b:AS=64", "s\n", "a\r\nb=", " s=", "ss="}) {
        const HeapBlock lBlock(lText);
        Reader lReader(lBlock.Ref());
        char lType = 0;
        ExpectThrow<SDPErr>(1, "NextType(): Bad SDP syntax", [&] { NextType(lReader, lType); });
    }
}

}  // namespace
}  // namespace Player
