#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Player/Report.hpp"

namespace Virertsp {

/// What a run of a command left behind.
struct Outcome {
    int mCode;
    std::string mOutput;
    std::string mErrors;
};

inline Outcome RunCommand(int (*aCommand)(int, char**), std::vector<std::string> aArguments) {
    aArguments.insert(aArguments.begin(), "command");
    std::vector<char*> lPointers;
    lPointers.reserve(aArguments.size() + 1);
    for (std::string& lArgument : aArguments) {
        lPointers.push_back(lArgument.data());
    }
    lPointers.push_back(nullptr);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    Outcome lOutcome;
    lOutcome.mCode = aCommand(static_cast<int>(aArguments.size()), lPointers.data());
    lOutcome.mOutput = ::testing::internal::GetCapturedStdout();
    lOutcome.mErrors = ::testing::internal::GetCapturedStderr();
    Player::SetDefaultReporter();
    return lOutcome;
}

}  // namespace Virertsp
