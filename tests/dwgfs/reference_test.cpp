#include "tests/dwgfs/store_fixture.h"
#include "tests/dwgfs/stored_drawing.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace mor::test {
namespace {

/// A drawing with a store of its own, and a reference to one.
class ReferencedStore : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        static_cast<void>(storedDrawing("").save("stored.dxf"));
        open(DxfDrawing{.layers = {"0"},
                        .blocks = referenceDefinition("PLAN", "stored.dxf"),
                        .entities = insertEntity("A1", "0", "PLAN")}
                 .save("site.dxf"));
        ASSERT_TRUE(write("/own/f", "1"));
        const auto insert = host::findHandle(document(), L"A1");
        ASSERT_TRUE(insert);
        ads_name name;
        insert->copyTo(name);
        MOR_XRefView view;
        ASSERT_TRUE(view.connect(name));
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

}  // namespace
}  // namespace mor::test
