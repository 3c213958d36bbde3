#pragma once

#include "Sockets/Socket.hpp"

namespace Player::Sockets {

class TCP : public Socket {
public:
    /// Throws `NetworkErr` 32.
    TCP();
    /// Closes the descriptor and makes a fresh one. Throws `NetworkErr` 32.
    void Reset();
};

}  // namespace Player::Sockets
