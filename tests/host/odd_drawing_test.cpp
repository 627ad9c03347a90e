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
    void openLine(std::string_view header, std::string_view groups) {
        open(dxfText(std::string(header) + "0 SECTION|2 ENTITIES|0 LINE|5 A1|" +
                     std::string(groups) +
                     "8 0|10 0.0|20 0.0|30 0.0|11 1.0|21 0.0|31 0.0|0 ENDSEC|0 EOF"));
    }
    /// The records of that type in the drawing as it is saved, one after the other.
    [[nodiscard]] std::string saved(const char* type) const {
        std::string all;
        for (const DxfRecord& record : splitDxf(savedBytes()).records)
            if (record.is(type)) all += (all.empty() ? "" : "; ") + record.text();
        return all;
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
    EXPECT_NE(saved("APPID").find("2 MOR_ATTRIBUTES|70 0"), std::string::npos) << saved("APPID");
    openLine("0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|0 ENDSEC|", "100 AcDbEntity|");
    setAttribute();
    EXPECT_NE(saved("APPID").find("100 AcDbRegAppTableRecord|2 MOR_ATTRIBUTES"), std::string::npos);
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
