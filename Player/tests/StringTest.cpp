#include "Player/String.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>

namespace Player {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

std::vector<std::string> SplitText(const std::string& aText, char aSep = ',') {
    std::vector<std::string> lOut;
    Split(aText, aSep, lOut, " \t\n\r");
    return lOut;
}

std::map<std::string, std::string> MapText(const std::string& aText) {
    std::map<std::string, std::string> lOut;
    SplitToMap(aText, ';', '=', lOut, " \t\n\r");
    return lOut;
}

TEST(Trimmed, KeepsWhatIsBetweenTheEnds) {
    EXPECT_EQ("a b", Trimmed(" \t\ra b\n "));
    EXPECT_EQ("a", Trimmed("a"));
    EXPECT_EQ("", Trimmed(" \t"));
    EXPECT_EQ("", Trimmed(""));
    EXPECT_EQ(" a ", Trimmed("-- a -", "-"));
}

TEST(Split, Pieces) {
    EXPECT_THAT(SplitText(""), IsEmpty());
    EXPECT_THAT(SplitText(" x "), ElementsAre("x"));
    EXPECT_THAT(SplitText("a, b,,c"), ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(SplitText("a,"), ElementsAre("a"));
    EXPECT_THAT(SplitText("a,,"), ElementsAre("a", ""));
    EXPECT_THAT(SplitText(","), ElementsAre(""));
    EXPECT_THAT(SplitText(",a"), ElementsAre("", "a"));
    EXPECT_THAT(SplitText(" "), ElementsAre("")) << "only trimmed characters";
    EXPECT_THAT(SplitText("a, "), ElementsAre("a", ""));
    EXPECT_THAT(SplitText("\t\r\na b\n\t ,\rc"), ElementsAre("a b", "c"));
    EXPECT_THAT(SplitText("5000-5001", '-'), ElementsAre("5000", "5001"));
}

TEST(Split, AddsToWhatIsThere) {
    std::vector<std::string> lOut = {"first"};
    Split("a,b", ',', lOut);
    EXPECT_THAT(lOut, ElementsAre("first", "a", "b"));
}

TEST(Split, TrimsWhatItIsToldTo) {
    std::vector<std::string> lOut;
    Split("\"a \",\"b\"", ',', lOut, "\"");
    EXPECT_THAT(lOut, ElementsAre("a ", "b"));
    lOut.clear();
    Split(" a ,b", ',', lOut, "");
    EXPECT_THAT(lOut, ElementsAre(" a ", "b"));
}

TEST(SplitToMap, Pairs) {
    EXPECT_THAT(MapText(""), IsEmpty());
    EXPECT_THAT(MapText("mode=AAC-hbr; sizeLength=13;indexLength=3"),
                ElementsAre(Pair("indexLength", "3"), Pair("mode", "AAC-hbr"), Pair("sizeLength", "13")));
    EXPECT_THAT(MapText(" a = 1 ;b;c="), ElementsAre(Pair("a", "1"), Pair("b", ""), Pair("c", "")));
    EXPECT_THAT(MapText("config=a=b"), ElementsAre(Pair("config", "a=b")));
    EXPECT_THAT(MapText("sps=Z0I=,aM4=;x=="), ElementsAre(Pair("sps", "Z0I=,aM4="), Pair("x", "=")));
    EXPECT_THAT(MapText("foo"), ElementsAre(Pair("foo", "")));
    EXPECT_THAT(MapText("foo;"), ElementsAre(Pair("foo", "")));
    EXPECT_THAT(MapText("=v"), ElementsAre(Pair("", "v")));
    EXPECT_THAT(MapText("a\t=\r\n1"), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(MapText("A=1;a=2"), ElementsAre(Pair("A", "1"), Pair("a", "2")));
}

TEST(SplitToMap, KeyWithoutValueDoesNotTakeTheNextPairs) {
    EXPECT_THAT(MapText("unicast;port=5"), ElementsAre(Pair("port", "5"), Pair("unicast", "")));
}

TEST(SplitToMap, LastOfAKeyWins) {
    EXPECT_THAT(MapText("a=1;b=2;a=3"), ElementsAre(Pair("a", "3"), Pair("b", "2")));
    EXPECT_THAT(MapText("a=1;a"), ElementsAre(Pair("a", "")));
}

TEST(SplitToMap, EmptyElementsInTheMiddleCountButNotAtTheEnd) {
    EXPECT_THAT(MapText("a=1;;b=2"), ElementsAre(Pair("", ""), Pair("a", "1"), Pair("b", "2")));
    EXPECT_THAT(MapText(";a=1"), ElementsAre(Pair("", ""), Pair("a", "1")));
    EXPECT_THAT(MapText("a=1; "), ElementsAre(Pair("", ""), Pair("a", "1"))) << "a blank is an element";
    EXPECT_THAT(MapText("a=1;"), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(MapText(";"), ElementsAre(Pair("", "")));
}

TEST(SplitToMap, AddsToWhatIsThere) {
    std::map<std::string, std::string> lOut = {{"a", "0"}, {"z", "9"}};
    SplitToMap("a=1;b=2", ';', '=', lOut);
    EXPECT_THAT(lOut, ElementsAre(Pair("a", "1"), Pair("b", "2"), Pair("z", "9")));
}

TEST(SplitToMap, LongRowsOfSeparatorsTakeNoTime) {
    EXPECT_THAT(MapText(std::string(2000000, ';')), ElementsAre(Pair("", "")));
}

TEST(DecimalToUInt, ReadsLikeStrtoul) {
    EXPECT_EQ(7U, DecimalToUInt("", 7));
    EXPECT_EQ(0U, DecimalToUInt(""));
    EXPECT_EQ(42U, DecimalToUInt("42", 7));
    EXPECT_EQ(42U, DecimalToUInt(" \t42 apples", 7));
    EXPECT_EQ(0U, DecimalToUInt("none", 7)) << "no digits is 0, not the default";
    EXPECT_EQ(0U, DecimalToUInt(" ", 7));
    EXPECT_EQ(10U, DecimalToUInt("010")) << "not octal";
    EXPECT_EQ(0U, DecimalToUInt("0x10"));
    EXPECT_EQ(5U, DecimalToUInt("+5"));
    EXPECT_EQ(0xFFFFFFFFU, DecimalToUInt("-1"));
    EXPECT_EQ(0xFFFFFFFFU, DecimalToUInt("4294967295"));
    EXPECT_EQ(1U, DecimalToUInt("4294967297")) << "the low 32 bits";
    EXPECT_EQ(0xFFFFFFFFU, DecimalToUInt("99999999999999999999999"));
}

TEST(HexToUInt, ReadsLikeStrtoul) {
    EXPECT_EQ(0x404U, HexToUInt("404"));
    EXPECT_EQ(0xDEADBEEFU, HexToUInt("deadBEEF"));
    EXPECT_EQ(0x1FU, HexToUInt("0x1F"));
    EXPECT_EQ(0U, HexToUInt(""));
    EXPECT_EQ(0U, HexToUInt("xyz"));
}

TEST(StringWithFormat, Formats) {
    EXPECT_EQ("a 5 b", StringWithFormat("%s %u b", "a", 5U));
    EXPECT_EQ("", StringWithFormat("%s", ""));
    const char* const lNoFormat = nullptr;
    EXPECT_EQ("", StringWithFormat(lNoFormat));
    EXPECT_EQ("", StringWithVAFormat(nullptr, nullptr));
    EXPECT_EQ("100% alone", StringWithVAFormat("100%% alone", nullptr));
}

TEST(StringWithFormat, TakesAnyLength) {
    for (const std::size_t lLength : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string lText(lLength, 'x');
        EXPECT_EQ(lText, StringWithFormat("%s", lText.c_str()));
    }
}

TEST(StringWithFormat, FailureIsEmpty) {
    // No character of the locale "C": the conversion fails.
    const wchar_t lWide[] = {0x20AC, 0};
    EXPECT_EQ("", StringWithFormat("abc %ls", lWide));
}

std::pair<std::string, std::string> FormattedTwice(const char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    const std::string lFirst = StringWithVAFormat(aFmt, &lArgs);
    const std::string lSecond = StringWithVAFormat(aFmt, &lArgs);
    va_end(lArgs);
    return {lFirst, lSecond};
}

TEST(StringWithVAFormat, LeavesTheArgumentsUsable) {
    const std::string lLong(5000, 'y');
    const auto lTexts = FormattedTwice("%d %s %g %lld", 1, lLong.c_str(), 2.5, 123456789012LL);
    EXPECT_EQ("1 " + lLong + " 2.5 123456789012", lTexts.first);
    EXPECT_EQ(lTexts.first, lTexts.second);
}

TEST(CStrWithFormat, TerminatesWithinTheSizeAndReturnsTheWholeLength) {
    Char lDst[8];
    std::memset(lDst, '#', sizeof lDst);
    EXPECT_EQ(6, CStrWithFormat(lDst, 4, "%s", "abcdef"));
    EXPECT_EQ(0, std::memcmp("abc\0####", lDst, 8));
    EXPECT_EQ(3, CStrWithFormat(lDst, 8, "%u", 123U));
    EXPECT_STREQ("123", lDst);
    EXPECT_EQ(2, CStrWithFormat(lDst, 1, "%s", "zz"));
    EXPECT_STREQ("", lDst);
}

TEST(CStrWithFormat, WritesNothingToANegativeSize) {
    Char lDst[] = "same";
    EXPECT_GT(0, CStrWithFormat(lDst, -1, "%s", "other"));
    EXPECT_STREQ("same", lDst);
}

TEST(CStrWithFormatDeathTest, NeedsAPlaceASizeAndAFormat) {
    Char lDst[4];
    Char* const lNoPlace = nullptr;
    const Char* const lNoFormat = nullptr;
    const char kText[] = "0 != aDst && 0 != aSize && 0 != aFmt";
    EXPECT_DEATH(CStrWithFormat(lNoPlace, 4, "x"), kText);
    EXPECT_DEATH(CStrWithFormat(lDst, 0, "x"), kText);
    EXPECT_DEATH(CStrWithFormat(lDst, 4, lNoFormat), kText);
}

TEST(HexToBytes, PairsOfDigitsUpToTheFirstThatIsNone) {
    std::string lBytes = "left over";
    EXPECT_TRUE(HexToBytes("00a9Ff", lBytes));
    EXPECT_EQ(std::string("\0\xa9\xff", 3), lBytes);
    EXPECT_TRUE(HexToBytes("", lBytes));
    EXPECT_EQ("", lBytes);
    for (const char* const lText : {"41x", "414", "41 42", "41g1", "411g"}) {
        EXPECT_FALSE(HexToBytes(lText, lBytes)) << lText;
        EXPECT_EQ("A", lBytes) << lText;
    }
}

TEST(LowerCased, ChangesAsciiLettersAlone) {
    EXPECT_EQ("az[@09\xc4", LowerCased("AZ[@09\xc4"));
}

}  // namespace
}  // namespace Player
