#include "dwgfs/control_layer_guard.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mor::test {
namespace {

class Storage : public StoreTest {
protected:
    /// The groups of a record that tell what it is, "0=INSERT 2=... 8=...".
    [[nodiscard]] std::string groups(EntityName name, std::initializer_list<int> codes) const {
        const std::vector<host::RecordGroup> all = host::recordGroups(document(), name);
        std::string result;
        for (const int code : codes) {
            const auto found = std::ranges::find(all, code, &host::RecordGroup::code);
            result += (result.empty() ? "" : " ") + std::to_string(code) + "=" +
                      (found == all.end() ? "-" : found->value);
        }
        return result;
    }
    [[nodiscard]] std::string attributes(EntityName name) const {
        std::string result;
        for (const auto& item : host::recordAttributes(document(), name).items)
            result +=
                host::toUtf8(item.name) + "=" + host::toUtf8(host::stringOf(item.value)) + ";";
        return result;
    }
    [[nodiscard]] std::string handle(std::string_view path) const {
        return host::toUtf8(handleOf(path));
    }
};

TEST_F(Storage, TheBlockHoldsOneInvisibleConstantAttribute) {
    static_cast<void>(fs());
    EXPECT_EQ(tree() + layer(), "noneabsent") << "a fresh drawing holds nothing of it";
    ASSERT_TRUE(write("/a/f", "5"));
    EXPECT_EQ(groups(blockEntity(), {0, 1, 2, 3, 8, 40, 70}),
              "0=ATTDEF 1= 2=mor 3=mor 8=0 40=1.0 70=3");
    EXPECT_EQ(attributes(blockEntity()), "^DWG_FILESYSTEM_ROOT=" + handle("/") + ";");
    EXPECT_EQ(host::recordInfo(document(), blockEntity())->container, "MOR_DWGFILES");
}

TEST_F(Storage, ADirectoryIsAnInsertInModelSpace) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    EXPECT_EQ(inserts(), 3u);
    const std::pair<std::string, std::string> entries[] = {
        {"/", "^a=" + handle("/a")}, {"/a", "^b=" + handle("/a/b")}, {"/a/b", "f="}};
    for (const auto& [path, entry] : entries) {
        const EntityName name = entityOf(path);
        EXPECT_EQ(groups(name, {0, 2, 8, 66}), "0=INSERT 2=MOR_DWGFILES 8=MOR_CONTROL_LAYER 66=-");
        EXPECT_EQ(host::recordInfo(document(), name)->place, host::Place::ModelSpace);
        EXPECT_EQ(attributes(name), "$ID=MOR_DWGFILES_DIR;$INFO=" + path + ";" + entry + ";");
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
