#include "platform/string_list.h"

#include <gtest/gtest.h>

namespace {

std::wstring joined(const CMORStringList& list) {
    std::wstring result;
    for (std::size_t i = 0; i < list.Entries(); ++i) result += std::wstring{list.Nth(i)} + L";";
    return result;
}

TEST(StringList, KeepsTheOrderOfItsEnds) {
    CMORStringList list;
    EXPECT_TRUE(list.Append(L"b"));
    EXPECT_TRUE(list.Append(L""));
    EXPECT_TRUE(list.Prepend(L"a"));
    EXPECT_EQ(joined(list), L"a;b;;");
    EXPECT_EQ(list.Nth(3), nullptr);
}

TEST(StringList, TakesItsOwnTexts) {
    CMORStringList list;
    list.Append(L"a");
    for (int i = 0; i < 20; ++i) list.Append(list.Nth(0));
    list.Prepend(list.Nth(20));
    EXPECT_EQ(list.Entries(), 22u);
    EXPECT_STREQ(list.Nth(21), L"a");
    EXPECT_STREQ(list.Nth(0), L"a");
}

TEST(StringList, RefusesNoText) {
    CMORStringList list;
    EXPECT_FALSE(list.Append(nullptr));
    EXPECT_FALSE(list.Prepend(nullptr));
    EXPECT_EQ(list.Entries(), 0u);
}

TEST(StringList, IsCopiedByValue) {
    CMORStringList list;
    list.Append(L"a");
    const CMORStringList copy = list;
    EXPECT_TRUE(list.Reset());
    EXPECT_EQ(joined(list), L"");
    EXPECT_EQ(joined(copy), L"a;");
}

}  // namespace
