#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "Player/Exception.hpp"
#include "Support/CaughtReports.hpp"

namespace Player::Testing {

/// Expects `aCall` to report a failure at severity Error and to throw it as `Kind` with this number and text, and with
/// the system's error that the text ends with, as in "[111]".
template <typename Kind, typename Call>
void ExpectThrow(unsigned short aError, const std::string& aMessage, Call aCall) {
    const std::size_t lBracket = aMessage.rfind('[');
    const int lSystemError = "[Timeout]" == aMessage.substr(std::min(lBracket, aMessage.size())) ? ETIMEDOUT
                             : std::string::npos == lBracket
                                 ? 0
                                 : static_cast<int>(std::stoul(aMessage.substr(lBracket + 1)));
    const CaughtReports lReports;
    try {
        aCall();
    } catch (const Kind& aException) {
        EXPECT_EQ(aError, aException.Error());
        EXPECT_EQ(aMessage, aException.Message());
        EXPECT_EQ(lSystemError, aException.SystemError());
        ASSERT_EQ(1U, lReports.mEntries.size());
        EXPECT_EQ(Severity::Error, lReports.mEntries[0].mSeverity);
        EXPECT_EQ(aMessage, lReports.mEntries[0].mMessage);
        return;
    }
    ADD_FAILURE() << "Nothing was thrown instead of: " << aMessage;
}

}  // namespace Player::Testing
