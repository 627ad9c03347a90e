#include "tests/tool/drawing_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

/// What is drawn by the help of other records: blocks, styles, viewports, what lies in references.
class DrawnPart : public Drawing {
protected:
    static std::string blockRecords(const std::string& records) {
        return "0 TABLE|2 BLOCK_RECORD|70 1|" + records + "0 ENDTAB|";
    }
    static std::string blockRecord(const std::string& handle, const std::string& name) {
        return "0 BLOCK_RECORD|5 " + handle + "|100 AcDbSymbolTableRecord|2 " + name + "|340 0|";
    }
};

TEST_F(DrawnPart, TablesStandInTheirBlocks) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("*T1", lineEntity("B1", "0"), 1),
         .entities = "0 ACAD_TABLE|5 A1|100 AcDbEntity|8 0|100 AcDbBlockReference|2 *T1|10 5.0|"
                     "20 5.0|30 0.0|100 AcDbTable|11 0.0|21 1.0|31 0.0|",
         .version = "AC1015"});
    EXPECT_EQ(paths(svg, "B1"), "M5 5L5 6\n");
    EXPECT_TRUE(holds(svg, "<g data-handle=\"A1\" data-layer=\"0\" data-type=\"ACAD_TABLE\""));
}

TEST_F(DrawnPart, LeadersMayHoldBlocks) {
    const std::string matrix =
        "47 2.0|47 0.0|47 0.0|47 6.0|47 0.0|47 2.0|47 0.0|47 1.0|47 0.0|"
        "47 0.0|47 2.0|47 0.0|47 0.0|47 0.0|47 0.0|47 1.0|";
    const DxfDrawing drawing{
        .layers = {"0"},
        .blocks =
            blockDefinition("TAG", lineEntity("B1", "0") +
                                       "0 ATTDEF|5 B2|8 0|10 1.0|20 0.0|40 1.0|1 d|2 T|70 0|") +
            blockDefinition("TIP", "0 LINE|5 B3|8 0|10 0.0|20 0.0|11 -1.0|21 0.0|"),
        .entities =
            "0 MULTILEADER|5 A1|8 0|300 CONTEXT_DATA{|40 1.0|41 1.0|140 1.0|290 0|296 1|341 C1|" +
            matrix +
            "302 LEADER{|290 1|10 4.0|20 0.0|30 0.0|304 LEADER_LINE{|10 0.0|20 0.0|30 0.0|305 }|"
            "303 }|301 }|170 1|342 C2|330 B2|177 0|302 seven|"
            "0 LEADER|5 A2|8 0|3 S|71 1|76 2|10 0.0|20 9.0|10 0.0|20 4.0|1001 ACAD|1000 DSTYLE|"
            "1002 {|1070 41|1040 2.0|1070 341|1005 C2|1002 }|",
        .tables = blockRecords(blockRecord("C1", "TAG") + blockRecord("C2", "TIP")),
        .version = "AC1015"};
    const std::string svg = picture(drawing);
    EXPECT_EQ(paths(svg, "B1"), "M6 1L8 1\n");
    EXPECT_EQ(texts(svg, "A1"), "8,1:seven");
    // The tip lies at the point, what is behind it on the line.
    EXPECT_EQ(paths(svg, "B3"), "M0 0L1 0\nM0 9L0 7\n");
    EXPECT_TRUE(holds(svg,
                      "data-handle=\"A2\" data-layer=\"0\" data-type=\"LEADER\" "
                      "data-block=\"TIP\">"));  // a part of it
}

TEST_F(DrawnPart, ReferencesBringTheirStylesAlong) {
    DxfDrawing{.layers = {"0"},
               .entities =
                   "0 LINE|5 A1|8 DASH|10 0.0|20 0.0|11 90.0|21 0.0|"
                   "0 LINE|5 A2|8 0|6 DASHED|10 0.0|20 1.0|11 90.0|21 1.0|"
                   "0 TEXT|5 A3|8 0|7 NOTES|10 0.0|20 5.0|40 1.0|1 x|",
               .records = "0 LAYER|2 DASH|70 0|62 1|6 DASHED|",
               .tables =
                   "0 TABLE|2 LTYPE|70 1|0 LTYPE|2 DASHED|70 0|3 |72 65|73 2|40 3.0|49 2.0|"
                   "49 -1.0|0 ENDTAB|0 TABLE|2 STYLE|70 1|0 STYLE|2 NOTES|70 0|40 0.0|41 1.0|"
                   "3 times.ttf|0 ENDTAB|"}
        .save("plan.dxf");
    const DxfDrawing host{.layers = {"0"},
                          .blocks = referenceDefinition("PLAN", "plan.dxf"),
                          .entities = insertEntity("10", "0", "PLAN")};
    const std::string svg = picture(host, {"-v"});
    for (const char* dashed : {"A1", "A2"})
        EXPECT_EQ(attribute(svg, dashed, "stroke-dasharray"), "2 1") << dashed;
    EXPECT_TRUE(holds(attribute(svg, "A3", "font-family"), "Liberation Serif"));
    EXPECT_TRUE(noted("font times.ttf: Liberation Serif stands for it"));
    EXPECT_EQ(attribute(svg, "A1", "data-reference"), "PLAN");
}

TEST_F(DrawnPart, StylesMayNameFamilies) {
    const auto drawn = [&](const std::string& style) {
        return picture({.layers = {"0"},
                        .entities = "0 TEXT|5 A1|8 0|7 S|10 0.0|20 0.0|40 1.0|1 abc|",
                        .tables = "0 TABLE|2 STYLE|70 1|0 STYLE|2 S|70 0|40 0.0|41 1.0|" + style +
                                  "0 ENDTAB|"});
    };
    const std::string bold = drawn("3 x.ttf|1001 ACAD|1000 Arial|1071 50331648|");
    EXPECT_EQ(attribute(bold, "A1", "font-weight"), "bold");
    EXPECT_EQ(attribute(bold, "A1", "font-style"), "italic");
    const struct {
        const char* file;
        const char* family;
    } cases[] = {
        {"arial.ttf", "Liberation Sans"}, {"C:\\\\FONTS\\\\courier.ttf", "Liberation Mono"},
        {"txt", "DejaVu Sans"},           {"romans.shx", "DejaVu Sans"},
        {"isocp.shx", "Liberation Sans"}, {"unknown.ttf", "Liberation Sans"}};
    for (const auto& c : cases) {
        const std::string svg = drawn("3 " + std::string(c.file) + "|");
        const std::string own = attribute(svg, "A1", "font-family");
        // The usual one stands once, around all elements.
        EXPECT_TRUE(holds(own == "none" ? svg : own, c.family)) << c.file;
    }
}

TEST_F(DrawnPart, ViewportsOfOldDrawingsAndOfOtherShapes) {
    const std::string view =
        "1001 ACAD|1000 MVIEW|1002 {|1070 16|1010 0.0|1020 0.0|1030 0.0|1010 0.0|1020 0.0|1030 1.0|"
        "1040 0.0|1040 20.0|1040 5.0|1040 0.0|1040 50.0|1040 0.0|1040 0.0|1070 0|1002 {|1003 HID|"
        "1002 }|1002 }|";
    const std::string model = lineEntity("A1", "0") + lineEntity("A2", "HID");
    const std::string svg = picture(
        {.layers = {"0", "HID"},
         .entities = model + "0 VIEWPORT|5 A4|67 1|8 0|10 0.0|20 0.0|40 9.0|41 9.0|68 1|69 1|" +
                     "0 VIEWPORT|5 A5|67 1|8 0|10 20.0|20 20.0|40 10.0|41 10.0|68 2|69 2|" + view},
        {"--layout", "Paper space"});
    EXPECT_EQ(paths(svg, "A1"), "M17.5 20L18 20\n");
    EXPECT_EQ(paths(svg, "A2"), "");
    for (const auto& [shape, data] :
         {std::pair("0 CIRCLE|5 E1|67 1|8 0|10 20.0|20 20.0|40 5.0|", "M25 20A5 5 "),
          std::pair(
              "0 LWPOLYLINE|5 E1|67 1|8 0|70 1|10 15.0|20 15.0|10 25.0|20 15.0|10 20.0|20 25.0|",
              "M15 15L25 15L20 25Z")}) {
        const std::string shaped = picture(
            {.layers = {"0"},
             .entities =
                 lineEntity("A1", "0") +
                 "0 VIEWPORT|5 A5|67 1|8 0|10 20.0|20 20.0|40 10.0|41 10.0|68 2|69 2|12 0.0|"
                 "22 0.0|45 10.0|90 65536|340 E1|" +
                 shape,
             .version = "AC1015"},
            {"--layout", "Paper space"});
        EXPECT_TRUE(holds(shaped, "clip-rule=\"evenodd\" d=\"" + std::string(data)));
        EXPECT_EQ(paths(shaped, "A1"), "M20 20L21 20\n");
    }
}

TEST_F(DrawnPart, SheetsLieAsTheyArePrinted) {
    const auto sheet = [](const std::string& plot) {
        return DxfDrawing{
            .layers = {"0"},
            .entities = lineEntity("A1", "0", "67 1|"),
            .tables =
                "0 TABLE|2 BLOCK_RECORD|70 1|0 BLOCK_RECORD|5 12|100 AcDbSymbolTableRecord|"
                "2 *Paper_Space|340 22|0 ENDTAB|",
            .version = "AC1015",
            .objects =
                "0 LAYOUT|5 22|100 AcDbPlotSettings|1 |" + plot + "100 AcDbLayout|1 S|71 1|"};
    };
    const struct {
        const char* plot;
        const char* box;
        const char* paper;
    } cases[] = {{"40 5.0|41 10.0|42 0.0|43 0.0|44 200.0|45 100.0|72 1|73 0|142 1.0|143 1.0|",
                  "-5 -90 200 100", "200 x 100 mm"},
                 {"40 5.0|41 10.0|42 0.0|43 0.0|44 200.0|45 100.0|72 1|73 1|142 1.0|143 1.0|",
                  "-10 -200 100 200", "100 x 200 mm"},  // turned by a quarter
                 {"40 0.0|41 0.0|42 0.0|43 0.0|44 254.0|45 127.0|72 0|73 0|142 1.0|143 2.0|",
                  "0 -10 20 10", "10 x 5 in"}};  // one inch for two units
    for (const auto& c : cases) {
        EXPECT_TRUE(holds(picture(sheet(c.plot)), "viewBox=\"" + std::string(c.box))) << c.plot;
        EXPECT_TRUE(holds(run({"layouts", sheet(c.plot).save("s.dxf")}).out, c.paper)) << c.plot;
    }
}

TEST_F(DrawnPart, AttributesAndBackgroundsOfManyLines) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("B", lineEntity("B1", "0")),
         .entities = insertEntity("A1", "0", "B", "66 1|10 0.0|20 0.0|") +
                     "0 ATTRIB|5 A2|8 0|10 0.0|20 3.0|40 1.0|1 one|2 T|70 0|101 Embedded Object|"
                     "10 0.0|20 3.0|30 0.0|40 1.0|41 0.0|71 1|1 one\\Ptwo|0 SEQEND|5 A4|8 0|" +
                     "0 MTEXT|5 A5|8 0|10 0.0|20 0.0|40 1.0|41 4.0|71 1|90 1|63 1|45 1.5|1 x|" +
                     "0 MTEXT|5 A6|8 0|10 0.0|20 0.0|40 1.0|41 4.0|71 1|90 3|63 1|45 1.5|1 x|",
         .version = "AC1032"});
    EXPECT_EQ(texts(svg, "A2"), "0,2:one 0,0.33:two");
    EXPECT_EQ(paths(svg, "A5"), "M-0.5 0.5L4.5 0.5L4.5 -1.5L-0.5 -1.5Z\n");
    EXPECT_TRUE(holds(svg, "fill=\"#ff0000\" fill-rule"));
    EXPECT_TRUE(holds(svg, "data-type=\"MTEXT\" fill=\"#ffffff\" fill-rule"));  // as the background
}

TEST_F(DrawnPart, EdgesOfHatchesAreCurvesToo) {
    const auto hatch = [](const std::string& edges, int count) {
        return "0 HATCH|5 A1|8 0|10 0.0|20 0.0|30 0.0|210 0.0|220 0.0|230 1.0|2 SOLID|70 1|71 0|91 "
               "1|"
               "92 1|93 " +
               std::to_string(count) + "|" + edges + "97 0|75 0|76 1|98 0|";
    };
    const auto data = [&](const std::string& edges, int count) {
        return paths(
            picture({.layers = {"0"}, .entities = hatch(edges, count), .version = "AC1015"}), "A1");
    };
    EXPECT_TRUE(holds(data("72 3|10 0.0|20 0.0|11 2.0|21 0.0|40 0.5|50 0.0|51 360.0|73 1|", 1),
                      "M2 0A2 1 0 0 1 "));
    // Clockwise angles count from the other side.
    EXPECT_TRUE(
        holds(data("72 2|10 0.0|20 0.0|40 1.0|50 0.0|51 90.0|73 0|72 1|10 0.0|20 -1.0|11 1.0|"
                   "21 0.0|",
                   2),
              "M1 0A1 1 0 0 0 "));
    const std::string spline = data(
        "72 4|94 2|73 0|74 0|95 6|96 3|40 0.0|40 0.0|40 0.0|40 1.0|40 1.0|40 1.0|10 0.0|20 0.0|"
        "10 1.0|20 2.0|10 2.0|20 0.0|72 1|10 2.0|20 0.0|11 0.0|21 0.0|",
        2);
    EXPECT_TRUE(spline.starts_with("M0 0L") && holds(spline, "L1 1L")) << spline;
    EXPECT_TRUE(spline.ends_with("L2 0L2 0L0 0Z\n")) << spline;
}

}  // namespace
}  // namespace mor::test
