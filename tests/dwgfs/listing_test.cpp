#include "dwgfs/names.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace mor::test {
namespace {

constexpr const wchar_t* kTitle =
    L"\n=========== MOR = DWG FILE SYSTEM === DIRECTORY LISTING =========\n\n";
constexpr const wchar_t* kColumns =
    L"\nTyp  Memory[Byte]   pszPath\n"
    L"-----------------------------------------------------------------\n";
constexpr const wchar_t* kFoot =
    L"\n=================================================================\n\n";

class Listing : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_TRUE(write("/a/f", "5"));
        ASSERT_TRUE(write("/a/b/>g", "(1 2)"));
        ASSERT_TRUE(write("/a/h", "6"));
    }
    /// What `dir` printed between head and foot, and "-> false" when it said so. Head and foot are
    /// compared.
    static std::wstring list(const std::wstring& path, bool recursive) {
        const bool result = fs().dir(path.c_str(), recursive);
        std::wstring text = printed();
        const std::wstring head = kTitle + std::wstring{recursive ? L"" : L"NON"} +
                                  L"RECURSIVE LISTING OF PATH: " + path + L"\n" + kColumns;
        EXPECT_TRUE(text.starts_with(head)) << host::toUtf8(text);
        EXPECT_TRUE(text.ends_with(kFoot)) << host::toUtf8(text);
        text =
            text.substr(head.size(), text.size() - head.size() - std::wstring_view{kFoot}.size());
        return result ? text : text + L"-> false";
    }
    static std::wstring dirLine(const wchar_t* path) {
        const std::wstring figure = std::to_wstring(fs().getFreeMem(path));
        return L"Dir   " + figure + L" free    " + path + L"\n";
    }
    static std::wstring fileLine(const wchar_t* path) {
        const std::wstring figure = std::to_wstring(fs().getUsedMem(path));
        return L"File  " + std::wstring(5 - figure.size(), L' ') + figure + L" used    " + path +
               L" \n";
    }
};

TEST_F(Listing, GoesThroughTheWholeTreeFilesFirst) {
    EXPECT_EQ(list(L"/", true), dirLine(L"/") + dirLine(L"/a") + fileLine(L"/a/f") +
                                    fileLine(L"/a/h") + dirLine(L"/a/b") + fileLine(L"/a/b/>g"));
    EXPECT_EQ(fileLine(L"/a/f"), L"File      8 used    /a/f \n");
}

TEST_F(Listing, GoesOneLevelDeepWhenNotRecursive) {
    host::resetCounters();
    EXPECT_EQ(list(L"/", false), dirLine(L"/") + dirLine(L"/a"));
    EXPECT_EQ(list(L"/a", false),
              dirLine(L"/a") + fileLine(L"/a/f") + fileLine(L"/a/h") + dirLine(L"/a/b"));
    EXPECT_EQ(host::counters().locksTaken, 0u);
}

TEST_F(Listing, ShowsASingleFileAndSaysWhatNamesNothing) {
    EXPECT_EQ(list(L"/a/f", true), fileLine(L"/a/f"));
    EXPECT_EQ(list(L"/a/x", false), L"invalid pszPath        /a/x\n-> false");
    EXPECT_EQ(list(L"/x/y", true), L"invalid pszPath        /x/y\n-> false");
}

TEST_F(Listing, PrintsNothingForAnInvalidPath) {
    for (const wchar_t* path :
         {L"", L"a", L"/a/", L"/a/b/>g", L"/a.b", static_cast<const wchar_t*>(nullptr)})
        EXPECT_FALSE(fs().dir(path, true));
    EXPECT_FALSE(fs().dir((L"/" + std::wstring(1100, L'a')).c_str(), true));
    EXPECT_EQ(printed(), L"");
}

TEST_F(Listing, ShowsTheRootOfAnEmptyDrawingAsUnresolved) {
    const OtherDocument other;
    EXPECT_EQ(list(L"/", true), L"Dir       0 free    /\n-> false");
    releaseDocumentObjects();
}

TEST_F(Listing, LooksAtTheBreakKeyBeforeEachEntry) {
    const struct {
        const wchar_t* path;
        const wchar_t* last;  // the break key is pressed when that was printed
        bool whole;
    } cases[] = {{L"/", L"/a/f ", false}, {L"/a", L"/a/h ", false}, {L"/a", L"/a/b\n", true}};
    for (const auto& c : cases) {
        std::wstring text;
        host::setPrinter([&](std::wstring_view part) {
            text += part;
            if (part.find(c.last) != std::wstring_view::npos) host::pressBreakKey();
        });
        EXPECT_EQ(fs().dir(c.path, *(c.path + 1) == L'\0'), c.whole);
        host::setPrinter({});
        const std::wstring end = c.last + std::wstring{L"\n\nBreak\n"} + kFoot;
        EXPECT_EQ(text.ends_with(end), !c.whole) << host::toUtf8(text);
        EXPECT_EQ(text.find(L"Break") == std::wstring::npos, c.whole);
    }
    EXPECT_EQ(list(L"/a/b", false), dirLine(L"/a/b") + L"\nBreak\n-> false") << "still pressed";
}

TEST_F(Listing, StopsWhereADirectoryDoesNotResolve) {
    setText(entityOf("/a"), L"^c", L"FFFFFF");
    ASSERT_TRUE(OpenFileSystem{}.write(L"/a/d/f", value("1")));
    const std::wstring text = list(L"/a", true);
    EXPECT_TRUE(text.ends_with(L"Dir       0 free    /a/c\n-> false")) << host::toUtf8(text);
}

TEST_F(Listing, PrintsTheLineOfACircleAndGoesOn) {
    link("/a/b", L"^up", "/a");
    ASSERT_TRUE(write("/a/b/last/f", "1"));
    EXPECT_EQ(list(L"/a/b", true), dirLine(L"/a/b") + fileLine(L"/a/b/>g") + dirLine(L"/a/b/up") +
                                       dirLine(L"/a/b/last") + fileLine(L"/a/b/last/f"));
}

TEST_F(Listing, FollowsTwoLinksToOneDirectory) {
    link("/", L"^second", "/a/b");
    const std::wstring text = list(L"/", true);
    EXPECT_TRUE(text.ends_with(dirLine(L"/second") + fileLine(L"/second/>g")))
        << host::toUtf8(text);
}

TEST_F(Listing, EndsWhereEveryDirectoryIsLinkedTwice) {
    std::string path = "/a/b";
    for (int level = 0; level < 40; ++level) {
        const std::string upper = path;
        path += "/n";
        ASSERT_TRUE(write(path + "/f", "1"));
        link(upper, L"^second", path);
    }
    const std::wstring text = list(L"/a", true);
    EXPECT_NE(text.find(wide(path) + L"/f "), std::wstring::npos) << "every file is shown";
    EXPECT_LT(std::ranges::count(text, L'\n'), 4000);
    OpenFileSystem{}.checkFileSystem();
    EXPECT_EQ(read(path + "/f"), "1");
}

TEST_F(Listing, SkipsPathsThatAreTooLong) {
    std::string deep;
    while (deep.size() < 1020) deep += "/x";
    ASSERT_TRUE(write(deep + "/f", "1"));
    setText(entityOf(deep), L"too long", L"");
    setText(entityOf(deep), L"^too long", L"10");
    const std::wstring text = list(wide(deep), true);
    EXPECT_EQ(text, dirLine(wide(deep).c_str()) + fileLine(wide(deep + "/f").c_str()));
}

}  // namespace
}  // namespace mor::test
