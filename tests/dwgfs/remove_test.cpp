#include "dwgfs/names.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class Removal : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        for (const char* path : {"/a/f", "/a/b/g", "/a/b/c/h", "/d/f"})
            ASSERT_TRUE(write(path, "1"));
        ASSERT_EQ(tree(), "/ [a/ [f=1 b/ [g=1 c/ [h=1]]] d/ [f=1]]");
    }
    static bool delDir(std::string_view path) { return fs().delDir(wide(path).c_str()); }
};

TEST_F(Removal, TakesEverythingBelowAlong) {
    const EntityName entities[] = {entityOf("/a/b"), entityOf("/a/b/c"), entityOf("/a")};
    setLayer(false, false);
    EXPECT_TRUE(delDir("/a/b"));
    EXPECT_EQ(tree(), "/ [a/ [f=1] d/ [f=1]]");
    EXPECT_EQ(read("/a/b/g") + read("/a/f"), "false1");
    EXPECT_TRUE(delDir("/a"));
    EXPECT_EQ(tree(), "/ [d/ [f=1]]");
    EXPECT_EQ(inserts(), 2u);
    for (const EntityName entity : entities)
        EXPECT_TRUE(host::recordInfo(document(), entity)->erased);
    for (const wchar_t* path : {L"/a", L"/a/b", L"/a/b/c"}) EXPECT_FALSE(fs().isDirectory(path));
    EXPECT_EQ(layer(), "frozen locked");
    EXPECT_EQ(host::counters().locksHeld, 0u);
    EXPECT_TRUE(write("/a/f", "2")) << "there is room for a new one";
    reopen();
    EXPECT_EQ(tree(), "/ [d/ [f=1] a/ [f=2]]");
}

TEST_F(Removal, OfWhatIsNoDirectoryIsRefused) {
    const std::string before = tree();
    for (const char* path : {"/", "/a/f", "/none", "/none/b", "", "a", "/a/", "//a", "/>a"})
        EXPECT_FALSE(delDir(path)) << path;
    EXPECT_FALSE(fs().delDir(nullptr));
    EXPECT_FALSE(delDir("/" + std::string(1100, 'a')));
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Removal, NeverReachesTheRootItself) {
    OpenFileSystem store;
    CMOREntity block;
    ASSERT_TRUE(store.getBlockEntity(block));
    for (const wchar_t* path : {L"/", L""}) {
        EXPECT_FALSE(store.removeDir(block, L"/", path));
        EXPECT_EQ(
            printed(),
            L"CMORCadDwgFileSystem::removeDir: Kann Wurzelverzeichnis \"/\" nicht l\u00F6schen");
    }
    EXPECT_EQ(inserts(), 5u);
}

TEST_F(Removal, TakesErasedDirectoriesAlong) {
    const EntityName erased = entityOf("/a/b");
    toggleErased(erased);
    EXPECT_TRUE(delDir("/a"));
    EXPECT_EQ(tree(), "/ [d/ [f=1]]");
    EXPECT_TRUE(host::recordInfo(document(), erased)->erased);
    EXPECT_EQ(inserts(), 2u) << "/a/b/c was reached through it";
}

TEST_F(Removal, GoesOnBehindADeadLink) {
    setText(entityOf("/a/b"), L"^c", L"FFFFFF");
    const EntityName a = entityOf("/a");
    EXPECT_TRUE(delDir("/a"));
    EXPECT_TRUE(host::recordInfo(document(), a)->erased);
    EXPECT_EQ(tree(), "/") << "the dead link emptied the store meanwhile";
}

TEST_F(Removal, FollowsNoCircle) {
    link("/a/b/c", L"^up", "/a");
    link("/a/b/c", L"^top", "/");
    link("/a", L"^second", "/a/b");
    EXPECT_TRUE(delDir("/a"));
    EXPECT_EQ(tree(), "/ [d/ [f=1]]");
    EXPECT_EQ(inserts(), 2u);
}

TEST_F(Removal, FollowsNoCircleThroughAParentThatItWasHanded) {
    link("/a/b", L"^up", "/a");
    link("/a/b/c", L"^top", "/");
    CMOREntity parent;
    ASSERT_TRUE(parent.Connect(entityOf("/a")));
    EXPECT_TRUE(OpenFileSystem{}.removeDir(parent, L"b", L"/a/b"));
    EXPECT_EQ(tree(), "/ [a/ [f=1 b/ erased] d/ [f=1]]");
}

TEST_F(Removal, OfACircleTakesTheLinkAlone) {
    link("/a/b", L"^up", "/a");
    EXPECT_TRUE(delDir("/a/b/up"));
    EXPECT_EQ(tree(), "/ [a/ [f=1 b/ [g=1 c/ [h=1]]] d/ [f=1]]");
}

TEST_F(Removal, EndsWhereEveryDirectoryIsLinkedTwice) {
    std::string path = "/a/b";
    for (int level = 0; level < 40; ++level) {
        const std::string upper = path;
        path += "/n";
        ASSERT_TRUE(write(path + "/f", "1"));
        link(upper, L"^second", path);
    }
    EXPECT_TRUE(delDir("/a"));
    EXPECT_EQ(tree(), "/ [d/ [f=1]]");
    EXPECT_EQ(inserts(), 2u);
}

TEST_F(Removal, GoesDeeperThanAPathIsLong) {
    // Two chains of directories, the second hung below the end of the first.
    std::string first = "/x";
    std::string second = "/y";
    while (first.size() < 800) {
        first += "/n";
        second += "/n";
    }
    ASSERT_TRUE(write(first + "/f", "1"));
    ASSERT_TRUE(write(second + "/f", "1"));
    link(first, L"^y", "/y");
    setText(entityOf("/"), L"^y", L"");
    EXPECT_TRUE(delDir("/x"));
    EXPECT_EQ(inserts(), 5u);
}

TEST_F(Removal, NeedsNoStackOfItsOwnDepth) {
    // A chain of directories, each hung into the next by its handle: faster than by its path.
    OpenFileSystem store;
    CMOREntity upper;
    ads_name name;
    entityOf("/a").copyTo(name);
    ASSERT_TRUE(upper.Connect(name));
    for (int level = 0; level < 20000; ++level) {
        CMOREntity dir;
        ASSERT_TRUE(store.makeDir(upper, L"n", L"/n", dir));
        ASSERT_TRUE(dir.GetEName(name) && upper.Connect(name));
    }
    ASSERT_EQ(inserts(), 20005u);
    EXPECT_TRUE(delDir("/a"));
    EXPECT_EQ(inserts(), 2u);
}

}  // namespace
}  // namespace mor::test
