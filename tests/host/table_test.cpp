#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

#include <map>

namespace mor::test {
namespace {

/// "0 LAYER|2 WALLS|70 0": a list as it was answered; "none" for null.
std::string shown(resbuf* answered) {
    const ResbufList list{answered};
    if (!list) return "none";
    std::string all;
    for (const resbuf* item = list.get(); item != nullptr; item = item->rbnext) {
        all += (all.empty() ? "" : "|") + std::to_string(item->restype) + " ";
        if (item->restype == -2)
            all += "name";
        else if (item->restype < 10)
            all += host::toUtf8(item->resval.rstring);
        else if (item->restype >= 60 && item->restype < 80)
            all += std::to_string(item->resval.rint);
        else if (item->restype >= 40)
            all += host::lispText(host::makeReal(item->resval.rreal));
        else
            for (const double part : item->resval.rpoint)
                all += host::lispText(host::makeReal(part)) + ",";
    }
    return all;
}

std::string block(const std::string& name, const std::string& entities, int flags = 0,
                  const std::string& path = "") {
    return blockDefinition(name, entities, flags, path, "10 1.0|20 2.0|30 0.0|");
}

class Tables : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openEntities("0 LINE|5 A1|8 0|",
                     "0 LAYER|5 B1|102 {ACAD_X|360 9|102 }|330 2|100 AcDbSymbolTableRecord|2 "
                     "Walls|70 4|62 -3|6 DASHED|370 5|1001 ACAD|1000 x|0 LAYER|2 0|70 0|62 7|6 "
                     "CONTINUOUS|",
                     block("*MODEL_SPACE", "") + block("$PAPER_SPACE", "") + block("Empty", "") +
                         block("Filled", "0 LINE|5 B2|8 0|") + block("Ref", "", 4, "..\\ref.dwg") +
                         block("FILLED", "0 CIRCLE|8 0|"));
    }
};

TEST_F(Tables, SearchGivesTheOldFormWithoutCase) {
    const struct {
        const wchar_t* table;
        const wchar_t* name;
        const char* record;
    } cases[] = {
        {L"LAYER", L"WALLS", "0 LAYER|2 Walls|70 4|62 -3|6 DASHED"},
        {L"layer", L"walls", "0 LAYER|2 Walls|70 4|62 -3|6 DASHED"},
        {L"LAYER", L"Wall", "none"},
        {L"NOSUCH", L"Walls", "none"},
        {L"STYLE", L"STANDARD", "none"},
        {nullptr, L"Walls", "none"},
        {L"LAYER", nullptr, "none"},
        // Blocks with their first entity.
        {L"BLOCK", L"filled", "0 BLOCK|2 Filled|70 0|10 1.0,2.0,0.0,|-2 name"},
        {L"BLOCK", L"Empty", "0 BLOCK|2 Empty|70 0|10 1.0,2.0,0.0,"},
        {L"BLOCK", L"Ref", "0 BLOCK|2 Ref|70 4|10 1.0,2.0,0.0,|1 ..\\ref.dwg"},
        {L"BLOCK", L"*Model_Space", "0 BLOCK|2 *MODEL_SPACE|70 0|10 1.0,2.0,0.0,|-2 name"}};
    for (const auto& c : cases) EXPECT_EQ(shown(acdbTblSearch(c.table, c.name, 0)), c.record);
}

TEST_F(Tables, NextWalksInTableOrderAndStaysAtTheEnd) {
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 1)).substr(8, 7), "2 Walls");
    EXPECT_EQ(shown(acdbTblNext(L"layer", 0)).substr(8, 3), "2 0");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)), "none");
    EXPECT_EQ(makeLine(L"NEW"), RTNORM);
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 5), "2 NEW");
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 1)).substr(8, 7), "2 Walls");
    // A search sets the walk when it is told so.
    static_cast<void>(shown(acdbTblSearch(L"LAYER", L"0", 0)));
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 3), "2 0");
    static_cast<void>(shown(acdbTblSearch(L"LAYER", L"walls", 1)));
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 3), "2 0");
    static_cast<void>(shown(acdbTblSearch(L"BLOCK", L"Filled", 1)));
    EXPECT_EQ(shown(acdbTblNext(L"BLOCK", 0)).substr(8, 5), "2 Ref");
}

TEST_F(Tables, NextLeavesLayoutBlocksOut) {
    std::string names;
    for (ResbufList block{acdbTblNext(L"BLOCK", 1)}; block;
         block = ResbufList{acdbTblNext(L"BLOCK", 0)})
        names += host::toUtf8(findGroup(block, 2)->resval.rstring) + " ";
    EXPECT_EQ(names, "Empty Filled Ref FILLED ");
}

TEST_F(Tables, OfMadeRecordsAndBlocksAreWalkedToo) {
    const double origin[] = {0.0, 0.0, 0.0};
    EXPECT_EQ(make(acutBuildList(RTDXF0, L"BLOCK", 2, L"Made", 10, origin, 70, 0, 0)), RTNORM);
    EXPECT_EQ(make(acutBuildList(RTDXF0, L"ENDBLK", 0)), RTKWORD);
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"made", 1)), "0 BLOCK|2 Made|70 0|10 0.0,0.0,0.0,");
    EXPECT_EQ(shown(acdbTblNext(L"BLOCK", 0)), "none");
}

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
