#pragma once

namespace Virertsp {

/// "stats": plays a location and shows its reception every second. Returns an `ExitCode`.
int RunStats(int aCount, char** aArguments);

}  // namespace Virertsp
