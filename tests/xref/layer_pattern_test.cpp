#include "tests/xref/iterator_fixture.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace mor::test {
namespace {

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
    {L"W#", L"W1"},
    {L"A?B", L"A.B/A B/A-B/A,B"},
    {L"A.B", L"A.B/A B/A-B/A,B"},
    {L"A`.B", L"A.B"},
    {L"A#1", L""},
    {L"A`#1", L"A#1"},
    {L"@*", L"WALLS/Walls-2/W1/A#1/A.B/A B/A-B/A,B/X`/\u00C4X/PLAN"},
    {L".*", L"~T/[X]/$_"},
    {L"*#", L"0/Walls-2/W1/A#1/42"},
    {L"[~aw]*", L"0/~T/[X]/X`/$_/42/\u00C4X/PLAN"},
    {L"A[-x]B", L"A-B"},
    {L"A[ -.]B", L"A.B/A B/A-B/A,B"},
    {L"[]x[]*", L"[X]/X`"},
    {L"[~]x[]*", L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/$_/42/\u00C4X/PLAN"},
    {L"`[X]", L"[X]"},
    {L"X`", L"X`"},
    {L"~W*", L"0/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN", L""},
    {L"~*", L"", L"~T"},
    {L"~", L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN", L""},
    {L"W1,A*", L"W1/A#1/A.B/A B/A-B/A,B", L"W1"},
    {L"W1,~W*", L"0/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN",
     L"0/WALLS/Walls-2/W1/A#1/A.B/A B/A-B/~T/A,B/[X]/X`/$_/42/\u00C4X/PLAN"},
    {L"W1,PLAN|A*", L"W1", L"W1/A#1/A.B/A B/A-B/A,B"},
    {L"A`,B", L"A,B"},
    {L"A[,]B", L"A,B"},
    {L"[A,0]*", L"0/A#1/A.B/A B/A-B/A,B"},
    {L"0,W1", L"0/W1", L""},
    {L"W1,0", L"0/W1", L"0/W1"},
    {L",0", L"0", L"0"},
    {L"*a*l*", L"WALLS/Walls-2"},
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
