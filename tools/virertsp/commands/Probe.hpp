#pragma once

namespace Virertsp {

/// "probe": shows what a server says of a location, and what its tracks become. Returns an `ExitCode`.
int RunProbe(int aCount, char** aArguments);

}  // namespace Virertsp
