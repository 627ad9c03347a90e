#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

#include <map>

namespace mor::test {
namespace {

/// "0 LAYER|2 WALLS|70 0": a list as it was answered; "none" for null.
std::string shown(resbuf* answered) {
    const ResbufList list{answered};
    if (!list) return "none";
    std::string all;
    for (const resbuf* item = list.get(); item != nullptr; item = item->rbnext) {
        all += (all.empty() ? "" : "|") + std::to_string(item->restype) + " ";
        if (item->restype == -2)
            all += "name";
        else if (item->restype < 10)
            all += host::toUtf8(item->resval.rstring);
        else if (item->restype >= 60 && item->restype < 80)
            all += std::to_string(item->resval.rint);
        else if (item->restype >= 40)
            all += host::lispText(host::makeReal(item->resval.rreal));
        else
            for (const double part : item->resval.rpoint)
                all += host::lispText(host::makeReal(part)) + ",";
    }
    return all;
}

std::string block(const std::string& name, const std::string& entities,
                  const std::string& flags = "0", const std::string& path = "") {
    return "0 BLOCK|8 0|2 " + name + "|70 " + flags + "|10 1.0|20 2.0|30 0.0|3 " + name + "|1 " +
           path + "|" + entities + "0 ENDBLK|8 0|";
}

class Tables : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openEntities("0 LINE|5 A1|8 0|",
                     "0 LAYER|5 B1|102 {ACAD_X|360 9|102 }|330 2|100 AcDbSymbolTableRecord|2 "
                     "Walls|70 4|62 -3|6 DASHED|370 5|1001 ACAD|1000 x|0 LAYER|2 0|70 0|62 7|6 "
                     "CONTINUOUS|",
                     block("*MODEL_SPACE", "") + block("$PAPER_SPACE", "") + block("Empty", "") +
                         block("Filled", "0 LINE|5 B2|8 0|") +
                         block("Ref", "", "4", "..\\ref.dwg") + block("FILLED", "0 CIRCLE|8 0|"));
    }
};

TEST_F(Tables, SearchGivesTheOldFormWithoutCase) {
    EXPECT_EQ(shown(acdbTblSearch(L"LAYER", L"WALLS", 0)), "0 LAYER|2 Walls|70 4|62 -3|6 DASHED");
    EXPECT_EQ(shown(acdbTblSearch(L"layer", L"walls", 0)), "0 LAYER|2 Walls|70 4|62 -3|6 DASHED");
    EXPECT_EQ(shown(acdbTblSearch(L"LAYER", L"Wall", 0)), "none");
    EXPECT_EQ(shown(acdbTblSearch(L"NOSUCH", L"Walls", 0)), "none");
    EXPECT_EQ(shown(acdbTblSearch(L"STYLE", L"STANDARD", 0)), "none");
    EXPECT_EQ(shown(acdbTblSearch(nullptr, L"Walls", 0)), "none");
    EXPECT_EQ(shown(acdbTblSearch(L"LAYER", nullptr, 0)), "none");
}

TEST_F(Tables, SearchGivesBlocksWithTheirFirstEntity) {
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"filled", 0)),
              "0 BLOCK|2 Filled|70 0|10 1.0,2.0,0.0,|-2 name");
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"Empty", 0)), "0 BLOCK|2 Empty|70 0|10 1.0,2.0,0.0,");
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"Ref", 0)),
              "0 BLOCK|2 Ref|70 4|10 1.0,2.0,0.0,|1 ..\\ref.dwg");
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"*Model_Space", 0)),
              "0 BLOCK|2 *MODEL_SPACE|70 0|10 1.0,2.0,0.0,|-2 name");
}

TEST_F(Tables, NextWalksInTableOrderAndStaysAtTheEnd) {
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 1)).substr(8, 7), "2 Walls");
    EXPECT_EQ(shown(acdbTblNext(L"layer", 0)).substr(8, 3), "2 0");
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)), "none");
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)), "none");
    EXPECT_EQ(makeLine(L"NEW"), RTNORM);
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 5), "2 NEW");
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 1)).substr(8, 7), "2 Walls");
}

TEST_F(Tables, NextLeavesLayoutBlocksOut) {
    std::string names;
    for (ResbufList block{acdbTblNext(L"BLOCK", 1)}; block;
         block = ResbufList{acdbTblNext(L"BLOCK", 0)})
        names += host::toUtf8(findGroup(block, 2)->resval.rstring) + " ";
    EXPECT_EQ(names, "Empty Filled Ref FILLED ");
}

TEST_F(Tables, SearchSetsTheWalkWhenToldSo) {
    static_cast<void>(shown(acdbTblNext(L"LAYER", 1)));
    static_cast<void>(shown(acdbTblSearch(L"LAYER", L"0", 0)));
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 3), "2 0");
    static_cast<void>(shown(acdbTblSearch(L"LAYER", L"walls", 1)));
    EXPECT_EQ(shown(acdbTblNext(L"LAYER", 0)).substr(8, 3), "2 0");
    static_cast<void>(shown(acdbTblSearch(L"BLOCK", L"Filled", 1)));
    EXPECT_EQ(shown(acdbTblNext(L"BLOCK", 0)).substr(8, 5), "2 Ref");
}

TEST_F(Tables, OfMadeRecordsAndBlocksAreWalkedToo) {
    const double origin[] = {0.0, 0.0, 0.0};
    EXPECT_EQ(make(acutBuildList(RTDXF0, L"BLOCK", 2, L"Made", 10, origin, 70, 0, 0)), RTNORM);
    EXPECT_EQ(make(acutBuildList(RTDXF0, L"ENDBLK", 0)), RTKWORD);
    EXPECT_EQ(shown(acdbTblSearch(L"BLOCK", L"made", 1)), "0 BLOCK|2 Made|70 0|10 0.0,0.0,0.0,");
    EXPECT_EQ(shown(acdbTblNext(L"BLOCK", 0)), "none");
}

}  // namespace
}  // namespace mor::test
