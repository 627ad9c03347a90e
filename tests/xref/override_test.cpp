#include "platform/owned.h"
#include "platform/table_calls.h"
#include "tests/xref/reference_fixture.h"
#include "xref/xref_space.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace mor::test {
namespace {

/// A drawing that overrides some symbols of PLAN and of PLAN's own reference CORE; PLAN, too,
/// overrides some of CORE's.
class Overrides : public ReferenceTest {
protected:
    void SetUp() override {
        ReferenceTest::SetUp();
        const std::string types = "0 TABLE|2 LTYPE|70 9|";
        const std::string styles = "0 ENDTAB|0 TABLE|2 STYLE|70 1|";
        const DxfDrawing core{.layers = {"A", "B", "C"}, .entities = lineEntity("F1", "C")};
        core.save("core.dxf");
        const DxfDrawing plan{
            .layers = {"0", "WALLS", "Defpoints"},
            .blocks = blockDefinition("DOOR", lineEntity("B1", "0"), 0, "", "10 4.0|") +
                      referenceDefinition("CORE", "core.dxf"),
            .entities = lineEntity("51", "0|6 ByLayer") + lineEntity("52", "Defpoints|6 DASHED") +
                        lineEntity("53", "WALLS|6 CONTINUOUS"),
            .records =
                "0 LAYER|2 Doors|70 4|62 2|6 DASHED|0 LAYER|2 CORE|A|70 48|62 6|"
                "0 LAYER|2 CORE|B|70 48|62 5|",
            .tables = types +
                      "0 LTYPE|2 CONTINUOUS|70 0|0 LTYPE|2 ByLayer|70 0|0 LTYPE|2 DASHED|"
                      "70 0|3 plan|0 LTYPE|2 DOT|70 0|3 plan|" +
                      styles + "0 STYLE|2 NOTES|70 0|3 plan|0 ENDTAB|"};
        plan.save("plan.dxf");
        const DxfDrawing site{
            .layers = {"0"},
            .blocks = blockDefinition("PLAN|DOOR", lineEntity("D9", "0"), 48) +
                      referenceDefinition("PLAN", "plan.dxf"),
            .entities = insertEntity("71", "0", "PLAN|DOOR", "10 10.0|20 0.0|30 0.0|") +
                        insertEntity("72", "0", "PLAN|CORE", "10 5.0|20 0.0|30 0.0|"),
            .records = "0 LAYER|2 Plan|Walls|70 49|62 -3|0 LAYER|2 PLAN|CORE|A|70 48|62 1|",
            .tables = types + "0 LTYPE|2 PLAN|DASHED|70 0|3 site|" + styles +
                      "0 STYLE|2 PLAN|NOTES|70 0|3 site|0 ENDTAB|"};
        open(site.save("site.dxf"));
    }
    /// A group of an entity of PLAN.
    static std::wstring group(const wchar_t* handle, int code) {
        ads_name name{};
        CMOREntity entity;
        const wchar_t* text = L"none";
        EXPECT_TRUE(mor_xref::HandEnt(L"PLAN", handle, name) && entity.Connect(name));
        EXPECT_TRUE(entity.GetEntityEntry(code, text));
        return text;
    }
    /// Groups 2, 3, 6, 62 and 70 of a record, in its order.
    static std::wstring show(const ResbufList& record) {
        std::wstring text;
        for (const resbuf* group = findGroup(record, 2); group != nullptr; group = group->rbnext)
            if (group->restype == 62 || group->restype == 70)
                text += std::to_wstring(group->resval.rint) + L" ";
            else if (group->restype == 2 || group->restype == 3 || group->restype == 6)
                text += std::wstring{group->resval.rstring} + L" ";
        return record ? text : L"none";
    }
};

TEST_F(Overrides, ARecordOfTheDrawingItselfWinsOverTheReferences) {
    const struct {
        const wchar_t* table;
        const wchar_t* symbol;
        const wchar_t* shown;
    } cases[] = {{L"LAYER", L"WALLS", L"Plan|Walls 49 -3 "},
                 {L"LAYER", L"doors", L"PLAN|Doors 52 2 PLAN|DASHED "},
                 {L"LAYER", L"Defpoints", L"PLAN|Defpoints 48 7 CONTINUOUS "},
                 {L"LAYER", L"CORE|A", L"PLAN|CORE|A 48 1 "},             // of the drawing
                 {L"LAYER", L"CORE|B", L"PLAN|CORE|B 48 5 "},             // of PLAN
                 {L"LAYER", L"CORE|C", L"PLAN|CORE|C 48 7 CONTINUOUS "},  // of CORE
                 {L"LAYER", L"PLAN|WALLS", L"none"},
                 {L"LTYPE", L"dashed", L"PLAN|DASHED 0 site "},
                 {L"LTYPE", L"DOT", L"PLAN|DOT 48 plan "},
                 {L"LTYPE", L"Continuous", L"none"},  // never qualified
                 {L"STYLE", L"NOTES", L"PLAN|NOTES 0 site "}};
    MOR_XRef plan;
    ASSERT_TRUE(plan.connect(L"PLAN"));
    for (const auto& c : cases)
        EXPECT_EQ(show(ResbufList{plan.tblSearch(c.table, c.symbol)}), c.shown);
    const ResbufList door{plan.searchBlock(L"DOOR")};  // but its entities are the reference's
    ASSERT_NE(findGroup(door, -2), nullptr);
    EXPECT_EQ(handleOf(findGroup(door, -2)->resval.rlname), L"B1");
    EXPECT_EQ(findGroup(door, 10)->resval.rpoint[0], 4.0);
}

TEST_F(Overrides, DependentBlocksAreInsertedAsTheReferenceHasThem) {
    ads_name insert{};
    CMORAdsTransformation placement;
    find(L"71", insert);
    ASSERT_TRUE(placement.loadFromEntity(insert));
    EXPECT_EQ(placement.matrix.rows[0][3], 10.0 - 4.0);  // the base point is the reference's
    find(L"72", insert);
    MOR_XRefView view;
    ASSERT_TRUE(view.connect(insert) && view.getMat(placement));
    EXPECT_EQ(placement.matrix.rows[0][3], 5.0);
    EXPECT_STREQ(view.SpaceName(), L"PLAN|CORE");
}

TEST_F(Overrides, WhatIsKeptOfABlockThatTheReferenceLostIsNotFound) {
    open(DxfDrawing{.blocks = blockDefinition("PLAN|GONE", lineEntity("D8", "0"), 48) +
                              referenceDefinition("PLAN", "plan.dxf") +
                              blockDefinition("LOST|DOOR", lineEntity("D9", "0"), 48) +
                              referenceDefinition("LOST", "nosuch.dxf")}
             .save("site.dxf"));
    EXPECT_FALSE(ResbufList{acdbTblSearch(L"BLOCK", L"PLAN|GONE", 0)});
    EXPECT_TRUE(ResbufList{acdbTblSearch(L"BLOCK", L"LOST|DOOR", 0)});  // nobody knows better
    const ResbufList first{acdbTblNext(L"BLOCK", 1)};
    EXPECT_STREQ(findGroup(first, 2)->resval.rstring, L"PLAN");
}

TEST_F(Overrides, AWalkOverATableListsWhatTheFileHolds) {
    for (const auto& [name, listed] :
         {std::pair{L"LAYER", L"0 Plan|Walls PLAN|CORE|A "}, {L"BLOCK", L"PLAN|DOOR PLAN "}}) {
        std::wstring found;
        for (ResbufList record{acdbTblNext(name, 1)}; record;
             record = ResbufList{acdbTblNext(name, 0)})
            found += std::wstring{findGroup(record, 2)->resval.rstring} + L" ";
        EXPECT_EQ(found, listed);
    }
}

TEST_F(Overrides, SymbolsThatMeanTheSameEverywhereKeepTheirNames) {
    for (const auto& [handle, symbols] : {std::pair{L"51", L"0 ByLayer"},
                                          {L"52", L"PLAN|Defpoints PLAN|DASHED"},
                                          {L"53", L"PLAN|WALLS CONTINUOUS"}})
        EXPECT_EQ(group(handle, 8) + L" " + group(handle, 6), symbols);
}

TEST_F(Overrides, NamesAreCommonInTheirOwnTableOnly) {
    DxfDrawing{.layers = {"0", "ByLayer", "Continuous"},
               .blocks = blockDefinition("0", lineEntity("B1", "0"), 0, "", "10 4.0|") +
                         blockDefinition("*D1", ""),
               .entities = lineEntity("51", "continuous|6 Continuous") +
                           insertEntity("52", "0", "0", "10 9.0|20 0.0|30 0.0|") +
                           "0 TEXT|5 53|8 0|7 0|1 a|0 DIMENSION|5 54|8 0|2 *D1|3 FINE|"
                           "0 ARC_DIMENSION|5 55|8 0|2 *D1|3 FINE|"
                           "0 LARGE_RADIAL_DIMENSION|5 56|8 0|2 *D1|3 FINE|"
                           "0 ACAD_TABLE|5 57|8 0|2 *T1|",
               .tables =
                   "0 TABLE|2 STYLE|70 1|0 STYLE|2 0|70 0|3 plan|0 ENDTAB|"
                   "0 TABLE|2 VIEW|70 1|0 VIEW|2 TOP|70 0|0 ENDTAB|"
                   "0 TABLE|2 DIMSTYLE|70 1|0 DIMSTYLE|2 FINE|70 0|5 DOT|0 ENDTAB|"}
        .save("plan.dxf");
    open(DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf")}.save("site.dxf"));
    MOR_XRef plan;
    ASSERT_TRUE(plan.connect(L"PLAN"));
    EXPECT_EQ(show(ResbufList{plan.tblSearch(L"LAYER", L"Continuous")}),
              L"PLAN|Continuous 48 7 CONTINUOUS ");
    EXPECT_EQ(show(ResbufList{plan.tblSearch(L"STYLE", L"0")}), L"PLAN|0 48 plan ");
    EXPECT_FALSE(ResbufList{plan.tblSearch(L"VIEW", L"TOP")});
    const ResbufList dimensions{plan.tblSearch(L"DIMSTYLE", L"fine")};
    ASSERT_NE(findGroup(dimensions, 5), nullptr);
    EXPECT_STREQ(findGroup(dimensions, 5)->resval.rstring, L"PLAN|DOT");
    EXPECT_TRUE(ResbufList{plan.searchBlock(L"0")});
    const struct {
        const wchar_t* handle;
        int code;
        const wchar_t* text;
    } groups[] = {
        {L"51", 8, L"PLAN|continuous"}, {L"51", 6, L"Continuous"}, {L"52", 8, L"0"},
        {L"52", 2, L"PLAN|0"},          {L"53", 7, L"PLAN|0"},     {L"54", 2, L"PLAN|*D1"},
        {L"54", 3, L"PLAN|FINE"},       {L"55", 2, L"PLAN|*D1"},   {L"55", 3, L"PLAN|FINE"},
        {L"56", 2, L"PLAN|*D1"},        {L"56", 3, L"PLAN|FINE"},  {L"57", 2, L"PLAN|*T1"}};
    for (const auto& g : groups) EXPECT_EQ(group(g.handle, g.code), g.text);
    ads_name insert{};
    CMORAdsTransformation placement;
    ASSERT_TRUE(plan.handEnt(L"52", insert) && placement.loadFromEntity(insert));
    EXPECT_EQ(placement.matrix.rows[0][3], 9.0 - 4.0);
}

}  // namespace
}  // namespace mor::test
