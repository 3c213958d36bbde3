#include "commands/Completion.hpp"

#include <gmock/gmock.h>

#include <sstream>

#include "Outcome.hpp"
#include "commands/Command.hpp"
#include "commands/Probe.hpp"
#include "commands/Record.hpp"
#include "commands/Report.hpp"
#include "commands/Stats.hpp"
#include "commands/Watch.hpp"

namespace Virertsp {
namespace {

using ::testing::HasSubstr;

std::string Offered(int (*aCommand)(int, char**), Words aWords) {
    aWords.insert(aWords.begin(), kComplete);
    const Outcome lOutcome = RunCommand(aCommand, aWords);
    EXPECT_EQ("", lOutcome.mErrors);
    return lOutcome.mOutput;
}

TEST(CompletionTest, OffersEveryOptionOfTheHelp) {
    for (const auto lCommand : {RunRecord, RunProbe, RunStats, RunReport, RunWatch}) {
        const std::string lHelp = RunCommand(lCommand, {"--help"}).mOutput;
        const std::string lOffered = Offered(lCommand, {"--"});
        std::istringstream lLines(lHelp);
        unsigned lOptions = 0;
        for (std::string lLine; std::getline(lLines, lLine);) {
            const std::size_t lName = lLine.find("--");
            if (0 != lLine.compare(0, 3, "  -") || std::string::npos == lName) { continue; }
            const std::string lOption = lLine.substr(lName, lLine.find_first_of("= ", lName) - lName);
            EXPECT_THAT("\n" + lOffered, HasSubstr("\n" + lOption + "\t"));
            ++lOptions;
        }
        EXPECT_GE(lOptions, 8U);
    }
}

TEST(CompletionTest, AnOptionsNameIsFollowedByItsMeaning) {
    EXPECT_EQ("--seconds\tStop after this many seconds of play time\n", Offered(RunRecord, {"--sec"}));
    EXPECT_EQ("", Offered(RunRecord, {"--nonsense"}));
}

TEST(CompletionTest, AValueIsOfItsOption) {
    EXPECT_EQ("udp\ntcp\nudp,tcp\n", Offered(RunStats, {"--transport", ""}));
    EXPECT_EQ("--transport=udp\n--transport=udp,tcp\n", Offered(RunStats, {"--transport=u"}));
    EXPECT_EQ("RTSP:Profile=\tmodern or classic (modern)\n", Offered(RunStats, {"--tcp", "-c", "RTSP:Profi"}));
    EXPECT_EQ(":files\n", Offered(RunRecord, {"-o", ""}));
    EXPECT_EQ(":files\n", Offered(RunRecord, {"--output=/tm"}));
    EXPECT_EQ("", Offered(RunRecord, {"--seconds", ""}));
    EXPECT_EQ("", Offered(RunRecord, {"--seconds="}));
}

TEST(CompletionTest, ALocationFollowsAnOptionWithoutValue) {
    EXPECT_EQ("rtsp://\nrtsps://\twithin TLS\n", Offered(RunStats, {"--tcp", ""}));
    EXPECT_EQ("rtsp://\n", Offered(RunStats, {"rtsp:"}));
    EXPECT_EQ("", Offered(RunStats, {"http"}));
    EXPECT_EQ("", Offered(RunStats, {}));
    EXPECT_EQ(":files\n", Offered(RunReport, {"cap"}));
    EXPECT_EQ("rtsps://\twithin TLS\n", Offered(RunReport, {"rtsps"}));
}

}  // namespace
}  // namespace Virertsp
