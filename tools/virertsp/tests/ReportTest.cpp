#include "commands/Report.hpp"

#include <gmock/gmock.h>

#include "Outcome.hpp"
#include "Scratch.hpp"
#include "commands/Command.hpp"
#include "support/ScriptedServer.hpp"

namespace Virertsp {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::ScriptedServer;

/// Every text of the server is markup.
constexpr char kHostile[] = R"(
    C: DESCRIBE {*}
    C...
    S: RTSP/1.0 200 <script>alert(1)</script>
    S: CSeq: 1
    S: Server: "><script>alert(2)</script>
    S: Content-Base: rtsp://127.0.0.1:{port}/<script>alert(3)</script>/
    S: Content-Length: {length}
    S:
    S| v=0
    S| o=<script>alert(4)</script> 1 1 IN IP4 127.0.0.1
    S| s=</title><script>alert(5)</script>
    S| m=video 0 RTP/AVP 96
    S| a=rtpmap:96 <script>alert(6)</script>/90000
    S| a=fmtp:96 <script>alert(7)</script>=<img src=x onerror=alert(8)>
    S| a=control:'><script>alert(9)</script>
)";

TEST(ReportTest, AHostileDescriptionIsShownAndHarmless) {
    const Scratch lScratch;
    ScriptedServer lServer(kHostile);
    const Outcome lOutcome = RunCommand(RunReport, {lServer.URL(), "-o", lScratch.Path("page.html"), "--tcp"});
    EXPECT_EQ("", lServer.Failure());
    EXPECT_EQ(kExitNothingPlayable, lOutcome.mCode);
    const std::string lPage = lScratch.Contents("page.html");
    EXPECT_THAT(lPage, Not(HasSubstr("<script")));
    EXPECT_THAT(lPage, Not(HasSubstr("<img")));
    for (const char* const lNumber : {"1", "2", "3", "4", "5", "6", "7", "9"}) {
        EXPECT_THAT(lPage, HasSubstr(std::string("&lt;script&gt;alert(") + lNumber + ")&lt;"));
    }
    EXPECT_THAT(lPage, HasSubstr("&lt;img src=x onerror=alert(8)&gt;"));
    EXPECT_THAT(lPage, HasSubstr("<p class=\"bad\">The presentation has no track of a format that can be played: "));
}

TEST(ReportTest, AFailureIsOnThePage) {
    const Scratch lScratch;
    ScriptedServer lServer("C: DESCRIBE {*}\nC...\nS: RTSP/1.0 404 Not Found\nS: CSeq: 1\nS:");
    const Outcome lOutcome =
        RunCommand(RunReport, {lServer.URL(), "-o", lScratch.Path("page.html"), "--log", lScratch.Path("log")});
    EXPECT_EQ(kExitRefused, lOutcome.mCode);
    EXPECT_THAT(lScratch.Contents("page.html"), HasSubstr("refuses: DESCRIBE failed: 404 Not Found.</p>"));
    EXPECT_THAT(lScratch.Contents("page.html"), HasSubstr("<td>404 Not Found</td>"));
    EXPECT_THAT(lScratch.Contents("log"), HasSubstr("{\"type\":\"failure\",\"text\":\"The server "));
}

TEST(ReportTest, OfWhatStatsWrote) {
    const Scratch lScratch;
    std::ofstream(lScratch.Path("log")) << "noise\n"
                                           R"({"type":"track","time_s":1,"track":2,"format":"AMR","kbit_per_s":12.5})"
                                           "\n";
    const std::vector<std::string> lArguments = {lScratch.Path("log"), "-o", lScratch.Path("page.html")};
    EXPECT_EQ(kExitOk, RunCommand(RunReport, lArguments).mCode);
    EXPECT_THAT(lScratch.Contents("page.html"), HasSubstr("<h3>Track 2, AMR</h3>"));
    EXPECT_THAT(lScratch.Contents("page.html"), HasSubstr("<th scope=\"row\">Bitrate</th>\n<td>12.5 kbit/s</td>"));
    EXPECT_EQ(kExitOutput, RunCommand(RunReport, lArguments).mCode) << "replaced without --force";
}

TEST(ReportTest, MistakesOnTheCommandLine) {
    const Scratch lScratch;
    std::ofstream(lScratch.Path("log")) << "noise\n";
    const std::string lPage = lScratch.Path("page.html");
    for (const std::vector<std::string>& lArguments : std::vector<std::vector<std::string>>{
             {},
             {"rtsp://127.0.0.1:1/clip"},
             {"rtsp://127.0.0.1:1/clip", "rtsp://127.0.0.1:1/clip", "-o", lPage},
             {lScratch.Path("absent"), "-o", lPage},
             {lScratch.Path("log"), "-o", lPage},
             {lScratch.Path("log"), "-o", lPage, "--log", lScratch.Path("other")},
         }) {
        EXPECT_EQ(kExitUsage, RunCommand(RunReport, lArguments).mCode);
        EXPECT_FALSE(std::filesystem::exists(lPage));
    }
}

}  // namespace
}  // namespace Virertsp
