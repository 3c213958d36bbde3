#pragma once

namespace Virertsp {

/// "watch": plays several locations at once and shows each in a line. Returns an `ExitCode`.
int RunWatch(int aCount, char** aArguments);

}  // namespace Virertsp
