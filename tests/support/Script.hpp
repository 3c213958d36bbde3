#pragma once

#include <string>
#include <vector>

namespace TestSupport {

/// One line of a script; `ScriptedServer` says what each means.
struct Step {
    enum class Kind {
        kExpectLine,
        kExpectRest,
        kExpectBytes,
        kExpectFrame,
        kExpectEnd,
        kSendLine,
        kSendBody,
        kSendText,
        kSendBytes,
        kSendFrame,
        kSendRtp,
        kSendRtcp,
        kSplit,
        kClose,
        kReset,
        kShutdown,
        kAccept,
        kNotify,
        kAwait,
    };

    Kind mKind;
    std::string mText;
    /// Track or channel, where the kind has one.
    unsigned mIndex;
    /// Of the script, from 1.
    unsigned mLine;

    /// Whether its bytes wait to leave together with those of its neighbours.
    bool IsSend() const { return Kind::kSendLine <= mKind && mKind <= Kind::kSendFrame; }
};

/// Indentation, empty lines and lines that begin with "//" do not count. Throws `std::invalid_argument`.
std::vector<Step> ParseScript(const std::string& aScript);

/// "\r", "\n", "\t", "\\" and "\xNN" spelled out in a text become the characters they stand for.
std::string Unescaped(const std::string& aText);

}  // namespace TestSupport
