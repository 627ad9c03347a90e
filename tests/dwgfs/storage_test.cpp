#include "dwgfs/control_layer_guard.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "tests/dwgfs/store_fixture.h"
#include "tests/support/dxf_records.h"
#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace mor::test {
namespace {

class Storage : public StoreTest {
protected:
    /// The records that a store of /a/f = 5 adds to a new drawing of that release, a line each.
    std::string added(host::Release release) {
        replaceDocument(host::createDocument(release));
        EXPECT_EQ(tree() + layer(), "noneabsent") << "a fresh drawing holds nothing of it";
        EXPECT_TRUE(write("/a/f", "5"));
        const auto file = testFolder() / "saved.dxf";
        EXPECT_TRUE(host::saveDocument(document(), {.output = file}));
        std::string all;
        for (const DxfRecord& record : splitDxf(readFile(file)).records)
            if (record.text().find("MOR_") != std::string::npos ||
                record.container == "MOR_DWGFILES")
                all += record.text() + "|\n";
        return all;
    }
};

/// What a store of /a/f = 5 adds to a drawing of R12.
constexpr const char* kFormOfR12 =
    "0 LAYER|2 MOR_CONTROL_LAYER|70 5|62 7|6 CONTINUOUS|\n"
    "0 APPID|2 MOR_ATTRIBUTES|70 0|\n"
    "0 BLOCK|8 0|2 MOR_DWGFILES|70 0|10 0.0|20 0.0|30 0.0|3 MOR_DWGFILES|1 |\n"
    "0 ATTDEF|5 1|8 0|10 0.0|20 0.0|30 0.0|40 1.0|1 |3 mor|2 mor|70 3|1001 MOR_ATTRIBUTES|1070 1|"
    "1000 \\U+005EDWG_FILESYSTEM_ROOT|1000 3|\n"
    "0 ENDBLK|5 2|8 0|\n"
    "0 INSERT|5 3|8 MOR_CONTROL_LAYER|2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|1001 MOR_ATTRIBUTES|"
    "1070 1|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /|1000 \\U+005Ea|1000 4|\n"
    "0 INSERT|5 4|8 MOR_CONTROL_LAYER|2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|1001 MOR_ATTRIBUTES|"
    "1070 1|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a|1000 f|1071 5|\n";

/// The same since R13; "@AC1015 " stands before groups that came with a later release.
constexpr const char* kFormSinceR13 =
    "0 LAYER|5 20|@AC1015 330 1|100 AcDbSymbolTableRecord|100 AcDbLayerTableRecord|"
    "2 MOR_CONTROL_LAYER|70 5|62 7|6 Continuous|@AC1015 370 -3|@AC1015 390 F|\n"
    "0 APPID|5 26|@AC1015 330 3|100 AcDbSymbolTableRecord|100 AcDbRegAppTableRecord|"
    "2 MOR_ATTRIBUTES|70 0|\n"
    "0 BLOCK_RECORD|5 21|@AC1015 330 9|100 AcDbSymbolTableRecord|100 AcDbBlockTableRecord|"
    "2 MOR_DWGFILES|@AC1015 340 0|@AC1021 70 0|@AC1021 280 1|@AC1021 281 0|\n"
    "0 BLOCK|5 22|@AC1015 330 21|100 AcDbEntity|8 0|100 AcDbBlockBegin|2 MOR_DWGFILES|70 0|"
    "10 0.0|20 0.0|30 0.0|3 MOR_DWGFILES|1 |\n"
    "0 ATTDEF|5 23|@AC1015 330 21|100 AcDbEntity|8 0|100 AcDbText|10 0.0|20 0.0|30 0.0|40 1.0|1 |"
    "100 AcDbAttributeDefinition|@AC1024 280 0|3 mor|2 mor|70 3|@AC1021 280 0|"
    "1001 MOR_ATTRIBUTES|1070 1|1000 \\U+005EDWG_FILESYSTEM_ROOT|1000 25|\n"
    "0 ENDBLK|5 24|@AC1015 330 21|100 AcDbEntity|8 0|100 AcDbBlockEnd|\n"
    "0 INSERT|5 25|@AC1015 330 18|100 AcDbEntity|8 MOR_CONTROL_LAYER|100 AcDbBlockReference|"
    "2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|1001 MOR_ATTRIBUTES|1070 1|1000 $ID|"
    "1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /|1000 \\U+005Ea|1000 27|\n"
    "0 INSERT|5 27|@AC1015 330 18|100 AcDbEntity|8 MOR_CONTROL_LAYER|100 AcDbBlockReference|"
    "2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|1001 MOR_ATTRIBUTES|1070 1|1000 $ID|"
    "1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a|1000 f|1071 5|\n";

TEST_F(Storage, RecordsHaveTheFormOfEachRelease) {
    EXPECT_EQ(added(host::Release::R12), kFormOfR12);
    for (const auto release :
         {host::Release::R13, host::Release::R14, host::Release::R2000, host::Release::R2004,
          host::Release::R2007, host::Release::R2010, host::Release::R2013, host::Release::R2018}) {
        const std::string made = added(release);
        const std::string version = host::documentInfo(document()).version;
        std::string wanted;
        std::istringstream groups{kFormSinceR13};
        for (std::string group; std::getline(groups, group, '|');) {
            if (!group.starts_with('@'))
                wanted += group + "|";
            else if (version >= group.substr(1, 6))
                wanted += group.substr(8) + "|";
        }
        wanted.pop_back();
        EXPECT_EQ(made, wanted) << version;
    }
}

TEST_F(Storage, MakingTheBlockAgainLeavesNoRootLink) {
    ASSERT_TRUE(write("/a/f", "5"));
    OpenFileSystem store;
    EXPECT_TRUE(store.makeBlock());
    EXPECT_EQ(tree(), "no root");
    EXPECT_EQ(inserts(), 2u);
}

TEST_F(Storage, NothingIsMadeThroughAnEmptyView) {
    OpenFileSystem store{CMORCadView{}};
    EXPECT_FALSE(store.makeBlock());
    CMOREntity parent;
    CMOREntity dir;
    EXPECT_FALSE(store.makeDir(parent, L"a", L"/a", dir));
    store.zero();
    EXPECT_EQ(tree(), "none");
    EXPECT_EQ(printed(), L"");
}

TEST_F(Storage, ARefusedInsertChangesNoOtherEntity) {
    ASSERT_TRUE(write("/a/f", "5"));
    const std::string before = tree();
    for (const char* operation : {"acdbEntMake", "acdbEntLast"}) {
        host::faults::failCall(operation, operation == std::string_view{"acdbEntLast"} ? 2 : 1);
        EXPECT_FALSE(write("/b/f", "6")) << operation;
        EXPECT_TRUE(host::faults::struck());
        host::faults::reset();
        EXPECT_EQ(tree(), before) << operation;
    }
    EXPECT_TRUE(write("/b/f", "6"));
}

TEST_F(Storage, ADefinitionThatCannotBeClosedIsGivenUp) {
    OpenFileSystem store;
    host::faults::failCall("acdbEntMake", 3);
    EXPECT_TRUE(store.makeBlock()) << "what the platform answers is not tested";
    EXPECT_TRUE(host::faults::struck());
    EXPECT_EQ(tree(), "none");
    EXPECT_TRUE(write("/a/f", "5"));
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
}

TEST_F(Storage, DeletingAllInsertsSparesOtherLayers) {
    ASSERT_TRUE(write("/a/f", "5"));
    const ads_point origin = {0.0, 0.0, 0.0};
    const ResbufList other{
        acutBuildList(RTDXF0, L"INSERT", 2, kFileSystemBlock, 8, L"0", 10, origin, 0)};
    EXPECT_EQ(acdbEntMake(other.get()), RTNORM);
    ads_name name = {};
    EXPECT_EQ(acdbEntLast(name), RTNORM);
    for (int round = 0; round < 2; ++round) {  // erased ones are not restored
        OpenFileSystem{}.deleteAllInserts();
        EXPECT_EQ(inserts(), 0u);
    }
    EXPECT_FALSE(host::recordInfo(document(), EntityName{name})->erased);
    EXPECT_EQ(tree(), "/ erased");
}

TEST_F(Storage, AFilterThatCannotBeBuiltErasesNothing) {
    ASSERT_TRUE(write("/a/f", "5"));
    OpenFileSystem store;
    host::faults::failCall("acutNewRb", 1);
    store.deleteAllInserts();
    EXPECT_TRUE(host::faults::struck());
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
    host::faults::failCall("acutNewRb", 1);
    EXPECT_FALSE(store.makeBlock());
    EXPECT_EQ(tree(), "/ [a/ [f=5]]") << "the block stays as it is";
}

TEST_F(Storage, TheGuardFreezesAndUnlocksWhileItLives) {
    const struct {
        bool frozen, locked, always;
        const char* after;
    } cases[] = {{false, false, false, "frozen unlocked"}, {false, true, false, "frozen locked"},
                 {true, false, false, "frozen unlocked"},  {true, true, false, "frozen locked"},
                 {false, false, true, "frozen locked"},    {true, true, true, "frozen locked"}};
    for (const auto& c : cases) {
        setLayer(c.frozen, c.locked);
        host::resetCounters();
        {
            const ControlLayerGuard guard{c.always};
            EXPECT_EQ(layer(), "frozen unlocked");
        }
        EXPECT_EQ(layer(), c.after) << c.frozen << c.locked << c.always;
        EXPECT_EQ(host::counters().flushesReactorsOn, 0u);
    }
}

TEST_F(Storage, TheGuardMakesTheLayer) {
    { const ControlLayerGuard guard{ControlLayerGuard::kRelockAsFound}; }
    EXPECT_EQ(layer(), "frozen unlocked");
}

TEST_F(Storage, WorkGoesOnWithoutAControlLayer) {
    host::faults::refuseLayer(true);
    EXPECT_TRUE(write("/a/f", "5"));
    host::faults::refuseLayer(false);
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
    EXPECT_EQ(layer(), "thawed unlocked") << "made by the platform with the first insert";
}

TEST_F(Storage, EverythingWorksWhenLayerLocksAreEnforced) {
    host::faults::enforceLayerLocks(true);
    EXPECT_TRUE(write("/a/b/f", "5") && write("/a/b/g", "6") && write("/c/f", "7"));
    EXPECT_TRUE(del("/a/b/f"));
    host::faults::enforceLayerLocks(false);
    toggleErased(entityOf("/a"));
    setLayer(true, true);
    host::faults::enforceLayerLocks(true);
    OpenFileSystem{}.checkFileSystem();
    EXPECT_EQ(tree(), "/ [a/ [b/ [g=6]] c/ [f=7]]");
    EXPECT_EQ(layer(), "frozen locked");
    EXPECT_TRUE(fs().delDir(L"/c"));
    EXPECT_EQ(tree(), "/ [a/ [b/ [g=6]]]");
    fs().removeFileSystem();
    EXPECT_EQ(inserts(), 0u);
}

class StoredDrawing : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        open(storedDrawing().save("stored.dxf"));
    }
    [[nodiscard]] std::string spaces() const {
        std::string result;
        for (const char* path : {"/", "/a", "/a/b"})
            result += host::recordInfo(document(), entityOf(path))->place == host::Place::PaperSpace
                          ? "p"
                          : "m";
        return result;
    }
};

TEST_F(StoredDrawing, ADirectoryInPaperSpaceIsMovedBack) {
    EXPECT_EQ(tree(), "/ [a/ [f=5 b/ [g=\"x\"]]]");
    ASSERT_EQ(spaces(), "mpm");
    EXPECT_EQ(read("/a/f"), "5");
    EXPECT_EQ(spaces(), "mmm");
    EXPECT_TRUE(write("/a/b/h", "1"));
    reopen();
    EXPECT_EQ(spaces(), "mmm");
    EXPECT_EQ(tree(), "/ [a/ [f=5 b/ [g=\"x\" h=1]]]");
}

TEST_F(StoredDrawing, ADirectoryInPaperSpaceIsRefusedThroughAReadOnlyView) {
    ads_name name;
    entityOf("/a").copyTo(name);
    CMOREntity entity;
    OpenFileSystem readOnly{CMORCadView{}};
    EXPECT_FALSE(readOnly.commonConnectEntity(name, entity));
    entityOf("/").copyTo(name);
    EXPECT_TRUE(readOnly.commonConnectEntity(name, entity));
    EXPECT_EQ(spaces(), "mpm");
}

}  // namespace
}  // namespace mor::test
