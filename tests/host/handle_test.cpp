#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

std::string line(const std::string& handle) { return lineEntity(handle, "0"); }

class Handles : public HostTest {
protected:
    AcApDocument* openLines(const std::string& header, const std::string& entities) {
        return open(DxfDrawing{.entities = entities, .header = header});
    }
    /// "HANDLE SEED" after a line was made and saved.
    std::string madeAndSeed() {
        EXPECT_EQ(makeLine(), RTNORM);
        const DxfFile file = splitDxf(savedBytes());
        std::string handle;
        for (const DxfRecord& record : file.records)
            if (record.is("LINE")) handle = record.first(5).value_or("none");
        return handle + " " + file.variable("$HANDSEED");
    }
};

TEST_F(Handles, BeginAtTheSeedOrAboveTheHighest) {
    const struct {
        const char* header;
        const char* line;
        const char* made;
    } cases[] = {{"9 $HANDSEED|5 B0|", "A1", "B0 B1"},
                 {"9 $HANDSEED|5 00000A0|", "A1", "A2 A3"},
                 {"", "ff", "100 101"},
                 {"", "", "1 2"},
                 {"9 $HANDSEED|5 0|", "", "1 2"},
                 {"9 $HANDSEED|5 junk|", "I1", "1 2"},
                 {"9 $HANDSEED|5 FFFFFFFF0|", "A1", "FFFFFFFF0 FFFFFFFF1"}};
    for (const auto& c : cases) {
        openLines(c.header, line(c.line));
        EXPECT_EQ(madeAndSeed(), c.made) << c.header;
    }
    open(DxfDrawing{.header = "9 $HANDSEED|5 10|",
                    .tables = "0 TABLE|2 DIMSTYLE|5 A|0 DIMSTYLE|105 E0|5 FFFF|"
                              "100 AcDbDimStyleTableRecord|2 S|0 ENDTAB|",
                    .version = "AC1015",
                    .objects = "0 SORTENTSTABLE|5 D0|100 AcDbSortentsTable|5 FFFE|"
                               "0 DICTIONARY|5 F0|"});
    EXPECT_EQ(madeAndSeed(), "F1 F2");
}

TEST_F(Handles, StayClearOfThoseThatValuesKeep) {
    openLines("9 $HANDSEED|5 B0|",
              line("A1") + "1001 OTHER|1005 B3|1001 mor_attributes|1070 1|1000 x|1002 {|1005 B0|" +
                  "1070 0|1005 00b1|1002 }|");
    Connected entity{named(L"A1")};
    const auto value = host::readLisp("(handent \"B2\")", host::UnknownHandles::Keep);
    EXPECT_TRUE(entity.SetAttribute(L"y", value.value()) && entity.Flush());
    EXPECT_EQ(madeAndSeed(), "B3 B4");
    reopen();
    for (const wchar_t* kept : {L"B0", L"B1", L"B2"}) EXPECT_TRUE(named(kept).isNone());
}

TEST_F(Handles, RunOutInsteadOfBeginningAgain) {
    openLines("", line("FFFFFFFFFFFFFFFF"));
    EXPECT_EQ(makeLine(), RTREJ);
    openLines("9 $HANDSEED|5 FFFFFFFFFFFFFFFF|", line("1"));
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_EQ(titleOf(lastEntity()), "LINE:FFFFFFFFFFFFFFFF");
    EXPECT_EQ(makeLine(), RTREJ);
}

TEST_F(Handles, CompareAsNumbers) {
    openLines("", line("00a1"));
    for (const wchar_t* text : {L"A1", L"a1", L"0A1", L"000000000000000000A1"}) {
        ads_name name = {};
        EXPECT_EQ(acdbHandEnt(text, name), RTNORM) << host::toUtf8(text);
        EXPECT_EQ(titleOf(EntityName{name}), "LINE:A1");
    }
    for (const wchar_t* text : {L"", L"0", L"A2", L"G", L"A1 ", L"-A1", L"0xA1", L"\u0661"}) {
        ads_name name = {7, 7};
        EXPECT_EQ(acdbHandEnt(text, name), RTERROR) << host::toUtf8(text);
        EXPECT_EQ(name[0], 7);
    }
}

TEST_F(Handles, ThatStandTwiceMeanTheFirstRecord) {
    openEntities(line("A1") + "0 CIRCLE|5 A2|8 0|0 POINT|5 A2|8 0|", "0 LAYER|5 A1|2 WALLS|70 0|");
    EXPECT_EQ(titleOf(named(L"A1")) + " " + titleOf(named(L"A2")), "LAYER:A1 CIRCLE:A2");
    EXPECT_EQ(walk(), "LINE:A1 CIRCLE:A2 POINT:A2");
}

// Handles rise for a while, fall, and rise again, as those of tables, blocks and entities do.
TEST_F(Handles, FarApartAreFoundInWhateverOrderTheyStand) {
    constexpr std::uint64_t kCount = 300;
    for (const std::uint64_t runs : {1U, 3U, 6U, 150U}) {
        std::string entities;
        for (std::uint64_t i = 0; i < kCount; ++i) {
            const std::uint64_t nth = i % (kCount / runs) * runs + i / (kCount / runs);
            entities += line(host::handleText((nth + 1) << 24U));
        }
        openEntities(entities + "0 POINT|5 7000000|8 0|");
        for (std::uint64_t nth = 0; nth < kCount; ++nth) {
            const std::string handle = host::handleText((nth + 1) << 24U);
            EXPECT_EQ(titleOf(named(host::fromUtf8(handle).value())), "LINE:" + handle);
        }
        EXPECT_TRUE(named(L"7000001").isNone());
        const auto problems = host::documentProblems(document());
        ASSERT_EQ(problems.size(), 1U) << runs;
        EXPECT_EQ(problems[0].text, "the handle 7000000 stands on 2 records");
    }
}

TEST_F(Handles, OfReactorsAndDictionariesAreNotTheRecordsOwn) {
    openEntities(
        "0 LINE|5 A1|102 {ACAD_REACTORS|330 B1|102 }|102 {ACAD_XDICTIONARY|360 C1|102 }|"
        "330 D1|100 AcDbEntity|8 0|100 AcDbLine|5 E1|");
    EXPECT_EQ(walk(), "LINE:A1");
    EXPECT_TRUE(named(L"B1").isNone() && named(L"E1").isNone());
}

TEST_F(Handles, AreGivenInR12OnlyToRecordsThatNeedOne) {
    openLines("9 $HANDLING|70 0|", line("") + line(""));
    ads_name first = {};
    ads_name second = {};
    ASSERT_EQ(acdbEntNext(nullptr, first), RTNORM);
    ASSERT_EQ(acdbEntNext(first, second), RTNORM);
    Connected entity{EntityName{first}};
    EXPECT_STREQ(entity.Handle(), L"");
    EXPECT_TRUE(entity.SetAttribute(L"to", CMORAdsLispVar(second)) && entity.Flush());
    const DxfFile file = splitDxf(savedBytes());
    std::string texts;
    for (const DxfRecord& record : file.records)
        if (record.is("LINE")) texts += record.text() + "\n";
    const std::string body = "8 0|10 0.0|20 0.0|30 0.0|11 1.0|21 0.0|31 0.0";
    EXPECT_EQ(texts, "0 LINE|" + body + "|1001 MOR_ATTRIBUTES|1070 1|1000 to|1005 1\n0 LINE|5 1|" +
                         body + "\n");
    EXPECT_EQ(file.variable("$HANDLING"), "1");
    EXPECT_EQ(file.variable("$HANDSEED"), "2");
}

}  // namespace
}  // namespace mor::test
