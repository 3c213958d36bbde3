#pragma once

#include "Sockets/Socket.hpp"

namespace Player::Sockets {

class TCP : public Socket {
public:
    /// Throws `NetworkErr` `kCreateFailed`.
    TCP();
    /// Closes the descriptor and makes a fresh one. Throws `NetworkErr` `kCreateFailed`.
    void Reset();
};

}  // namespace Player::Sockets
