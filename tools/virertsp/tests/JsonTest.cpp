#include "Json.hpp"

#include <gtest/gtest.h>

#include "Printable.hpp"

namespace Virertsp {
namespace {

TEST(JsonTest, ObjectsArraysAndValues) {
    Json lJson;
    lJson.Open('{').Key("a").Open('[').Number(-1).Decimal(1.25, 1).Bool(true).Bool(false).Null().Close();
    lJson.Key("b").Open('{').Close().Key("c").Open('[').Open('{').Close().Open('[').Close().Close();
    lJson.Key("d").String("").Close();
    EXPECT_EQ(R"({"a":[-1,1.2,true,false,null],"b":{},"c":[{},[]],"d":""})", lJson.Text());
}

TEST(JsonTest, TextThatEndsInPunctuationIsStillText) {
    Json lJson;
    lJson.Open('[').String("{").String("[").String(":").String(",").Close();
    EXPECT_EQ(R"(["{","[",":",","])", lJson.Text());
}

TEST(JsonTest, AnyBytesBecomeValidText) {
    struct Case {
        std::string mIn;
        const char* mOut;
    };
    for (const Case& lCase : {
             Case{"\"\\/", R"("\"\\/")"},
             Case{"\n\x1f\x7f", R"("\u000a\u001f\u007f")"},
             // No text ends early.
             Case{std::string("a\0b", 3),
                  "\"a\xef\xbf\xbd"
                  "b\""},
             Case{"\xc3\xa4\xe2\x82\xac", "\"\xc3\xa4\xe2\x82\xac\""},
             Case{"a\xff\xc3", "\"a\xef\xbf\xbd\xef\xbf\xbd\""},
         }) {
        Json lJson;
        lJson.String(lCase.mIn);
        EXPECT_EQ(lCase.mOut, lJson.Text());
    }
}

TEST(PrintableTest, NothingCommandsATerminal) {
    EXPECT_EQ("plain \xc3\xa4", Printable("plain \xc3\xa4"));
    EXPECT_EQ("?[2J?", Printable("\x1b[2J\x7f"));
    // The control sequence introducer of one character, as UTF-8 and as a bare byte.
    EXPECT_EQ("?2J", Printable("\xc2\x9b"
                               "2J"));
    EXPECT_EQ(
        "\xef\xbf\xbd"
        "2J",
        Printable("\x9b"
                  "2J"));
    EXPECT_EQ("\xc2\xa0", Printable("\xc2\xa0"));
}

}  // namespace
}  // namespace Virertsp
