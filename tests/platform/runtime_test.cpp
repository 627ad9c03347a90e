#include "platform/runtime.h"

#include <gtest/gtest.h>

#include <clocale>
#include <map>

namespace mor {
namespace {

TEST(Runtime, ClassifiesByUnicodeWhateverTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const struct {
        wchar_t c;
        bool alpha, alnum;
    } cases[] = {{L'a', true, true},        {L'Z', true, true},        {L'7', false, true},
                 {L'_', false, false},      {L'@', false, false},      {L'[', false, false},
                 {L'\u00E4', true, true},   {L'\u0416', true, true},   {L'\u4E2D', true, true},
                 {L'\u00D7', false, false}, {L'\u2013', false, false}, {L'\0', false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(isAlpha(c.c), c.alpha) << static_cast<long>(c.c);
        EXPECT_EQ(isAlnum(c.c), c.alnum) << static_cast<long>(c.c);
    }
}

TEST(Runtime, UpperCasesByUnicode) {
    EXPECT_EQ(upperCase(L"az{`\u00E4\u0436\u00DF1"), L"AZ{`\u00C4\u0416\u00DF1");
    EXPECT_EQ(toUpper(L'\u00FF'), L'\u0178');
}

TEST(Runtime, OrdersWithoutCase) {
    EXPECT_TRUE(equalNoCase(L"Wall\u00E4", L"WALL\u00C4"));
    EXPECT_FALSE(equalNoCase(L"wall", L"walls"));
    EXPECT_LT(compareNoCase(L"a", L"B"), 0);
    EXPECT_GT(compareNoCase(L"b", L"A"), 0);
    EXPECT_LT(compareNoCase(L"ab", L"ABC"), 0);
    EXPECT_LT(compareNoCase(L"Z", L"_"), 0) << "letters are compared as upper case";
    const std::map<std::wstring, int, LessNoCase> map{{L"Layer", 1}};
    EXPECT_TRUE(map.contains(L"LAYER"));
}

}  // namespace
}  // namespace mor
