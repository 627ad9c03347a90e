#include "host/host.h"
#include "tests/xref/reference_fixture.h"
#include "xref/layer_entity_table.h"
#include "xref/layer_filter.h"
#include "xref/xref_iterator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <set>
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
    const std::wstring fits(2047 - 5, L'x');
    const std::pair<Texts, Texts> cases[] = {
        {{L"WALLS"}, {L"PLAN|WALLS"}},
        {{L"W*", L"", L"0"}, {L"PLAN|W*", L"PLAN|", L"PLAN|0"}},
        {{}, {L"refused"}},
        {{L"*"}, {L"*"}},  // anywhere it stands for all layers
        {{L"WALLS", L"*", L"0"}, {L"*"}},
        {{L"**"}, {L"PLAN|**"}},
        {{fits, fits + L"x", L"A"}, {L"PLAN|" + fits, L"PLAN|A"}}};  // one that does not fit
    for (const auto& [patterns, qualified] : cases) EXPECT_EQ(qualifiedList(patterns), qualified);
    EXPECT_EQ(qualifiedList({L"A"}, L"A#1"), (Texts{L"A#1|A"}));
}

TEST(LayerFilter, LispListsComeOutQualifiedInReverse) {
    const struct {
        const char* patterns;
        const char* qualified;
        const wchar_t* printed = L"";
    } cases[] = {{R"(("WALLS"))", R"(("PLAN|WALLS"))"},
                 {R"(("A" "B"))", R"(("PLAN|B" "PLAN|A"))"},
                 {R"(("A" "*" "B"))", R"(("*"))"},
                 {R"(("*" 5))", R"(("*"))"},
                 {"nil", "nil"},
                 {R"("WALLS")", "nil"},
                 {R"(("A" . "B"))", "nil"},
                 {R"(("A" 5 "*"))", "nil", L"Layername expected: 5\n"},
                 {R"((("A")))", "nil", L"Layername expected: (A)\n"},
                 {R"((nil 6))", "nil", L"Layername expected: nil\n"}};
    static_cast<void>(host::takePrintedText());
    for (const auto& c : cases) {
        EXPECT_EQ(qualifiedLisp(c.patterns), c.qualified) << c.patterns;
        EXPECT_EQ(host::takePrintedText(), c.printed) << c.patterns;
    }
}

/// The first words of the names that are still to come, such as "1 2 ".
std::string rest(CMORCadLetterSpaceIterator& iterator) {
    std::string words;
    while (const ads_name* name = iterator.next())
        words += std::to_string((*name)[0]) + (((*name)[1] == 1) ? " " : "' ");
    return words;
}

class LayerTable : public ::testing::Test {
protected:
    bool add(std::int64_t first, const wchar_t* layer, std::int64_t second = 1) {
        const ads_name name{first, second};
        return m_table.add(name, layer);
    }
    [[nodiscard]] std::string select(const std::vector<const wchar_t*>& patterns) const {
        CMORStringList list;
        for (const wchar_t* pattern : patterns) list.Append(pattern);
        const std::unique_ptr<CMORCadLetterSpaceIterator> iterator{m_table.iteratorForLayers(list)};
        return iterator == nullptr ? "null" : rest(*iterator);
    }
    [[nodiscard]] std::string selectLisp(const char* patterns) const {
        const std::unique_ptr<CMORCadLetterSpaceIterator> iterator{
            m_table.iteratorForLayers(host::readLisp(patterns).value())};
        return iterator == nullptr ? "null" : rest(*iterator);
    }
    MOR_LayerXRefEntityTable m_table;
};

TEST_F(LayerTable, NamesComeInTheOrderOfTheirSignedWords) {
    add(2, L"A");
    add(INT64_MAX, L"A");
    add(-3, L"B");
    add(INT64_MIN, L"A");
    add(2, L"B", -7);
    EXPECT_EQ(select({L"*"}),
              std::to_string(INT64_MIN) + " -3 2' 2 " + std::to_string(INT64_MAX) + " ");
}

TEST_F(LayerTable, AnEntityOnSeveralMatchesIsDeliveredOnce) {
    for (const wchar_t* layer : {L"WALLS", L"walls", L"B"}) EXPECT_TRUE(add(1, layer));
    add(2, L"Walls");
    add(3, L"T\u00DCREN");
    EXPECT_EQ(select({L"WALLS"}), "1 2 ");  // layers that differ in case are one
    EXPECT_EQ(select({L"WALLS", L"B", L"*"}), "1 2 3 ");
    EXPECT_EQ(selectLisp(R"(("b" "walls"))"), "1 2 ");
    EXPECT_EQ(select({L"t\u00FC*"}) + select({L"T?REN"}), "3 3 ");
    EXPECT_EQ(select({L"X"}) + selectLisp("nil"), "");
    EXPECT_EQ(select({}) + selectLisp("5"), "nullnull");  // lists that cannot be used
}

TEST(XRefIterator, DeliversFromTheStartAfterAReset) {
    MOR_Letter_XRefSpaceIterator iterator;
    EXPECT_EQ(iterator.next(), nullptr);
    iterator.add({EntityName{2, 1}, EntityName{1, 1}});
    const ads_name* address = iterator.next();
    ASSERT_NE(address, nullptr);
    EXPECT_EQ((*address)[0], 1);
    EXPECT_EQ(iterator.next(), address);
    EXPECT_EQ((*address)[0], 2);
    EXPECT_EQ(iterator.next(), nullptr);
    EXPECT_EQ(iterator.next(), nullptr);
    iterator.reset();
    EXPECT_EQ(rest(iterator), "1 2 ");
}

constexpr const wchar_t* kLayers[] = {L"0",   L"WALLS", L"Walls-2", L"W1",  L"A#1", L"A.B",
                                      L"A B", L"A-B",   L"~T",      L"A,B", L"[X]", L"X`",
                                      L"$_",  L"42",    L"\u00C4X", L"PLAN"};

struct Row {
    const wchar_t* pattern;
    const wchar_t* modelSpace;           ///< the layers that it selects there
    const wchar_t* reference = nullptr;  ///< in a reference; the same but for layer 0 when null
};

/// A reference's name goes in front of a pattern as a whole: a "~" is then an ordinary character,
/// and alternatives behind a comma see the qualified names.
constexpr Row kRows[] = {
    {L"**", L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN"},
    {L"", L""},
    {L"w*", L"WALLS/Walls-2/W1"},
    {L"A#1", L""},
    {L"A`#1", L"A#1"},
    {L"`[X]", L"[X]"},
    {L"~W*", L"0/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN", L""},
    {L"~*", L"", L"~T"},
    {L"~", L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN", L""},
    {L"W1,A*", L"W1/A#1/A.B/A B/A-B/A,B", L"W1"},
    {L"W1,~W*", L"0/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN",
     L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN"},
    {L"W1,PLAN|A*", L"W1", L"W1/A#1/A.B/A B/A-B/A,B"},
    {L"A`,B", L"A,B"},
    {L"A[,]B", L"A,B"},
    {L"0,W1", L"0/W1", L""},
    {L"W1,0", L"0/W1", L"0/W1"},
    {L",0", L"0", L"0"},
    {L"[W,0", L"0", L"0"},
    {L"~[~A]*", L"A#1/A.B/A B/A-B/A,B", L"~T"},
    {L"??,~*l*,W*", L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X",
     L"0/W1/~T/X`/$_/42/\u00C4X"},
};

/// The layers of the drawing and of PLAN, a line on each: its handle tells the layer.
class LayerPatterns : public IteratorTest {
protected:
    void SetUp() override {
        IteratorTest::SetUp();
        DxfDrawing drawing{.version = "AC1024"};
        for (std::size_t i = 0; i < std::size(kLayers); ++i)
            drawing.entities += lineEntity(std::to_string(10 + i), host::toUtf8(kLayers[i]));
        drawing.save("plan.dxf");
        drawing.blocks = referenceDefinition("PLAN", "plan.dxf");
        open(drawing.save("site.dxf"));
        ASSERT_TRUE(m_modelSpace.forget() && m_modelSpace.connect() && m_plan.connect(L"PLAN"));
    }
    static std::wstring select(const CMORCadSpace& space, const wchar_t* pattern) {
        OpenIterator iterator{space, texts({pattern})};
        std::set<std::size_t> layers;
        while (const ads_name* name = iterator()) layers.insert(std::stoul(handleOf(*name)) - 10);
        std::wstring found;
        for (const std::size_t layer : layers)
            found += (found.empty() ? L"" : L"/") + std::wstring{kLayers[layer]};
        return found;
    }
    static std::wstring withoutLayer0(const std::wstring& layers) {
        return layers == L"0" ? L"" : layers.substr(layers.starts_with(L"0/") ? 2 : 0);
    }
    CMORCadSpace m_plan;
};

TEST_F(LayerPatterns, SelectTheSameLayersInModelSpaceAndBehindAReferencesName) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(host::toUtf8(row.pattern));
        EXPECT_EQ(select(m_modelSpace, row.pattern), row.modelSpace);
        EXPECT_EQ(select(m_plan, row.pattern),
                  row.reference == nullptr ? withoutLayer0(row.modelSpace) : row.reference);
    }
}

}  // namespace
}  // namespace mor::test
