#include "support/ReportCapture.hpp"

#include <gmock/gmock.h>

namespace TestSupport {
namespace {

using ::testing::ElementsAre;

TEST(ReportCaptureTest, CollectsInOrderWhileItLives) {
    ::testing::internal::CaptureStderr();
    {
        ReportCapture lCapture;
        Player::Report(__FILE__, __LINE__, Player::Info, "one %u", 1U);
        Player::Report(__FILE__, __LINE__, Player::Error, "two");
        Player::Report(__FILE__, __LINE__, Player::Info, "three");
        EXPECT_THAT(lCapture.All(),
                    ElementsAre(ReportCapture::Entry(Player::Info, "one 1"), ReportCapture::Entry(Player::Error, "two"),
                                ReportCapture::Entry(Player::Info, "three")));
        EXPECT_THAT(lCapture.Messages(Player::Info), ElementsAre("one 1", "three"));
        EXPECT_EQ(1U, lCapture.Count(Player::Error, "two"));
        EXPECT_EQ(0U, lCapture.Count(Player::Info, "two"));
        lCapture.Clear();
        EXPECT_TRUE(lCapture.All().empty());
    }
    EXPECT_EQ("", ::testing::internal::GetCapturedStderr());
    ::testing::internal::CaptureStderr();
    Player::Report(__FILE__, __LINE__, Player::Info, "again printed");
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr("again printed"));
}

}  // namespace
}  // namespace TestSupport
