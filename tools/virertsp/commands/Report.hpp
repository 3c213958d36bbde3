#pragma once

namespace Virertsp {

/// "report": writes a page of what a server says and of the reception. Returns an `ExitCode`.
int RunReport(int aCount, char** aArguments);

}  // namespace Virertsp
