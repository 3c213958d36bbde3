#pragma once

#include "Player/Assert.hpp"
#include "Player/Types.hpp"

namespace Player {

/// Base of every object that is shared through `SharedPtr`: an intrusive count of its owners.
/// The count is a plain integer: one thread at a time may retain and release an object.
class SharedObject {
public:
    /// `aRefCount` owners from the start; 0 for an object that is handed to a `SharedPtr` next.
    explicit SharedObject(UInt aRefCount) : mRefCount(aRefCount) {}
    /// A copy is an object of its own, without owners.
    SharedObject(const SharedObject& /*aOther*/) : mRefCount(0) {}
    SharedObject& operator=(const SharedObject& /*aOther*/) { return *this; }
    /// Asserts that no owner is left.
    virtual ~SharedObject();

    void Retain() const { ++mRefCount; }
    /// Gives up one reference; the last one deletes the object.
    void Release() const {
        PLAYER_ASSERT(0 < mRefCount);
        if (0 == --mRefCount) { Delete(); }
    }
    UInt GetRefCount() const { return mRefCount; }

private:
    void Delete() const;

    mutable UInt mRefCount;
};

}  // namespace Player
