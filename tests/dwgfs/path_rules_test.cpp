#include "dwgfs/path_rules.h"

#include "platform/runtime.h"
#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mor::test {
namespace {

using Fs = CMORCadDwgFileSystem;

/// The parts of a text between the bars.
std::vector<std::wstring> parts(const wchar_t* text) {
    std::vector<std::wstring> all(1);
    for (; *text != L'\0'; ++text)
        if (*text == L'|')
            all.emplace_back();
        else
            all.back() += *text;
    return all;
}

TEST(PathRules, NamesAreLettersDigitsAndAFewMore) {
    const struct {
        const wchar_t* names;
        bool dir, file;
    } cases[] = {
        {L"a|a1|1a|a b|a-b_c|a |1 -a|\u00E4\u4E2D|\U00010400", true, true},
        {L">a|>1a", false, true},
        {L"|123|1-2_3 4|-a|_a| a|a.b|a/b|a\t|a>|>|>>a|>1|> a|a\U0001F600|^a|$ID", false, false}};
    for (const auto& c : cases)
        for (const std::wstring& name : parts(c.names)) {
            EXPECT_EQ(Fs::isValidDirName(name.c_str()), c.dir) << narrow(name);
            EXPECT_EQ(Fs::isValidFileName(name.c_str()), c.file) << narrow(name);
        }
    EXPECT_FALSE(Fs::isValidDirName(nullptr) || Fs::isValidFileName(nullptr));
}

TEST(PathRules, FilesLieBelowADirectory) {
    const struct {
        const wchar_t* paths;
        bool dir, file;
    } cases[] = {{L"/|/a", true, false},
                 {L"/a/b|/a b/1c|/a/b/f", true, true},
                 {L"/a/>f", false, true},
                 {L"|a|/a/|//|//a|/a//b|/1|/a/1|/a.b|/>a|a/b|/a/f/|/>a/f|//a/f", false, false}};
    for (const auto& c : cases)
        for (const std::wstring& path : parts(c.paths)) {
            EXPECT_EQ(Fs::isValidDirPathName(path.c_str()), c.dir) << narrow(path);
            EXPECT_EQ(Fs::isValidFilePathName(path.c_str()), c.file) << narrow(path);
        }
    EXPECT_FALSE(Fs::isValidDirPathName(nullptr) || Fs::isValidFilePathName(nullptr));
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
