#include "platform/pattern.h"

#include "platform/geometry.h"
#include "platform/output_calls.h"
#include "platform/runtime.h"
#include "platform/types.h"

#include <gtest/gtest.h>

namespace {

TEST(Wildcard, FollowsThePlatformsRules) {
    const struct {
        const wchar_t* pattern;
        const wchar_t* text;
        bool matches;
    } cases[] = {// literal
                 {L"abc", L"abc", true},
                 {L"abc", L"ABC", false},
                 {L"abc", L"abcd", false},
                 {L"a-b_$^| c", L"a-b_$^| c", true},
                 // ? # @ .
                 {L"?", L"x", true},
                 {L"?", L"", false},
                 {L"#", L"7", true},
                 {L"#", L"x", false},
                 {L"#", L"\u0663", false},
                 {L"@", L"x", true},
                 {L"@", L"\u00C4", true},
                 {L"@", L"7", false},
                 {L"@", L"-", false},
                 {L".", L"-", true},
                 {L".", L"x", false},
                 {L".", L"7", false},
                 {L"A#1", L"A#1", false},
                 {L"A#1", L"A21", true},
                 // *
                 {L"*", L"", true},
                 {L"*", L"anything", true},
                 {L"a*c", L"abbc", true},
                 {L"a*c", L"abcd", false},
                 {L"*bc", L"abcbc", true},
                 {L"a*b*c", L"a-b-b-c", true},
                 {L"a*b*c", L"acb", false},
                 {L"a**", L"a", true},
                 {L"*?", L"", false},
                 // sets
                 {L"STR[1-38]", L"STR2", true},
                 {L"STR[1-38]", L"STR8", true},
                 {L"STR[1-38]", L"STR5", false},
                 {L"STR[1-38]", L"STR38", false},
                 {L"[~ab]", L"c", true},
                 {L"[~ab]", L"a", false},
                 {L"[~ab]", L"", false},
                 {L"[a~]", L"~", true},
                 {L"[-a]", L"-", true},
                 {L"[a-]", L"-", true},
                 {L"[~-a]", L"-", false},
                 {L"[]a]", L"]", true},
                 {L"[~]a]", L"]", false},
                 {L"[~]a]", L"x", true},
                 {L"[z-a]", L"m", false},
                 {L"[a,b]", L",", true},
                 {L"[*?#]", L"*", true},
                 {L"[*?#]", L"x", false},
                 {L"[`a]", L"`", true},
                 {L"[a-c-e]", L"-", true},
                 {L"[a-c-e]", L"d", false},
                 // unclosed sets are literal
                 {L"[ab", L"[ab", true},
                 {L"[", L"[", true},
                 {L"[]", L"[]", true},
                 {L"[~", L"[~", true},
                 {L"[~]", L"[~]", true},
                 {L"[a,b", L"[a", true},
                 {L"[a,b", L"b", true},
                 // alternatives, negation
                 {L"???,~*m*,N*", L"Name", true},
                 {L"a,b", L"b", true},
                 {L"a,b", L"a,b", false},
                 {L"~a", L"b", true},
                 {L"~a", L"a", false},
                 {L"~*m*,N*", L"Name", true},
                 {L"~*m*,N*", L"game", false},
                 {L"a~b", L"a~b", true},
                 {L"~~a", L"~a", false},
                 {L"~~a", L"a", true},
                 {L",a", L"", true},
                 {L"a,", L"", true},
                 {L"a,", L"b", false},
                 // literal characters
                 {L"`*U2", L"*U2", true},
                 {L"`*U2", L"xU2", false},
                 {L"a`,b", L"a,b", true},
                 {L"`~a", L"~a", true},
                 {L"a`", L"a`", true},
                 {L"``", L"`", true},
                 {L"`[a]", L"[a]", true},
                 // empty
                 {L"", L"", true},
                 {L"", L"a", false},
                 {L"~", L"", false},
                 {L"~", L"a", true}};
    for (const auto& c : cases)
        EXPECT_EQ(acutWcMatch(c.text, c.pattern), c.matches ? RTNORM : RTERROR)
            << mor::narrow(c.pattern) << " on " << mor::narrow(c.text);
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
