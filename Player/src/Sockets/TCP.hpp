#pragma once

#include <sys/socket.h>

#include "Sockets/Socket.hpp"

namespace Player::Sockets {

class TCP : public Socket {
public:
    /// Throws `NetworkErr` `kCreateFailed`.
    explicit TCP(SInt aFamily = AF_INET);
    /// Closes the descriptor and makes a fresh one. Throws `NetworkErr` `kCreateFailed`.
    void Reset();

private:
    SInt mFamily;
};

}  // namespace Player::Sockets
