#include "xref/space_iterator.h"

#include "space/model_space_view.h"
#include "space/space.h"
#include "tests/xref/iterator_fixture.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <string>
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
