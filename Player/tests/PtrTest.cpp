#include "Player/Ptr.hpp"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

// Copies and moved-from pointers are what is tested.
// NOLINTBEGIN(performance-unnecessary-copy-initialization, clang-analyzer-cplusplus.Move, bugprone-use-after-move)

namespace Player {
namespace {

class Base : public SharedObject {
public:
    explicit Base(int& aDeleted) : SharedObject(0), mDeleted(aDeleted) {}
    ~Base() override { ++mDeleted; }

private:
    int& mDeleted;
};

class Derived : public Base {
public:
    using Base::Base;
    int mValue = 7;
};

using BasePtr = SharedPtr<Base, SharedObject>;
using DerivedPtr = SharedPtr<Derived, SharedObject>;

TEST(SharedPtr, EmptyHoldsNothing) {
    const BasePtr lPtr;
    EXPECT_EQ(nullptr, lPtr.Ptr());
    EXPECT_FALSE(lPtr);
    const BasePtr lNull(nullptr);
    const BasePtr lCopy(lNull);
    EXPECT_EQ(nullptr, lCopy.Ptr());
}

TEST(SharedPtr, EachOwnerCountsOnce) {
    int lDeleted = 0;
    {
        auto* const lObject = new Base(lDeleted);
        const BasePtr lFirst(lObject);
        EXPECT_TRUE(lFirst);
        EXPECT_EQ(1U, lObject->GetRefCount());
        {
            const BasePtr lSecond(lFirst);
            EXPECT_EQ(2U, lObject->GetRefCount());
            BasePtr lThird;
            lThird = lSecond;
            EXPECT_EQ(3U, lObject->GetRefCount());
            BasePtr lFourth;
            lFourth.Set(lThird);
            EXPECT_EQ(4U, lObject->GetRefCount());
        }
        EXPECT_EQ(1U, lObject->GetRefCount());
        EXPECT_EQ(0, lDeleted);
    }
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedPtr, SettingTheHeldPointerKeepsTheObject) {
    int lDeleted = 0;
    auto* const lObject = new Base(lDeleted);
    BasePtr lPtr(lObject);
    lPtr.Set(lObject);
    EXPECT_EQ(0, lDeleted);
    EXPECT_EQ(1U, lObject->GetRefCount());
    const BasePtr& lSelf = lPtr;
    lPtr.Set(lSelf);
    lPtr = lSelf;
    EXPECT_EQ(0, lDeleted);
    EXPECT_EQ(1U, lObject->GetRefCount());
    lPtr.Set(nullptr);
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedPtr, SetReleasesTheOldObjectOnce) {
    int lFirst = 0;
    int lSecond = 0;
    BasePtr lPtr(new Base(lFirst));
    lPtr.Set(new Base(lSecond));
    EXPECT_EQ(1, lFirst);
    EXPECT_EQ(0, lSecond);
    lPtr.Set(static_cast<Base*>(nullptr));
    EXPECT_EQ(1, lFirst);
    EXPECT_EQ(1, lSecond);
    EXPECT_EQ(nullptr, lPtr.Ptr());
}

/// A chain whose last owner is the link that is being replaced.
class Link : public SharedObject {
public:
    Link() : SharedObject(0) {}
    SharedPtr<Link, SharedObject> mNext;
};

TEST(SharedPtr, AdvancesAlongAChainItOwns) {
    SharedPtr<Link, SharedObject> lHead(new Link);
    lHead->mNext.Set(new Link);
    Link* const lSecond = lHead->mNext.Ptr();
    lHead = lHead->mNext;
    EXPECT_EQ(lSecond, lHead.Ptr());
    EXPECT_EQ(1U, lSecond->GetRefCount());
}

TEST(SharedPtr, TakesDerivedObjects) {
    int lDeleted = 0;
    {
        DerivedPtr lDerived(new Derived(lDeleted));
        const BasePtr lBase(lDerived);
        EXPECT_EQ(2U, lDerived->GetRefCount());
        BasePtr lOther;
        lOther = lDerived;
        EXPECT_EQ(3U, lDerived->GetRefCount());
        lOther.Set(lDerived.Ptr());
        EXPECT_EQ(3U, lDerived->GetRefCount());
        lOther.Set(new Derived(lDeleted));
        EXPECT_EQ(2U, lDerived->GetRefCount());
    }
    EXPECT_EQ(2, lDeleted);
    static_assert(std::is_convertible_v<DerivedPtr, BasePtr>);
    static_assert(!std::is_convertible_v<BasePtr, DerivedPtr>, "no way down");
}

TEST(SharedPtr, SwapTouchesNoCount) {
    int lDeleted = 0;
    auto* const lObject = new Base(lDeleted);
    BasePtr lA(lObject);
    BasePtr lB;
    lA.Swap(lB);
    EXPECT_EQ(nullptr, lA.Ptr());
    EXPECT_EQ(lObject, lB.Ptr());
    EXPECT_EQ(1U, lObject->GetRefCount());
}

TEST(SharedPtr, MoveEmptiesTheSourceAndDropsTheTargetAtOnce) {
    int lFirst = 0;
    int lSecond = 0;
    BasePtr lA(new Base(lFirst));
    BasePtr lB(new Base(lSecond));
    Base* const lMoved = lB.Ptr();
    lA = std::move(lB);
    EXPECT_EQ(1, lFirst);
    EXPECT_EQ(lMoved, lA.Ptr());
    EXPECT_EQ(1U, lMoved->GetRefCount());
    EXPECT_EQ(nullptr, lB.Ptr());
    const BasePtr lC(std::move(lA));
    EXPECT_EQ(lMoved, lC.Ptr());
    EXPECT_EQ(1U, lMoved->GetRefCount());
    EXPECT_EQ(0, lSecond);
}

TEST(SharedPtr, ReachesTheObject) {
    int lDeleted = 0;
    const DerivedPtr lPtr(new Derived(lDeleted));
    EXPECT_EQ(7, lPtr->mValue);
    EXPECT_EQ(7, (*lPtr).mValue);
    EXPECT_EQ(lPtr.Ptr(), &lPtr.Ref());
}

TEST(SharedPtrDeathTest, EmptyHasNoObject) {
    const DerivedPtr lPtr;
    EXPECT_DEATH(static_cast<void>(lPtr->mValue), "0 != mPtr");
    EXPECT_DEATH(static_cast<void>(lPtr.Ref()), "0 != mPtr");
    EXPECT_DEATH(static_cast<void>(*lPtr), "0 != mPtr");
}

/// Counts deletions; also tells the array form, whose every element is destroyed.
class Counted {
public:
    Counted() = default;
    explicit Counted(int& aDeleted) : mDeleted(&aDeleted) {}
    Counted(const Counted&) = default;
    Counted& operator=(const Counted&) = default;
    virtual ~Counted() {
        if (nullptr != mDeleted) { ++*mDeleted; }
    }

    int* mDeleted = nullptr;
};

class CountedMore : public Counted {
public:
    CountedMore(int& aDeleted, int& aMore) : Counted(aDeleted), mMore(aMore) {}
    ~CountedMore() override { ++mMore; }

private:
    int& mMore;
};

TEST(ScopedPtr, DeletesWhatItHolds) {
    int lDeleted = 0;
    int lMore = 0;
    { const ScopedPtr<Counted> lPtr(new CountedMore(lDeleted, lMore)); }
    EXPECT_EQ(1, lDeleted);
    EXPECT_EQ(1, lMore) << "through the virtual destructor";
    { const ScopedPtr<Counted> lEmpty; }
}

TEST(ScopedPtr, SetDeletesTheOldObject) {
    int lFirst = 0;
    int lSecond = 0;
    int lMore = 0;
    ScopedPtr<Counted> lPtr(new Counted(lFirst));
    lPtr.Set(new CountedMore(lSecond, lMore));
    EXPECT_EQ(1, lFirst);
    EXPECT_EQ(0, lSecond);
    lPtr = new Counted(lFirst);
    EXPECT_EQ(1, lSecond);
    EXPECT_EQ(1, lFirst);
    lPtr.Set(nullptr);
    EXPECT_EQ(2, lFirst);
    lPtr.Set(nullptr);
    EXPECT_EQ(nullptr, lPtr.Ptr());
    EXPECT_FALSE(lPtr);
}

TEST(ScopedPtr, CopyingHandsTheOwnershipOver) {
    int lDeleted = 0;
    int lOther = 0;
    {
        auto* const lObject = new Counted(lDeleted);
        const ScopedPtr<Counted> lFirst(lObject);
        const ScopedPtr<Counted> lSecond(lFirst);
        EXPECT_EQ(nullptr, lFirst.Ptr());
        EXPECT_EQ(lObject, lSecond.Ptr());
        ScopedPtr<Counted> lThird(new Counted(lOther));
        lThird = lSecond;
        EXPECT_EQ(1, lOther);
        EXPECT_EQ(nullptr, lSecond.Ptr());
        EXPECT_EQ(lObject, lThird.Ptr());
        const ScopedPtr<Counted>& lSelf = lThird;
        lThird = lSelf;
        EXPECT_EQ(lObject, lThird.Ptr());
        EXPECT_EQ(0, lDeleted);
    }
    EXPECT_EQ(1, lDeleted);
}

TEST(ScopedPtr, DetachGivesUpTheOwnership) {
    int lDeleted = 0;
    Counted* lObject = nullptr;
    {
        const ScopedPtr<Counted> lPtr(new Counted(lDeleted));
        EXPECT_EQ(&lPtr.Ref(), lPtr.Ptr());
        EXPECT_EQ(&lDeleted, lPtr->mDeleted);
        lObject = lPtr.Detach();
        EXPECT_EQ(nullptr, lPtr.Ptr());
    }
    EXPECT_EQ(0, lDeleted);
    delete lObject;
}

TEST(ScopedPtrDeathTest, Misuse) {
    const ScopedPtr<Counted> lEmpty;
    EXPECT_DEATH(static_cast<void>(lEmpty->mDeleted), "0 != mPtr");
    EXPECT_DEATH(static_cast<void>(lEmpty.Ref()), "0 != mPtr");
    int lDeleted = 0;
    ScopedPtr<Counted> lPtr(new Counted(lDeleted));
    EXPECT_DEATH(lPtr.Set(lPtr.Ptr()), "0 == aPtr \\|\\| aPtr != mPtr");
    EXPECT_DEATH(lPtr = lPtr.Ptr(), "0 == aPtr \\|\\| aPtr != mPtr");
}

TEST(ScopedArray, DeletesEveryElement) {
    int lDeleted = 0;
    {
        const ScopedArray<Counted> lArray(new Counted[3]);
        for (int i = 0; i < 3; ++i)
            lArray.Ptr()[i].mDeleted = &lDeleted;
    }
    EXPECT_EQ(3, lDeleted);
}

TEST(ScopedArray, StandsForAPlainPointer) {
    ScopedArray<int> lArray(new int[2]{1, 2});
    int* const lPlain = lArray;
    EXPECT_EQ(lArray.Ptr(), lPlain);
    EXPECT_EQ(2, lArray[1]);
    lArray = new int[1]{3};
    EXPECT_EQ(3, *lArray);
    const ScopedArray<int> lHeir(lArray);
    EXPECT_FALSE(lArray);
    EXPECT_EQ(3, lHeir[0]);
}

}  // namespace
}  // namespace Player

// NOLINTEND(performance-unnecessary-copy-initialization, clang-analyzer-cplusplus.Move, bugprone-use-after-move)
