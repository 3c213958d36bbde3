#include "Player/Exception.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>

namespace Player {
namespace {

TEST(Exception, StartsWithoutAMessage) {
    const Exception lException(0x1234, 0xFFFE);
    EXPECT_EQ(0x1234, lException.Category());
    EXPECT_EQ(0xFFFE, lException.Error());
    EXPECT_EQ(0x1234FFFEU, lException.Code());
    EXPECT_STREQ("", lException.Message());
    EXPECT_EQ(0xFFFF0001U, Exception(0xFFFF, 1).Code()) << "a high category is no sign";
}

template <typename Kind>
void ExpectKind(unsigned short aCategory) {
    try {
        throw Kind(16, "%s: %s [%u]", "Name", "text", 7U);
    } catch (const Exception& aException) {
        EXPECT_EQ(aCategory, aException.Category());
        EXPECT_EQ(16, aException.Error());
        EXPECT_EQ(static_cast<UInt>(aCategory) << 16 | 16U, aException.Code());
        EXPECT_STREQ("Name: text [7]", aException.Message());
        EXPECT_NE(nullptr, dynamic_cast<const Kind*>(&aException));
    }
}

TEST(Exception, EachKindHasItsCategory) {
    ExpectKind<SystemErr>(1);
    ExpectKind<NetworkErr>(3);
    ExpectKind<RTSPErr>(17);
    ExpectKind<SDPErr>(18);
    ExpectKind<RTPErr>(19);
    EXPECT_EQ(0x00120010U, SDPErr(16, "x").Code());
}

TEST(Exception, IsAStandardOne) {
    try {
        throw SDPErr(ErrorCode::kBadSyntax, "%s", "text");
    } catch (const std::exception& lException) { EXPECT_STREQ("text", lException.what()); }
}

TEST(Exception, CarriesTheErrorOfTheSystem) {
    NetworkErr lException(ErrorCode::kReadFailed, "x");
    EXPECT_EQ(0, lException.SystemError());
    lException.SetSystemError(ECONNRESET);
    const Exception lCopy(lException);
    EXPECT_EQ(ECONNRESET, lCopy.SystemError());
}

/// Applications have stored them.
TEST(Exception, NumbersNeverChange) {
    const std::pair<int, int> lNumbers[] = {
        {1, static_cast<int>(Area::kSystem)},
        {3, static_cast<int>(Area::kNetwork)},
        {17, static_cast<int>(Area::kRTSP)},
        {18, static_cast<int>(Area::kSDP)},
        {19, static_cast<int>(Area::kRTP)},
        {1, ErrorCode::kNoSession},
        {2, ErrorCode::kNothingFollows},
        {17, ErrorCode::kClockFailed},
        {16, ErrorCode::kLookupFailed},
        {32, ErrorCode::kCreateFailed},
        {33, ErrorCode::kOptionFailed},
        {34, ErrorCode::kBindFailed},
        {35, ErrorCode::kConnectFailed},
        {38, ErrorCode::kReadFailed},
        {39, ErrorCode::kWriteFailed},
        {0, ErrorCode::kNoAnswer},
        {2, ErrorCode::kMalformed},
        {18, ErrorCode::kClipEnded},
        {19, ErrorCode::kPipelinedSetUpFailed},
        {20, ErrorCode::kMulticastOnly},
        {1, ErrorCode::kBadSyntax},
        {2, ErrorCode::kUnusable},
        {16, ErrorCode::kUnsupportedVersion},
        {1, ErrorCode::kNoPorts},
    };
    for (const auto& lNumber : lNumbers) {
        EXPECT_EQ(lNumber.first, lNumber.second);
    }
}

TEST(Exception, CutsTheMessageAt2047Characters) {
    for (const std::size_t lLength : {2046U, 2047U, 2048U, 2049U, 10000U}) {
        const std::string lText = std::string(lLength - 1, 'm') + "!";
        const RTPErr lException(1, "%s", lText.c_str());
        EXPECT_EQ(lText.substr(0, 2047), lException.Message()) << lLength;
    }
}

TEST(Exception, CopiesWhole) {
    const RTSPErr lOriginal(0x404, "%s", "Not here");
    const RTSPErr lCopy(lOriginal);  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(0x404, lCopy.Error());
    EXPECT_STREQ("Not here", lCopy.Message());
    EXPECT_NE(lOriginal.Message(), lCopy.Message());
    Exception lAssigned(0, 0);
    lAssigned = lCopy;
    EXPECT_EQ(0x00110404U, lAssigned.Code());
    EXPECT_STREQ("Not here", lAssigned.Message());
}

}  // namespace
}  // namespace Player
