#include "tests/tool/drawing_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace mor::test {
namespace {

const std::string kPolyline = "0 POLYLINE|5 C4|8 0|66 1|70 1|10 0.0|20 0.0|30 0.0|";

TEST_F(Drawing, EntitiesBecomePathsInTheirOwnCoordinates) {
    const DxfDrawing drawing{
        .layers = {"0", "RED|70 0|62 1"},
        .entities =
            "0 LINE|5 A1|8 RED|10 1.0|20 2.0|30 9.0|11 3.0|21 4.5|31 0.0|"
            "0 LINE|5 A9|8 RED|62 255|10 0.0|20 0.0|11 1.0|21 1.0|"
            "0 LINE|5 AA|8 RED|420 16777215|10 0.0|20 0.0|11 1.0|21 1.0|"
            "0 CIRCLE|5 A2|8 RED|62 5|10 0.0|20 0.0|40 2.0|"
            "0 ARC|5 A3|8 0|10 0.0|20 0.0|40 2.0|50 270.0|51 0.0|"
            "0 SOLID|5 A4|8 0|10 0.0|20 0.0|11 1.0|21 0.0|12 0.0|22 1.0|13 1.0|23 1.0|"
            "0 LWPOLYLINE|5 A5|8 0|70 0|10 0.0|20 0.0|42 1.0|10 2.0|20 0.0|42 1e-17|10 3.0|20 0.0|"
            "0 ELLIPSE|5 A6|8 0|10 0.0|20 0.0|11 3.0|21 0.0|40 0.5|41 0.0|"
            "42 1.5707963267948966|"
            "0 MTEXT|5 A7|8 0|10 0.0|20 0.0|1 x|0 POINT|5 A8|8 0|10 1.0|20 1.0|" +
            kPolyline + "0 VERTEX|5 E1|8 0|10 1.0|20 1.0|0 VERTEX|5 E2|8 0|10 2.0|20 1.0|" +
            "0 SEQEND|5 E3|8 0|"};
    const std::string svg = picture(drawing);
    EXPECT_EQ(paths(svg, "A1"), "M1 2L3 4.5\n");
    EXPECT_EQ(colour(svg, "A1"), "#ff0000");
    EXPECT_EQ(colour(svg, "A2"), "#0000ff");
    for (const char* black : {"A3", "A9", "AA"})  // white would not be seen
        EXPECT_EQ(colour(svg, black), "#000000") << black;
    EXPECT_EQ(paths(svg, "A2").substr(0, 4), "M2 0");
    EXPECT_TRUE(holds(paths(svg, "A3"), " 0 0 1 2 "));  // counterclockwise to (2, 0)
    EXPECT_EQ(paths(svg, "A4"), "M0 0L1 0L1 1L0 1Z\n");
    // A bulge of 1 is a half circle below the chord, in two quarters.
    EXPECT_TRUE(std::regex_match(paths(svg, "A5"),
                                 std::regex("M0 0A1 1 -?0 0 1 \\S+ -1A1 1 -?0 0 1 2 \\S+L3 0\n")))
        << paths(svg, "A5");
    EXPECT_TRUE(holds(paths(svg, "A6"), "A3 1.5 0 0 1 "));
    EXPECT_EQ(paths(svg, "A8"), "M1 1L1 1\n");
    EXPECT_EQ(paths(svg, "C4"), "M1 1L2 1L1 1Z\n");
    EXPECT_TRUE(noted("not drawn: 1 MTEXT"));
}

TEST_F(Drawing, TextsStandUprightAndAreEscaped) {
    const std::string svg =
        picture({.layers = {"0"},
                 .entities = "0 TEXT|5 A1|8 0|10 1.0|20 2.0|40 0.7|1 <45%%d & \xC3\xA4>|50 90.0|"
                             "0 TEXT|5 A2|8 0|10 0.0|20 0.0|11 5.0|21 6.0|40 0.7|1 mid|72 4|"});
    EXPECT_TRUE(holds(svg, "&lt;45\xC2\xB0 &amp; "));
    EXPECT_TRUE(holds(svg, "matrix(0 1 1 0 1 2)\" font-size=\"0.9"));
    // In the middle of its point, and as wide as its letters are.
    std::smatch place;
    const std::regex middle("matrix\\(1 0 0 -1 (\\S+) (\\S+)\\)[^>]* textLength=\"([^\"]*)\"");
    ASSERT_TRUE(std::regex_search(svg, place, middle));
    EXPECT_NEAR(std::stod(place[1]) + std::stod(place[3]) / 2, 5.0, 1e-9);
    EXPECT_NEAR(std::stod(place[2]), 6.0 - 0.35, 1e-9);
}

TEST_F(Drawing, HoldNothingThatXmlHasNoPlaceFor) {
    const std::string layer = "a\\U+FFFE\\U+FFFF\\U+D800^[b\\U+0085\x7F\\U+1234<";
    const std::string svg =
        picture({.layers = {"0"},
                 .blocks = referenceDefinition("LOST", layer + ".dxf"),
                 .entities = lineEntity("A1", layer) + insertEntity("A2", "0", "LOST") +
                             "0 TEXT|5 A3|8 0|10 1.0|20 2.0|40 1.0|1 " + layer + "|"});
    const std::string shown = "a\uFFFD\uFFFD\uFFFD b  \u1234&lt;";
    EXPECT_TRUE(holds(svg, "data-layer=\"" + shown + "\""));
    EXPECT_TRUE(holds(svg, ">" + shown + ".dxf</text>"));
    EXPECT_TRUE(holds(svg, "\uFFFD\uFFFD\uFFFDb  \u1234&lt;</text>"));
}

TEST_F(Drawing, BlocksAndReferencesAreDrawnWhereTheyAreInserted) {
    DxfDrawing{.layers = {"0", "WALLS|70 0|62 3", "HID|70 1|62 1"},
               .blocks = referenceDefinition("CORE", "core.dxf") +
                         referenceDefinition("OVER", "core.dxf", 12),
               .entities = lineEntity("A1", "WALLS") + lineEntity("A2", "HID") +
                           insertEntity("A3", "0", "CORE", "10 5.0|20 0.0|") +
                           insertEntity("A4", "0", "OVER")}
        .save("plan.dxf");

    DxfDrawing{.layers = {"0"}, .entities = lineEntity("F1", "0")}.save("core.dxf");
    const DxfDrawing host{
        .layers = {"0", "BLUE|70 0|62 5"},
        .blocks = referenceDefinition("PLAN", "plan.dxf") + referenceDefinition("LOST", "x&y.dxf") +
                  blockDefinition("ROW", "0 LINE|5 B1|8 0|62 0|10 0.0|20 0.0|11 1.0|21 0.0|") +
                  blockDefinition("LOOP", lineEntity("B2", "0") + insertEntity("B3", "0", "LOOP")),
        .entities =
            insertEntity("10", "BLUE", "PLAN", "10 10.0|20 20.0|41 2.0|42 2.0|43 2.0|50 90.0|") +
            insertEntity("11", "BLUE", "ROW", "10 0.0|20 0.0|70 2|71 1|44 3.0|50 90.0|41 2.0|") +
            insertEntity("12", "0", "LOOP") + insertEntity("13", "0", "LOST", "10 1.0|20 1.0|") +
            lineEntity("14", "0|67 1")};
    const std::string svg = picture(host, {"--exact-colours"});
    EXPECT_EQ(paths(svg, "A1"), "M10 20L10 22\n");
    EXPECT_EQ(paths(svg, "F1"), "M10 30L10 32\n");
    EXPECT_TRUE(holds(svg, "data-handle=\"A1\" data-layer=\"PLAN|WALLS\" data-type=\"LINE\""));
    EXPECT_EQ(colour(svg, "A1"), "#00ff00");
    EXPECT_EQ(colour(svg, "F1"), "#0000ff");              // layer 0: that of the outermost insert
    EXPECT_EQ(paths(svg, "B1"), "M0 0L0 2\nM0 3L0 5\n");  // spacing is turned, not scaled
    EXPECT_EQ(colour(svg, "B1"), "#0000ff");
    EXPECT_EQ(paths(svg, "A2") + paths(svg, "14"), "");
    EXPECT_TRUE(holds(svg,
                      "<path data-handle=\"13\" data-layer=\"0\" data-type=\"INSERT\" "
                      "stroke=\"#808080\" stroke-dasharray"));
    EXPECT_TRUE(holds(svg, ">x&amp;y.dxf</text>"));
    for (const char* note :
         {"1 on layers that are off or frozen", "1 overlays below a reference",
          "1 INSERT of a block within itself", "missing reference, drawn as a box: x&y.dxf"})
        EXPECT_TRUE(noted(note)) << note;

    const std::string walls = picture(host, {"--layer", "PLAN|W*"});
    EXPECT_EQ(paths(walls, "A1") + paths(walls, "B1"), "M10 20L10 22\n");
    EXPECT_EQ(walls.find("stroke-dasharray"), std::string::npos);
    const std::string without = picture(host, {"--no-xrefs"});
    EXPECT_EQ(paths(without, "A1"), "");
    EXPECT_TRUE(noted("2 references (--no-xrefs)"));
    const std::string inside = picture(host, {"--in", "PLAN", "--layer", "walls"});
    EXPECT_EQ(paths(inside, "A1"), "M10 20L10 22\n");
    EXPECT_EQ(paths(inside, "F1"), "");
    EXPECT_EQ(paths(picture(host, {"--in", "PLAN", "--no-xrefs"}), "F1"), "");
    EXPECT_TRUE(noted("2 references (--no-xrefs)"));
}

TEST_F(Drawing, AMissingReferenceSaysWhatIsWrong) {
    writeFile(file("bad.dxf"), "no drawing at all");
    const DxfDrawing host{
        .layers = {"0", "MOR_CONTROL_LAYER|70 1"},
        .blocks = referenceDefinition("BAD", "bad.dxf") + referenceDefinition("GONE", "gone.dxf"),
        .entities = insertEntity("A1", "0", "BAD") + insertEntity("A2", "0", "GONE") +
                    lineEntity("A3", "MOR_CONTROL_LAYER")};
    static_cast<void>(picture(host));
    EXPECT_TRUE(noted("bad.dxf: ") && noted("gone.dxf (not there)"));
    EXPECT_FALSE(noted("bad.dxf (not there)"));
    EXPECT_FALSE(noted("off or frozen"));  // the store's own records are no part of the picture
}

TEST_F(Drawing, AnEmptyPictureSaysSo) {
    const std::string host =
        DxfDrawing{.layers = {"0", "OFF|70 0|62 -1"}, .entities = lineEntity("A1", "OFF")}.save(
            "host.dxf");
    const std::string other =
        DxfDrawing{.layers = {"0"}, .entities = lineEntity("A1", "0")}.save("other.dxf");
    expectCode(1, {{"draw", host}, {"draw", other, "--layer", "NONE"}}, "there is nothing to draw");
    expectCode(1, {{"draw", other, "--window=50,50,60,60"}}, "nothing lies within the --window");
}

TEST_F(Drawing, CirclesInOtherPlanesAreEllipsesOrLines) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("B", "0 CIRCLE|5 B1|8 0|10 0.0|20 0.0|40 1.0|"),
         .entities =
             "0 CIRCLE|5 A1|8 0|10 0.0|20 0.0|40 2.0|210 1.0|220 0.0|230 0.0|"
             "0 ARC|5 A2|8 0|10 5.0|20 0.0|40 1.0|50 0.0|51 90.0|210 0.0|220 0.0|230 -1.0|" +
             insertEntity("A3", "0", "B", "10 0.0|20 0.0|41 3.0|42 1.0|")});
    EXPECT_EQ(paths(svg, "A1").find('A'), std::string::npos);
    EXPECT_EQ(paths(svg, "A2").substr(0, 4), "M-6 ");  // mirrored in x, clockwise
    EXPECT_TRUE(holds(paths(svg, "A2"), "A1 1 "));
    EXPECT_TRUE(holds(paths(svg, "A2"), " 0 0 -5 1"));
    EXPECT_TRUE(holds(paths(svg, "B1"), "A3 1 0 0 1 "));
}

TEST_F(Drawing, WhatCannotBeDrawnIsCounted) {
    const std::string svg = picture(
        {.layers = {"0"},
         .blocks = blockDefinition("*D1", "0 DIMENSION|5 B1|8 0|2 *D1|" + lineEntity("B2", "0"), 1),
         .entities = "0 ARC|5 A1|8 0|10 0.0|20 0.0|40 2.0|50 1e300|51 -1e300|"
                     "0 LINE|5 A2|8 0|10 1e308|20 0.0|11 -1e308|21 1e308|"
                     "0 DIMENSION|5 A3|8 0|2 *D1|" +
                     insertEntity("A4", "0", "*D1", "10 0.0|20 0.0|41 1e308|42 1e308|") +
                     insertEntity("A5", "0", "NONE")});
    EXPECT_EQ(paths(svg, "B2"), "M0 0L1 0\n");
    EXPECT_TRUE(noted("2 DIMENSION: its record") && noted("2 LINE: its record") &&
                noted("1 INSERT of a block that is not there"));
    EXPECT_EQ(svg.find("inf"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
}

TEST_F(Drawing, APictureEndsAtSoManyBytes) {
    const std::string layer(3'000'000, '"');  // written with six characters each
    const std::string host =
        DxfDrawing{.layers = {"0"},
                   .blocks = blockDefinition("B", lineEntity("B1", layer)),
                   .entities = insertEntity("A1", "0", "B", "10 0.0|20 0.0|70 40|71 40|44 1.0|")}
            .save("host.dxf");
    const Outcome drawn = run({"draw", host, "-o", file("p.svg")});
    EXPECT_TRUE(holds(drawn.err, "1 beyond a million elements, 250000 inserts or 256 MB"));
    EXPECT_LT(std::filesystem::file_size(file("p.svg")), 300'000'000u);
}

/// So many records that threads share the work: lines, some with texts that have to be decoded, and
/// inserts of a block elsewhere in the file.
DxfDrawing manyEntities(std::string& handles) {
    DxfDrawing drawing{.layers = {"0"}, .blocks = blockDefinition("B", lineEntity("B1", "0"))};
    for (int i = 0; i < 6000; ++i) {
        std::ostringstream hex;
        hex << std::uppercase << std::hex << 0x1000 + i;
        const std::string& handle = hex.str();
        const std::string head = "|5 " + handle + "|8 0|10 " + std::to_string(i) + ".5|20 1.25|";
        drawing.entities += i % 7 == 3    ? "0 TEXT" + head + "40 1.0|1 T\\U+00FC" + handle + "|"
                            : i % 50 == 9 ? "0 INSERT" + head + "2 B|"
                                          : "0 LINE" + head + "11 3.0|21 4.5|";
        handles += handle + (i % 7 != 3 && i % 50 == 9 ? " B1 " : " ");
    }
    return drawing;
}

TEST_F(Drawing, ManyEntitiesStandInTheOrderOfTheFile) {
    std::string expected;
    const std::string svg = picture(manyEntities(expected));
    const std::regex handle("data-handle=\"([^\"]*)\"");
    std::string handles;
    for (std::sregex_iterator at(svg.begin(), svg.end(), handle), end; at != end; ++at)
        handles += (*at)[1].str() + " ";
    EXPECT_EQ(handles, expected);
    EXPECT_EQ(paths(svg, "2001"), "M4097.5 1.25L3 4.5\n");
    EXPECT_TRUE(holds(svg,
                      ">T\xC3\xBC"
                      "1003</text>"));
}

TEST_F(Drawing, ManyEntitiesFailAsFewDo) {
    std::string handles;
    const std::string host = manyEntities(handles).save("host.dxf");
    EXPECT_EQ(run({"draw", host, "--form", "svg", "-o", "/dev/full"}).code, 5);
    int failed = 0;
    for (int nth = 1; nth <= 40; nth += 3) {
        const Outcome drawn =
            runInjected("pread", nth, "fail", {"draw", host, "-o", file("p.svg")});
        failed += drawn.code == 3 ? 1 : 0;
        EXPECT_EQ(std::filesystem::exists(file("p.svg")), drawn.code == 0) << nth;
    }
    EXPECT_GT(failed, 0);
}

TEST_F(Drawing, NumbersAreAsShortAsTheyRead) {
    const char* const numbers[] = {
        "0",     "-0.5",   "0.001",      "0.0015",       "2e-04",        "1e-07",        "10000",
        "1e+05", "123000", "1.2345e+10", "98765.432109", "0.1234567891", "-99999.000001"};
    for (const std::string number : numbers) {
        const std::string svg =
            picture({.layers = {"0"},
                     .entities = "0 LINE|5 A1|8 0|10 0.0|20 1.0|11 " + number + "|21 1.0|"});
        EXPECT_EQ(paths(svg, "A1"), "M0 1L" + number + " 1\n");
    }
}

TEST_F(Drawing, LargeCoordinatesAreShifted) {
    const std::string svg =
        picture({.layers = {"0"},
                 .entities = "0 LINE|5 A1|8 0|10 4500123.25|20 50.0|11 4500124.0|21 51.0|"});
    EXPECT_EQ(paths(svg, "A1"), "M123.25 50L124 51\n");
    EXPECT_TRUE(holds(svg, "data-shift=\"4500000 0\""));
}

TEST_F(Drawing, ThatIsInterruptedLeavesNoFileBehind) {
    newDrawing();
    const Outcome ended =
        runInjected("rename", 1, "signal:2", {"draw", file("d.dxf"), "-o", file("picture.svg")});
    EXPECT_EQ(ended.code, 130);
    EXPECT_EQ(names(), "d.dxf");
    EXPECT_EQ(call("draw D -o @picture.bmp").code, 2);
    EXPECT_TRUE(holds(call("draw D -o @picture.svg --size -5").err, "16 to 16384, not \"-5\""));
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Drawing, AProgramWithoutItsModulesSaysSo) {
    newDrawing();
    const std::string alone = file("alone");
    std::filesystem::copy(MORADMIN_PROGRAM, alone);
    EXPECT_EQ(runProgram({alone, "ls", file("d.dxf")}, folder()).code, 0);
    const Outcome drawn = runProgram({alone, "draw", file("d.dxf"), "-o", file("a.svg")}, folder());
    EXPECT_EQ(drawn.code, 5);
    EXPECT_TRUE(holds(drawn.err, "install the program as a whole (")) << drawn.err;
    EXPECT_TRUE(holds(drawn.err, "moradmin_paint.so: cannot open")) << drawn.err;
    EXPECT_FALSE(std::filesystem::exists(file("a.svg")));
}

TEST_F(Drawing, APictureTakesNoDrawingsPlace) {
    const std::string host = DxfDrawing{.entities = lineEntity("A1", "0")}.save("host.dxf");
    std::filesystem::create_symlink(host, file("link.svg"));
    std::filesystem::copy_file(host, file("plan"));  // any drawing, whatever its name
    writeFile(file("marked"), "\xEF\xBB\xBF" + readFile(host));
    for (const std::string& taken :
         {host, file("other.DXF"), file("link.svg"), file("plan"), std::string(), file("marked")})
        EXPECT_EQ(run({"draw", host, "-o", taken}).code, 2) << taken;
    EXPECT_EQ(readFile(file("plan")), readFile(host));
    EXPECT_EQ(run({"draw", host, "-o", file("none/p.svg")}).code, 5);
    EXPECT_EQ(run({"draw", host, "--json"}).code, 2);
    const Outcome drawn = run({"draw", host, "--json", "-o", file("p.svg")});
    EXPECT_EQ(nlohmann::json::parse(drawn.out)["elements"], 1);
    EXPECT_EQ(readFile(file("p.svg")), run({"draw", host}).out);
}

}  // namespace
}  // namespace mor::test
