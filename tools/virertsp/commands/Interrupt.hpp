#pragma once

namespace Virertsp {

/// From now on the first SIGINT or SIGTERM is only noted; a second one ends the program as usual.
void CatchInterrupts();
/// Whether one came.
bool Interrupted();

}  // namespace Virertsp
