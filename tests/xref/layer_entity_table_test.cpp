#include "xref/layer_entity_table.h"

#include "host/host.h"
#include "xref/xref_iterator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mor::test {
namespace {

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

TEST_F(LayerTable, LayersThatDifferInCaseAreOne) {
    EXPECT_TRUE(add(1, L"WALLS"));
    EXPECT_TRUE(add(2, L"Walls"));
    EXPECT_TRUE(add(1, L"walls"));
    EXPECT_EQ(select({L"WALLS"}), "1 2 ");
}

TEST_F(LayerTable, NamesComeInTheOrderOfTheirSignedWords) {
    add(2, L"A");
    add(INT64_MAX, L"A");
    add(-3, L"B");
    add(INT64_MIN, L"A");
    add(2, L"B", -7);
    EXPECT_EQ(select({L"*"}),
              std::to_string(INT64_MIN) + " -3 2' 2 " + std::to_string(INT64_MAX) + " ");
}

TEST_F(LayerTable, APatternMatchesTheWholeNameWithoutRegardToCase) {
    add(1, L"PLAN|WALLS");
    add(2, L"PLAN|WALLS2");
    add(3, L"0");
    const struct {
        const wchar_t* pattern;
        const char* selected;
    } cases[] = {{L"PLAN|WALLS", "1 "}, {L"plan|walls", "1 "},    {L"PLAN|WALL", ""},
                 {L"WALLS", ""},        {L"PLAN|WALLS#", "2 "},   {L"PLAN|*", "1 2 "},
                 {L"*", "1 2 3 "},      {L"PLAN|?[AX]*", "1 2 "}, {L"~PLAN*", "3 "}};
    for (const auto& c : cases)
        EXPECT_EQ(select({c.pattern}), c.selected) << host::toUtf8(c.pattern);
}

TEST_F(LayerTable, AnEntityOnSeveralMatchesIsDeliveredOnce) {
    add(1, L"A");
    add(1, L"B");
    add(2, L"C");
    EXPECT_EQ(select({L"A", L"B", L"*"}), "1 2 ");
    EXPECT_EQ(selectLisp(R"(("c" "a"))"), "1 2 ");
}

TEST_F(LayerTable, OnlyAListThatCannotBeUsedGivesNoIterator) {
    add(1, L"A");
    EXPECT_EQ(select({}), "null");
    EXPECT_EQ(select({L"X"}), "");
    EXPECT_EQ(selectLisp("5"), "null");
    EXPECT_EQ(selectLisp("nil"), "");
}

TEST_F(LayerTable, LettersBeyondAsciiMatchInAnyCase) {
    add(1, L"T\u00DCREN");
    EXPECT_EQ(select({L"t\u00FC*"}), "1 ");
    EXPECT_EQ(select({L"T?REN"}), "1 ");
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

}  // namespace
}  // namespace mor::test
