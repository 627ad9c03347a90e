#include "host/host.h"
#include "platform/runtime.h"

#include <gtest/gtest.h>

namespace mor::host {
namespace {

TEST(Utf8, GoesBothWaysForEveryLength) {
    for (const wchar_t c : {L'\0', L'A', L'\x7F', L'\x80', L'\u07FF', L'\u0800', L'\uFFFD',
                            L'\U00010000', L'\U0010FFFF'}) {
        const std::wstring text(1, c);
        EXPECT_EQ(fromUtf8(toUtf8(text)), text) << static_cast<long>(c);
    }
    EXPECT_EQ(toUtf8(L"\u00E4\u20AC\U0001F600"), "\u00E4\u20AC\U0001F600");
}

TEST(Utf8, RefusesWhatIsNotUtf8) {
    for (const char* bytes :
         {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF0\x80\x80\x80",
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE2\x82"})
        EXPECT_FALSE(fromUtf8(bytes)) << bytes;
}

TEST(Utf8, ReplacesWhatIsNoCodePoint) {
    EXPECT_EQ(toUtf8(std::wstring(1, wchar_t{0xD800})), "\uFFFD");
    EXPECT_EQ(narrow(std::wstring(1, wchar_t{0x110000})), "\uFFFD");
}

}  // namespace
}  // namespace mor::host
