#pragma once

#include <string>

namespace Virertsp {

/// One line on standard error, with the program's name in front. On a terminal the name is red for what ends the
/// command and yellow for what doesn't, unless the environment has NO_COLOR (and more than an empty one, see
/// no-color.org). Of what a server says nothing commands the terminal.
void PrintError(const std::string& aText);
void PrintWarning(const std::string& aText);

}  // namespace Virertsp
