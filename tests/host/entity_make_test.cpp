#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace mor::test {
namespace {

const double kOrigin[] = {0.0, 0.0, 0.0};

class MakingEntities : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        create();
    }
    static int beginBlock(const wchar_t* name, int flags = 0) {
        return make(acutBuildList(RTDXF0, L"BLOCK", 2, name, 10, kOrigin, 70, flags, 0));
    }
    static int endBlock() { return make(acutBuildList(RTDXF0, L"ENDBLK", 0)); }
    static int insert(const wchar_t* block) {
        return make(acutBuildList(RTDXF0, L"INSERT", 2, block, 10, kOrigin, 0));
    }
    /// A block with one line in it.
    static void makeBlock(const wchar_t* name) {
        EXPECT_EQ(beginBlock(name), RTNORM);
        EXPECT_EQ(makeLine(), RTNORM);
        EXPECT_EQ(endBlock(), RTKWORD);
    }
    /// "TYPE TYPE": the entities of a block definition, empty when there is no such block.
    static std::string entitiesOf(const wchar_t* block) {
        const ResbufList record{acdbTblSearch(L"BLOCK", block, 0)};
        const resbuf* first = findGroup(record, -2);
        return first == nullptr ? "" : walk(EntityName{first->resval.rlname});
    }
};

TEST_F(MakingEntities, AnswersNormAndNamesTheLastOne) {
    EXPECT_TRUE(lastEntity().isNone());
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_EQ(titleOf(lastEntity()), "LINE:20");
    EXPECT_EQ(make(acutBuildList(100, L"AcDbEntity", RTDXF0, L"LINE", 10, kOrigin, 0)), RTNORM);
    const ads_name name = {77, 1};  // is passed over, as is the handle
    EXPECT_EQ(make(acutBuildList(-1, name, RTDXF0, L"LINE", 5, L"FFFF", 8, L"0", 10, kOrigin, 0)),
              RTNORM);
    EXPECT_EQ(walk(), "LINE:20 LINE:21 LINE:22");
}

TEST_F(MakingEntities, RefusesWhatDoesNotFit) {
    const int results[] = {
        make(acutBuildList(8, L"0", 0)),
        make(acutBuildList(RTDXF0, L"NOSUCH", 8, L"0", 0)),
        make(acutBuildList(8, L"0", 10, kOrigin, RTDXF0, L"LINE", 0)),  // the type comes third
        make(acutBuildList(RTDXF0, L"VIEWPORT", 8, L"0", 0)),
        make(acutBuildList(RTDXF0, L"ATTDEF", 1, L"", 10, kOrigin, 0)),  // without a tag
        insert(L"UNKNOWN"),
        make(acutBuildList(RTDXF0, L"INSERT", 10, kOrigin, 0)),
        endBlock(),
        beginBlock(L""),
        beginBlock(L"A|B"),
        beginBlock(L"XREF", 4),
        beginBlock(L"OVERLAY", 12),
        beginBlock(L"*Model_Space"),
        beginBlock(L"*PAPER_SPACE")};
    for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], RTREJ) << i;
    EXPECT_EQ(acdbEntMake(nullptr), RTERROR);
    EXPECT_EQ(walk(), "");
    EXPECT_TRUE(
        host::saveDocument(document(), {.output = file(), .dryRun = true}).value().edits.empty());
}

TEST_F(MakingEntities, CreatesAnUnknownLayerWithDefaults) {
    EXPECT_EQ(makeLine(L"Walls"), RTNORM);
    EXPECT_EQ(makeLine(L"WALLS"), RTNORM);
    EXPECT_EQ(saved("LAYER").substr(saved("LAYER").find("; ") + 2),
              "0 LAYER|5 20|330 1|100 AcDbSymbolTableRecord|100 AcDbLayerTableRecord|2 Walls|70 0|"
              "62 7|6 Continuous|370 -3|390 F");
}

TEST_F(MakingEntities, PutsThemInTheSpaceThatTheListNames) {
    for (const int space : {1, 0})
        EXPECT_EQ(make(acutBuildList(RTDXF0, L"POINT", 10, kOrigin, 67, space, 0)), RTNORM);
    EXPECT_EQ(saved("POINT"),  // model space first, then the active layout
              "0 POINT|5 21|330 18|100 AcDbEntity|8 0|100 AcDbPoint|10 0.0|20 0.0|30 0.0; "
              "0 POINT|5 20|330 1B|100 AcDbEntity|67 1|8 0|100 AcDbPoint|10 0.0|20 0.0|30 0.0");
}

TEST_F(MakingEntities, DefinesABlockWithKwordAtItsEnd) {
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_FALSE(host::hasBlock(document(), L"B") || !lastEntity().isNone());
    EXPECT_EQ(endBlock(), RTKWORD);
    EXPECT_TRUE(host::hasBlock(document(), L"b") && lastEntity().isNone());
    EXPECT_EQ(entitiesOf(L"B"), "LINE:22");
    EXPECT_EQ(insert(L"b"), RTNORM);
    reopen();
    EXPECT_EQ(entitiesOf(L"B") + " " + walk(), "LINE:22 INSERT:24");
}

TEST_F(MakingEntities, ThrowsAPendingDefinitionAwayAfterABadList) {
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_EQ(insert(L"UNKNOWN"), RTREJ);
    EXPECT_EQ(endBlock(), RTREJ);
    EXPECT_FALSE(host::hasBlock(document(), L"B"));
    EXPECT_EQ(makeLine(), RTNORM);  // in model space again
    EXPECT_EQ(walk(), "LINE:20");
}

TEST_F(MakingEntities, CancelsAPendingDefinitionWithAnEmptyCall) {
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(acdbEntMake(nullptr), RTNORM);
    EXPECT_EQ(endBlock(), RTREJ);
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(beginBlock(L"C"), RTNORM);  // one definition at a time
    EXPECT_EQ(endBlock(), RTKWORD);
    EXPECT_FALSE(host::hasBlock(document(), L"B"));
    EXPECT_TRUE(host::hasBlock(document(), L"C"));
}

TEST_F(MakingEntities, RedefinesABlockBetweenItsOldRecords) {
    makeBlock(L"B");
    EXPECT_EQ(insert(L"B"), RTNORM);
    reopen();
    const DxfFile before = splitDxf(readFile(file()));
    const EntityName old = named(L"22");
    EXPECT_EQ(beginBlock(L"b"), RTNORM);
    EXPECT_EQ(make(acutBuildList(RTDXF0, L"CIRCLE", 10, kOrigin, 40, 2.5, 0)), RTNORM);
    EXPECT_EQ(named(L"22"), old);
    EXPECT_EQ(endBlock(), RTKWORD);
    EXPECT_TRUE(named(L"22").isNone());
    EXPECT_EQ(titleOf(old), "none");
    EXPECT_EQ(entitiesOf(L"B"), "CIRCLE:25");
    const DxfFile after = splitDxf(savedBytes());
    ASSERT_EQ(after.records.size(), before.records.size());
    std::string changed;
    for (std::size_t i = 0; i < before.records.size(); ++i)
        if (before.records[i].bytes != after.records[i].bytes &&
            before.records[i].section != "HEADER")
            changed += after.records[i].text();
    EXPECT_EQ(changed,
              "0 CIRCLE|5 25|330 20|100 AcDbEntity|8 0|100 AcDbCircle|10 0.0|20 0.0|30 "
              "0.0|40 2.5");
}

TEST_F(MakingEntities, RefusesABlockThatHoldsItself) {
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(insert(L"b"), RTREJ);
    makeBlock(L"B");
    EXPECT_EQ(beginBlock(L"b"), RTNORM);
    EXPECT_EQ(insert(L"B"), RTREJ);
    EXPECT_EQ(entitiesOf(L"B"), "LINE:22");
}

TEST_F(MakingEntities, RedefinesNoReferenceHoweverItIsMarked) {
    for (const int flags : {4, 8, 12}) {
        openEntities("", "", referenceDefinition("B", "b.dxf", flags));
        EXPECT_EQ(beginBlock(L"B"), RTREJ) << flags;
    }
}

TEST_F(MakingEntities, IsRefusedWhenFaultsSaySo) {
    host::faults::refuseEntities(true);
    EXPECT_EQ(makeLine(), RTREJ);
    host::faults::reset();
    host::faults::failCall("acdbEntMake", 2);
    EXPECT_EQ(beginBlock(L"B"), RTNORM);
    EXPECT_EQ(makeLine(), RTREJ);
    EXPECT_EQ(endBlock(), RTREJ);
    EXPECT_EQ(walk(), "");
}

TEST_F(MakingEntities, WritesTheFormOfEachRelease) {
    const std::pair<host::Release, const char*> forms[] = {
        {host::Release::R12, "0 LINE|5 1|8 0|"},
        {host::Release::R13, "0 LINE|5 20|100 AcDbEntity|8 0|100 AcDbLine|"},
        {host::Release::R2000, "0 LINE|5 20|330 18|100 AcDbEntity|8 0|100 AcDbLine|"}};
    for (const auto& [release, text] : forms) {
        create(release);
        EXPECT_EQ(makeLine(), RTNORM);
        EXPECT_EQ(saved("LINE"), std::string{text} + "10 0.0|20 0.0|30 0.0|11 1.0|21 2.0|31 3.0");
    }
}

/// Drawings that lack what their records usually lean on.
class OddDrawings : public HostTest {
protected:
    /// A line in model space with these groups behind its handle, and a header or none.
    void openLine(const std::string& header, const std::string& groups) {
        open(dxfText(header + "0 SECTION|2 ENTITIES|" + lineEntity("A1", "0", groups) +
                     "0 ENDSEC|0 EOF"));
    }
    static void makeBlock() {
        const double origin[] = {0.0, 0.0, 0.0};
        EXPECT_EQ(make(acutBuildList(RTDXF0, L"BLOCK", 2, L"B", 10, origin, 70, 0, 0)), RTNORM);
        EXPECT_EQ(makeLine(), RTNORM);
        EXPECT_EQ(make(acutBuildList(RTDXF0, L"ENDBLK", 0)), RTKWORD);
    }
    void setAttribute() const {
        Connected entity{named(L"A1")};
        EXPECT_TRUE(entity.SetAttribute(L"n", host::makeInteger(1)) && entity.Flush());
    }
};

TEST_F(OddDrawings, WithoutAReleaseGetBlockRecordsOnlyWhereOwnersAreNamed) {
    openLine("", "100 AcDbEntity|");
    makeBlock();
    EXPECT_EQ(saved("BLOCK_RECORD"), "");
    openLine("", "330 1F|100 AcDbEntity|");
    makeBlock();
    EXPECT_TRUE(saved("BLOCK_RECORD").ends_with("2 B")) << saved("BLOCK_RECORD");
}

TEST_F(OddDrawings, WithoutAReleaseRegisterApplicationsWithoutMarkers) {
    for (const char* header :
         {"",
          "0 SECTION|2 TABLES|0 TABLE|2 STYLE|70 1|0 STYLE|5 A2|100 AcDbSymbolTableRecord|2 A|"
          "70 0|0 ENDTAB|0 ENDSEC|"}) {
        openLine(header, "100 AcDbEntity|");
        setAttribute();
        EXPECT_EQ(saved("APPID").find("100 "), std::string::npos) << header;
        EXPECT_TRUE(holds(saved("APPID"), "2 MOR_ATTRIBUTES|70 0"));
    }
    openLine("0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|0 ENDSEC|", "100 AcDbEntity|");
    setAttribute();
    EXPECT_TRUE(holds(saved("APPID"), "100 AcDbRegAppTableRecord|2 MOR_ATTRIBUTES"));
}

TEST_F(OddDrawings, OfR12GetNewRecordsThatLookAsTheirOwnOfTheKind) {
    const struct {
        const char* tables;
        const char* line;
        const char* layer;
        const char* made;
    } cases[] = {
        {"", "100 AcDbEntity|", "0 LAYER|2 NEW", "100 AcDbEntity|8 NEW"},
        {"0 TABLE|2 BLOCK_RECORD|70 0|0 ENDTAB|", "", "0 LAYER|2 NEW", "|8 NEW"},
        {"0 TABLE|2 LAYER|70 1|0 LAYER|2 A|70 0|0 ENDTAB|", "100 AcDbEntity|", "0 LAYER|2 NEW",
         "100 AcDbEntity|8 NEW"},
        {"0 TABLE|2 STYLE|70 1|0 STYLE|5 A2|100 AcDbSymbolTableRecord|2 A|70 0|0 ENDTAB|", "",
         "0 LAYER|5 A3|100 AcDbSymbolTableRecord|100 AcDbLayerTableRecord|2 NEW", "|8 NEW"}};
    for (const auto& c : cases) {
        openLine("0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|0 ENDSEC|0 SECTION|2 TABLES|" +
                     std::string(c.tables) + "0 ENDSEC|",
                 c.line);
        EXPECT_EQ(makeLine(L"NEW"), RTNORM);
        makeBlock();
        EXPECT_TRUE(holds(saved("LAYER"), c.layer));
        EXPECT_TRUE(holds(saved("LINE"), c.made));
        EXPECT_EQ(saved("BLOCK_RECORD"), "");
    }
}

TEST_F(OddDrawings, WithoutARecordForModelSpaceGetEntitiesWithoutOwner) {
    openLine("0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|0 ENDSEC|", "330 1F|100 AcDbEntity|");
    EXPECT_EQ(makeLine(), RTNORM);
    const std::string lines = saved("LINE");
    EXPECT_EQ(lines.substr(lines.find("; ") + 2, 7), "0 LINE|") << lines;
    EXPECT_EQ(lines.find("330", lines.find("; ")), std::string::npos) << lines;
}

}  // namespace
}  // namespace mor::test
