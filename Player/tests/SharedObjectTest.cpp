#include "Player/SharedObject.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

class Tracked : public SharedObject {
public:
    Tracked(UInt aRefCount, int& aDeleted) : SharedObject(aRefCount), mDeleted(aDeleted) {}
    Tracked(const Tracked&) = default;
    ~Tracked() override { ++mDeleted; }

private:
    int& mDeleted;
};

TEST(SharedObject, CountsFromTheGivenNumber) {
    int lDeleted = 0;
    auto* const lObject = new Tracked(2, lDeleted);
    EXPECT_EQ(2U, lObject->GetRefCount());
    lObject->Retain();
    EXPECT_EQ(3U, lObject->GetRefCount());
    lObject->Release();
    lObject->Release();
    EXPECT_EQ(1U, lObject->GetRefCount());
    EXPECT_EQ(0, lDeleted);
    lObject->Release();
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedObject, LastReleaseDeletesThroughTheBase) {
    int lDeleted = 0;
    const SharedObject* const lObject = new Tracked(1, lDeleted);
    lObject->Release();
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedObject, NeverOwnedMayBeDestroyed) {
    int lDeleted = 0;
    { const Tracked lObject(0, lDeleted); }
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedObject, CopyIsOwnedByNobody) {
    int lDeleted = 0;
    const SharedObject* const lOriginal = new Tracked(3, lDeleted);
    {
        const SharedObject lCopy(*lOriginal);
        EXPECT_EQ(0U, lCopy.GetRefCount());
    }
    EXPECT_EQ(3U, lOriginal->GetRefCount());
    for (int i = 0; i < 3; ++i)
        lOriginal->Release();
    EXPECT_EQ(1, lDeleted);
}

TEST(SharedObject, AssignmentLeavesBothCounts) {
    int lDeleted = 0;
    SharedObject* const lA = new Tracked(1, lDeleted);
    SharedObject* const lB = new Tracked(2, lDeleted);
    *lA = *lB;
    EXPECT_EQ(1U, lA->GetRefCount());
    EXPECT_EQ(2U, lB->GetRefCount());
    lA->Release();
    lB->Release();
    lB->Release();
    EXPECT_EQ(2, lDeleted);
}

TEST(SharedObjectDeathTest, ReleaseOfAnUnownedObject) {
    int lDeleted = 0;
    const Tracked lObject(0, lDeleted);
    EXPECT_DEATH(lObject.Release(), "0 < mRefCount");
}

TEST(SharedObjectDeathTest, DestroyedWhileOwned) {
    EXPECT_DEATH(
        {
            SharedObject lObject(0);
            lObject.Retain();
        },
        "0 == mRefCount");
}

}  // namespace
}  // namespace Player
