#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "Player/Exception.hpp"
#include "Player/String.hpp"
#include "support/ReportCapture.hpp"

namespace TestSupport {

/// What a call throws, as "category/error text"; "nothing" when it returns.
template <typename Call>
std::string Thrown(Call aCall) {
    try {
        aCall();
    } catch (const Player::Exception& aException) {
        return Player::StringWithFormat("%u/%u %s", aException.Category(), aException.Error(), aException.Message());
    }
    return "nothing";
}

/// The number in brackets that a text ends with, as in "[111]"; that of "[Timeout]", too. 0 when there is none.
inline int SystemErrorIn(const std::string& aMessage) {
    const std::size_t lBracket = aMessage.rfind('[');
    if (std::string::npos == lBracket) { return 0; }
    if ("[Timeout]" == aMessage.substr(lBracket)) { return ETIMEDOUT; }
    return static_cast<int>(std::stoul(aMessage.substr(lBracket + 1)));
}

/// Expects `aCall` to throw `Kind` with this number and text and with the system's error that the text ends with, and
/// to report the text once at severity Error, which `aReports` catches.
template <typename Kind, typename Call>
void ExpectThrow(const ReportCapture& aReports, unsigned aError, const std::string& aMessage, Call aCall) {
    const std::size_t lReported = aReports.Count(Player::Severity::Error, aMessage);
    try {
        aCall();
    } catch (const Kind& aException) {
        EXPECT_EQ(aError, aException.Error());
        EXPECT_EQ(aMessage, aException.Message());
        EXPECT_EQ(SystemErrorIn(aMessage), aException.SystemError());
        EXPECT_EQ(lReported + 1, aReports.Count(Player::Severity::Error, aMessage));
        return;
    }
    ADD_FAILURE() << "Nothing was thrown instead of: " << aMessage;
}

/// Expects that, and that nothing else is reported.
template <typename Kind, typename Call>
void ExpectThrow(unsigned aError, const std::string& aMessage, Call aCall) {
    const ReportCapture lReports;
    ExpectThrow<Kind>(lReports, aError, aMessage, aCall);
    EXPECT_EQ(1U, lReports.All().size());
}

}  // namespace TestSupport
