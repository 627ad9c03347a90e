#include "dwgfs/path_rules.h"

#include "platform/runtime.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

using Fs = CMORCadDwgFileSystem;

TEST(PathRules, NamesAreLettersDigitsAndAFewMore) {
    const struct {
        const wchar_t* name;
        bool dir, file;
    } cases[] = {{L"a", true, true},          {L"a1", true, true},
                 {L"1a", true, true},         {L"a b", true, true},
                 {L"a-b_c", true, true},      {L"a ", true, true},
                 {L"1 -a", true, true},       {L"\u00E4\u4E2D", true, true},
                 {L">a", false, true},        {L">1a", false, true},
                 {L"", false, false},         {L"123", false, false},
                 {L"1-2_3 4", false, false},  {L"-a", false, false},
                 {L"_a", false, false},       {L" a", false, false},
                 {L"a.b", false, false},      {L"a/b", false, false},
                 {L"a\t", false, false},      {L"a>", false, false},
                 {L">", false, false},        {L">>a", false, false},
                 {L">1", false, false},       {L"> a", false, false},
                 {L"\U00010400", true, true}, {L"a\U0001F600", false, false},
                 {L"^a", false, false},       {L"$ID", false, false},
                 {nullptr, false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(Fs::isValidDirName(c.name), c.dir) << narrow(c.name ? c.name : L"null");
        EXPECT_EQ(Fs::isValidFileName(c.name), c.file) << narrow(c.name ? c.name : L"null");
    }
}

TEST(PathRules, FilesLieBelowADirectory) {
    const struct {
        const wchar_t* path;
        bool dir, file;
    } cases[] = {{L"/", true, false},      {L"/a", true, false},     {L"/a/b", true, true},
                 {L"/a b/1c", true, true}, {L"", false, false},      {L"a", false, false},
                 {L"/a/", false, false},   {L"//", false, false},    {L"//a", false, false},
                 {L"/a//b", false, false}, {L"/1", false, false},    {L"/a/1", false, false},
                 {L"/a.b", false, false},  {L"/>a", false, false},   {L"a/b", false, false},
                 {L"/a/>f", false, true},  {L"/a/b/f", true, true},  {L"/a/f/", false, false},
                 {L"/>a/f", false, false}, {L"//a/f", false, false}, {nullptr, false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(Fs::isValidDirPathName(c.path), c.dir) << narrow(c.path ? c.path : L"null");
        EXPECT_EQ(Fs::isValidFilePathName(c.path), c.file) << narrow(c.path ? c.path : L"null");
    }
}

TEST(PathRules, LengthsAreLimited) {
    const auto name = [](std::size_t size) { return std::wstring(size, L'a'); };
    for (const std::size_t over : {0U, 1U}) {
        EXPECT_EQ(Fs::isValidDirName(name(126 + over).c_str()), over == 0);
        EXPECT_EQ(Fs::isValidFileName(name(127 + over).c_str()), over == 0);
        EXPECT_EQ(Fs::isValidFileName((L">" + name(126 + over)).c_str()), over == 0);
        EXPECT_EQ(Fs::isValidFilePathName((L"/a/" + name(127 + over)).c_str()), over == 0);
        EXPECT_EQ(Fs::isValidFilePathName((L"/" + name(126 + over) + L"/f").c_str()), over == 0);
    }
}

TEST(PathRules, PathsHaveAtMost1023Characters) {
    std::wstring path;
    while (path.size() < 1022) path += L"/a";
    EXPECT_TRUE(Fs::isValidDirPathName((path + L"a").substr(0, 1023).c_str()));
    EXPECT_FALSE(Fs::isValidDirPathName((path + L"/a").c_str()));
    EXPECT_TRUE(Fs::isValidFilePathName(path.c_str()));
    EXPECT_FALSE(Fs::isValidFilePathName((path + L"/f").c_str()));
    EXPECT_EQ(path.size(), 1022u);
}

TEST(PathRules, SplitAndMergeWorkInPlace) {
    const struct {
        const wchar_t *path, *parent, *name;
    } cases[] = {{L"/a/b", L"/a", L"b"},
                 {L"/a", L"/", L"a"},
                 {L"/a/b/c d", L"/a/b", L"c d"},
                 {L"/a/", L"/a", L""}};
    for (const auto& c : cases) {
        std::wstring buffer = c.path;
        const wchar_t* name = nullptr;
        const wchar_t* parent = OpenFileSystem::splitPath(buffer.data(), name);
        EXPECT_STREQ(parent, c.parent);
        EXPECT_STREQ(name, c.name);
        EXPECT_TRUE(OpenFileSystem::mergePath(buffer.data(), name));
        EXPECT_EQ(buffer, c.path);
    }
}

TEST(LinkNames, AreMadeFromDirectoryNames) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"/", L"^DWG_FILESYSTEM_ROOT"},
        {L"abc", L"^abc"},
        {L">abc", L"^abc"},
        {L">>a", L"^>a"},
        {L"", L"^"},
        {std::wstring(126, L'a'), L"^" + std::wstring(126, L'a')},
        {std::wstring(127, L'a'), L""}};
    for (const auto& [name, link] : cases) {
        wchar_t made[128];
        OpenFileSystem::makeXDataDirNameFromDirName(made, name.c_str());
        EXPECT_EQ(made, link);
    }
}

TEST(LinkNames, TurnBackInTheirOwnBuffer) {
    const struct {
        const wchar_t *link, *name;
    } cases[] = {{L"^DWG_FILESYSTEM_ROOT", L"/"},
                 {L"^abc", L"abc"},
                 {L"^", L""},
                 {L"$INFO", nullptr},
                 {L"abc", nullptr},
                 {L"", nullptr}};
    for (const auto& c : cases) {
        std::wstring buffer = c.link;
        buffer.resize(128);
        EXPECT_EQ(OpenFileSystem::makeDirNameFromXDataDirName(buffer.data(), buffer.data()),
                  c.name != nullptr);
        EXPECT_STREQ(buffer.c_str(), c.name != nullptr ? c.name : c.link);
    }
}

}  // namespace
}  // namespace mor::test
