#include "xref/space_iterator.h"

#include "space/model_space_view.h"
#include "space/space.h"
#include "tests/xref/reference_fixture.h"
#include "xref/model_space_iterator.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace mor::test {
namespace {

using Filter = std::vector<std::pair<int, std::wstring>>;

CMORStringList texts(const std::vector<const wchar_t*>& items) {
    CMORStringList list;
    for (const wchar_t* item : items) list.Append(item);
    return list;
}

CMORAdsLispVar lisp(const char* text) { return host::readLisp(text).value(); }

struct OpenIterator : MOR_SpaceIterator {
    using MOR_SpaceIterator::isEmpty;
    using MOR_SpaceIterator::MOR_SpaceIterator;
};

class SpaceIterators : public ReferenceTest {
protected:
    void SetUp() override {
        ReferenceTest::SetUp();
        ASSERT_TRUE(m_modelSpace.connect());
        ASSERT_TRUE(m_plan.connect(L"PLAN"));
    }
    /// The handles of the entities that are still to come, sorted; "empty" for an iterator without
    /// a letter.
    static std::wstring handles(OpenIterator& iterator) {
        if (iterator.isEmpty()) return L"empty";
        std::vector<std::wstring> found;
        while (const ads_name* name = iterator()) found.push_back(handleOf(*name));
        std::ranges::sort(found);
        std::wstring all;
        for (const std::wstring& handle : found) all += handle + L" ";
        return all;
    }
    template <typename... Arguments>
    static std::wstring walk(const Arguments&... arguments) {
        OpenIterator iterator{arguments...};
        return handles(iterator);
    }
    CMORCadSpace m_modelSpace;
    CMORCadSpace m_plan;
};

TEST_F(SpaceIterators, ModelSpaceMeansTheWholeDrawing) {
    EXPECT_EQ(walk(m_modelSpace), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"*"}}));
    EXPECT_EQ(walk(m_modelSpace, texts({})), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, Filter{});
    EXPECT_EQ(walk(m_modelSpace, CMORAdsLisp::Nil), L"10 11 12 13 A1 A2 ");
}

TEST_F(SpaceIterators, ASinglePatternIsAFilterByItself) {
    EXPECT_EQ(walk(m_modelSpace, texts({L"walls"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"walls"}}));
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("W*"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"W*"}}));
}

TEST_F(SpaceIterators, SeveralPatternsAreAlternatives) {
    const Filter filter{{-4, L"<OR"}, {8, L"WALLS"}, {8, L"X"}, {-4, L"OR>"}};
    EXPECT_EQ(walk(m_modelSpace, texts({L"WALLS", L"X"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, filter);
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" "X"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, filter);
}

TEST_F(SpaceIterators, NothingSelectedInModelSpaceIsAnEmptyIterator) {
    EXPECT_EQ(walk(m_modelSpace, texts({L"NOSUCH"})), L"empty");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"("WALLS")")), L"empty");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" . "0"))")), L"empty");
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" 5))")), L"empty");
    EXPECT_EQ(printed(),
              L"CMORCadLetterModelSpaceIterator::selectEntitiesByLayer: string expected\n");
}

TEST_F(SpaceIterators, AFailingSelectionLeavesNothingBehind) {
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

TEST_F(SpaceIterators, AnotherSelectionReplacesTheFormerOne) {
    CMORCadLetterModelSpaceIterator letter;
    EXPECT_EQ(letter.next(), nullptr);
    ASSERT_TRUE(letter.selectEntitiesByLayer(texts({L"WALLS"})));
    EXPECT_FALSE(letter.selectEntitiesByLayer(lisp("5")));
    EXPECT_NE(letter.next(), nullptr);  // no list: the former selection stays
    EXPECT_FALSE(letter.selectEntitiesByLayer(texts({L"NOSUCH"})));
    EXPECT_EQ(letter.next(), nullptr);
    EXPECT_EQ(host::counters().selectionSetsOpen, 0u);
}

TEST_F(SpaceIterators, StartAgainWithoutANewSelection) {
    for (const CMORCadSpace* space : {&m_modelSpace, &m_plan}) {
        OpenIterator iterator{*space};
        const std::wstring all = handles(iterator);
        EXPECT_EQ(handles(iterator), L"");
        host::faults::failCall("acedSSGet", 1);
        iterator.resetIterator();
        EXPECT_EQ(handles(iterator), all);
        EXPECT_FALSE(host::faults::struck());
    }
}

TEST_F(SpaceIterators, AnswerAtOneAddress) {
    for (const CMORCadSpace* space : {&m_modelSpace, &m_plan}) {
        OpenIterator iterator{*space};
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
    EXPECT_EQ(walk(space), L"empty");
    EXPECT_EQ(walk(space, texts({L"*"})), L"empty");
    EXPECT_EQ(walk(view), L"empty");
    EXPECT_EQ(walk(view, texts({L"*"})), L"empty");
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

}  // namespace
}  // namespace mor::test
