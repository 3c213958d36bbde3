#include "Player/FormatParameters.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

TEST(FormatParameters, NamesAreFoundInAnyCase) {
    const FormatParameters lParameters("Mode=AAC-hbr; SIZELENGTH = 13;flag");
    EXPECT_EQ("AAC-hbr", lParameters.Get("mode"));
    EXPECT_EQ("13", lParameters.Get("sizelength"));
    EXPECT_EQ("", lParameters.Get("flag"));
    EXPECT_EQ("", lParameters.Get("Mode"));
    EXPECT_EQ(3U, lParameters.All().size());
}

TEST(FormatParameters, TheConfigurationIsWholeBytes) {
    EXPECT_EQ("\x12\x10", FormatParameters("config=1210").Config());
    EXPECT_EQ("\x12\xab", FormatParameters("Config=12aB5").Config());
    EXPECT_EQ("\x12", FormatParameters("config=12 34").Config());
    EXPECT_EQ("", FormatParameters("config=x12").Config());
    EXPECT_EQ("", FormatParameters("mode=1210").Config());
}

}  // namespace
}  // namespace Player
