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

TEST(HelpTest, FitsEightyColumns) {
    for (const auto lCommand : {RunRecord, RunProbe, RunStats, RunReport, RunWatch}) {
        const Outcome lOutcome = RunCommand(lCommand, {"--help"});
        EXPECT_EQ(kExitOk, lOutcome.mCode);
        std::istringstream lText(lOutcome.mOutput);
        unsigned lLines = 0;
        for (std::string lLine; std::getline(lText, lLine); ++lLines) {
            EXPECT_LE(lLine.size(), 80U) << lLine;
        }
        EXPECT_GT(lLines, 20U);
    }
}

}  // namespace
}  // namespace Virertsp
