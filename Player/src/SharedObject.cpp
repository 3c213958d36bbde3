#include "Player/SharedObject.hpp"

#include "Player/Assert.hpp"

namespace Player {

SharedObject::~SharedObject() {
    PLAYER_ASSERT(0 == mRefCount);
}

void SharedObject::Release() const {
    PLAYER_ASSERT(0 < mRefCount);
    if (0 == --mRefCount) { delete this; }
}

}  // namespace Player
