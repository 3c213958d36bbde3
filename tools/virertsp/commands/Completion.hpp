#pragma once

#include <glib.h>

#include <string>
#include <vector>

namespace Virertsp {

/// The words of a command line up to the one at the cursor, which is the last and may be empty.
using Words = std::vector<std::string>;

/// The hidden option by which a shell's completion asks a command for candidates; the words follow it.
constexpr char kComplete[] = "--complete";

/// What a shell may offer for the last word, one candidate a line with its meaning after a tab; ":files" stands for the
/// names of files. The candidates come from the table of options itself, so that they can't differ from it.
/// `aEntries`: all options, without an empty one at the end. `aFiles`: a file may stand for the location.
std::string Candidates(const std::vector<GOptionEntry>& aEntries, const Words& aWords, bool aFiles);

/// A line for the candidate if it begins with what was typed, else nothing.
std::string Candidate(const std::string& aTyped, const std::string& aWord, const std::string& aMeaning);

}  // namespace Virertsp
