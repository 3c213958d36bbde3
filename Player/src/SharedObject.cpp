#include "Player/SharedObject.hpp"

namespace Player {

SharedObject::~SharedObject() {
    PLAYER_ASSERT(0 == mRefCount);
}

void SharedObject::Delete() const {
    delete this;
}

}  // namespace Player
