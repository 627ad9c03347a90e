#include "xref/model_space_iterator.h"

#include "tests/xref/iterator_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace mor::test {
namespace {

using Filter = std::vector<std::pair<int, std::wstring>>;

class ModelSpaceIterators : public IteratorTest {};

TEST_F(ModelSpaceIterators, ModelSpaceMeansTheWholeDrawing) {
    EXPECT_EQ(walk(m_modelSpace), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"*"}}));
    EXPECT_EQ(walk(m_modelSpace, texts({})), L"10 11 12 13 A1 A2 ");
    EXPECT_EQ(host::counters().lastFilter, Filter{});
    EXPECT_EQ(walk(m_modelSpace, CMORAdsLisp::Nil), L"10 11 12 13 A1 A2 ");
}

TEST_F(ModelSpaceIterators, ASinglePatternIsAFilterByItself) {
    EXPECT_EQ(walk(m_modelSpace, texts({L"walls"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"walls"}}));
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("W*"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, (Filter{{8, L"W*"}}));
}

TEST_F(ModelSpaceIterators, SeveralPatternsAreAlternatives) {
    const Filter filter{{-4, L"<OR"}, {8, L"WALLS"}, {8, L"X"}, {-4, L"OR>"}};
    EXPECT_EQ(walk(m_modelSpace, texts({L"WALLS", L"X"})), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, filter);
    EXPECT_EQ(walk(m_modelSpace, lisp(R"(("WALLS" "X"))")), L"12 A1 ");
    EXPECT_EQ(host::counters().lastFilter, filter);
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

}  // namespace
}  // namespace mor::test
