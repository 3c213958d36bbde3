#pragma once

#include <sys/socket.h>

namespace TestSupport {

/// A listening TCP socket on a port of the loopback that the system chose; the caller closes it. Throws
/// `std::runtime_error`.
int ListenOnLoopback(unsigned& aPort, int aFamily = AF_INET);

/// Whether this machine has an IPv6 loopback.
bool HasIPv6();

}  // namespace TestSupport
