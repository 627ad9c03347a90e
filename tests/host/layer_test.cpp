#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

class Layers : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openEntities("", "0 LAYER|5 B1|2 Walls|70   68|62 3|6 DASHED|");
    }
    /// Whether a save would change nothing.
    [[nodiscard]] bool unchanged() const {
        const auto report = host::saveDocument(document(), {.output = {}, .dryRun = true});
        return report && report.value().edits.empty();
    }
};

TEST_F(Layers, ConnectWithoutCaseAndTellTheirState) {
    CMORAdsLayer layer;
    EXPECT_FALSE(layer.IsLocked() || layer.IsFrozen() || layer.Flush());
    EXPECT_FALSE(layer.IsLocked(true) || layer.IsFrozen(true));
    EXPECT_FALSE(layer.Connect(L"NOSUCH") || layer.Connect(nullptr));
    EXPECT_TRUE(layer.Connect(L"WALLS"));
    EXPECT_TRUE(layer.IsLocked());
    EXPECT_FALSE(layer.IsFrozen());
}

TEST_F(Layers, ChangeOnTheirFlushAndOnlyTheTwoBits) {
    CMORAdsLayer layer;
    ASSERT_TRUE(layer.Connect(L"Walls"));
    EXPECT_TRUE(layer.IsFrozen(true) && layer.IsLocked(false));
    EXPECT_TRUE(layer.IsFrozen() && !layer.IsLocked());
    CMORAdsLayer other;
    ASSERT_TRUE(other.Connect(L"Walls"));
    EXPECT_TRUE(!other.IsFrozen() && other.IsLocked());
    EXPECT_TRUE(layer.Flush());
    EXPECT_TRUE(other.IsFrozen() && !other.IsLocked());
    EXPECT_TRUE(holds(savedBytes(), "\n2\nWalls\n70\n  65\n62\n3\n6\nDASHED\n"));
}

TEST_F(Layers, AreCreatedOnce) {
    CMORAdsLayer layer;
    EXPECT_FALSE(layer.Create(L"walls") || layer.Create(L"") || layer.Create(nullptr));
    EXPECT_FALSE(layer.Create(L"a|b") || layer.Create(L"a*") ||
                 layer.Create(std::wstring(32, L'x').c_str()));
    EXPECT_TRUE(unchanged());
    EXPECT_TRUE(layer.Create(L"NEW"));
    EXPECT_TRUE(!layer.IsLocked() && !layer.IsFrozen());
    EXPECT_TRUE(layer.IsFrozen(true) && layer.Flush());
    CMORAdsLayer other;
    EXPECT_TRUE(other.Connect(L"new") && other.IsFrozen());
    const DxfFile saved = splitDxf(savedBytes());
    EXPECT_EQ(saved.named("LAYER", "NEW")->text(), "0 LAYER|2 NEW|70 1|62 7|6 CONTINUOUS");
    EXPECT_EQ(saved.table("LAYER")->text(), "0 TABLE|2 LAYER|70 0");  // the count was wrong before
}

TEST_F(Layers, UnlockedAndLockedAgainAreNoEdit) {
    CMORAdsLayer layer;
    ASSERT_TRUE(layer.Connect(L"Walls"));
    for (const bool locked : {false, true}) {
        EXPECT_TRUE(layer.IsLocked(locked) && layer.Flush());
        EXPECT_EQ(unchanged(), locked);
    }
    EXPECT_EQ(savedBytes(), readFile(file()));
}

TEST_F(Layers, TakeTheirLineTypeFromLayerZero) {
    openEntities("", "0 LAYER|2 0|70 0|62 1|6 DASHDOT|");
    EXPECT_TRUE(CMORAdsLayer{}.Create(L"NEW"));
    EXPECT_EQ(splitDxf(savedBytes()).named("LAYER", "NEW")->text(),
              "0 LAYER|2 NEW|70 0|62 7|6 DASHDOT");
}

TEST_F(Layers, AreRefusedWhenFaultsSaySo) {
    CMORAdsLayer layer;
    host::faults::refuseLayer(true);
    EXPECT_FALSE(layer.Connect(L"Walls") || layer.Create(L"NEW"));
    host::faults::reset();
    ASSERT_TRUE(layer.Connect(L"Walls"));
    host::faults::failCall("CMORAdsLayer::Flush", 1);
    EXPECT_TRUE(layer.IsLocked(false));
    EXPECT_FALSE(layer.Flush());
    EXPECT_TRUE(unchanged());
    EXPECT_TRUE(layer.Flush());
    EXPECT_FALSE(unchanged());
}

}  // namespace
}  // namespace mor::test
