#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "Player/Exception.hpp"
#include "commands/Command.hpp"

namespace Virertsp {

/// What ends a command: one sentence for people, and the exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode aCode, const std::string& aSentence) : std::runtime_error(aSentence), mCode(aCode) {}

    ExitCode Code() const { return mCode; }

private:
    ExitCode mCode;
};

/// The library's failure in words that need no knowledge of the library. `aIsRedirected`: the server that `aURL` names
/// has named another one, which then failed.
Failure Explain(const Player::Exception& aException, const std::string& aURL, bool aIsRedirected = false);

/// Runs a command and reports its failure on standard error. Returns an `ExitCode`.
int Guard(const std::function<void()>& aCommand);

}  // namespace Virertsp
