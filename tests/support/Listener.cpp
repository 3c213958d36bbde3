#include "support/Listener.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>

namespace TestSupport {

int ListenOnLoopback(unsigned& aPort) {
    const int lSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in lAddress = {};
    lAddress.sin_family = AF_INET;
    lAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t lSize = sizeof(lAddress);
    auto* const lGeneric = reinterpret_cast<sockaddr*>(&lAddress);
    if (lSocket < 0 || 0 != bind(lSocket, lGeneric, lSize) || 0 != listen(lSocket, 8) ||
        0 != getsockname(lSocket, lGeneric, &lSize)) {
        throw std::runtime_error("no socket to listen on");
    }
    aPort = ntohs(lAddress.sin_port);
    return lSocket;
}

}  // namespace TestSupport
