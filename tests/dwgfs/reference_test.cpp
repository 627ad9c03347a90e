#include "space/global_view.h"
#include "space/global_view_guard.h"
#include "tests/dwgfs/store_fixture.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace mor::test {
namespace {

/// A drawing with a store of its own, and a reference to one.
class ReferencedStore : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        storedDrawing("").save("stored.dxf");
        open(DxfDrawing{.layers = {"0"},
                        .blocks = referenceDefinition("PLAN", "stored.dxf"),
                        .entities = insertEntity("A1", "0", "PLAN")}
                 .save("site.dxf"));
        ASSERT_TRUE(write("/own/f", "1"));
        const auto insert = host::findHandle(document(), L"A1");
        ASSERT_TRUE(insert);
        MOR_XRefView view;
        ASSERT_TRUE(view.connect(*insert));
        m_store = std::make_unique<OpenFileSystem>(view);
    }
    void TearDown() override {
        m_store.reset();
        StoreTest::TearDown();
    }
    [[nodiscard]] OpenFileSystem& store() { return *m_store; }

private:
    std::unique_ptr<OpenFileSystem> m_store;
};

TEST_F(ReferencedStore, IsReadThroughItsView) {
    EXPECT_FALSE(store().hasWriteableView());
    EXPECT_FALSE(store().IsInModelSpace());
    EXPECT_STREQ(store().ViewHandle(), L"A1");
    EXPECT_STREQ(store().getViewName(), L"PLAN");
    CMORAdsLispVar result;
    EXPECT_TRUE(store().read(L"/a/f", result));
    EXPECT_EQ(host::lispText(result), "5");
    EXPECT_TRUE(store().readAllFiles(L"/a/b", result));
    EXPECT_EQ(host::lispText(result), R"((("g" . "x")))");
    EXPECT_TRUE(store().isFile(L"/a/b/g"));
    EXPECT_FALSE(store().isDirectory(L"/own"));
    EXPECT_EQ(store().getUsedMem(L"/a/f"), 3 + 5);
}

TEST_F(ReferencedStore, IsNeverChanged) {
    host::faults::refuseWrites(true);
    EXPECT_FALSE(store().write(L"/a/f", value("6")));
    EXPECT_FALSE(store().del(L"/a/f"));
    store().zero();
    store().deleteAllInserts();
    EXPECT_FALSE(store().makeBlock());
    CMOREntity dir;
    wchar_t missing[] = L"/a/none";
    EXPECT_FALSE(store().getDir(missing, true, dir));
    CMORAdsLispVar result;
    EXPECT_TRUE(store().read(L"/a/b/g", result));
    EXPECT_EQ(host::faults::refusedWrites(), 0u);
    host::faults::refuseWrites(false);
    EXPECT_EQ(tree(), "/ [own/ [f=1]]");
    EXPECT_EQ(printed(), L"");
}

TEST_F(ReferencedStore, BindingToItForgetsTheOwnDirectories) {
    OpenFileSystem own;
    CMOREntity dir;
    wchar_t path[] = L"/own";
    ASSERT_TRUE(own.getDir(path, false, dir));
    own = store();
    EXPECT_FALSE(own.isDirectory(L"/own"));
    EXPECT_TRUE(own.isDirectory(L"/a"));
    EXPECT_TRUE(own.connect(*CMORCadView::getTheGlobalObject()));
    EXPECT_TRUE(own.isDirectory(L"/own"));
    EXPECT_FALSE(own.isDirectory(L"/a"));
}

TEST_F(ReferencedStore, IsReadByTheDocumentsFileSystemWhileTheGlobalViewIsOnIt) {
    ASSERT_TRUE(write("/a/f", "7"));
    ASSERT_TRUE(write("/a/b/g", "8"));
    ASSERT_TRUE(host::saveDocument(document()));
    const std::filesystem::path own = host::documentInfo(document()).path;
    const std::filesystem::path other = host::references(document())[0].found;
    const std::string before = readFile(own) + readFile(other);
    for (int round = 0; round < 2; ++round) {  // directories of each are known at the next switch
        EXPECT_EQ(read("/a/f") + read("/a/b/g") + read("/own/f"), "781");
        ASSERT_TRUE(mor_xref::SwitchGlobalView(L"a1"));
        EXPECT_EQ(read("/a/f") + read("/a/b/g") + read("/own/f"), "5\"x\"false");
        EXPECT_STREQ(fs().getViewName(), L"PLAN");
        EXPECT_FALSE(write("/a/f", "6") || write("/new/f", "6") || del("/a/f"));
        EXPECT_FALSE(fs().delDir(L"/a"));
        {
            const MorAdmin::Workaround::GlobalViewEnsureMS guard;
            EXPECT_EQ(read("/a/f"), "7");
            ASSERT_TRUE(mor_xref::SwitchGlobalView(L"A1"));
            EXPECT_EQ(read("/a/f"), "5");
        }
        EXPECT_EQ(read("/a/f"), "7");
    }
    ASSERT_TRUE(host::saveDocument(document()));
    EXPECT_EQ(readFile(own) + readFile(other), before);
    EXPECT_TRUE(write("/a/f", "9"));
    EXPECT_EQ(tree(), "/ [own/ [f=1] a/ [f=9 b/ [g=8]]]");
}

TEST_F(ReferencedStore, IsReadAnewAfterAReloadOnceTheGlobalViewIsSwitchedToItAgain) {
    ASSERT_TRUE(mor_xref::SwitchGlobalView(L"A1"));
    EXPECT_EQ(read("/a/f"), "5");
    DxfDrawing changed = storedDrawing("");
    changed.entities.replace(changed.entities.find("1071 5"), 6, "1071 6");
    changed.save("stored.dxf");
    ASSERT_TRUE(host::reloadReference(document(), L"PLAN"));
    static_cast<void>(read("/a/f"));  // nothing, until the view is connected anew
    ASSERT_TRUE(mor_xref::SwitchGlobalView(L"A1"));
    EXPECT_EQ(read("/a/f"), "6");
}

}  // namespace
}  // namespace mor::test
