#pragma once

namespace Player {

/// Whether this library was built with GnuTLS: only then it speaks rtsps and answers servers that ask who the client
/// is.
bool HasTLS();

}  // namespace Player
