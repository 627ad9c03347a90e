#include "platform/pattern.h"

#include "platform/geometry.h"
#include "platform/output_calls.h"
#include "platform/runtime.h"
#include "platform/types.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(Wildcard, FollowsThePlatformsRules) {
    const struct {
        const wchar_t* pattern;
        std::vector<const wchar_t*> matched;
        std::vector<const wchar_t*> others;
    } cases[] = {{L"abc", {L"abc"}, {L"ABC", L"abcd"}},
                 {L"a-b_$^| c", {L"a-b_$^| c"}, {}},
                 {L"?", {L"x"}, {L""}},
                 {L"#", {L"7"}, {L"x", L"\u0663"}},
                 {L"@", {L"x", L"\u00C4"}, {L"7", L"-"}},
                 {L".", {L"-"}, {L"x", L"7"}},
                 {L"A#1", {L"A21"}, {L"A#1"}},
                 {L"*", {L"", L"anything"}, {}},
                 {L"a*c", {L"abbc"}, {L"abcd"}},
                 {L"*bc", {L"abcbc"}, {}},
                 {L"a*b*c", {L"a-b-b-c"}, {L"acb"}},
                 {L"a**", {L"a"}, {}},
                 {L"*?", {}, {L""}},
                 {L"STR[1-38]", {L"STR2", L"STR8"}, {L"STR5", L"STR38"}},
                 {L"[~ab]", {L"c"}, {L"a", L""}},
                 {L"[a~]", {L"~"}, {}},
                 {L"[-a]", {L"-"}, {}},
                 {L"[a-]", {L"-"}, {}},
                 {L"[~-a]", {}, {L"-"}},
                 {L"[]a]", {L"]"}, {}},
                 {L"[~]a]", {L"x"}, {L"]"}},
                 {L"[z-a]", {}, {L"m"}},
                 {L"[a,b]", {L","}, {}},
                 {L"[*?#]", {L"*"}, {L"x"}},
                 {L"[`a]", {L"`"}, {}},
                 {L"[a-c-e]", {L"-"}, {L"d"}},
                 {L"[ab", {L"[ab"}, {}},
                 {L"[", {L"["}, {}},
                 {L"[]", {L"[]"}, {}},
                 {L"[~", {L"[~"}, {}},
                 {L"[~]", {L"[~]"}, {}},
                 {L"[a,b", {L"[a", L"b"}, {}},
                 {L"???,~*m*,N*", {L"Name"}, {}},
                 {L"a,b", {L"b"}, {L"a,b"}},
                 {L"~a", {L"b"}, {L"a"}},
                 {L"~*m*,N*", {L"Name"}, {L"game"}},
                 {L"a~b", {L"a~b"}, {}},
                 {L"~~a", {L"a"}, {L"~a"}},
                 {L",a", {L""}, {}},
                 {L"a,", {L""}, {L"b"}},
                 {L"`*U2", {L"*U2"}, {L"xU2"}},
                 {L"a`,b", {L"a,b"}, {}},
                 {L"`~a", {L"~a"}, {}},
                 {L"a`", {L"a`"}, {}},
                 {L"``", {L"`"}, {}},
                 {L"`[a]", {L"[a]"}, {}},
                 {L"", {L""}, {L"a"}},
                 {L"~", {L"a"}, {L""}}};
    for (const auto& c : cases) {
        for (const wchar_t* text : c.matched)
            EXPECT_EQ(acutWcMatch(text, c.pattern), RTNORM)
                << mor::narrow(c.pattern) << " on " << mor::narrow(text);
        for (const wchar_t* text : c.others)
            EXPECT_EQ(acutWcMatch(text, c.pattern), RTERROR)
                << mor::narrow(c.pattern) << " on " << mor::narrow(text);
    }
    EXPECT_EQ(acutWcMatch(nullptr, L"*"), RTERROR);
    EXPECT_EQ(acutWcMatch(L"", nullptr), RTERROR);
}

TEST(Wildcard, DoesNotBlowUpOnManyStars) {
    std::wstring pattern;
    for (int i = 0; i < 200; ++i) pattern += L"*a";
    pattern += L"b";
    const std::wstring text(2000, L'a');
    EXPECT_EQ(acutWcMatch(text.c_str(), pattern.c_str()), RTERROR);
}

TEST(Wildcard, MatchesNarrowTextAsAWholeFromTheStart) {
    const MOR_Wildcard wildcard{"b*"};
    std::size_t length = 99;
    EXPECT_EQ(wildcard.index("abc", &length, 1), 1u);
    EXPECT_EQ(length, 2u);
    EXPECT_EQ(wildcard.index("abc", &length, 0), MOR_RWCRegexp::npos);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(wildcard.index("b", &length, 2), MOR_RWCRegexp::npos);
    EXPECT_EQ(MOR_Wildcard{""}.index("a", &length, 1), 1u);
}

TEST(Wildcard, CountsBytesButMatchesCharacters) {
    std::size_t length = 0;
    EXPECT_EQ(MOR_Wildcard{"?@"}.index("\u00E4\u20AC", &length, 0), MOR_RWCRegexp::npos);
    EXPECT_EQ(MOR_Wildcard{"@?"}.index("\u00E4\u20AC", &length, 0), 0u);
    EXPECT_EQ(length, 5u);
    EXPECT_EQ(MOR_Wildcard{"??"}.index("\xFF\xFE", &length, 0), 0u) << "bytes that are no UTF-8";
}

}  // namespace
