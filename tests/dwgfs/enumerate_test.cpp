#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class Enumeration : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_TRUE(write("/a/f", "5"));
        ASSERT_TRUE(write("/a/s/inner", "1"));
        ASSERT_TRUE(write("/a/g", "(1 2)"));
        ASSERT_TRUE(write("/a/>x", "\"t\""));
    }
    /// The names, or what happened: "false" with what was in the list before.
    template <typename List>
    static std::string list(bool (CMORCadDwgFileSystem::*operation)(const wchar_t*, List&),
                            const wchar_t* path) {
        List result{};
        fill(result);
        const bool ok = (fs().*operation)(path, result);
        return (ok ? "" : "false ") + shown(result);
    }
    using Fs = CMORCadDwgFileSystem;
    static std::string files(const wchar_t* path) {
        return list<CMORStringList>(&Fs::getAllFiles, path);
    }
    static std::string dirs(const wchar_t* path) {
        return list<CMORStringList>(&Fs::getAllDirs, path);
    }
    static std::string lispFiles(const wchar_t* path) {
        return list<CMORAdsLispVar>(&Fs::getAllFiles, path);
    }
    static std::string lispDirs(const wchar_t* path) {
        return list<CMORAdsLispVar>(&Fs::getAllDirs, path);
    }
    static std::string allFiles(const wchar_t* path) { return list(&Fs::readAllFiles, path); }
    static std::string matching(const wchar_t* pattern) {
        CMORAdsLispVar result;
        const bool ok = fs().readAllMatchingFiles(pattern, result);
        return (ok ? "" : "false ") + host::lispText(result);
    }

private:
    static void fill(CMORStringList& list) { list.Append(L"before"); }
    static void fill(CMORAdsLispVar& list) { list = CMORAdsLispVar{L"before"}; }
    static std::string shown(const CMORStringList& list) { return joined(list); }
    static std::string shown(const CMORAdsLispVar& list) { return host::lispText(list); }
};

TEST_F(Enumeration, ListsEachKindInStoredOrder) {
    EXPECT_EQ(files(L"/a"), "f g >x");
    EXPECT_EQ(dirs(L"/a"), "s");
    EXPECT_EQ(dirs(L"/"), "a");
    EXPECT_EQ(files(L"/"), "");
    EXPECT_EQ(lispFiles(L"/a"), R"(("f" "g" ">x"))");
    EXPECT_EQ(lispDirs(L"/a"), R"(("s"))");
    EXPECT_EQ(lispDirs(L"/a/s"), "nil");
    CMORStringList both;
    both.Append(L"before");
    EXPECT_TRUE(OpenFileSystem{}.getAll(std::wstring{L"/a"}.data(), both, OpenFileSystem::All));
    EXPECT_EQ(joined(both), "f s g >x");
    EXPECT_FALSE(OpenFileSystem{}.getAll(std::wstring{L"/no"}.data(), both, OpenFileSystem::All));
    EXPECT_EQ(joined(both), "f s g >x");
    host::resetCounters();
    EXPECT_EQ(files(L"/a"), "f g >x");
    EXPECT_EQ(host::counters().locksTaken, 0u);
    static_cast<void>(matching(L"/a/*"));
    EXPECT_EQ(host::counters().locksTaken, 3u) << "one for each file that is read";
}

TEST_F(Enumeration, PassesOverAttributesThatAreNoEntries) {
    const EntityName dir = entityOf("/a/s");
    for (const wchar_t* name : {L"$OTHER", L"a.b", L"^a.b", L"^1", L"123", L"^", L"^>q", L">1"})
        setText(dir, name, L"x");
    setText(dir, std::wstring(128, L'n').c_str(), L"x");
    setText(dir, (L"^" + std::wstring(127, L'n')).c_str(), L"x");
    EXPECT_EQ(files(L"/a/s"), "inner");
    EXPECT_EQ(dirs(L"/a/s"), "");
}

TEST_F(Enumeration, AnswersFalseForWhatDoesNotResolveAndReportsInvalidPathsOfFiles) {
    for (const std::wstring path : {L"/none", L"/a/f", L"/a/", L"a", L"", L"//a", L"//a/b"}) {
        const bool valid = path == L"/none" || path == L"/a/f";
        const auto report = [&](const wchar_t* operation) {
            return valid ? L"" : operation + (L": invalid path \"" + path + L"\"");
        };
        EXPECT_EQ(dirs(path.c_str()), "false before");
        EXPECT_EQ(lispDirs(path.c_str()), "false nil");
        EXPECT_EQ(printed(), L"");
        EXPECT_EQ(files(path.c_str()), "false before");
        EXPECT_EQ(printed(), report(L"CMORCadDwgFileSystem::getAllFiles"));
        EXPECT_EQ(lispFiles(path.c_str()), "false nil");
        EXPECT_EQ(printed(), report(L"CMORCadDwgFileSystem::getAllFiles"));
        EXPECT_EQ(allFiles(path.c_str()), "false \"before\"");
        EXPECT_EQ(printed(), report(L"CMORCadDwgFileSystem::readAllFiles"));
    }
}

TEST_F(Enumeration, RefusesPathsThatAreTooLong) {
    const std::wstring path = L"/" + std::wstring(1100, L'a');
    EXPECT_EQ(matching(path.c_str()), "false nil");
    for (const wchar_t* refused : {path.c_str(), static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(dirs(refused) + " " + files(refused), "false before false before");
    EXPECT_EQ(dirs(L"/>a"), "s") << "an arrow is taken in directories, but not in files";
    EXPECT_EQ(files(L"/>a"), "false before");
}

TEST_F(Enumeration, ReadsAllFilesAsPairs) {
    EXPECT_EQ(allFiles(L"/a"), R"((("f" . 5) ("g" 1 2) (">x" . "t")))");
    EXPECT_EQ(allFiles(L"/a/s"), R"((("inner" . 1)))");
    EXPECT_EQ(allFiles(L"/"), "nil");
    host::faults::failCall("CMOREntity::GetAttribute", 1);
    EXPECT_EQ(allFiles(L"/a"), R"((("f") ("g" 1 2) (">x" . "t")))") << "what cannot be read is nil";
}

TEST_F(Enumeration, ReadsFilesThatMatchPartByPart) {
    ASSERT_TRUE(write("/a1/f1", "1"));
    ASSERT_TRUE(write("/a1/x", "2"));
    ASSERT_TRUE(write("/b/f2", "3"));
    setText(entityOf("/"), L"rootfile", L"put there by others");
    const struct {
        const wchar_t* pattern;
        const char* result;
    } cases[] = {{L"/a*/f*", R"((("/a/f" 5) ("/a1/f1" 1)))"},
                 {L"/a#/*", R"((("/a1/f1" 1) ("/a1/x" 2)))"},
                 {L"/~a*/*", R"((("/b/f2" 3)))"},
                 {L"/a/s/*", R"((("/a/s/inner" 1)))"},
                 {L"/a/>*", R"((("/a/>x" "t")))"},
                 {L"/b,a/f,f2", R"((("/a/f" 5) ("/b/f2" 3)))"},
                 {L"/*/*/*", R"((("/a/s/inner" 1)))"},
                 {L"/*", "nil"},
                 {L"/r*", "nil"},
                 {L"/", "nil"},
                 {L"/a/", "nil"},
                 {L"//f", "nil"},
                 {L"/A/f", "nil"},
                 {L"a/f", "false nil"},
                 {L"", "false nil"},
                 {nullptr, "false nil"}};
    for (const auto& c : cases) EXPECT_EQ(matching(c.pattern), c.result);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Enumeration, SkipsCandidatesOver127Characters) {
    const std::string dir = "/" + std::string(60, 'd');
    const std::string fits = dir + "/" + std::string(127 - dir.size() - 1, 'f');
    ASSERT_TRUE(write(fits, "1"));
    ASSERT_TRUE(write(fits + "f", "2"));
    EXPECT_EQ(matching(L"/d*/*"), "((\"" + fits + "\" 1))");
}

TEST_F(Enumeration, EndsWhereLinksMultiply) {
    for (const wchar_t* name : {L"^x", L"^y"}) link("/a", name, "/a");
    EXPECT_EQ(matching(L"/a/[xy]/s/*"), R"((("/a/x/s/inner" 1) ("/a/y/s/inner" 1)))");
    CMORAdsLispVar result;
    std::wstring pattern = L"/a";
    for (int part = 0; part < 40; ++part) pattern += L"/?";
    EXPECT_TRUE(fs().readAllMatchingFiles(pattern.c_str(), result));
    EXPECT_LT(CMORAdsLisp::Length(result), 3000u);
}

TEST_F(Enumeration, AddsMatchesToWhatIsThereWithoutValuesWhileAnotherDocumentIsActive) {
    CMORAdsLispVar result;
    EXPECT_TRUE(fs().readAllMatchingFiles(L"/a/f", result));
    host::setActiveDocument(nullptr);
    EXPECT_TRUE(fs().readAllMatchingFiles(L"/a/s/*", result));
    EXPECT_EQ(host::lispText(result), R"((("/a/f" 5) ("/a/s/inner" nil)))");
    makeCurrent(document());
}

TEST_F(Enumeration, IsFalseWithoutAStore) {
    const OtherDocument other;
    EXPECT_EQ(matching(L"/a/f"), "false nil");
    EXPECT_EQ(dirs(L"/"), "false before");
    releaseDocumentObjects();
}

}  // namespace
}  // namespace mor::test
