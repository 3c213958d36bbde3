#include "Player/Report.hpp"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdlib>

#include "Throw.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player {
namespace {

using TestSupport::ReportCapture;

TEST(Report, ReachesTheReporterWithItsPlace) {
    const ReportCapture lReports;
    Report("dir/File.cpp", 42, Severity::Warning, "%s %u", "text", 5U);
    Report("Other.cpp", 7, Severity::Trace, "plain");
    ASSERT_EQ(2U, lReports.All().size()) << "no severity is filtered out";
    EXPECT_EQ("dir/File.cpp", lReports.Places()[0].first) << "shortened by the reporter, not before";
    EXPECT_EQ(42U, lReports.Places()[0].second);
    EXPECT_EQ(Severity::Warning, lReports.All()[0].first);
    EXPECT_EQ("text 5", lReports.All()[0].second);
    EXPECT_EQ(Severity::Trace, lReports.All()[1].first);
    EXPECT_EQ("plain", lReports.All()[1].second);
}

TEST(Report, MessagesOf4096CharactersAndMoreAreCutToThree) {
    for (const std::size_t lLength : {4094U, 4095U}) {
        const ReportCapture lReports;
        const std::string lText = "abc" + std::string(lLength - 3, 'x');
        Report("f", 1, Severity::Info, "%s", lText.c_str());
        ASSERT_EQ(1U, lReports.All().size());
        EXPECT_EQ(lText, lReports.All()[0].second) << lLength;
    }
    for (const std::size_t lLength : {4096U, 4097U, 100000U}) {
        const ReportCapture lReports;
        const std::string lText = "abc" + std::string(lLength - 3, 'x');
        Report("f", 1, Severity::Info, "%s", lText.c_str());
        ASSERT_EQ(1U, lReports.All().size());
        EXPECT_EQ("abc", lReports.All()[0].second) << lLength;
    }
}

TEST(Report, NothingWithoutAFormatOrWhenFormattingFails) {
    const ReportCapture lReports;
    const char* const lNoFormat = nullptr;
    Report("f", 1, Severity::Info, lNoFormat);
    const wchar_t lWide[] = {0x20AC, 0};
    Report("f", 1, Severity::Info, "abc %ls", lWide);
    EXPECT_TRUE(lReports.All().empty());
    Report("f", 1, Severity::Info, "%s", "");
    EXPECT_EQ(1U, lReports.All().size()) << "an empty message is one";
}

void ReportTwice(Reporter& aReporter, const char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    Report(aReporter, "f", 1, Severity::Info, aFmt, &lArgs);
    ReportVA("f", 2, Severity::Debug, aFmt, &lArgs);
    va_end(lArgs);
}

TEST(Report, GoesToAGivenReporterAndLeavesTheArgumentsUsable) {
    const ReportCapture lInstalled;
    class Given : public Reporter {
    public:
        void Report(const char*, UInt, Severity, const char* aMessage) override { mMessage = aMessage; }
        std::string mMessage;
    } lGiven;
    ReportTwice(lGiven, "%s %d %s", "a", 2, "c");
    EXPECT_EQ("a 2 c", lGiven.mMessage);
    ASSERT_EQ(1U, lInstalled.All().size());
    EXPECT_EQ("a 2 c", lInstalled.All()[0].second);
    EXPECT_EQ(Severity::Debug, lInstalled.All()[0].first);
}

TEST(Report, TakesATextWithoutArguments) {
    const ReportCapture lReports;
    ReportVA("f", 2, Severity::Debug, "alone", nullptr);
    ASSERT_EQ(1U, lReports.All().size());
    EXPECT_EQ("alone", lReports.All()[0].second);
}

TEST(Report, AReporterWithoutAPlaceOfItsOwnWritesToStandardError) {
    class Passing : public Reporter {
    public:
        void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage) override {
            Reporter::Report(aFile, aLine + 1, aSeverity, aMessage);
        }
    } lPassing;
    testing::internal::CaptureStderr();
    SetReporter(&lPassing);
    Report("f", 1, Severity::Info, "%s", "on");
    SetDefaultReporter();
    EXPECT_EQ("<Info: f:   2> on\n", testing::internal::GetCapturedStderr());
}

TEST(Report, NullReporterSilences) {
    testing::internal::CaptureStderr();
    SetReporter(nullptr);
    Report("f", 1, Severity::Error, "%s", "unheard");
    SetDefaultReporter();
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(Report, DefaultReporterWritesOneLine) {
    SetDefaultReporter();
    testing::internal::CaptureStderr();
    Report("../../Player/src/Time.cpp", 7, Severity::Info, "%s", "seven");
    Report("Time.cpp", 12345, Severity::Trace, "%s", "100%");
    Report("/a/b/c.cpp", 1234, static_cast<Severity>(7), "%s", "");
    EXPECT_EQ("<Info: src/Time.cpp:   7> seven\n<Trace: Time.cpp:12345> 100%\n<Unknown: c.cpp:1234> \n",
              testing::internal::GetCapturedStderr());
}

TEST(ReportDeathTest, DefaultReporterIsThereFromTheStart) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own, with nothing installed
    EXPECT_EXIT(
        {
            Report("x/y.cpp", 3, Severity::Error, "%s", "first");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "<Error: y.cpp:   3> first");
}

TEST(Severity, Words) {
    EXPECT_STREQ("Trace", CStrWithSeverity(static_cast<Severity>(0)));
    EXPECT_STREQ("Debug", CStrWithSeverity(static_cast<Severity>(1)));
    EXPECT_STREQ("Info", CStrWithSeverity(static_cast<Severity>(2)));
    EXPECT_STREQ("Warning", CStrWithSeverity(static_cast<Severity>(3)));
    EXPECT_STREQ("Error", CStrWithSeverity(static_cast<Severity>(4)));
    EXPECT_STREQ("Unknown", CStrWithSeverity(static_cast<Severity>(5)));
    EXPECT_STREQ("Unknown", CStrWithSeverity(static_cast<Severity>(7)));
    EXPECT_STREQ("Unknown", CStrWithSeverity(static_cast<Severity>(-1)));
    EXPECT_STREQ("Unknown", CStrWithSeverity(static_cast<Severity>(1000)));
}

TEST(RelativizeFile, Shortens) {
    EXPECT_STREQ("src/Time.cpp", RelativizeFile("../../../../Player/src/Time.cpp"));
    EXPECT_STREQ("include/Player/Ptr.hpp", RelativizeFile("../Player/include/Player/Ptr.hpp"));
    EXPECT_STREQ("Time.cpp", RelativizeFile("Time.cpp"));
    EXPECT_STREQ("c.cpp", RelativizeFile("/a/b/c.cpp"));
    EXPECT_STREQ("src/RTP/Stack.cpp", RelativizeFile("/src/RTP/Stack.cpp"));
    EXPECT_STREQ("src/a/src/b.cpp", RelativizeFile("/x/src/a/src/b.cpp")) << "the first one counts";
    EXPECT_STREQ("src/b.hpp", RelativizeFile("/include/src/b.hpp")) << "src before include";
    EXPECT_STREQ("b.cpp", RelativizeFile("src/b.cpp")) << "not without a slash before";
    EXPECT_STREQ("b.cpp", RelativizeFile("/xsrc/b.cpp"));
    EXPECT_STREQ("", RelativizeFile(""));
    EXPECT_STREQ("", RelativizeFile("a/"));
}

TEST(Throw, ReportsAndThrowsTheSameText) {
    TestSupport::ExpectThrow<RTSPErr>(0x404, "RTSP::DoDescribe(): DESCRIBE failed: 404 Not Found", [] {
        PLAYER_THROW(RTSPErr, 0x404, "RTSP::DoDescribe(): %s: %03x %s", "DESCRIBE failed", 0x404U, "Not Found");
    });
    const ReportCapture lReports;
    EXPECT_THROW(PLAYER_THROW(SDPErr, 1, "x"), SDPErr);
    ASSERT_EQ(1U, lReports.All().size());
    EXPECT_EQ(__FILE__, lReports.Places()[0].first);
}

}  // namespace
}  // namespace Player
