#include "platform/selection_calls.h"
#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>

namespace mor::test {
namespace {

const double kPoint[] = {5.0, 5.0, 0.0};

std::string entity(const std::string& type, const std::string& handle, const std::string& more) {
    return "0 " + type + "|5 " + handle + "|" + more;
}

/// The test for the extended data of an application.
resbuf* ofApplication(const wchar_t* application) {
    resbuf* list = acutNewRb(-3);
    if (application != nullptr) list->rbnext = acutBuildList(1001, application, 0);
    return list;
}

/// A filter and the handles that it selects.
struct Row {
    resbuf* filter;
    const char* selected;
};

class Selections : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openEntities(entity("LINE", "A1", "8 WALLS|62 1|10 0.0|20 0.0|30 0.0|") +
                         entity("LINE", "A2", "8 walls|62 3|10 5.0|20 9.0|30 0.0|") +
                         entity("CIRCLE", "A3", "8 DOORS|10 6.0|20 6.0|30 1.0|40 2.5|") +
                         entity("INSERT", "A4", "8 DOORS|66 1|2 *U2|10 1.0|20 1.0|30 0.0|") +
                         entity("ATTRIB", "A5", "8 WALLS|1 |2 T|") + "0 SEQEND|5 A6|8 0|" +
                         entity("LINE", "A7", "67 1|8 WALLS|70 6|1001 APP|1000 x|") +
                         entity("TEXT", "A8", "8 T#1|1 a|40 2.0|1001 OTHER|1000 y|"),
                     "",
                     "0 BLOCK|8 0|2 *U2|70 1|10 0.0|20 0.0|30 0.0|" +
                         entity("LINE", "B1", "8 WALLS|") + "0 ENDBLK|8 0|");
    }
    /// The handles that a filter selects, in rising order; "none" when it answers no set.
    std::string select(resbuf* filter, const wchar_t* mode = L"X") {
        const ResbufList owned{filter};
        SelectionSet set;
        if (acedSSGet(mode, nullptr, nullptr, owned.get(), set.receive()) != RTNORM) return "none";
        std::int32_t count = 0;
        EXPECT_EQ(acedSSLength(set.get(), &count), RTNORM);
        std::set<std::string> handles;
        for (std::int32_t i = 0; i < count; ++i) {
            ads_name name = {};
            EXPECT_EQ(acedSSName(set.get(), i, name), RTNORM);
            handles.insert(host::recordGroup(document(), EntityName{name}, 5).value_or("-"));
        }
        EXPECT_EQ(handles.size(), static_cast<std::size_t>(count));
        std::string all;
        for (const std::string& handle : handles) all += (all.empty() ? "" : " ") + handle;
        return all;
    }
    void expectSelected(std::initializer_list<Row> rows) {
        for (const Row& row : rows)
            EXPECT_EQ(select(row.filter), row.selected) << "row " << &row - rows.begin();
    }
};

TEST_F(Selections, WithoutAFilterHoldEveryMainEntityOfTheSpaces) {
    EXPECT_EQ(select(nullptr), "A1 A2 A3 A4 A7 A8");
    EXPECT_EQ(select(nullptr, L"_X"), "A1 A2 A3 A4 A7 A8");
    EXPECT_EQ(select(nullptr, L"P"), "none");
    EXPECT_EQ(select(nullptr, nullptr), "none");
}

TEST_F(Selections, NeedEveryGroupOfTheFilter) {
    expectSelected({{acutBuildList(RTDXF0, L"LINE", 0), "A1 A2 A7"},
                    {acutBuildList(RTDXF0, L"line,CIRCLE", 0), "A1 A2 A3 A7"},
                    {acutBuildList(RTDXF0, L"~LINE", 0), "A3 A4 A8"},
                    {acutBuildList(RTDXF0, L"LINE", 8, L"Walls", 62, 3, 0), "A2"},
                    {acutBuildList(8, L"D*", 0), "A3 A4"},
                    {acutBuildList(8, L"NOSUCH", 0), "none"},
                    {acutBuildList(RTDXF0, L"INSERT", 2, L"`*U2", 0), "A4"},
                    {acutBuildList(8, L"T#1", 0), "none"},  // a digit where the name has #
                    {acutBuildList(8, L"T`#1", 0), "A8"},
                    {acutBuildList(40, 2.5, 0), "A3"}});
}

TEST_F(Selections, NeverMatchGroupsThatAnEntityLacksButTheSpace) {
    const ads_name name = {1, 1};
    expectSelected({{acutBuildList(62, 256, 0), "none"},
                    {acutBuildList(67, 0, 0), "A1 A2 A3 A4 A8"},
                    {acutBuildList(67, 1, 0), "A7"},
                    {acutBuildList(-4, L"<>", 62, 1, 0), "A2"},
                    // Handles, names and extended data are passed over.
                    {acutBuildList(-1, name, 5, L"A1", RTDXF0, L"CIRCLE", 0), "A3"},
                    {acutBuildList(RTDXF0, L"TEXT", 1000, L"z", 0), "A8"}});
}

TEST_F(Selections, TakeAnEntityThatNamesNoLayerForOneOnLayer0) {
    openEntities(entity("LINE", "A1", "10 0.0|20 0.0|") + entity("LINE", "A2", "8 WALLS|"));
    EXPECT_EQ(select(acutBuildList(8, L"*", 0)), "A1 A2");
    EXPECT_EQ(select(acutBuildList(8, L"0", 0)), "A1");
}

TEST_F(Selections, CompareOwnersAndAllMarkers) {
    open(DxfDrawing{.entities = "0 TEXT|5 A1|330 F1|100 AcDbEntity|8 0|100 AcDbText|1 a|"
                                "0 LINE|5 A2|102 {X|330 F1|102 }|100 AcDbEntity|8 0|100 AcDbLine|",
                    .version = "AC1015",
                    .objects = "0 DICTIONARY|5 F1|"});
    ads_name owner = {};
    ASSERT_EQ(acdbHandEnt(L"F1", owner), RTNORM);
    const ads_name none = {99, 99};
    expectSelected({{acutBuildList(330, owner, 0), "A1"},
                    {acutBuildList(330, none, 0), "none"},
                    {acutBuildList(100, L"AcDbText", 0), "A1"},
                    {acutBuildList(100, L"AcDbE*", 0), "A1 A2"}});
}

TEST_F(Selections, TestForAnApplication) {
    expectSelected({{ofApplication(L"app"), "A7"},
                    {ofApplication(L"*"), "A7 A8"},
                    {ofApplication(L"NOSUCH"), "none"},
                    {ofApplication(nullptr), "A7 A8"}});
}

TEST_F(Selections, CombineTestsWithOperators) {
    EXPECT_EQ(select(acutBuildList(-4, L"<OR", RTDXF0, L"CIRCLE", 62, 1, -4, L"OR>", 0)), "A1 A3");
    EXPECT_EQ(select(acutBuildList(-4, L"<not", RTDXF0, L"LINE", -4, L"Not>", 0)), "A3 A4 A8");
    EXPECT_EQ(
        select(acutBuildList(-4, L"<XOR", RTDXF0, L"LINE", 8, L"WALLS,DOORS", -4, L"XOR>", 0)),
        "A3 A4");
    EXPECT_EQ(select(acutBuildList(-4, L"<OR", -4, L"<AND", RTDXF0, L"LINE", 62, 3, -4, L"AND>", -4,
                                   L"<NOT", 8, L"WALLS,D*", -4, L"NOT>", -4, L"OR>", 67, 0, 0)),
              "A2 A8");
}

TEST_F(Selections, CompareNumbersByRelations) {
    const struct {
        const wchar_t* relation;
        int colour;
        const char* lines;
    } cases[] = {{L"*", 9, "A1 A2"},  {L"=", 3, "A2"}, {L"!=", 3, "A1"},    {L"/=", 3, "A1"},
                 {L"<", 3, "A1"},     {L">", 1, "A2"}, {L"<=", 3, "A1 A2"}, {L"&", 2, "A2"},
                 {L">=", 1, "A1 A2"}, {L"&=", 3, "A2"}};
    for (const auto& c : cases)
        expectSelected(
            {{acutBuildList(RTDXF0, L"LINE", -4, c.relation, 62, c.colour, 0), c.lines}});
    expectSelected({{acutBuildList(-4, L"&=", 70, 5, 0), "none"},
                    {acutBuildList(-4, L"&=", 70, 6, 0), "A7"},
                    {acutBuildList(-4, L"&", 40, 1e300, 0), "none"},
                    {acutBuildList(-4, L">,>,*", 10, kPoint, 0), "A3"},
                    {acutBuildList(-4, L">=,*", 10, kPoint, 0), "A2 A3"},
                    {acutBuildList(-4, L">", 10, kPoint, 0), "A3"},
                    {acutBuildList(-4, L"*,*,=", 10, kPoint, 0), "A1 A2 A4"},
                    {acutBuildList(RTDXF0, L"TEXT", -4, L">", 1040, 1.0, 0), "A8"}});
}

TEST_F(Selections, RefuseBadFilters) {
    expectSelected({{acutBuildList(-4, L"<OR", RTDXF0, L"LINE", 0), "none"},
                    {acutBuildList(RTDXF0, L"LINE", -4, L"OR>", 0), "none"},
                    {acutBuildList(-4, L"<AND", RTDXF0, L"LINE", -4, L"OR>", 0), "none"},
                    {acutBuildList(-4, L"<OR", -4, L"OR>", 0), "none"},
                    {acutBuildList(-4, L"<NOT", RTDXF0, L"LINE", 8, L"0", -4, L"NOT>", 0), "none"},
                    {acutBuildList(-4, L"<XOR", RTDXF0, L"LINE", -4, L"XOR>", 0), "none"},
                    {acutBuildList(-4, L"<NAND", RTDXF0, L"LINE", -4, L"NAND>", 0), "none"},
                    {acutBuildList(-4, L">", 0), "none"},
                    {acutBuildList(-4, L">", 8, L"0", 0), "none"},
                    {acutBuildList(-4, L">", -4, L"<", 62, 1, 0), "none"},
                    {acutBuildList(-4, L"~", 62, 1, 0), "none"}});
}

TEST_F(Selections, KeepNamesOfEntitiesErasedLater) {
    const ResbufList filter{acutBuildList(RTDXF0, L"CIRCLE", 0)};
    ads_name set = {};
    ads_name name = {};
    std::int32_t count = 0;
    ASSERT_EQ(acedSSGet(L"X", nullptr, nullptr, filter.get(), set), RTNORM);
    ASSERT_EQ(acedSSName(set, 0, name), RTNORM);
    EXPECT_EQ(acdbEntDel(name), RTNORM);
    EXPECT_EQ(acedSSLength(set, &count), RTNORM);
    EXPECT_EQ(count, 1);
    for (const int index : {1, -1}) EXPECT_EQ(acedSSName(set, index, name), RTERROR);
    EXPECT_EQ(acedSSFree(set), RTNORM);
    EXPECT_EQ(acedSSFree(set), RTERROR);
    EXPECT_EQ(acedSSLength(set, &count), RTERROR);
    EXPECT_EQ(acedSSName(set, 0, name), RTERROR);
    EXPECT_EQ(select(acutBuildList(RTDXF0, L"CIRCLE", 0)), "none");
}

TEST_F(Selections, OpenAtOnceAreAtMost128) {
    std::vector<SelectionSet> sets(128);
    for (SelectionSet& set : sets)
        ASSERT_EQ(acedSSGet(L"X", nullptr, nullptr, nullptr, set.receive()), RTNORM);
    EXPECT_EQ(select(nullptr), "none");
    sets[5].reset();
    EXPECT_NE(select(nullptr), "none");
}

}  // namespace
}  // namespace mor::test
