#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace mor::test {
namespace {

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
    openLine("", "100 AcDbEntity|");
    setAttribute();
    EXPECT_EQ(saved("APPID").find("100 "), std::string::npos);
    EXPECT_TRUE(holds(saved("APPID"), "2 MOR_ATTRIBUTES|70 0"));
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
