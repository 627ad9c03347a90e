#include "platform/mfc.h"

#include "host/faults.h"

#include <gtest/gtest.h>

namespace {

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

}  // namespace
