#pragma once

namespace Virertsp {

/// "record": plays a location and writes its tracks to files. Returns an `ExitCode`.
int RunRecord(int aCount, char** aArguments);

}  // namespace Virertsp
