#include "Base64.hpp"

#include <gtest/gtest.h>

namespace Player::Base64 {
namespace {

TEST(Base64Test, BytesAreTextAndBack) {
    const struct {
        std::string mBytes;
        const char* mText;
    } kTable[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {std::string("\0\0\1\xFF", 4), "AAAB/w=="},
        {"\xFB\xEF\xBE", "++++"},
    };
    for (const auto& lRow : kTable) {
        EXPECT_EQ(lRow.mText, Encode(lRow.mBytes));
        EXPECT_EQ(lRow.mBytes, Decode(lRow.mText).value_or("none")) << lRow.mText;
    }
}

TEST(Base64Test, OtherTextsAreNone) {
    EXPECT_EQ("foob", Decode("Zm9vYg").value_or("none")) << "the end may be missing";
    for (const std::string& lText :
         {std::string("Zm9 v"), std::string("=Zm9v"), std::string("Zm-v"), std::string(4, '\0')}) {
        EXPECT_EQ("none", Decode(lText).value_or("none")) << lText;
    }
}

}  // namespace
}  // namespace Player::Base64
