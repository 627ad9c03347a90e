#include "dwgfs/names.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class Files : public StoreTest {
protected:
    /// Neither written, read nor deleted.
    static void expectRefused(std::initializer_list<const char*> paths) {
        for (const char* path : paths) {
            EXPECT_FALSE(write(path, "1")) << path;
            EXPECT_EQ(read(path), "false") << path;
            EXPECT_FALSE(del(path)) << path;
        }
    }
};

TEST_F(Files, HoldAnyValue) {
    ASSERT_TRUE(write("/a/f", "1"));
    const std::string entity = "(1 (handent \"" + host::toUtf8(handleOf("/a")) + "\"))";
    for (const std::string& lisp :
         std::vector<std::string>{"5", "-2147483648", "0.1", "-0.0", "\"\"", "\"a\\n\\\"b^J \"",
                                  "(1 (2 \"x\") . 3)", "(nil)", "(handent \"0\")", entity}) {
        EXPECT_TRUE(write("/a/f", lisp)) << lisp;
        EXPECT_EQ(read("/a/f"), lisp);
    }
    reopen();
    EXPECT_EQ(read("/a/f"), entity);
}

TEST_F(Files, LockTheControlLayerWheneverTheyAreWritten) {
    ASSERT_TRUE(write("/a/f", "5"));
    setLayer(false, false);
    EXPECT_TRUE(write("/a/f", "6"));
    EXPECT_EQ(host::counters().locksTaken, 2u);
    EXPECT_EQ(layer(), "frozen locked");
    setLayer(false, false);
    EXPECT_TRUE(del("/a/none"));
    EXPECT_EQ(layer(), "frozen locked");
    setLayer(false, false);
    EXPECT_EQ(read("/a/f"), "6");
    EXPECT_EQ(layer(), "thawed unlocked");
}

TEST_F(Files, RefusePathsThatAreNoneOrNameSomethingElse) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    const std::string before = tree();
    expectRefused({"/f", "/", "", "a/f", "//f", "/a/", "/a/1", "/>a/f", "/a/b/f/", "/a/f.x", "/a/b",
                   "/a/>b", "/a/b/f/g"});
    EXPECT_EQ(read("/none/f"), "false");
    EXPECT_FALSE(del("/none/f"));
    CMORAdsLispVar untouched{L"untouched"};
    EXPECT_FALSE(fs().read(nullptr, untouched) || fs().write(nullptr, untouched));
    EXPECT_FALSE(fs().del(nullptr));
    EXPECT_EQ(host::stringOf(untouched), L"untouched");
    EXPECT_EQ(tree(), before);
}

TEST_F(Files, ThatAreMissingLeaveTheValueAlone) {
    ASSERT_TRUE(write("/a/f", "5"));
    EXPECT_EQ(read("/a/none"), "unread");
    host::faults::failCall("CMOREntity::GetAttribute", 1);
    EXPECT_EQ(read("/a/f"), "unread") << "and those that cannot be read";
}

TEST_F(Files, AreRemovedByDelAndByNil) {
    ASSERT_TRUE(write("/a/f", "5") && write("/a/g", "6"));
    EXPECT_TRUE(del("/a/f"));
    EXPECT_TRUE(del("/a/f"));
    EXPECT_EQ(tree(), "/ [a/ [g=6]]");
    host::faults::failCall("CMOREntity::Flush", 1);
    EXPECT_TRUE(del("/a/g") && host::faults::struck()) << "whatever the flush answers";
    EXPECT_EQ(tree(), "/ [a/ [g=6]]");
    EXPECT_TRUE(write("/a/g", "nil") && write("/b/none", "nil"));
    EXPECT_EQ(tree(), "/ [a/ b/]");
    ASSERT_TRUE(write("/a/g", "1") && write("/a/f", "2"));
    EXPECT_EQ(tree(), "/ [a/ [g=1 f=2] b/]") << "set again, at the end";
}

TEST_F(Files, NeedTheCurrentDocumentToBeActive) {
    ASSERT_TRUE(write("/a/f", "5"));
    for (AcApDocument* active :
         {static_cast<AcApDocument*>(nullptr), host::createDocument(host::Release::R12)}) {
        host::setActiveDocument(active);
        EXPECT_EQ(read("/a/f"), "unread");
        setLayer(false, false);
        EXPECT_TRUE(write("/a/g", "6"));
        EXPECT_EQ(layer(), "frozen locked");
        EXPECT_TRUE(del("/a/g")) << "del looks at no document";
        if (active != nullptr) host::closeDocument(active);
    }
    makeCurrent(document());
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
}

TEST_F(Files, NeedTheDocumentLockButNotToBeDeleted) {
    ASSERT_TRUE(write("/a/f", "5"));
    host::faults::refuseLocks(true);
    EXPECT_EQ(read("/a/f"), "false");
    EXPECT_FALSE(write("/a/g", "6"));
    EXPECT_FALSE(write("/new/g", "6"));
    EXPECT_EQ(tree(), "/ [a/ [f=5]]") << "no directory was made before the lock";
    EXPECT_TRUE(del("/a/f"));
    EXPECT_EQ(tree(), "/ [a/]");
}

TEST_F(Files, AreNotChangedThroughAnEmptyView) {
    ASSERT_TRUE(write("/a/f", "5"));
    setLayer(false, false);
    CMORCadDwgFileSystem readOnly{CMORCadView{}};
    CMORAdsLispVar untouched{L"untouched"};
    EXPECT_FALSE(readOnly.write(L"/a/f", untouched) || readOnly.del(L"/a/f"));
    EXPECT_FALSE(readOnly.delDir(L"/a"));
    EXPECT_FALSE(readOnly.read(L"/a/f", untouched)) << "no view, no block";
    EXPECT_EQ(host::stringOf(untouched), L"untouched");
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
    EXPECT_EQ(layer(), "thawed unlocked");
    EXPECT_EQ(printed(), L"");
}

TEST_F(Files, TellTheMemoryTheyUse) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    const std::string before = tree();
    const long empty = fs().getFreeMem(L"/a/b");
    ASSERT_TRUE(write("/a/b/g", "(1 2 3)"));
    EXPECT_EQ(fs().getUsedMem(L"/a/b/g"), 3 + 19);
    EXPECT_EQ(fs().getFreeMem(L"/a/b"), empty - fs().getUsedMem(L"/a/b/g"));
    ASSERT_TRUE(del("/a/b/g"));
    EXPECT_EQ(fs().getFreeMem(L"/a/b"), empty);
    const std::string big = "\"" + std::string(17000, 'x') + "\"";
    EXPECT_FALSE(write("/a/b/g", big) || write("/a/b/f", big));
    EXPECT_EQ(tree(), before);
}

TEST_F(Files, TellNoMemoryForWhatIsNotThere) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    for (const wchar_t* path :
         {L"/none", L"/a/f", L"", L"a", L"//a", L"/a/b/", static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(fs().getFreeMem(path), 0);
    for (const wchar_t* path : {L"/a/none", L"/a/b", L"/none/f", L"/f", L"/", L"", L"f", L"/a/b/",
                                L"//a/b/f", static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(fs().getUsedMem(path), 0);
    EXPECT_EQ(tree(), "/ [a/ [b/ [f=5]]]");
}

TEST_F(Files, LimitsHoldForNames) {
    const std::string dir = "/" + std::string(126, 'd');
    EXPECT_TRUE(write(dir + "/" + std::string(127, 'f'), "1"));
    EXPECT_TRUE(write(dir + "/>" + std::string(126, 'f'), "2"));
    EXPECT_EQ(read(dir + "/" + std::string(127, 'f')), "1");
    const std::string before = tree();
    EXPECT_FALSE(write(dir + "/" + std::string(128, 'f'), "3"));
    EXPECT_FALSE(write(dir + "d/f", "3"));
    EXPECT_FALSE(write("/a/" + std::string(1100, 'f'), "3"));
    EXPECT_EQ(tree(), before);
}

}  // namespace
}  // namespace mor::test
