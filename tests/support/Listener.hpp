#pragma once

namespace TestSupport {

/// A listening TCP socket on a port of the loopback that the system chose; the caller closes it. Throws
/// `std::runtime_error`.
int ListenOnLoopback(unsigned& aPort);

}  // namespace TestSupport
