#pragma once

#include <type_traits>
#include <utility>

#include "Player/Assert.hpp"
#include "Player/SharedObject.hpp"

namespace Player {

/// Owns one reference to a `SharedObject`, or is empty. Counts move only through this class.
template <typename T, typename U = SharedObject>
class SharedPtr {
public:
    SharedPtr() = default;
    /// The count is the object's own, so a plain pointer to it is as good: it converts by itself.
    SharedPtr(T* aPtr) : mPtr(aPtr) { RetainHeld(); }
    SharedPtr(const SharedPtr& aOther) : mPtr(aOther.mPtr) { RetainHeld(); }
    SharedPtr(SharedPtr&& aOther) noexcept : mPtr(aOther.mPtr) { aOther.mPtr = nullptr; }
    /// From a pointer to a derived class.
    template <typename Y, typename = std::enable_if_t<std::is_convertible_v<Y*, T*>>>
    SharedPtr(const SharedPtr<Y, U>& aOther) : mPtr(aOther.Ptr()) {
        RetainHeld();
    }
    ~SharedPtr() { ReleaseHeld(mPtr); }

    SharedPtr& operator=(const SharedPtr& aOther) {
        if (this != &aOther) { Set(aOther.mPtr); }
        return *this;
    }
    SharedPtr& operator=(SharedPtr&& aOther) noexcept {
        SharedPtr(std::move(aOther)).Swap(*this);
        return *this;
    }

    /// The new object is retained before the old one is released: setting the held pointer is safe.
    void Set(T* aPtr) {
        T* lOld = mPtr;
        mPtr = aPtr;
        RetainHeld();
        ReleaseHeld(lOld);
    }
    template <typename Y>
    void Set(Y* aPtr) {
        T* lPtr = aPtr;
        Set(lPtr);
    }
    void Set(const SharedPtr& aOther) { Set(aOther.mPtr); }

    /// Exchanges the pointers without touching the counts.
    void Swap(SharedPtr& aOther) noexcept {
        T* lPtr = mPtr;
        mPtr = aOther.mPtr;
        aOther.mPtr = lPtr;
    }

    /// The raw pointer, null when empty; stays owned by this object.
    T* Ptr() const { return mPtr; }
    T& Ref() const {
        PLAYER_ASSERT(0 != mPtr);
        return *mPtr;
    }
    T& operator*() const { return Ref(); }
    T* operator->() const { return &Ref(); }
    explicit operator bool() const { return nullptr != mPtr; }

private:
    void RetainHeld() const {
        if (nullptr != mPtr) { static_cast<const U*>(mPtr)->Retain(); }
    }
    static void ReleaseHeld(T* aPtr) {
        if (nullptr != aPtr) { static_cast<const U*>(aPtr)->Release(); }
    }

    T* mPtr = nullptr;
};

/// What a sole-owner pointer holds: one object.
template <typename T>
struct OneObject {
    static void Delete(T* aPtr) { delete aPtr; }
};

/// What a sole-owner pointer holds: an array made with `new[]`.
template <typename T>
struct ArrayObject {
    static void Delete(T* aPtr) { delete[] aPtr; }
};

/// Sole owner of what was made with `new`. Copying hands the ownership over: the source is empty afterwards.
template <typename T, typename Kind>
class OwningPtr {
public:
    OwningPtr() = default;
    explicit OwningPtr(T* aPtr) : mPtr(aPtr) {}
    OwningPtr(const OwningPtr& aOther) : mPtr(aOther.Detach()) {}
    ~OwningPtr() { Kind::Delete(mPtr); }

    OwningPtr& operator=(const OwningPtr& aOther) {
        if (this != &aOther) { Set(aOther.Detach()); }
        return *this;
    }
    OwningPtr& operator=(T* aPtr) {
        Set(aPtr);
        return *this;
    }

    /// Deletes what is held and takes `aPtr`; setting the pointer it already holds is a mistake.
    void Set(T* aPtr) {
        PLAYER_ASSERT(0 == aPtr || aPtr != mPtr);
        T* lOld = mPtr;
        mPtr = aPtr;
        Kind::Delete(lOld);
    }
    template <typename Y>
    void Set(Y* aPtr) {
        T* lPtr = aPtr;
        Set(lPtr);
    }

    /// Gives up the ownership.
    T* Detach() const {
        T* lPtr = mPtr;
        mPtr = nullptr;
        return lPtr;
    }

    T* Ptr() const { return mPtr; }
    T& Ref() const {
        PLAYER_ASSERT(0 != mPtr);
        return *mPtr;
    }
    T& operator*() const { return Ref(); }
    T* operator->() const { return &Ref(); }
    explicit operator bool() const { return nullptr != mPtr; }

private:
    mutable T* mPtr = nullptr;
};

template <typename T>
using ScopedPtr = OwningPtr<T, OneObject<T>>;

/// As `ScopedPtr`, of an array; stands for the plain pointer to its first element as well.
template <typename T>
class ScopedArray : public OwningPtr<T, ArrayObject<T>> {
public:
    using OwningPtr<T, ArrayObject<T>>::OwningPtr;
    using OwningPtr<T, ArrayObject<T>>::operator=;

    operator T*() const { return this->Ptr(); }
};

}  // namespace Player
