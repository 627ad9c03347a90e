#include "host/faults.h"

#include <gtest/gtest.h>

namespace mor::host::faults {
namespace {

class Faults : public ::testing::Test {
protected:
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
};

TEST_F(Faults, StrikeTheNthCallOnce) {
    failCall("acdbEntMake", 2);
    EXPECT_FALSE(shouldFail("acdbEntMake") || shouldFail("acdbEntLast") || struck());
    EXPECT_TRUE(shouldFail("acdbEntMake") && struck());
    EXPECT_FALSE(shouldFail("acdbEntMake"));
    failAnyCall(3);  // all operations together
    EXPECT_FALSE(shouldFail("acdbEntMake") || shouldFail("acdbEntLast"));
    EXPECT_TRUE(shouldFail("acdbEntDel"));
    EXPECT_FALSE(shouldFail("acdbEntDel"));
}

TEST_F(Faults, CountRefusedWritesOnlyWhileOn) {
    EXPECT_FALSE(writesRefused());
    refuseWrites(true);
    EXPECT_TRUE(writesRefused() && writesRefused());
    EXPECT_EQ(refusedWrites(), 2u);
}

TEST_F(Faults, AreAllOffAfterReset) {
    failCall("acdbEntMake", 1);
    failAnyCall(1);
    failSaveCall(1);
    refuseLocks(true);
    refuseLayer(true);
    refuseEntities(true);
    refuseWrites(true);
    enforceLayerLocks(true);
    limitRoom(10);
    reset();
    EXPECT_FALSE(shouldFail("acdbEntMake"));
    EXPECT_EQ(beforeSaveCall("open"), SaveCall::Go);
    EXPECT_FALSE(locksRefused() || layerRefused() || entitiesRefused() || writesRefused() ||
                 layerLocksEnforced() || struck());
    EXPECT_EQ(roomLimit(), 0);
    EXPECT_EQ(refusedWrites(), 0u);
}

}  // namespace
}  // namespace mor::host::faults
