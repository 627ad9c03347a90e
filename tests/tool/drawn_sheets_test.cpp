#include "tests/tool/drawing_fixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace mor::test {
namespace {

class DrawnSheet : public Drawing {
protected:
    static std::string blockRecord(const std::string& handle, const std::string& name,
                                   const std::string& layout, const std::string& more = "") {
        return "0 BLOCK_RECORD|5 " + handle + "|" + more + "100 AcDbSymbolTableRecord|2 " + name +
               "|340 " + layout + "|";
    }
    static std::string layout(const std::string& handle, const std::string& name, int order,
                              const std::string& plot = "") {
        return "0 LAYOUT|5 " + handle + "|100 AcDbPlotSettings|1 |" + plot + "100 AcDbLayout|1 " +
               name + "|71 " + std::to_string(order) + "|";
    }
    /// Model space with two lines, and a sheet of 200 x 100 mm with a view of it at 1:2.
    static DxfDrawing sheet(const std::string& view, const std::string& more = "") {
        const std::string empty = "10 0.0|20 0.0|30 0.0|";
        return {
            .layers = {"0", "HID|5 1F"},
            .blocks = blockDefinition("*Model_Space", "", 0, "", empty) +
                      blockDefinition("*Paper_Space", "", 0, "", empty),
            .entities =
                "0 LINE|5 A1|8 0|10 0.0|20 0.0|11 10.0|21 0.0|"
                "0 LINE|5 A2|8 HID|10 0.0|20 1.0|11 10.0|21 1.0|"
                "0 LINE|5 A3|67 1|8 0|10 0.0|20 0.0|11 50.0|21 50.0|"
                "0 VIEWPORT|5 A4|67 1|8 0|10 0.0|20 0.0|40 9.0|41 9.0|69 1|68 1|12 0.0|"
                "22 0.0|45 9.0|"
                "0 VIEWPORT|5 A5|67 1|8 0|10 20.0|20 20.0|40 10.0|41 10.0|69 2|68 1|" +
                view + more,
            .tables = "0 TABLE|2 BLOCK_RECORD|70 2|" + blockRecord("11", "*Model_Space", "21") +
                      blockRecord("12", "*Paper_Space", "22") + "0 ENDTAB|",
            .version = "AC1015",
            .objects = layout("21", "Model", 0) +
                       layout("22", "Sheet one", 1,
                              "40 5.0|41 10.0|42 0.0|43 0.0|44 200.0|45 100.0|72 1|73 0|142 1.0|"
                              "143 1.0|")};
    }
};

TEST_F(DrawnSheet, ViewportsShowModelSpaceAtTheirScale) {
    const DxfDrawing drawing = sheet("12 5.0|22 0.0|45 20.0|331 1F|");
    const std::string svg = picture(drawing, {"--layout", "sheet ONE"});
    EXPECT_EQ(paths(svg, "A1"), "M17.5 20L22.5 20\n");
    EXPECT_EQ(paths(svg, "A2"), "");  // frozen there
    EXPECT_EQ(paths(svg, "A3"), "M0 0L50 50\n");
    EXPECT_TRUE(holds(svg, "<clipPath id=\"clip1\"><path clip-rule=\"evenodd\" d=\"M15 15L25 15"));
    EXPECT_TRUE(holds(svg, "viewBox=\"-5 -90 200 100\""));  // the paper, from its margins
    EXPECT_TRUE(noted("1 on layers that are off or frozen"));
    // A turned view: what lay along x lies along y.
    const std::string turned =
        picture(sheet("12 0.0|22 0.0|45 10.0|51 90.0|"), {"--layout", "Sheet one"});
    EXPECT_TRUE(holds(paths(turned, "A1"), "20 30\n")) << paths(turned, "A1");
    // Seen from the front, heights become visible.
    const std::string front =
        picture(sheet("12 0.0|22 0.0|45 10.0|16 0.0|26 -1.0|36 0.0|",
                      "0 LINE|5 A6|8 0|10 0.0|20 0.0|30 0.0|11 0.0|21 0.0|31 3.0|"),
                {"--layout", "Sheet one"});
    EXPECT_EQ(paths(front, "A6"), "M20 20L20 23\n");
    EXPECT_EQ(
        paths(picture(sheet("12 0.0|22 0.0|45 10.0|90 131072|"), {"--layout", "Sheet one"}), "A1"),
        "");  // it is off
}

TEST_F(DrawnSheet, LinesOfASheetOfNoKnownSizeAreThin) {
    const std::string svg =
        picture({.layers = {"0"}, .entities = "0 LINE|5 A1|67 1|8 0|10 0.0|20 0.0|11 26.5|21 0.0|"},
                {"--layout", "Paper space"});
    EXPECT_NEAR(std::stod(svg.substr(svg.find("stroke-width=\"") + 14)), 0.026, 0.001) << svg;
}

TEST_F(DrawnSheet, OtherSpacesAreNamed) {
    const DxfDrawing drawing = sheet("12 5.0|22 0.0|45 20.0|");
    static_cast<void>(picture(drawing));
    EXPECT_TRUE(noted("the layout Sheet one with 1 entities and 1 viewports"));
    const std::string host = drawing.save("host.dxf");
    EXPECT_EQ(run({"layouts", host}).out,
              "Model\t-\t0\t2\t*Model_Space\nSheet one\t200 x 100 mm\t1\t1\t*Paper_Space\n");
    const auto json = nlohmann::json::parse(run({"layouts", host, "--json"}).out);
    EXPECT_EQ(json["layouts"][1]["paper"], nlohmann::json({200.0, 100.0}));
    EXPECT_TRUE(holds(run({"entities", host}).out, "A3\tLINE\t0\tSheet one\n"));
    EXPECT_TRUE(holds(run({"blocks", host}).out, "*Paper_Space\tlayout=Sheet one\t"));
    expectCode(6, {{"draw", host, "--layout", "NONE"}}, "there are: Model, Sheet one");
    // Where model space holds nothing the first sheet is drawn, also in drawings without layouts.
    const std::string svg = picture({.layers = {"0"}, .entities = lineEntity("A1", "0", "67 1|")});
    EXPECT_EQ(paths(svg, "A1"), "M0 0L1 0\n");
    EXPECT_TRUE(noted("model space is empty; the layout Paper space is drawn"));
}

TEST_F(DrawnSheet, EntitiesAreDrawnInTheOrderOfTheirBlock) {
    DxfDrawing drawing{
        .layers = {"0"},
        .entities = lineEntity("A1", "0") + lineEntity("A2", "0"),
        .tables = "0 TABLE|2 BLOCK_RECORD|70 1|" +
                  blockRecord("11", "*Model_Space", "0", "102 {ACAD_XDICTIONARY|360 E1|102 }|") +
                  "0 ENDTAB|",
        .version = "AC1015",
        .objects =
            "0 DICTIONARY|5 E1|3 ACAD_SORTENTS|360 E2|0 SORTENTSTABLE|5 E2|330 E1|"
            "100 AcDbSortentsTable|330 11|331 A1|5 A2|331 A2|5 A1|"};
    const std::string svg = picture(drawing);
    EXPECT_LT(svg.find("handle=\"A2\""), svg.find("handle=\"A1\""));
}

TEST_F(DrawnSheet, InsertsAreClipped) {
    const auto clipped = [&](const std::string& objects) {
        const std::string identity =
            "40 1.0|40 0.0|40 0.0|40 0.0|40 0.0|40 1.0|40 0.0|40 0.0|"
            "40 0.0|40 0.0|40 1.0|40 0.0|";
        return picture(
            {.layers = {"0"},
             .blocks = blockDefinition("B", lineEntity("B1", "0")),
             .entities =
                 insertEntity("A1", "0", "B", "102 {ACAD_XDICTIONARY|360 E1|102 }|10 5.0|20 0.0|"),
             .version = "AC1015",
             .objects = "0 DICTIONARY|5 E1|3 ACAD_FILTER|360 E2|0 DICTIONARY|5 E2|3 SPATIAL|360 E3|"
                        "0 SPATIAL_FILTER|5 E3|" +
                        objects +
                        "70 2|10 5.0|20 -1.0|10 5.5|20 1.0|71 1|72 0|73 0|"
                        // The insert's placement the other way round.
                        "40 1.0|40 0.0|40 0.0|40 -5.0|40 0.0|40 1.0|40 0.0|40 0.0|40 0.0|40 0.0|"
                        "40 1.0|40 0.0|" +
                        identity + "0 DICTIONARY|5 E4|3 ACAD_XREC_ROUNDTRIP|360 E5|" +
                        "0 XRECORD|5 E5|102 ACAD_INVERTEDCLIP_ROUNDTRIP|10 5.2|20 -1.0|10 5.3|"
                        "20 1.0|102 ACAD_INVERTEDCLIP_ROUNDTRIP_COMPARE|10 0.0|20 0.0|"});
    };
    const std::string svg = clipped("");
    EXPECT_TRUE(holds(svg, "clip-rule=\"evenodd\" d=\"M5 -1L5.5 -1L5.5 1L5 1Z\""));
    EXPECT_EQ(paths(svg, "B1"), "M5 0L6 0\n");
    EXPECT_TRUE(std::regex_search(svg, std::regex("viewBox=\"4.99\\S* \\S+ 0.5")));  // what shows
    const std::string inverted = clipped("102 {ACAD_XDICTIONARY|360 E4|102 }|");
    EXPECT_TRUE(std::regex_search(inverted, std::regex("d=\"M-1e\\+?09 [^\"]*ZM5.2 -1L5.3 -1")));
}

TEST_F(DrawnSheet, TwinsOfBothFormsLookTheSame) {
    const char* folder = std::getenv("MORADMIN_CORPUS_DWG");
    if (folder == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder";
    const std::filesystem::path root = folder;
    for (const char* name :
         {"acadsharp/BLOCKALIGNMENTPARAMETER", "acadsharp/BLOCKBASEPOINTPARAMETER",
          "acadsharp/BLOCKLINEARPARAMETER", "acadsharp/BLOCKPOINTPARAMETER",
          "acadsharp/BLOCKROTATIONPARAMETER", "aspose/Line"}) {
        std::vector<std::string> pictures;
        for (const char* ending : {".dwg", ".dxf"}) {
            const std::string output = file("twin.png");
            ASSERT_EQ(
                run({"draw", (root / (name + std::string(ending))).string(), "-o", output}).code,
                0);
            pictures.push_back(readFile(output));
        }
        EXPECT_TRUE(pictures[0] == pictures[1]) << name;
    }
}

TEST_F(DrawnSheet, PicturesHaveFormsAndSizes) {
    const std::string host =
        DxfDrawing{.layers = {"0"},
                   .entities = "0 LINE|5 A1|8 0|10 0.0|20 0.0|11 2000.0|21 1000.0|",
                   .header = "9 $INSUNITS|70 4|"}
            .save("host.dxf");
    ASSERT_EQ(run({"draw", host, "-o", file("p.png"), "--size", "500"}).code, 0);
    const std::string png = readFile(file("p.png"));
    EXPECT_EQ(png.substr(1, 3), "PNG");
    const auto number = [&png](std::size_t at) {
        return static_cast<unsigned char>(png[at]) * 256 + static_cast<unsigned char>(png[at + 1]);
    };
    EXPECT_EQ(number(18), 500);
    EXPECT_EQ(number(22), 260);  // half as high, with margins on both sides
    ASSERT_EQ(
        run({"draw", host, "-o", file("p.pdf"), "--scale", "1:10", "--window=0,0,2000,1000"}).code,
        0);
    // 200 x 100 mm in points.
    EXPECT_TRUE(std::regex_search(readFile(file("p.pdf")),
                                  std::regex("MediaBox \\[ 0 0 566.9\\d* 283.4\\d* \\]")));
    EXPECT_EQ(run({"draw", host, "-o", "-", "--form", "PDF"}).out.substr(0, 5), "%PDF-");
    expectCode(2,
               "draw @host.dxf --form gif;draw @host.dxf --size 5;draw @host.dxf --scale 0:1;"
               "draw @host.dxf --window 1,2,3;draw @host.dxf --window=1,1,1,5;"
               "draw @host.dxf --background sky;draw @host.dxf --form png --scale 1:1");
    expectCode(2, "draw @host.dxf --form pdf --scale 100:1", "5.08 m");
}

}  // namespace
}  // namespace mor::test
