// What single values of the library make of a fault.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <new>
#include <string>

#include "Memory.hpp"
#include "Player/Buffer.hpp"
#include "Player/Exception.hpp"
#include "Player/Report.hpp"
#include "Player/Time.hpp"
#include "SystemCalls.hpp"
#include "support/ReportCapture.hpp"

namespace Faults {
namespace {

using Player::Buffer;

TEST(ValuesTest, AClockThatCannotBeReadIsReportedAndThrown) {
    const TestSupport::ReportCapture lReports;
    const FailingCall lFault(Call::kTime, EINVAL, 1);
    try {
        Player::Time::Now();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Player::SystemErr& lError) {
        EXPECT_EQ(0x00010011U, lError.Code());
        EXPECT_STREQ("Time::Now(): gettimeofday() failed [22]", lError.Message());
        EXPECT_EQ(1U, lReports.Count(Player::Severity::Error, lError.Message()));
    }
    EXPECT_NO_THROW(Player::Time::Now());
}

TEST(ValuesTest, ABufferThatFindsNoMemoryKeepsWhatItHas) {
    const std::string lMore(100, 'x');
    const Buffer lOther(lMore.data(), 100);
    const std::function<void(Buffer&)> lActions[] = {
        [](Buffer& aBuffer) { aBuffer.Reserve(100); },
        [](Buffer& aBuffer) { aBuffer.Resize(100); },
        [&lMore](Buffer& aBuffer) { aBuffer.Append(lMore.data(), 100); },
        [&lMore](Buffer& aBuffer) { aBuffer.Assign(lMore.data(), 100); },
        [&lOther](Buffer& aBuffer) { aBuffer = lOther; },
    };
    for (const auto& lAction : lActions) {
        Buffer lBuffer("abc", 3);
        const Player::UInt lCapacity = lBuffer.Capacity();
        try {
            const OutOfMemory lFault(1);
            lAction(lBuffer);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::bad_alloc&) { EXPECT_EQ(lCapacity, lBuffer.Capacity()); }
        EXPECT_EQ("abc", std::string(lBuffer.Begin(), lBuffer.End()));
    }
}

TEST(ValuesTest, AReportNeedsNoMemory) {
    const std::string lOverlong = "abc" + std::string(5000, 'x');
    Player::SetDefaultReporter();
    testing::internal::CaptureStderr();
    bool lAllocates = true;
    try {
        const OutOfMemory lFault(1);
        Player::Report("/a/folder/src/of/a/longer/path/File.cpp", 7, Player::Severity::Error, "%s", "whole");
        Player::Report("File.cpp", 8, Player::Severity::Error, "%s", lOverlong.c_str());
        lAllocates = OutOfMemory::Happened();
    } catch (const std::bad_alloc&) {}
    EXPECT_EQ("<Error: src/of/a/longer/path/File.cpp:   7> whole\n<Error: File.cpp:   8> abc\n",
              testing::internal::GetCapturedStderr());
    EXPECT_FALSE(lAllocates);
}

}  // namespace
}  // namespace Faults
