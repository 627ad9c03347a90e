#include "dwgfs/names.h"
#include "platform/runtime.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class Directories : public StoreTest {
protected:
    /// Whether the path resolves through an object of its own, whose table holds nothing else.
    bool resolves(std::string_view path, bool create = false) {
        OpenFileSystem fresh;
        return resolves(fresh, path, create);
    }
    static bool resolves(OpenFileSystem& store, std::string_view path, bool create = false) {
        std::wstring buffer = wide(path);
        CMOREntity dir;
        const bool result = store.getDir(buffer.c_str(), create, dir);
        EXPECT_EQ(buffer, wide(path)) << "the path is whole again";
        return result;
    }
    /// Which of the paths are in the table; looking leaves it as it is.
    static std::string table(OpenFileSystem& store, std::initializer_list<const wchar_t*> paths) {
        std::string result;
        CMOREntity dir;
        for (const wchar_t* path : paths)
            if (store.getDirFromHashTable(path, false, dir)) result += host::toUtf8(path) + " ";
        return result;
    }
};

TEST_F(Directories, AreMadeFromTheRootDown) {
    EXPECT_FALSE(resolves("/a/b/c"));
    EXPECT_EQ(tree(), "none");
    EXPECT_TRUE(resolves("/a/b/c", true));
    EXPECT_EQ(tree(), "/ [a/ [b/ [c/]]]");
    EXPECT_TRUE(resolves("/a/b"));
    EXPECT_FALSE(resolves("/a/c"));
    EXPECT_EQ(inserts(), 4u);
}

TEST_F(Directories, EnterTheTableWithAllTheirParentsAndDifferInCase) {
    ASSERT_TRUE(resolves("/a/b", true));
    OpenFileSystem store;
    EXPECT_TRUE(resolves(store, "/a/b"));
    EXPECT_EQ(table(store, {L"/", L"/a", L"/a/b", L"/A", L"/a/"}), "/ /a /a/b ");
    EXPECT_TRUE(resolves(store, "/A/b", true));
    EXPECT_EQ(table(store, {L"/", L"/a", L"/a/b", L"/A", L"/A/b"}), "/ /a /a/b /A /A/b ");
    EXPECT_EQ(tree(), "/ [a/ [b/] A/ [b/]]");
    for (int round = 0; round < 2; ++round) {  // a look-up removes what is gone
        toggleErased(entityOf("/a/b"));
        EXPECT_EQ(table(store, {L"/a", L"/a/b"}), "/a ");
    }
}

TEST_F(Directories, TheRootIsNotMadeWithoutABlockUnlessAskedFor) {
    OpenFileSystem store;
    CMOREntity root;
    EXPECT_FALSE(store.getRoot(root, false));
    EXPECT_EQ(tree(), "none");
    EXPECT_TRUE(store.getRoot(root, true));
    EXPECT_EQ(tree(), "/");
    ASSERT_TRUE(store.makeBlock());
    EXPECT_EQ(tree(), "no root");
    EXPECT_TRUE(OpenFileSystem{}.getRoot(root, false)) << "the block is there";
    EXPECT_EQ(tree(), "/");
}

TEST_F(Directories, ErasedOneBehindAValidLinkIsRestored) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    toggleErased(entityOf("/a/b"));
    ASSERT_EQ(tree(), "/ [a/ [b/ erased]]");
    setLayer(true, true);
    EXPECT_EQ(read("/a/b/f"), "5");
    EXPECT_EQ(tree(), "/ [a/ [b/ [f=5]]]");
    EXPECT_EQ(layer(), "frozen locked");
}

TEST_F(Directories, OneThatCannotBeFoundOrRestoredEmptiesTheStore) {
    for (const wchar_t* handle : {L"FFFFFF", L"no handle", L""}) {
        ASSERT_TRUE(OpenFileSystem{}.write(L"/a/b/f", value("5")));
        setText(entityOf("/a"), L"^b", handle);
        EXPECT_FALSE(resolves("/a/b")) << host::toUtf8(handle);
        EXPECT_EQ(tree(), "/");
    }
    ASSERT_TRUE(OpenFileSystem{}.write(L"/a/b/f", value("5")));
    toggleErased(entityOf("/a/b"));
    host::faults::failCall("acdbEntDel", 1);
    EXPECT_EQ(read("/a/b/f"), "false");
    EXPECT_TRUE(host::faults::struck());
    EXPECT_EQ(tree(), "/");
}

TEST_F(Directories, AreMadeBesideAFileWithAnArrowButNotWhereAFileStands) {
    ASSERT_TRUE(write("/a/x", "(1 2)") && write("/a/>y", "1"));
    EXPECT_FALSE(resolves("/a/x", true) || write("/a/x/f", "5"));
    EXPECT_TRUE(resolves("/a/y", true));
    EXPECT_EQ(tree(), "/ [a/ [x=(1 2) >y=1 y/]]");
    EXPECT_TRUE(resolves("/>a")) << "means the same directory";
    EXPECT_FALSE(resolves("/>>a"));
}

TEST_F(Directories, RefusePathsThatNameNone) {
    ASSERT_TRUE(write("/a/f", "5"));
    for (const char* path : {"", "a", "a/b", "/a/", "/a/f", "/a//f", "//a", "//a/f"})
        EXPECT_FALSE(resolves(path)) << path;
    EXPECT_FALSE(resolves("/" + std::string(127, 'a'), true));
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
}

TEST_F(Directories, TheParentOfAPathKeepsItsLastName) {
    ASSERT_TRUE(write("/a/f", "5"));
    const struct {
        std::wstring path;
        bool found;
        const wchar_t* name;
    } cases[] = {{L"/x", true, L"x"},         {L"/a/f", true, L"f"},
                 {L"/a/none", true, L"none"}, {L"/", false, L""},
                 {L"/none/f", false, L""},    {L"f", false, L""},
                 {L"//a", false, L""},        {L"//", false, L""},
                 {L"", false, L""},           {L"/" + std::wstring(128, L'a'), false, L""}};
    for (const auto& c : cases) {
        OpenFileSystem store;
        CMOREntity parent;
        NameBuffer name;
        EXPECT_EQ(store.getParentDir(c.path.c_str(), false, parent, name.data()), c.found);
        EXPECT_STREQ(name.c_str(), c.name) << narrow(c.path);
    }
}

TEST_F(Directories, AFileIsLookedForWhereNoDirectoryStands) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    OpenFileSystem store;
    CMOREntity dir;
    NameBuffer name;
    ads_name entity = {};
    wchar_t missing[] = L"/a/new";
    EXPECT_TRUE(store.getFile(missing, false, dir, name.data()));
    EXPECT_TRUE(dir.GetEName(entity));
    EXPECT_EQ(EntityName{entity}, entityOf("/a"));
    wchar_t directory[] = L"/a/b";
    EXPECT_FALSE(store.getFile(directory, false, dir, name.data()));
    EXPECT_FALSE(dir.GetEName(entity)) << "disconnected";
    wchar_t arrow[] = L"/a/>b";
    EXPECT_FALSE(store.getFile(arrow, false, dir, name.data()));
}

TEST_F(Directories, AndFilesAreToldApart) {
    EXPECT_TRUE(fs().isDirectory(L"/"));
    ASSERT_TRUE(write("/a/b/f", "5") && write("/a/b/list", "(1 2)"));
    const struct {
        const wchar_t* path;
        bool dir, file;
    } cases[] = {
        {L"/", true, false},      {L"/a", true, false},        {L"/a/b", true, false},
        {L"/a/b/f", false, true}, {L"/a/b/list", false, true}, {L"/a/b/none", false, false},
        {L"/none", false, false}, {L"/none/f", false, false},  {L"/a/", false, false},
        {L"a", false, false},     {L"", false, false},         {L"/a/b/$INFO", false, false},
        {L"/>a", false, false},   {nullptr, false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(fs().isDirectory(c.path), c.dir) << narrow(c.path ? c.path : L"null");
        EXPECT_EQ(fs().isFile(c.path), c.file) << narrow(c.path ? c.path : L"null");
    }
    setText(entityOf("/a"), L"b", L"text");
    EXPECT_TRUE(fs().isFile(L"/a/b") && fs().isDirectory(L"/a/b")) << "a name that is both";
}

TEST_F(Directories, LinksInACircleResolveByTheirParts) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    link("/a/b", L"^a", "/a");
    EXPECT_EQ(read("/a/b/a/b/f"), "5");
}

}  // namespace
}  // namespace mor::test
