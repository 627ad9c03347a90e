#include "tests/tool/drawing_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

namespace mor::test {
namespace {

class DrawnEntity : public Drawing {
protected:
    /// The picture of entities alone, in the release that has all of them.
    [[nodiscard]] std::string drawn(const std::string& entities, const std::string& header = "",
                                    const std::string& objects = "") {
        return picture({.layers = {"0"},
                        .entities = entities,
                        .header = header,
                        .version = "AC1015",
                        .objects = objects});
    }
    /// A square of that side as the boundary of a hatch, a polyline.
    static std::string square(double from, double to, int flags) {
        const std::string a = std::to_string(from);
        const std::string b = std::to_string(to);
        return "92 " + std::to_string(flags) + "|72 0|73 1|93 4|10 " + a + "|20 " + a + "|10 " + b +
               "|20 " + a + "|10 " + b + "|20 " + b + "|10 " + a + "|20 " + b + "|97 0|";
    }
    static std::string hatch(const std::string& handle, bool solid, int style,
                             const std::string& boundaries, int count,
                             const std::string& pattern = "") {
        return "0 HATCH|5 " + handle + "|8 0|10 0.0|20 0.0|30 0.0|2 P|70 " + (solid ? "1" : "0") +
               "|71 0|91 " + std::to_string(count) + "|" + boundaries + "75 " +
               std::to_string(style) + "|76 1|" + pattern;
    }
    static std::string lines(double pitch) {
        return "78 1|53 0.0|43 0.0|44 0.5|45 0.0|46 " + std::to_string(pitch) + "|79 0|";
    }
    static std::string longText(const std::string& text, const std::string& more = "71 1|41 0.0|") {
        return "0 MTEXT|5 A1|8 0|10 0.0|20 0.0|40 1.0|" + more + "1 " + text + "|";
    }
    static std::string withoutPlaces(const std::string& texts) {
        return std::regex_replace(texts, std::regex("[-0-9.e]+,[-0-9.e]+:"), "");
    }
};

TEST_F(DrawnEntity, TextsOfManyLinesHaveFormats) {
    const struct {
        const char* text;
        const char* shown;
    } cases[] = {{"one two\\Pthree", "one two three"},
                 {"a\\~b", "a\u00A0b"},
                 {"\\{x\\} \\\\", "{x} \\"},
                 {"45%%d %%c8 %%p1", "45\u00B0 \u23008 \u00B11"},
                 {"{\\fArial|b1|i0;bold} {\\H2x;high}", "bold high"},
                 {"\\S1/2; \\S+1^ -2; \\S3#4;", "1 2 +1 -2 3 4"},
                 {"{\\Fgdt;j}0.1", "\u2316 0.1"},
                 {"\\pi1,l2,qc;text", "text"},
                 {"\\Jno code", "\\Jno code"}};
    for (const auto& c : cases)
        EXPECT_EQ(withoutPlaces(texts(drawn(longText(c.text)), "A1")), c.shown) << c.text;
    const std::string svg = drawn(longText("{\\C1;red}{\\c255;low}{\\fArial|b1|i1;both}"));
    EXPECT_TRUE(holds(svg, "fill=\"#ff0000\" ") && holds(svg, "font-weight=\"bold\""));
    EXPECT_TRUE(holds(svg, "font-style=\"italic\""));
    EXPECT_TRUE(std::regex_search(svg, std::regex("fill=\"#ff0000\"[^>]*>low<")));  // b, g, r
}

TEST_F(DrawnEntity, TextsOfManyLinesAreBrokenAndAttached) {
    // From line to line five thirds of the height, times the spacing.
    EXPECT_EQ(texts(drawn(longText("a\\Pa")), "A1"), "0,-1:a 0,-2.67:a");
    EXPECT_EQ(texts(drawn(longText("a\\Pa", "71 1|44 2.0|")), "A1"), "0,-1:a 0,-4.33:a");
    EXPECT_EQ(withoutPlaces(texts(drawn(longText("aaa bbb ccc", "71 1|41 7.0|")), "A1")),
              "aaa bbb ccc");
    const std::string broken = texts(drawn(longText("aaa bbb ccc", "71 1|41 7.0|")), "A1");
    EXPECT_TRUE(holds(broken, "0,-2.67:ccc")) << broken;
    // Blanks in front take room too; what stands downwards has a column for each paragraph.
    EXPECT_EQ(texts(drawn(longText("      aaa", "71 1|41 2.0|")), "A1"), "0,-2.67:aaa");
    const std::string down = texts(drawn(longText("ab\\Pc", "71 1|72 3|")), "A1");
    EXPECT_TRUE(holds(down, ",-1:a ") && holds(down, ",-2.24:b ") && holds(down, " 1.18,-1:c"))
        << down;
    const struct {
        int attached;
        const char* y;
    } cases[] = {{1, ",-1:"}, {5, ",-0.5:"}, {9, ",0.28:"}};
    for (const auto& c : cases) {
        const std::string more = "71 " + std::to_string(c.attached) + "|41 8.0|";
        const std::string text = texts(drawn(longText("aaaa", more)), "A1");
        EXPECT_TRUE(holds(text, c.y)) << text;
        EXPECT_EQ(text[0] == '-', c.attached != 1) << text;
    }
    // Seen from behind the letters stand on their heads, in the direction of the owner.
    const std::string svg = drawn(longText("x", "71 1|210 0.0|220 0.0|230 -1.0|"));
    EXPECT_TRUE(holds(svg, "matrix(1 0 0 1 0 1)")) << svg;
    // Columns as newer and as older drawings have them.
    const std::string embedded =
        "101 Embedded Object|10 1.0|20 0.0|11 0.0|21 0.0|40 4.0|42 10.0|71 2|72 2|44 4.0|45 2.0|"
        "46 1.5|46 0.0|";
    EXPECT_EQ(texts(drawn(longText("aa\\Paa") + embedded), "A1"), "0,-1:aa 6,-1:aa");
    const std::string old =
        "1001 ACAD|1000 ACAD_MTEXT_COLUMN_INFO_BEGIN|1070 75|1070 2|1070 79|1070 1|1070 76|1070 2|"
        "1070 48|1040 4.0|1070 49|1040 1.0|1000 ACAD_MTEXT_COLUMN_INFO_END|"
        "1000 ACAD_MTEXT_DEFINED_HEIGHT_BEGIN|1070 46|1040 1.5|"
        "1000 ACAD_MTEXT_DEFINED_HEIGHT_END|";
    EXPECT_EQ(texts(drawn(longText("aa\\Paa") + old), "A1"), "0,-1:aa 5,-1:aa");
}

TEST_F(DrawnEntity, TextsOfOneLineStandByTheirPoints) {
    const auto text = [](const std::string& more) {
        return "0 TEXT|5 A1|8 0|10 0.0|20 0.0|11 10.0|21 0.0|40 1.0|1 abc|" + more;
    };
    const std::string fitted = drawn(text("72 5|"));
    const std::string length = attribute(fitted, "A1", "textLength");
    std::smatch matrix;
    ASSERT_TRUE(std::regex_search(fitted, matrix, std::regex("matrix\\((\\S+) 0 ")));
    EXPECT_NEAR(std::stod(matrix[1]) * std::stod(length), 10.0, 1e-9);
    EXPECT_EQ(texts(drawn(text("73 3|")), "A1"), "10,-1:abc");
    EXPECT_TRUE(holds(drawn(text("71 2|")), "matrix(-1 0 "));  // backwards
    EXPECT_TRUE(holds(drawn(text("71 4|")), " 0 1 0 0)"));     // upside down
    EXPECT_TRUE(holds(drawn(text("51 45.0|")), "-0.9999999999999999 -1 0 0)"));
    EXPECT_EQ(paths(drawn("0 TEXT|5 A1|8 0|10 0.0|20 0.0|40 1.0|1 a%%ub%%u|"), "A1").substr(0, 1),
              "M");
    const std::string high =
        picture({.layers = {"0"},
                 .entities = "0 TEXT|5 A1|8 0|7 V|10 0.0|20 0.0|40 1.0|1 ab|",
                 .tables = "0 TABLE|2 STYLE|70 1|0 STYLE|2 V|70 4|40 0.0|41 1.0|3 txt|0 ENDTAB|"});
    EXPECT_TRUE(holds(texts(high, "A1"), ",-1:a") && holds(texts(high, "A1"), ",-2.35:b"));
    // Capital letters are as high as the text: 1493 of 2048 units in DejaVu, which does not say so.
    EXPECT_NEAR(std::stod(attribute(high, "A1", "font-size")), 2048.0 / 1493.0, 1e-9);
}

TEST_F(DrawnEntity, HatchesAreFilledOrRuled) {
    const std::string islands = square(0, 6, 3) + square(1, 5, 18) + square(2, 4, 2);
    const auto part = [](const std::string& data) { return std::ranges::count(data, 'Z'); };
    for (const auto& [style, parts] : {std::pair(0, 3), std::pair(1, 2), std::pair(2, 1)}) {
        const std::string svg = drawn(hatch("A1", true, style, islands, 3));
        EXPECT_EQ(part(paths(svg, "A1")), parts) << style;
        EXPECT_TRUE(holds(svg, "fill-rule=\"evenodd\""));
    }
    EXPECT_EQ(paths(drawn(hatch("A1", false, 0, square(0, 2, 3), 1, lines(1.0))), "A1"),
              "M0 0.5L2 0.5M0 1.5L2 1.5\n");
    // Islands cut lines, dashes begin where the pattern does.
    EXPECT_EQ(paths(drawn(hatch("A1", false, 0, square(0, 3, 3) + square(1, 2, 2), 2,
                                "78 1|53 0.0|43 0.0|44 1.5|45 0.0|46 9.0|79 0|")),
                    "A1"),
              "M0 1.5L1 1.5M2 1.5L3 1.5\n");
    EXPECT_EQ(paths(drawn(hatch("A1", false, 0, square(0, 2, 3), 1,
                                "78 1|53 0.0|43 0.5|44 1.0|45 0.0|46 9.0|79 2|49 0.5|49 -0.5|")),
                    "A1"),
              "M0.5 1L1 1M1.5 1L2 1\n");
    // Too many lines to be told apart are a light area.
    const std::string dense = drawn(hatch("A1", false, 0, square(0, 2, 3), 1, lines(0.0001)));
    EXPECT_TRUE(holds(attribute(dense, "A1", "fill-opacity"), "0.3"));
    // A half circle and the line below it.
    const std::string edges =
        "92 1|93 2|72 2|10 0.0|20 0.0|40 1.0|50 0.0|51 180.0|73 1|72 1|10 -1.0|20 0.0|11 1.0|"
        "21 0.0|97 0|";
    EXPECT_TRUE(holds(paths(drawn(hatch("A1", true, 0, edges, 1)), "A1"), "M1 0A1 1 "));
    const std::string mean = drawn(hatch("A1", true, 0, square(0, 2, 3), 1,
                                         "450 1|451 0|460 0.0|461 0.0|452 0|462 1.0|453 2|463 0.0|"
                                         "421 16711680|463 1.0|421 255|470 LINEAR|"));
    EXPECT_EQ(colour(mean, "A1"), "#7f007f");
}

TEST_F(DrawnEntity, CurvesGoThroughTheirPoints) {
    const std::string controls =
        "0 SPLINE|5 A1|8 0|70 8|71 2|72 6|73 3|40 0.0|40 0.0|40 0.0|40 1.0|40 1.0|40 1.0|"
        "10 0.0|20 0.0|30 0.0|10 1.0|20 2.0|30 0.0|10 2.0|20 0.0|30 0.0|";
    const std::string plain = paths(drawn(controls), "A1");
    EXPECT_TRUE(plain.starts_with("M0 0L") && holds(plain, "L1 1L") && plain.ends_with("L2 0\n"));
    const std::string heavy = paths(
        drawn(std::regex_replace(controls, std::regex("10 0.0"), "41 1.0|41 3.0|41 1.0|10 0.0")),
        "A1");
    EXPECT_TRUE(holds(heavy, "L1 1.5L")) << heavy;  // a weight pulls
    const std::string fits = paths(
        drawn("0 SPLINE|5 A1|8 0|70 8|71 3|74 3|11 0.0|21 0.0|11 1.0|21 1.0|11 2.0|21 0.0|"), "A1");
    EXPECT_TRUE(fits.starts_with("M0 0L") && holds(fits, "L1 1L") && fits.ends_with("L2 0\n"));
    // Rays go on to the edge of what is not endless.
    const std::string rays = drawn(
        "0 RAY|5 A1|8 0|10 5.0|20 5.0|11 1.0|21 0.0|"
        "0 XLINE|5 A2|8 0|10 5.0|20 5.0|11 0.0|21 1.0|"
        "0 CIRCLE|5 A3|8 0|10 5.0|20 5.0|40 5.0|");
    EXPECT_EQ(paths(rays, "A1"), "M5 5L10.1 5\n");
    EXPECT_TRUE(paths(rays, "A2").starts_with("M5 -0.1") ||
                holds(paths(rays, "A2"), "M5 -0.09999"));
}

TEST_F(DrawnEntity, FacesAreWires) {
    EXPECT_EQ(paths(drawn("0 3DFACE|5 A1|8 0|10 0.0|20 0.0|11 1.0|21 0.0|12 1.0|22 1.0|13 0.0|"
                          "23 1.0|70 5|"),
                    "A1"),
              "M1 0L1 1M0 1L0 0\n");  // the first and the third edge are hidden
    const std::string corners =
        "0 VERTEX|5 B1|8 0|10 0.0|20 0.0|70 192|"
        "0 VERTEX|5 B2|8 0|10 1.0|20 0.0|70 192|"
        "0 VERTEX|5 B3|8 0|10 0.0|20 1.0|70 192|";
    EXPECT_EQ(paths(drawn("0 POLYLINE|5 A1|8 0|66 1|70 64|71 3|72 1|" + corners +
                          "0 VERTEX|5 B4|8 0|10 0.0|20 0.0|70 128|71 1|72 -2|73 3|0 SEQEND|5 B5|"),
                    "A1"),
              "M0 0L1 0M0 1L0 0\n");
    std::string grid = "0 POLYLINE|5 A1|8 0|66 1|70 16|71 2|72 2|";
    for (const char* at : {"10 0.0|20 0.0|", "10 0.0|20 1.0|", "10 1.0|20 0.0|", "10 1.0|20 1.0|"})
        grid += "0 VERTEX|5 B0|8 0|" + std::string(at) + "70 64|";
    EXPECT_EQ(paths(drawn(grid + "0 SEQEND|5 B5|"), "A1"), "M0 0L1 0M0 0L0 1M0 1L1 1M1 0L1 1\n");
    EXPECT_EQ(paths(drawn("0 MESH|5 A1|8 0|71 2|72 0|91 0|92 3|10 0.0|20 0.0|30 0.0|10 1.0|20 0.0|"
                          "30 0.0|10 0.0|20 1.0|30 0.0|93 4|90 3|90 0|90 1|90 2|94 0|95 0|"),
                    "A1"),
              "M0 0L1 0M1 0L0 1M0 1L0 0\n");
}

TEST_F(DrawnEntity, LinesSideBySideKeepTheirOffsets) {
    const auto vertex = [](const char* x) {
        return std::string("11 ") + x +
               "|21 0.0|31 0.0|12 1.0|22 0.0|32 0.0|13 0.0|23 1.0|33 0.0|74 2|41 0.5|41 0.0|75 0|"
               "74 2|41 -0.5|41 0.0|75 0|";
    };
    const std::string svg =
        drawn("0 MLINE|5 A1|8 0|2 S|340 E1|40 1.0|70 0|71 0|72 2|73 2|10 0.0|20 0.0|30 0.0|" +
                  vertex("0.0") + vertex("4.0"),
              "", "0 MLINESTYLE|5 E1|2 S|70 272|62 256|71 2|49 0.5|62 1|6 BYLAYER|49 -0.5|62 5|");
    EXPECT_EQ(paths(svg, "A1"), "M0 0.5L4 0.5\nM0 -0.5L4 -0.5\nM0 -0.5L0 0.5\nM4 -0.5L4 0.5\n");
    EXPECT_TRUE(holds(svg, "stroke=\"#ff0000\"") && holds(svg, "stroke=\"#0000ff\""));
}

TEST_F(DrawnEntity, PointsHaveMarksOfTheHeader) {
    const std::string point = "0 POINT|5 A1|8 0|10 1.0|20 1.0|";
    EXPECT_EQ(paths(drawn(point, "9 $PDMODE|70 3|9 $PDSIZE|40 2.0|"), "A1"), "M0 0L2 2M0 2L2 0\n");
    EXPECT_EQ(paths(drawn(point, "9 $PDMODE|70 64|9 $PDSIZE|40 2.0|"), "A1").substr(0, 10),
              "M1 1L1 1M0");
    EXPECT_EQ(attribute(drawn(point), "A1", "stroke-width"), "none");  // a dot as thick as lines
}

TEST_F(DrawnEntity, DimensionsWithoutABlockAreMeasured) {
    const auto dimension = [](const std::string& more) {
        return "0 DIMENSION|5 A1|8 0|10 4.0|20 2.0|11 2.0|21 2.0|13 0.0|23 0.0|14 4.0|24 1.0|" +
               more;
    };
    const std::string svg = drawn(dimension("70 0|50 0.0|"));
    EXPECT_TRUE(holds(paths(svg, "A1"), "M0 0L0 2\nM4 1L4 2\nM0 2L4 2\n")) << paths(svg, "A1");
    EXPECT_EQ(withoutPlaces(texts(svg, "A1")), "4");
    EXPECT_EQ(withoutPlaces(texts(drawn(dimension("70 0|1 <> mm|42 3.5|")), "A1")), "3.5 mm");
    EXPECT_EQ(withoutPlaces(texts(drawn(dimension("70 4|15 4.0|25 7.0|")), "A1")), "R5");
    EXPECT_EQ(withoutPlaces(texts(drawn(dimension("70 2|42 1.5707963267948966|")), "A1")),
              "90\u00B0");
    // An empty block is that of a constraint which is hidden.
    const std::string hidden =
        picture({.layers = {"0"},
                 .blocks = blockDefinition("*D1", "", 1),
                 .entities = dimension("70 0|2 *D1|") + lineEntity("A2", "0")});
    EXPECT_EQ(paths(hidden, "A1"), "");
    EXPECT_FALSE(noted("not drawn"));
}

TEST_F(DrawnEntity, LeadersPointAtThings) {
    const std::string leader =
        "0 LEADER|5 A1|8 0|3 S|71 1|72 0|73 3|76 2|10 0.0|20 0.0|10 5.0|"
        "20 0.0|";
    EXPECT_EQ(paths(drawn(leader + "1001 ACAD|1000 DSTYLE|1002 {|1070 41|1040 3.0|1070 40|"
                                   "1040 1.0|1002 }|"),
                    "A1"),
              "M0 0L5 0\nM0 0L3 0.5L3 -0.5Z\n");
    const std::string multileader =
        "0 MULTILEADER|5 A1|8 0|300 CONTEXT_DATA{|40 1.0|10 6.0|20 0.0|30 0.0|41 1.0|140 2.0|"
        "145 0.5|290 1|304 note|12 6.0|22 0.5|32 0.0|13 1.0|23 0.0|33 0.0|43 0.0|45 1.0|90 "
        "-1040187392|171 1|302 LEADER{|290 1|291 1|10 4.0|20 0.0|30 0.0|11 1.0|21 0.0|31 0.0|"
        "90 0|40 1.0|304 LEADER_LINE{|10 0.0|20 0.0|30 0.0|91 0|305 }|303 }|301 }|340 0|170 1|"
        "91 -1023410175|291 1|292 1|";
    const std::string svg = drawn(multileader);
    EXPECT_TRUE(holds(paths(svg, "A1"), "M0 0L4 0L5 0\n")) << paths(svg, "A1");
    EXPECT_EQ(texts(svg, "A1"), "6,-0.5:note");
    EXPECT_EQ(colour(svg, "A1"), "#ff0000");
    EXPECT_TRUE(holds(paths(svg, "A1"), "M5.5 1L"));  // the frame around it
}

TEST_F(DrawnEntity, ImagesAreFramesAndMasksHide) {
    const std::string corners = "71 1|91 2|14 -0.5|24 -0.5|14 0.5|24 0.5|";
    const std::string svg = drawn(
        lineEntity("A1", "0") +
            "0 IMAGE|5 A2|8 0|90 0|10 0.0|20 0.0|30 0.0|11 0.5|21 0.0|31 0.0|12 0.0|22 0.5|32 0.0|"
            "13 8.0|23 4.0|340 E1|70 1|280 0|" +
            "0 WIPEOUT|5 A3|8 0|90 0|10 0.0|20 0.0|30 0.0|11 2.0|21 0.0|31 0.0|12 0.0|22 2.0|"
            "32 0.0|13 1.0|23 1.0|340 0|70 7|280 1|" +
            corners +
            "0 PDFUNDERLAY|5 A4|8 0|340 E2|10 5.0|20 5.0|41 2.0|42 2.0|43 1.0|280 3|"
            "11 0.0|21 0.0|11 1.0|21 1.0|",
        "", "0 IMAGEDEF|5 E1|1 a&b.png|0 PDFDEFINITION|5 E2|1 plan.pdf|2 1|");
    EXPECT_EQ(paths(svg, "A2"), "M0 2L4 2L4 0L0 0Z\n");
    EXPECT_TRUE(holds(svg, ">a&amp;b.png</text>") && holds(svg, ">plan.pdf</text>"));
    EXPECT_EQ(paths(svg, "A3"), "M0 2L2 2L2 0L0 0Z\n");
    EXPECT_EQ(colour(svg, "A3"), "#ffffff");
    EXPECT_EQ(paths(svg, "A4"), "M5 5L7 5L7 7L5 7Z\n");
}

TEST_F(DrawnEntity, TolerancesStandInCells) {
    const std::string svg = drawn(
        "0 TOLERANCE|5 A1|8 0|3 S|10 0.0|20 0.0|30 0.0|11 1.0|21 0.0|31 0.0|"
        "1 {\\Fgdt;j}%%v0.5%%vA^J{\\Fgdt;b}%%v0.1|");
    EXPECT_EQ(withoutPlaces(texts(svg, "A1")), "\u2316 0.5 A \u27C2 0.1");
    const std::string cells = paths(svg, "A1");
    EXPECT_EQ(std::ranges::count(cells, 'Z'), 5);
}

/// A thing in a preview: its length, its kind, then words and reals.
std::string previewed(std::uint32_t kind, const std::vector<std::uint32_t>& words,
                      const std::vector<double>& reals, const std::string& text = "") {
    std::string bytes(8, '\0');
    for (const std::uint32_t word : words) bytes.append(reinterpret_cast<const char*>(&word), 4);
    for (const double real : reals) bytes.append(reinterpret_cast<const char*>(&real), 8);
    bytes += text;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data(), &size, 4);
    std::memcpy(bytes.data() + 4, &kind, 4);
    std::string hex;
    for (const unsigned char c : bytes)
        for (const unsigned digit : {c / 16U, c % 16U}) hex += "0123456789ABCDEF"[digit];
    return hex;
}

TEST_F(DrawnEntity, UnknownOnesShowTheirPreview) {
    const std::string square = previewed(7, {4}, {0, 0, 0, 2, 0, 0, 2, 2, 0, 0, 2, 0});
    const std::string things =
        previewed(14, {1}, {}) + square + previewed(22, {0xC20000FF}, {}) + previewed(20, {1}, {}) +
        square + previewed(29, {}, {1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}) +
        previewed(2, {}, {0, 0, 0, 1, 0, 0, 1}) + previewed(31, {}, {}) +
        previewed(4, {}, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, std::numbers::pi / 2}) +
        previewed(36, {}, {1, 1, 0, 0, 0, 1, 1, 0, 0, 2, 1, 0}, std::string("h\0i\0\0\0\0\0", 8)) +
        previewed(9, {1}, {0, 0, 0});  // ends too early
    std::string chunks;
    const std::string all = std::string(16, '0') + things;
    for (std::size_t at = 0; at < all.size(); at += 254)
        chunks += "310 " + all.substr(at, 254) + "|";
    const std::string svg = drawn("0 NEW_THING|5 A1|100 AcDbEntity|8 0|160 " +
                                  std::to_string(all.size() / 2) + "|" + chunks + "100 AcDbNew|");
    EXPECT_TRUE(holds(svg, "stroke=\"#ff0000\" d=\"M0 0L2 0L2 2L0 2Z\""));
    EXPECT_TRUE(holds(svg, "fill=\"#0000ff\" fill-rule=\"evenodd\" d=\"M0 0L2 0L2 2L0 2Z\""));
    EXPECT_TRUE(holds(paths(svg, "A1"), "M6 0A1 1 ") && holds(paths(svg, "A1"), "M1 0A1 1 0 0 1 "));
    EXPECT_EQ(texts(svg, "A1"), "1,1:hi");
    EXPECT_FALSE(noted("not drawn"));
}

TEST_F(DrawnEntity, WhatIsNotDrawnIsNamedWithItsReason) {
    static_cast<void>(drawn(lineEntity("A1", "0") + "0 3DSOLID|5 A2|8 0|70 1|1 x|" +
                            "0 SHAPE|5 A3|8 0|10 0.0|20 0.0|40 1.0|2 BOX|" +
                            "0 NEW_THING|5 A4|8 0|" + "0 LEADER|5 A5|8 0|"));
    for (const char* note :
         {"1 3DSOLID: its form is data of a modeller", "drawn in part: 1 SHAPE, as a frame",
          "1 NEW_THING: it is no entity", "1 LEADER: its record is incomplete"})
        EXPECT_TRUE(noted(note)) << note;
}

TEST_F(DrawnEntity, SolidsShowTheEdgesOfTheirText) {
    // Records by number, as a drawing keeps them: letters are exchanged.
    const auto kept = [](std::string text) {
        for (char& c : text) c = c == ' ' ? c : static_cast<char>(159 - c);
        return text;
    };
    const auto solid = [&](const std::vector<std::string>& lines) {
        std::string groups = "0 REGION|5 A1|8 0|70 1|1 x|1 x|1 x|";
        for (const std::string& line : lines) groups += "1 " + kept(line) + "|";
        return groups;
    };
    const std::vector<std::string> line = {"transform $-1 1 0 0 0 1 0 0 0 1 5 0 0 2 no_rotate #",
                                           "edge $-1 $2 $3 $-1 $6 forward #",
                                           "vertex $-1 $1 $4 #",
                                           "vertex $-1 $1 $5 #",
                                           "point $-1 0 0 0 #",
                                           "point $-1 3 1 0 #"};
    std::vector<std::string> straight = line;
    straight.emplace_back("straight-curve $-1 0 0 0 1 0 0 I I #");
    EXPECT_EQ(paths(drawn(solid(straight)), "A1"), "M5 0L11 2\n");
    EXPECT_FALSE(noted("drawn in part"));
    std::vector<std::string> round = line;
    round[4] = "point $-1 1 0 0 #";
    round[5] = "point $-1 0 1 0 #";
    round.emplace_back("ellipse-curve $-1 0 0 0 0 0 1 1 0 0 1 I I #");
    round.emplace_back("cone-surface $-1 0 0 0 #");
    EXPECT_EQ(paths(drawn(solid(round)), "A1"), "M7 0A2 2 0 0 1 5 2\n");
    EXPECT_TRUE(noted("drawn in part: 1 REGION: only its straight and round edges"));
    round[1] = "edge $-1 $2 $3 $-1 $6 reversed #";  // the other way round
    EXPECT_TRUE(holds(paths(drawn(solid(round)), "A1"), "M7 0A2 2 0 0 0 5 -2A"));
    for (const char* broken : {"$9", "$-7", "$99999999999999999999"}) {
        straight[2] = std::string("vertex $-1 $1 ") + broken + " #";
        EXPECT_EQ(paths(drawn(lineEntity("A2", "0") + solid(straight)), "A1"), "") << broken;
    }
}

}  // namespace
}  // namespace mor::test
