#include "tests/tool/drawing_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class DrawnLooks : public Drawing {
protected:
    static std::string lineTypes() {
        return "0 TABLE|2 LTYPE|70 2|0 LTYPE|2 DASHED|70 0|3 |72 65|73 2|40 3.0|49 2.0|49 -1.0|"
               "0 LTYPE|2 DOTS|70 0|3 |72 65|73 2|40 1.0|49 0.0|49 -1.0|"
               "0 LTYPE|2 GAPFIRST|70 0|3 |72 65|73 3|40 4.0|49 -1.0|49 2.0|49 -1.0|0 ENDTAB|";
    }
};

TEST_F(DrawnLooks, LineTypesAreDashes) {
    const auto line = [](const std::string& handle, const std::string& more) {
        return "0 LINE|5 " + handle + "|8 0|" + more + "10 0.0|20 0.0|11 100.0|21 0.0|";
    };
    const std::string svg =
        picture({.layers = {"0"},
                 .blocks = blockDefinition("B", line("B1", "6 BYBLOCK|")),
                 .entities = line("A1", "6 DASHED|") + line("A2", "6 dashed|48 3.0|") +
                             line("A3", "6 DOTS|") + line("A4", "6 GAPFIRST|") + line("A5", "") +
                             insertEntity("A6", "0", "B", "6 DASHED|10 0.0|20 0.0|") +
                             "0 LINE|5 A7|8 0|6 DASHED|48 0.001|10 0.0|20 0.0|11 1.0|21 0.0|",
                 .header = "9 $LTSCALE|40 2.0|",
                 .tables = lineTypes()});
    EXPECT_EQ(attribute(svg, "A1", "stroke-dasharray"), "4 2");
    EXPECT_EQ(attribute(svg, "A2", "stroke-dasharray"), "12 6");
    EXPECT_EQ(attribute(svg, "A3", "stroke-dasharray"), "0 2");
    EXPECT_EQ(attribute(svg, "A4", "stroke-dasharray"), "0 2 4 2");
    EXPECT_EQ(attribute(svg, "A5", "stroke-dasharray"), "none");
    EXPECT_EQ(attribute(svg, "B1", "stroke-dasharray"), "4 2");
    EXPECT_EQ(attribute(svg, "A7", "stroke-dasharray"), "none");  // too fine to be seen
}

TEST_F(DrawnLooks, LineTypesHoldTexts) {
    const std::string svg = picture(
        {.layers = {"0"},
         .entities = "0 LWPOLYLINE|5 A1|8 0|6 GAS|70 0|10 0.0|20 0.0|10 0.0|20 11.0|"
                     "0 LINE|5 A2|8 0|6 GAS|10 0.0|20 0.0|11 1.0|21 0.0|",
         .header = "9 $LTSCALE|40 2.0|",
         .tables = "0 TABLE|2 STYLE|70 1|0 STYLE|5 E1|2 S|70 0|40 0.0|41 1.0|3 txt|0 ENDTAB|"
                   "0 TABLE|2 LTYPE|70 1|0 LTYPE|5 E2|2 GAS|70 0|72 65|73 3|40 3.0|49 1.5|"
                   "74 0|49 -0.5|74 2|75 0|340 E1|46 0.5|50 0.0|44 -0.25|45 -0.1|9 G|"
                   "49 -1.0|74 0|0 ENDTAB|"});
    // At 4 and 10 along the line, which goes upwards: half a unit back and a bit to its right.
    EXPECT_EQ(texts(svg, "A1"), "0.2,3.5:G 0.2,9.5:G");
    EXPECT_TRUE(holds(svg, "matrix(0 1 1 0 "));
    EXPECT_EQ(texts(svg, "A2"), "");  // too short
}

TEST_F(DrawnLooks, PolylinesAreAsWideAsTheySay) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("B",
                                   "0 LWPOLYLINE|5 B1|8 0|70 0|43 2.0|10 0.0|20 0.0|10 9.0|"
                                   "20 0.0|"),
         .entities = insertEntity("A1", "0", "B", "10 0.0|20 0.0|41 3.0|42 3.0|43 3.0|") +
                     "0 LWPOLYLINE|5 A2|8 0|70 0|10 0.0|20 0.0|40 2.0|41 0.0|10 4.0|20 0.0|" +
                     "0 POLYLINE|5 A3|8 0|66 1|70 0|40 0.5|41 0.5|0 VERTEX|5 C1|8 0|10 0.0|20 5.0|"
                     "0 VERTEX|5 C2|8 0|10 9.0|20 5.0|0 SEQEND|5 C3|8 0|"});
    EXPECT_EQ(attribute(svg, "B1", "stroke-width"), "6");
    EXPECT_TRUE(std::regex_search(svg, std::regex("viewBox=\"-3.6\\S* -5.9\\S* ")));  // all of it
    EXPECT_EQ(paths(svg, "A2"), "M0 1L4 0L4 0L0 -1Z\n");
    EXPECT_EQ(attribute(svg, "A3", "stroke-width"), "0.5");
    // Sides of different widths meet in mitres.
    const std::string bent =
        picture({.layers = {"0"},
                 .entities = "0 LWPOLYLINE|5 A1|8 0|70 0|10 0.0|20 0.0|40 2.0|41 2.0|10 9.0|20 0.0|"
                             "40 4.0|41 4.0|10 9.0|20 9.0|40 0.0|41 0.0|"});
    EXPECT_EQ(paths(bent, "A1"), "M0 1L7 1L11 -1L0 -1Z\nM7 1L7 9L11 9L11 -1Z\n");
    const std::string back =
        picture({.layers = {"0"},
                 .entities = "0 LWPOLYLINE|5 A1|8 0|70 0|10 0.0|20 0.0|40 1.0|41 2.0|10 9.0|20 0.0|"
                             "40 3.0|41 0.0|10 0.0|20 0.0|"});
    EXPECT_EQ(paths(back, "A1"), "M0 0.5L9 1L9 -1L0 -0.5Z\nM9 -1.5L0 0L0 0L9 1.5Z\n");
}

TEST_F(DrawnLooks, WeightsAndTransparencyComeFromLayersAndInserts) {
    const std::string svg = picture(
        {.layers = {"0", "HEAVY|370 100"},
         .blocks = blockDefinition("B", lineEntity("B1", "0", "370 -2|440 16777216|")),
         .entities = lineEntity("A1", "0") + lineEntity("A2", "HEAVY") +
                     lineEntity("A3", "0", "370 200|440 33554559|") +
                     insertEntity("A4", "0", "B", "370 50|440 33554559|10 0.0|20 0.0|"),
         .records = "0 LAYER|2 GLASS|70 0|62 7|6 CONTINUOUS|1001 AcCmTransparency|1071 33554559|"
                    "0 LAYER|2 CLEAR|70 0|62 7|6 CONTINUOUS|1001 AcCmTransparency|1071 0|"});
    const double usual = std::stod(attribute(svg, "A2", "stroke-width")) / 4;
    EXPECT_EQ(attribute(svg, "A1", "stroke-width"), "none");
    EXPECT_NEAR(std::stod(attribute(svg, "A3", "stroke-width")), usual * 8, 1e-12);
    EXPECT_NEAR(std::stod(attribute(svg, "B1", "stroke-width")), usual * 2, 1e-12);
    for (const char* glass : {"A3", "B1"})
        EXPECT_TRUE(attribute(svg, glass, "stroke-opacity").starts_with("0.498")) << glass;
    const std::string layers =
        picture({.layers = {"0"},
                 .entities = lineEntity("A1", "GLASS") + lineEntity("A2", "CLEAR"),
                 .records = "0 LAYER|2 GLASS|70 0|62 7|6 CONTINUOUS|1001 AcCmTransparency|"
                            "1071 33554559|0 LAYER|2 CLEAR|70 0|62 7|6 CONTINUOUS|"
                            "1001 AcCmTransparency|1071 0|"});
    EXPECT_TRUE(attribute(layers, "A1", "stroke-opacity").starts_with("0.498"));
    EXPECT_EQ(attribute(layers, "A2", "stroke-opacity"), "none");
}

TEST_F(DrawnLooks, ColoursAreSeenOnTheirBackground) {
    const DxfDrawing drawing{.layers = {"0"},
                             .entities = lineEntity("A1", "0", "62 2|") +
                                         lineEntity("A2", "0", "62 7|") +
                                         lineEntity("A3", "0", "62 5|") +
                                         "0 SOLID|5 A4|8 0|62 2|10 0.0|20 0.0|11 1.0|21 0.0|12 0.0|"
                                         "22 1.0|"};
    const struct {
        std::vector<std::string> words;
        const char* yellow;
        const char* white;
        const char* blue;
    } cases[] = {{{}, "#bfbf00", "#000000", "#0000ff"},
                 {{"--exact-colours"}, "#ffff00", "#000000", "#0000ff"},
                 {{"--background", "black"}, "#ffff00", "#ffffff", "#0000ff"},
                 {{"--background", "#222"}, "#ffff00", "#ffffff", "#0d0dff"}};
    for (const auto& c : cases) {
        const std::string svg = picture(drawing, c.words);
        EXPECT_EQ(colour(svg, "A1") + colour(svg, "A2") + colour(svg, "A3"),
                  std::string(c.yellow) + c.white + c.blue)
            << ::testing::PrintToString(c.words);
        EXPECT_EQ(colour(svg, "A4"), "#ffff00");  // areas are large enough
    }
    EXPECT_EQ(picture(drawing, {"--background", "transparent"}).find("<rect"), std::string::npos);
}

TEST_F(DrawnLooks, WhatIsNotPlottedIsLeftOut) {
    const DxfDrawing drawing{.layers = {"0", "DEFPOINTS", "NOTES|290 0"},
                             .entities = lineEntity("A1", "DEFPOINTS") + lineEntity("A2", "NOTES") +
                                         lineEntity("A3", "0") + lineEntity("A4", "0", "60 1|")};
    const std::string svg = picture(drawing);
    EXPECT_EQ(paths(svg, "A1") + paths(svg, "A2") + paths(svg, "A4"), "");
    EXPECT_TRUE(noted("2 on layers that are not plotted (--all)") && noted("1 invisible"));
    const std::string all = picture(drawing, {"--all"});
    EXPECT_EQ(paths(all, "A1") + paths(all, "A2"), "M0 0L1 0\nM0 0L1 0\n");
}

TEST_F(DrawnLooks, AttributesShowInEveryCellOfAnArray) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("B", lineEntity("B1", "0") +
                                            "0 ATTDEF|5 B2|8 0|10 0.0|20 0.0|40 1.0|1 d|2 T|70 0|" +
                                            "0 ATTDEF|5 B3|8 0|10 0.0|20 0.0|40 1.0|1 same|2 S|"
                                            "70 2|"),
         .entities = insertEntity("A1", "0", "B", "66 1|10 0.0|20 0.0|70 2|44 5.0|") +
                     "0 ATTRIB|5 A2|8 0|10 0.0|20 3.0|40 1.0|1 v|2 T|70 0|" +
                     "0 ATTRIB|5 A3|8 0|10 0.0|20 6.0|40 1.0|1 hidden|2 U|70 1|0 SEQEND|5 A4|8 0|" +
                     "0 ATTDEF|5 A5|8 0|10 0.0|20 9.0|40 1.0|1 d|2 TAG|70 0|"});
    EXPECT_EQ(texts(svg, "A2"), "0,3:v 5,3:v");
    EXPECT_EQ(texts(svg, "B3"), "0,0:same 5,0:same");  // what all inserts have
    EXPECT_EQ(texts(svg, "B2") + texts(svg, "A3"), "");
    EXPECT_EQ(texts(svg, "A5"), "0,9:TAG");
}

}  // namespace
}  // namespace mor::test
