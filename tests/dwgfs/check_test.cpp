#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "tests/dwgfs/store_fixture.h"
#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class Check : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_TRUE(write("/a/b/f", "5"));
        ASSERT_TRUE(write("/c/f", "6"));
    }
    static constexpr const char* kWhole = "/ [a/ [b/ [f=5]] c/ [f=6]]";

    static void check() { send(MOR_AdsMsgSystemClass::CheckDwgFileSystem); }
    /// A look-up by an object of its own, whose table is empty.
    static bool lookUpRoot() {
        CMOREntity root;
        return OpenFileSystem{}.getRoot(root, false);
    }
    [[nodiscard]] std::wstring layerHandle() const {
        const auto record = host::findSymbol(document(), "LAYER", L"0");
        return wide(host::recordGroup(document(), record.value(), 5).value());
    }
    /// The block again, with a line in place of the attribute definition, and that root link.
    void replaceBlock(const wchar_t* link) {
        const ads_point from = {0.0, 0.0, 0.0};
        const ads_point to = {1.0, 0.0, 0.0};
        const ResbufList header{
            acutBuildList(RTDXF0, L"BLOCK", 2, kFileSystemBlock, 10, from, 70, 0, 0)};
        const ResbufList line{acutBuildList(RTDXF0, L"LINE", 8, L"0", 10, from, 11, to, 0)};
        const ResbufList end{acutBuildList(RTDXF0, L"ENDBLK", 0)};
        EXPECT_EQ(acdbEntMake(header.get()), RTNORM);
        EXPECT_EQ(acdbEntMake(line.get()), RTNORM);
        EXPECT_EQ(acdbEntMake(end.get()), RTKWORD);
        if (link != nullptr) setText(blockEntity(), kRootLink, link);
    }
    [[nodiscard]] std::string blockType() const {
        return host::recordInfo(document(), blockEntity())->type;
    }
};

TEST_F(Check, OfASoundStoreChangesNothing) {
    reopen();
    setLayer(true, true);
    host::resetCounters();
    const host::SaveOptions toNowhere{.output = testFolder() / "never_written.dxf", .dryRun = true};
    const auto before = host::saveDocument(document(), toNowhere);
    fs().checkFileSystem();
    EXPECT_EQ(tree(), kWhole);
    EXPECT_EQ(layer(), "frozen locked");
    EXPECT_EQ(host::counters().flushesReactorsOn, 0u);
    EXPECT_EQ(host::counters().locksTaken, 1u);
    const auto after = host::saveDocument(document(), toNowhere);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after.value().edits.size(), before.value().edits.size());
    EXPECT_EQ(printed(), L"");
}

TEST_F(Check, RestoresErasedDirectories) {
    for (const char* path : {"/a/b", "/a", "/"}) toggleErased(entityOf(path));
    fs().checkFileSystem();
    EXPECT_EQ(tree(), kWhole);
    setText(entityOf("/a"), L"^b", L"FFFFFF");
    OpenFileSystem{}.checkFileSystem();
    EXPECT_EQ(tree(), "/") << "a dead link empties the store";
    open(storedDrawing().save("stored.dxf"));
    ASSERT_EQ(host::recordInfo(document(), entityOf("/a"))->place, host::Place::PaperSpace);
    fs().checkFileSystem();
    EXPECT_EQ(host::recordInfo(document(), entityOf("/a"))->place, host::Place::ModelSpace);
}

TEST_F(Check, NeedsTheActiveDocumentAndItsLock) {
    toggleErased(entityOf("/a"));
    const std::string before = tree();
    host::setActiveDocument(nullptr);
    OpenFileSystem{}.checkFileSystem();
    makeCurrent(document());
    host::faults::refuseLocks(true);
    OpenFileSystem{}.checkFileSystem();
    host::faults::refuseLocks(false);
    OpenFileSystem{CMORCadView{}}.checkFileSystem();
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(host::counters().locksHeld, 0u);
}

TEST_F(Check, FollowsNoCircle) {
    link("/a/b", L"^up", "/a");
    toggleErased(entityOf("/c"));
    OpenFileSystem{}.checkFileSystem();
    EXPECT_EQ(read("/c/f"), "6");
    EXPECT_EQ(printed(), L"");
}

TEST_F(Check, SkipsPathsThatAreTooLong) {
    std::string deep;
    while (deep.size() < 1020) deep += "/x";
    ASSERT_TRUE(write(deep + "/f", "1"));
    setText(entityOf(deep), L"^too long", L"FFFFFF");
    OpenFileSystem{}.checkFileSystem();
    EXPECT_EQ(read(deep + "/f"), "1") << "the dead link was never followed";
}

// ---- the message --------------------------------------------------------------------------------

TEST_F(Check, RunsAtItsMessageButIsSkippedOnceAfterARemoval) {
    toggleErased(entityOf("/c"));
    check();
    EXPECT_EQ(tree(), kWhole);
    fs().removeFileSystem();
    check();
    EXPECT_EQ(tree(), "/ erased");
    check();
    EXPECT_EQ(tree(), kWhole);
}

TEST_F(Check, IsOwedToNobodyAfterTheMessageInAnotherDocument) {
    fs().removeFileSystem();
    const OtherDocument other;
    check();
    other.leave();
    check();
    EXPECT_EQ(tree(), kWhole);
}

// ---- the anchor ---------------------------------------------------------------------------------

TEST_F(Check, ARootLinkThatIsDeadOrLeadsToWhatCannotBeErasedEndsTheStore) {
    for (const std::wstring& link : {std::wstring{L"FFFFFF"}, layerHandle()}) {
        ASSERT_TRUE(OpenFileSystem{}.write(L"/a/f", value("5")));
        setText(blockEntity(), kRootLink, link.c_str());
        EXPECT_TRUE(lookUpRoot());
        EXPECT_EQ(tree(), "/");
        EXPECT_EQ(inserts(), 1u) << "the old directories are erased";
        EXPECT_EQ(layer(), "frozen locked");
    }
}

TEST_F(Check, ARootMustPassBothHalvesOfItsEraseTest) {
    for (const std::size_t half : {1U, 2U}) {
        ASSERT_TRUE(OpenFileSystem{}.write(L"/a/f", value("5")));
        host::faults::failCall("acdbEntDel", half);
        EXPECT_TRUE(lookUpRoot()) << half;
        EXPECT_TRUE(host::faults::struck());
        host::faults::reset();
        EXPECT_EQ(tree(), "/") << half;
        EXPECT_EQ(inserts(), 1u) << half;
    }
}

TEST_F(Check, ABlockOfAnotherKindIsMadeAnewAndKeepsItsLinkUnlessThatIsDead) {
    const std::wstring root = handleOf("/");
    for (const wchar_t* link : {root.c_str(), static_cast<const wchar_t*>(nullptr), L"FFFFFF"}) {
        replaceBlock(link);
        ASSERT_EQ(blockType(), "LINE");
        EXPECT_TRUE(lookUpRoot());
        EXPECT_EQ(blockType(), "ATTDEF");
        EXPECT_EQ(tree(), link == root.c_str() ? kWhole : "/");
    }
}

TEST_F(Check, LeavesTheAnchorAloneWhileADialogIsActiveAndThroughAnEmptyView) {
    setText(blockEntity(), kRootLink, L"FFFFFF");
    OpenFileSystem store;
    CMOREntity block;
    ASSERT_TRUE(store.getBlockEntity(block));
    OpenFileSystem{CMORCadView{}}.checkBlock(block);
    for (const int state : {8, 9, 12}) {
        host::setSystemVariable(L"CMDACTIVE", host::makeInteger(state));
        store.checkBlock(block);
        EXPECT_EQ(tree(), "/ missing");
        EXPECT_EQ(inserts(), 4u);
    }
    host::setSystemVariable(L"CMDACTIVE", host::makeInteger(7));
    store.checkBlock(block);
    EXPECT_EQ(tree(), "no root");
    EXPECT_EQ(inserts(), 0u);
}

TEST_F(Check, DoesNotRunWhileTheRootIsInTheTable) {
    OpenFileSystem store;
    wchar_t path[] = L"/";
    CMOREntity root;
    ASSERT_TRUE(store.getDir(path, false, root));
    setText(blockEntity(), kRootLink, L"FFFFFF");
    EXPECT_TRUE(store.getDir(path, false, root));
    EXPECT_EQ(tree(), "/ missing");
}

TEST_F(Check, ARemovedStoreIsEmptyOnceTheDrawingWasSaved) {
    fs().removeFileSystem();
    reopen();
    EXPECT_EQ(tree(), "/ missing");
    EXPECT_EQ(read("/a/b/f"), "false");
    EXPECT_EQ(tree(), "/");
    EXPECT_TRUE(write("/a/f", "1"));
    EXPECT_EQ(tree(), "/ [a/ [f=1]]");
}

}  // namespace
}  // namespace mor::test
