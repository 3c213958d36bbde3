#include "JsonValue.hpp"

#include <gtest/gtest.h>

#include <string>

namespace Virertsp {
namespace {

TEST(JsonValueTest, ReadsEveryKind) {
    const auto lValue = JsonValue::Read(
        R"( {"text":"a\"\\\/\b\f\n\r\t","number":-12.5e1,"yes":true,"no":false,"none":null,"list":[1,{"in":"x"},[]],"o":{}} )");
    ASSERT_TRUE(lValue);
    EXPECT_EQ("a\"\\/\b\f\n\r\t", (*lValue)["text"].Text());
    EXPECT_TRUE((*lValue)["number"].IsNumber());
    EXPECT_EQ(-125, (*lValue)["number"].Number());
    EXPECT_TRUE((*lValue)["yes"].IsTrue());
    EXPECT_FALSE((*lValue)["no"].IsTrue());
    EXPECT_FALSE((*lValue)["none"].IsNumber());
    ASSERT_EQ(3U, (*lValue)["list"].Items().size());
    EXPECT_EQ("x", (*lValue)["list"].Items()[1]["in"].Text());
    EXPECT_EQ(7U, lValue->Members().size());
    EXPECT_EQ("", (*lValue)["absent"]["deeper"].Text());
}

TEST(JsonValueTest, CharactersByNumber) {
    const auto lText = [](const char* aText) { return JsonValue::Read(aText).value_or(JsonValue()).Text(); };
    EXPECT_EQ("A\xc3\xa4\xe2\x82\xac", lText(R"("\u0041\u00e4\u20AC")"));
    EXPECT_EQ("\xf0\x9f\x98\x80", lText(R"("\ud83d\ude00")"));
    // Half a pair, and the end of a C string.
    EXPECT_EQ("\xef\xbf\xbd!", lText(R"("\ud83d!")"));
    EXPECT_EQ("\xef\xbf\xbd", lText(R"("\u0000")"));
    EXPECT_EQ("\xef\xbf\xbd", lText("\"\xff\""));
}

TEST(JsonValueTest, WhatIsNoJson) {
    for (const char* const lText :
         {"",         " ",        "{",          "}",     "[",  "]",   "[1",   "[1,",     "[1,]",      "{\"a\"}",
          "{\"a\":}", "{\"a\":1", "{\"a\":1,}", "{a:1}", "\"", "\"a", "\"\\", "\"\\x\"", "\"\\u12\"", "\"\\u12g4\"",
          "tru",      "nul",      "1 2",        "1e999", "-",  "1-",  "nan",  "0x10",    "{}x"}) {
        EXPECT_FALSE(JsonValue::Read(lText)) << lText;
    }
}

TEST(JsonValueTest, IsReadToALimitedDepth) {
    const auto lNested = [](std::size_t aDepth) { return std::string(aDepth, '[') + std::string(aDepth, ']'); };
    EXPECT_TRUE(JsonValue::Read(lNested(32)));
    EXPECT_FALSE(JsonValue::Read(lNested(33)));
    EXPECT_FALSE(JsonValue::Read(std::string(1000000, '[')));
}

}  // namespace
}  // namespace Virertsp
