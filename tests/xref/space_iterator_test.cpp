#include "xref/space_iterator.h"

#include "platform/owned.h"
#include "space/model_space_view.h"
#include "space/space.h"
#include "tests/xref/reference_fixture.h"
#include "xref/model_space_iterator.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace mor::test {
namespace {

class SpaceIterators : public IteratorTest {
protected:
    void SetUp() override {
        IteratorTest::SetUp();
        ASSERT_TRUE(m_plan.connect(L"PLAN"));
    }
    CMORCadSpace m_plan;
};

TEST_F(SpaceIterators, StartAgainWithoutANewSelection) {
    for (const CMORCadSpace* space : {&m_modelSpace, &m_plan}) {
        OpenIterator iterator{*space};
        const std::wstring all = handles(iterator);
        EXPECT_EQ(handles(iterator), L"");
        host::faults::failCall("acedSSGet", 1);
        iterator.resetIterator();
        EXPECT_EQ(handles(iterator), all);
        EXPECT_FALSE(host::faults::struck());
        iterator.resetIterator();
        const ads_name* address = iterator();
        const EntityName first{*address};
        EXPECT_EQ(iterator(), address);
        EXPECT_NE(EntityName{*address}, first);
    }
}

TEST_F(SpaceIterators, AReferencesPatternsAreWrittenWithoutItsName) {
    const struct {
        std::vector<const wchar_t*> layers;
        const wchar_t* found;
    } cases[] = {{{L"WALLS"}, L"1A2F C4 "},
                 {{L"walls"}, L"1A2F C4 "},
                 {{L"d*", L"WALLS"}, L"1A2F A1 C3 C4 "},
                 {{L"PLAN|WALLS"}, L""},
                 {{L"0"}, L""},
                 {{L"0", L"*"}, L"1A2F A1 C2 C3 C4 "},
                 {{}, L"empty"}};
    for (const auto& c : cases) EXPECT_EQ(walk(m_plan, texts(c.layers)), c.found);
    EXPECT_EQ(walk(m_plan), L"1A2F A1 C2 C3 C4 ");
}

TEST_F(SpaceIterators, AReferencesLispListsAreLikewise) {
    EXPECT_EQ(walk(m_plan, lisp(R"(("doors"))")), L"A1 C3 ");
    EXPECT_EQ(walk(m_plan, lisp(R"(("walls" "doors"))")), L"1A2F A1 C3 C4 ");
    EXPECT_EQ(walk(m_plan, CMORAdsLisp::Nil), L"empty");
    EXPECT_EQ(walk(m_plan, lisp(R"(("A" . "B"))")), L"empty");
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(walk(m_plan, lisp(R"(("A" 5))")), L"empty");
    EXPECT_EQ(printed(), L"Layername expected: 5\n");
}

TEST_F(SpaceIterators, AReferencesNamesOutliveItsLetter) {
    OpenIterator iterator{m_plan};
    releaseDocumentObjects();
    EXPECT_EQ(handles(iterator), L"1A2F A1 C2 C3 C4 ");
}

TEST_F(SpaceIterators, WithoutASpaceThereIsNothingToWalk) {
    const CMORCadSpace space;
    const CMORCadView view;
    EXPECT_EQ(walk(space) + walk(space, texts({L"*"})), L"emptyempty");
    EXPECT_EQ(walk(view) + walk(view, texts({L"*"})), L"emptyempty");
    EXPECT_EQ(walk(view, CMORAdsLisp::Nil), L"empty");
    OpenIterator iterator{view};
    iterator.resetIterator();
    EXPECT_EQ(iterator(), nullptr);
}

TEST_F(SpaceIterators, AViewIsWalkedAsItsSpace) {
    MOR_ModelSpaceView modelSpace;
    modelSpace.connect();
    EXPECT_EQ(walk(modelSpace), walk(m_modelSpace));
    EXPECT_EQ(walk(modelSpace, lisp(R"(("WALLS"))")), L"12 A1 ");
    MOR_XRefView plan;
    ads_name insert{};
    find(L"10", insert);
    ASSERT_TRUE(plan.connect(insert));
    EXPECT_EQ(walk(plan), walk(m_plan));
    EXPECT_EQ(walk(plan, texts({L"WALLS"})), L"1A2F C4 ");
}

using Filter = std::vector<std::pair<int, std::wstring>>;

class ModelSpaceIterators : public IteratorTest {};

TEST_F(ModelSpaceIterators, ModelSpaceMeansTheWholeDrawing) {
    EXPECT_EQ(walk(m_modelSpace), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"*"}}));
    EXPECT_EQ(walk(m_modelSpace, texts({})), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, Filter{});
    EXPECT_EQ(walk(m_modelSpace, CMORAdsLisp::Nil), L"10 11 12 13 A1 A2 ");
}

TEST_F(ModelSpaceIterators, ASinglePatternIsAFilterByItselfAndSeveralAreAlternatives) {
    const Filter several{{-4, L"<OR"}, {8, L"walls"}, {8, L"X"}, {-4, L"OR>"}};
    EXPECT_EQ(walk(m_modelSpace, texts({L"walls"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"walls"}}));
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("W*"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"W*"}}));
    EXPECT_EQ(walk(m_modelSpace, texts({L"walls", L"X"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, several);
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("walls" "X"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, several);
}

TEST_F(ModelSpaceIterators, NothingSelectedInModelSpaceIsAnEmptyIterator) {
    EXPECT_EQ(walk(m_modelSpace, texts({L"NOSUCH"})), L"empty");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"("WALLS")")), L"empty");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" . "0"))")), L"empty");
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" 5))")), L"empty");
    EXPECT_EQ(printed(),
              L"CMORCadLetterModelSpaceIterator::selectEntitiesByLayer: string expected\n");
}

TEST_F(ModelSpaceIterators, AFailingSelectionLeavesNothingBehind) {
    for (const char* operation : {"acedSSGet", "acedSSLength"}) {
        host::faults::failCall(operation, 1);
        EXPECT_EQ(walk(m_modelSpace), L"empty") << operation;
        EXPECT_EQ(host::counters().selectionSetsOpen, 0u) << operation;
    }
    OpenIterator iterator{m_modelSpace, texts({L"WALLS"})};
    host::faults::failCall("acedSSName", 1);
    EXPECT_EQ(iterator(), nullptr);
    EXPECT_NE(iterator(), nullptr);  // the next one is asked for all the same
}

TEST_F(ModelSpaceIterators, AnotherSelectionReplacesTheFormerOne) {
    CMORCadLetterModelSpaceIterator letter;
    EXPECT_EQ(letter.next(), nullptr);
    ASSERT_TRUE(letter.selectEntitiesByLayer(texts({L"WALLS"})));
    EXPECT_FALSE(letter.selectEntitiesByLayer(lisp("5")));
    EXPECT_NE(letter.next(), nullptr);  // no list: the former selection stays
    EXPECT_FALSE(letter.selectEntitiesByLayer(texts({L"NOSUCH"})));
    EXPECT_EQ(letter.next(), nullptr);
    EXPECT_EQ(host::counters().selectionSetsOpen, 0u);
}

/// References whose files have another encoding than the drawing that refers to them. The drawing
/// is in ANSI_1252: its layer, the reference's name and path hold letters beyond ASCII.
class TextEncodings : public IteratorTest {
protected:
    void load(const std::string& version, const std::string& header, const std::string& layer) {
        const DxfDrawing plan{.layers = {layer},
                              .entities = lineEntity("C1", layer),
                              .header = header,
                              .version = version};
        plan.save("Pl\u00E4ne.dxf");
        open(DxfDrawing{.layers = {"\xC4"},
                        .blocks = referenceDefinition("Gr\xFCn", ".\\Pl\xE4ne.dwg"),
                        .entities = lineEntity("A1", "\xC4") + insertEntity("10", "0", "Gr\xFCn"),
                        .header = "9 $DWGCODEPAGE|3 ANSI_1252|"}
                 .save("site.dxf"));
    }
};

constexpr const char* k1251 = "9 $DWGCODEPAGE|3 ANSI_1251|";

TEST_F(TextEncodings, NamesMeetWhateverTheFilesSay) {
    const struct {
        const char* version;
        const char* header;
        const char* bytes;     // of the layer
        const wchar_t* layer;  // as it reads
        const wchar_t* pattern;
    } cases[] = {
        {"AC1024", k1251, "\xD0\xA1\xD1\x82\xD0\xB5\xD0\xBD\xD0\xB0",
         L"\u0421\u0442\u0435\u043D\u0430", L"\u0441\u0422*"},
        {"AC1009", k1251, "\xD1\xF2\xE5\xED\xE0", L"\u0421\u0442\u0435\u043D\u0430",
         L"\u0421\u0422\u0415\u041D\u0410"},
        {"AC1015", "", "\\U+0421\\U+0442\\u+1", L"\u0421\u0442\\u+1", L"\u0441@*"},
        {"AC1032", k1251, "\\U+00e4\xC3\x9F", L"\u00E4\u00DF", L"\u00C4?"},
        {"AC1009", "9 $DWGCODEPAGE|3 ansi_932|", "\x83\x7C\x95\x5C", L"\u30DD\u8868", L"@@"},
        {"AC1009", "9 $DWGCODEPAGE|3 ANSI_1252|", "\xC4\\U+0416", L"\u00C4\u0416",
         L"\u00E4\u0436"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        load(c.version, c.header, c.bytes);
        const host::ReferenceInfo info = host::references(document()).at(0);
        EXPECT_EQ(info.name + info.saved, L"Gr\u00FCn.\\Pl\u00E4ne.dwg");
        CMORCadSpace space;
        ASSERT_TRUE(m_modelSpace.forget() && m_modelSpace.connect() && space.connect(L"GR\u00DCN"));
        ads_name name{};
        CMOREntity entity;
        ASSERT_TRUE(space.handEnt(L"C1", name) && entity.Connect(name));
        EXPECT_EQ(entity.GetLayer(nullptr), std::wstring{L"Gr\u00FCn|"} + c.layer);
        EXPECT_TRUE(ResbufList{space.tblSearch(L"LAYER", c.layer)});
        EXPECT_EQ(walk(space, texts({c.pattern})), L"C1 ");
        for (const wchar_t* pattern : {L"\u00E4", L"\u00C4", L"[\u00E0-\u00E5]", L"@"})
            EXPECT_EQ(walk(m_modelSpace, texts({pattern})), L"A1 ");
    }
}

}  // namespace
}  // namespace mor::test
