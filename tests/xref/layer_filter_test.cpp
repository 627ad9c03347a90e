#include "xref/layer_filter.h"

#include "host/host.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mor::test {
namespace {

using Texts = std::vector<std::wstring>;

Texts qualifiedList(const Texts& patterns, const wchar_t* xref = L"PLAN") {
    CMORStringList list;
    for (const std::wstring& pattern : patterns) list.Append(pattern.c_str());
    CMORStringList result;
    result.Append(L"left over");
    if (!qualifyLayers(list, xref, result)) return {L"refused"};
    Texts texts;
    for (std::size_t i = 0; i < result.Entries(); ++i) texts.emplace_back(result.Nth(i));
    return texts;
}

std::string qualifiedLisp(const char* value) {
    return host::lispText(qualifyLayers(host::readLisp(value).value(), L"PLAN"));
}

TEST(LayerFilter, EveryPatternOfAListGetsTheNameOfTheReference) {
    EXPECT_EQ(qualifiedList({L"WALLS"}), (Texts{L"PLAN|WALLS"}));
    EXPECT_EQ(qualifiedList({L"W*", L"", L"0"}), (Texts{L"PLAN|W*", L"PLAN|", L"PLAN|0"}));
    EXPECT_EQ(qualifiedList({L"A"}, L"A#1"), (Texts{L"A#1|A"}));
}

TEST(LayerFilter, AnEmptyListIsRefused) { EXPECT_EQ(qualifiedList({}), (Texts{L"refused"})); }

TEST(LayerFilter, AStarAnywhereStandsForAllLayers) {
    EXPECT_EQ(qualifiedList({L"*"}), (Texts{L"*"}));
    EXPECT_EQ(qualifiedList({L"WALLS", L"*", L"0"}), (Texts{L"*"}));
    EXPECT_EQ(qualifiedList({L"**"}), (Texts{L"PLAN|**"}));
}

TEST(LayerFilter, APatternThatDoesNotFitIsLeftOut) {
    const std::wstring fits(2047 - 5, L'x');
    EXPECT_EQ(qualifiedList({fits, fits + L"x", L"A"}), (Texts{L"PLAN|" + fits, L"PLAN|A"}));
}

TEST(LayerFilter, LispListsComeOutQualifiedInReverse) {
    const struct {
        const char* patterns;
        const char* qualified;
    } cases[] = {{R"(("WALLS"))", R"(("PLAN|WALLS"))"},
                 {R"(("A" "B"))", R"(("PLAN|B" "PLAN|A"))"},
                 {R"(("A" "*" "B"))", R"(("*"))"},
                 {R"(("*" 5))", R"(("*"))"},
                 {"nil", "nil"},
                 {R"("WALLS")", "nil"},
                 {R"(("A" . "B"))", "nil"}};
    static_cast<void>(host::takePrintedText());
    for (const auto& c : cases) EXPECT_EQ(qualifiedLisp(c.patterns), c.qualified) << c.patterns;
    EXPECT_EQ(host::takePrintedText(), L"");
}

TEST(LayerFilter, AnElementThatIsNoStringIsReported) {
    const struct {
        const char* patterns;
        const wchar_t* printed;
    } cases[] = {{R"(("A" 5 "*"))", L"Layername expected: 5\n"},
                 {R"((("A")))", L"Layername expected: (A)\n"},
                 {R"((nil 6))", L"Layername expected: nil\n"}};
    static_cast<void>(host::takePrintedText());
    for (const auto& c : cases) {
        EXPECT_EQ(qualifiedLisp(c.patterns), "nil") << c.patterns;
        EXPECT_EQ(host::takePrintedText(), c.printed) << c.patterns;
    }
}

}  // namespace
}  // namespace mor::test
