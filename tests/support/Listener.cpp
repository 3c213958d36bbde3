#include "support/Listener.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace TestSupport {

int ListenOnLoopback(unsigned& aPort, int aFamily) {
    const int lSocket = socket(aFamily, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in lAddress = {};
    lAddress.sin_family = AF_INET;
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr_in6 lWide = {};
    lWide.sin6_family = AF_INET6;
    lWide.sin6_addr = in6addr_loopback;
    const bool lIsWide = AF_INET6 == aFamily;
    auto* const lGeneric = lIsWide ? reinterpret_cast<sockaddr*>(&lWide) : reinterpret_cast<sockaddr*>(&lAddress);
    socklen_t lSize = lIsWide ? sizeof(lWide) : sizeof(lAddress);
    if (lSocket < 0 || 0 != bind(lSocket, lGeneric, lSize) || 0 != listen(lSocket, 8) ||
        0 != getsockname(lSocket, lGeneric, &lSize)) {
        if (lSocket >= 0) { close(lSocket); }
        throw std::runtime_error("no socket to listen on");
    }
    aPort = ntohs(lIsWide ? lWide.sin6_port : lAddress.sin_port);
    return lSocket;
}

bool HasIPv6() {
    try {
        unsigned lPort = 0;
        close(ListenOnLoopback(lPort, AF_INET6));
        return true;
    } catch (const std::runtime_error&) { return false; }
}

}  // namespace TestSupport
