#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Player/Exception.hpp"
#include "Support/CaughtReports.hpp"

namespace Player::Testing {

/// Expects `aCall` to report a failure at severity Error and to throw it as `Kind` with this number and text.
template <typename Kind, typename Call>
void ExpectThrow(unsigned short aError, const std::string& aMessage, Call aCall) {
    const CaughtReports lReports;
    try {
        aCall();
    } catch (const Kind& aException) {
        EXPECT_EQ(aError, aException.Error());
        EXPECT_EQ(aMessage, aException.Message());
        ASSERT_EQ(1U, lReports.mEntries.size());
        EXPECT_EQ(Severity::Error, lReports.mEntries[0].mSeverity);
        EXPECT_EQ(aMessage, lReports.mEntries[0].mMessage);
        return;
    }
    ADD_FAILURE() << "Nothing was thrown instead of: " << aMessage;
}

}  // namespace Player::Testing
