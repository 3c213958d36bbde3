#include "Diagnostics.hpp"

#include <gtest/gtest.h>

namespace Virertsp {
namespace {

TEST(DiagnosticsTest, AServersWordsCommandNoTerminal) {
    ::testing::internal::CaptureStderr();
    PrintError("refused: \033[2Jgone");
    PrintWarning("a line\nand another");
    EXPECT_EQ("virertsp: refused: ?[2Jgone\nvirertsp: a line?and another\n", ::testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace Virertsp
