#include "host/faults.h"
#include "platform/geometry.h"
#include "platform/mfc.h"
#include "platform/string_list.h"

#include <gtest/gtest.h>

namespace {

TEST(Matrix, TransformsColumnVectorsInPlace) {
    CMORMathTransMatrix matrix;
    matrix.rows = {{{0.0, -1.0, 0.0, 10.0},
                    {1.0, 0.0, 0.0, 20.0},
                    {0.0, 0.0, 2.0, 30.0},
                    {0.0, 0.0, 0.0, 1.0}}};
    double point[] = {1.0, 2.0, 3.0};
    matrix.Transform(point);
    EXPECT_EQ(std::to_array(point), (std::array{8.0, 21.0, 36.0}));
    matrix = CMORMathTransMatrix{};
    matrix.Transform(point);
    matrix.rows[0][0] = 9.0;
    matrix.Identity();
    matrix.Transform(point);
    EXPECT_EQ(std::to_array(point), (std::array{8.0, 21.0, 36.0}));
}

TEST(String, ComparesWithoutCase) {
    const CString text{L"Wall\u00E4"};
    EXPECT_EQ(text.CompareNoCase(L"wALL\u00C4"), 0);
    EXPECT_GT(text.CompareNoCase(L"wal"), 0);
    EXPECT_GT(text.CompareNoCase(nullptr), 0);
}

TEST(String, ChangesInPlace) {
    CString text{L"a\u00E4"};
    EXPECT_STREQ(text.MakeUpper(), L"A\u00C4");
    text = text.GetString() + 1;
    EXPECT_STREQ(text, L"\u00C4");
    EXPECT_EQ(text.GetLength(), 1);
    text = nullptr;
    EXPECT_TRUE(text.IsEmpty());
}

TEST(StringArray, GrowsUpToTheElementSet) {
    CStringArray array;
    array.SetAtGrow(2, L"c");
    array.SetAtGrow(0, L"a");
    EXPECT_EQ(array.GetSize(), 3);
    EXPECT_STREQ(array[0], L"a");
    EXPECT_TRUE(array[1].IsEmpty());
    array[1] = L"b";
    EXPECT_STREQ(array[1], L"b");
}

TEST(StringArray, ChecksItsIndex) {
    CStringArray array;
    EXPECT_THROW(static_cast<void>(array[0]), CInvalidArgException);
    EXPECT_THROW(array.SetAtGrow(-1, L""), CInvalidArgException);
    array.SetAtGrow(0, L"a");
    EXPECT_THROW(static_cast<void>(array[1]), CInvalidArgException);
    EXPECT_THROW(static_cast<void>(array[-1]), CInvalidArgException);
}

TEST(Exceptions, AreThoseOfTheirNames) {
    EXPECT_THROW(AfxThrowMemoryException(), CMemoryException);
    EXPECT_THROW(AfxThrowInvalidArgException(), CInvalidArgException);
}

TEST(ExtensionModule, IsKnownUntilItsEnd) {
    AFX_EXTENSION_MODULE module;
    int instance = 0;
    EXPECT_EQ(AfxInitExtensionModule(module, &instance), 1);
    EXPECT_TRUE(module.bInitialized);
    EXPECT_EQ(module.hModule, &instance);
    const CDynLinkLibrary library{module};
    AfxTermExtensionModule(module);
    EXPECT_FALSE(module.bInitialized);
}

TEST(ExtensionModule, MayBeRefused) {
    AFX_EXTENSION_MODULE module;
    mor::host::faults::reset();
    mor::host::faults::failCall("AfxInitExtensionModule", 1);
    EXPECT_EQ(AfxInitExtensionModule(module, nullptr), 0);
    EXPECT_FALSE(module.bInitialized);
    mor::host::faults::reset();
}

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
    EXPECT_FALSE(list.Append(nullptr) || list.Prepend(nullptr));
    EXPECT_EQ(list.Entries(), 3u);
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

TEST(StringList, IsCopiedByValue) {
    CMORStringList list;
    list.Append(L"a");
    const CMORStringList copy = list;
    EXPECT_TRUE(list.Reset());
    EXPECT_EQ(joined(list), L"");
    EXPECT_EQ(joined(copy), L"a;");
}

}  // namespace
