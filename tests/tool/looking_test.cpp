#include "tests/support/dxf_drawing.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace mor::test {
namespace {

using nlohmann::json;

/// A drawing that attaches PLAN (turned by 90 degrees, doubled, moved; CORE in it), inserts an
/// ordinary block and a reference whose file is missing, and holds a layer of PLAN's itself.
class Looking : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        DxfDrawing{.layers = {"0", "SHAFT|70 0|62 5"},
                   .entities = lineEntity("F1", "SHAFT") + lineEntity("A1", "0")}
            .save("core.dxf");
        m_plan = DxfDrawing{.layers = {"0", "WALLS|70 1|62 -3", "Doors|70 4|62 6", "~odd",
                                       "CORE|SHAFT|70 1"},
                            .blocks = blockDefinition("DOOR", lineEntity("B1", "0"), 2) +
                                      referenceDefinition("CORE", "core.dxf"),
                            .entities = lineEntity("A1", "WALLS") + lineEntity("A2", "Doors") +
                                        insertEntity("A3", "Doors", "DOOR") +
                                        insertEntity("A4", "0", "CORE", "10 5.0|20 0.0|30 1.0|") +
                                        "0 CIRCLE|5 A5|8 ~odd|10 1.0|20 2.0|30 0.0|40 1.0|"}
                     .save("plan.dxf");
        DxfDrawing{
            .layers = {"0", "WALLS", "PLAN|WALLS|70 0|62 2"},
            .blocks = blockDefinition("GATE", lineEntity("D1", "0")) +
                      blockDefinition("PLAN|DOOR", "", 1) +
                      referenceDefinition("PLAN", "plan.dxf") +
                      referenceDefinition("PLAN|CORE", "other.dxf", 20) +
                      referenceDefinition("LOST", "gone\\lost.dwg"),
            .entities = lineEntity("A1", "WALLS") +
                        insertEntity("10", "0", "PLAN",
                                     "10 100.0|20 200.0|30 0.0|41 2.0|42 2.0|43 2.0|50 90.0|") +
                        insertEntity("12", "WALLS", "GATE") + insertEntity("13", "0", "LOST") +
                        "0 TEXT|5 A2|8 WALLS|10 0.0|20 0.0|40 1.0|1 a^Jb|67 1|"}
            .save("d.dxf");
    }
    /// Runs COMMAND d.dxf WORD...; what it says when `code` tells of an error.
    [[nodiscard]] std::string out(const std::string& line, int code = 0) const {
        std::vector<std::string> all = words(line);
        all.insert(all.begin() + 1, file("d.dxf"));
        const Outcome outcome = run(all);
        EXPECT_EQ(outcome.code, code) << outcome.out << outcome.err;
        return code > 1 ? outcome.err : outcome.out;
    }
    void expectOut(const std::vector<std::pair<std::string, std::string>>& rows) const {
        for (const auto& [line, wanted] : rows) EXPECT_EQ(out(line), wanted) << line;
    }
    /// The handles that a listing begins its lines with.
    [[nodiscard]] std::string handles(const std::string& line, int code = 0) const {
        std::istringstream rows(out(line, code));
        std::string all;
        for (std::string row; std::getline(rows, row);)
            all += (all.empty() ? "" : " ") + row.substr(0, row.find('\t'));
        return all;
    }

    std::string m_plan;
};

TEST_F(Looking, LayersStandBesideWhatTheDrawingSaysOfThem) {
    EXPECT_EQ(out("layers"),
              "0\t7\tCONTINUOUS\ton\t7 CONTINUOUS on\t-\n"
              "WALLS\t7\tCONTINUOUS\ton\t7 CONTINUOUS on\t-\n"
              "PLAN|WALLS\t2\tCONTINUOUS\ton\t2 CONTINUOUS on\t3 CONTINUOUS off,frozen\n"
              "PLAN|Doors\t6\tCONTINUOUS\tlocked\t-\t6 CONTINUOUS locked\n"
              "PLAN|~odd\t7\tCONTINUOUS\ton\t-\t7 CONTINUOUS on\n"
              "PLAN|CORE|SHAFT\t7\tCONTINUOUS\tfrozen\t-\t5 CONTINUOUS on\n");
    const json layer = json::parse(out("layers --json --in PLAN"))["layers"][1];
    EXPECT_EQ(layer["name"], "WALLS");
    EXPECT_EQ(layer["qualified"], "PLAN|WALLS");
    EXPECT_EQ(layer["frozen"], false);
    EXPECT_EQ(layer["host"]["color"], 2);
    EXPECT_EQ(layer["reference"]["frozen"], true);
}

TEST_F(Looking, BlocksStandBesideWhatTheDrawingSaysOfThem) {
    EXPECT_EQ(out("blocks"),
              "GATE\t-\t1\t1\t0.0 0.0 0.0\t-\t0 0.0 0.0 0.0\n"
              "PLAN|DOOR\tattributes,dependent,resolved\t1\t1\t0.0 0.0 0.0\t-\t1 0.0 0.0 0.0\n"
              "PLAN\treference,resolved\t5\t1\t0.0 0.0 0.0\tplan.dxf\t4 0.0 0.0 0.0\n"
              "PLAN|CORE\treference,dependent,resolved\t2\t1\t0.0 0.0 0.0\tcore.dxf\t"
              "20 0.0 0.0 0.0\n"
              "LOST\treference\t0\t1\t0.0 0.0 0.0\tgone\\lost.dwg\t4 0.0 0.0 0.0\n");
    const json block = json::parse(out("blocks --json --in PLAN"))["blocks"][0];
    EXPECT_EQ(block["name"], "DOOR");
    EXPECT_EQ(block["flags"], 50);
    EXPECT_EQ(block["host"]["flags"], 1);
    const std::string dump = out("blocks --dump --in PLAN");
    EXPECT_TRUE(holds(dump, "Members of xref [PLAN]\n"));
    EXPECT_TRUE(holds(dump, "[DOOR                ] xref: 0 ovl: 0 att: 1"));
    EXPECT_TRUE(holds(out("blocks --dump", 6), "LOST has no entities"));
    EXPECT_EQ(out("blocks --dump --json", 2).substr(0, 1), "{");
}

TEST_F(Looking, EntitiesAreChosenByLayerAndType) {
    expectOut({{"entities",
                "A1\tLINE\tWALLS\tModelSpace\n10\tINSERT\t0\tModelSpace\n"
                "12\tINSERT\tWALLS\tModelSpace\n13\tINSERT\t0\tModelSpace\n"
                "A2\tTEXT\tWALLS\t*Paper_Space\n"},
               {"entities --in PLAN --layer wa* --type LINE", "A1\tLINE\tPLAN|WALLS\tPLAN\n"},
               {"entities --in 10 --count --type INSERT", "2\n"}});
    const std::pair<std::string, const char*> cases[] = {
        {"--layer w*", "A1 12 A2"},
        {"--layer ~w* --type line,ins*", "10 13"},
        {"--in PLAN", "A1 A2 A3 A4 A5"},
        // Each alternative is qualified; a leading ~ stands for itself then.
        {"--in PLAN --layer WALLS,~odd", "A1 A5"},
        {"--in PLAN --layer *", "A1 A2 A3 A4 A5"},
        {"--layer NONE --layer 0", "10 13"},
        {"--layer [w]* --type [KLM]INE", "A1"},
        {"--layer ,", ""},
        {"--layer NONE", ""}};
    for (const auto& [line, wanted] : cases)
        EXPECT_EQ(handles("entities " + line, *wanted == '\0' ? 1 : 0), wanted) << line;
    EXPECT_EQ(out("entities --layer NONE --count", 1), "0\n");
}

TEST_F(Looking, PointsAreCarriedIntoTheDrawing) {
    expectOut({{"point --in PLAN 1 -2 3", "104.0 202.0 6.0\n"},
               {"point --in 10 1 0", "100.0 202.0 0.0\n"},
               // Moved by (5, 0, 1) within PLAN, then doubled, turned and moved with it.
               {"point --in PLAN|CORE 1 0", "100.0 212.0 2.0\n"},
               {"matrix --in PLAN",
                "0.0 -2.0 0.0 100.0\n2.0 0.0 0.0 200.0\n0.0 0.0 2.0 0.0\n0.0 0.0 0.0 1.0\n"},
               {"entities --world --in PLAN --type LINE --layer Doors",
                "A2\tLINE\tPLAN|Doors\tPLAN\t100.0 200.0 0.0\t100.0 202.0 0.0\n"}});
    const json matrix = json::parse(out("matrix --json --in PLAN"))["matrix"];
    EXPECT_EQ(matrix[1], json::parse("[2.0, 0.0, 0.0, 200.0]"));
}

TEST_F(Looking, AFlatPolylineIsAsHighAsItsOwnRecordSays) {
    const std::string vertices = "0 VERTEX|5 B1|8 0|10 1.0|20 2.0|30 7.0|0 SEQEND|5 B2|8 0|";
    const struct {
        std::string entity;
        const char* points;
    } cases[] = {
        {"0 POLYLINE|5 A1|8 0|66 1|30 3.0|210 0.0|220 0.0|230 -1.0|" + vertices, "-1.0 2.0 -3.0"},
        {"0 POLYLINE|5 A1|8 0|66 1|70 8|30 3.0|" + vertices, "1.0 2.0 7.0"},
        {"0 POLYLINE|5 A1|8 0|66 1|30 0.0|" + vertices, "1.0 2.0 7.0"},
        {"0 TEXT|5 A1|8 0|10 0.0|20 0.0|11 5.0|21 6.0|31 7.0|40 1.0|1 a|72 1|", "5.0 6.0 7.0"},
        {"0 LEADER|5 A1|8 0|10 1.0|20 2.0|30 3.0|10 4.0|20 5.0|30 6.0|",
         "1.0 2.0 3.0\t4.0 5.0 6.0"},
        {"0 POLYLINE|5 A1|8 0|66 1|70 64|0 VERTEX|8 0|10 1.0|20 1.0|30 1.0|70 192|"
         "0 VERTEX|8 0|10 0.0|20 0.0|70 128|71 1|0 SEQEND|8 0|",
         "1.0 1.0 1.0"}};
    for (const auto& c : cases) {
        DxfDrawing{.entities = c.entity}.save("d.dxf");
        EXPECT_TRUE(
            out("entities --world").ends_with(std::string("\t0\tModelSpace\t") + c.points + "\n"))
            << c.entity;
    }
}

TEST_F(Looking, WhatIsKeptOfAReferencesReferenceIsNoReferenceOfItsOwn) {
    const std::string list = out("xrefs");
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 3) << list;
    EXPECT_TRUE(holds(list, "PLAN|CORE\tattach\tloaded\t1\t2\t-\tcore.dxf"));
}

TEST_F(Looking, NamesMayHaveBarsInThem) {
    DxfDrawing{.blocks = referenceDefinition("X|Y", "core.dxf"),
               .entities = insertEntity("10", "0", "X|Y")}
        .save("d.dxf");
    EXPECT_EQ(out("entities --in X|Y --layer SHAFT"), "F1\tLINE\tX|Y|SHAFT\tX|Y\n");
    EXPECT_EQ(out("layers"), "X|Y|SHAFT\t5\tCONTINUOUS\ton\t-\t5 CONTINUOUS on\n");
}

TEST_F(Looking, NestedReferencesAreReachedByTheirPath) {
    for (const char* path : {"PLAN|CORE", "10|a4"})
        EXPECT_EQ(handles(std::string("entities --in ") + path), "F1 A1");
    EXPECT_EQ(out("entities --in PLAN|CORE --layer SHAFT"),
              "F1\tLINE\tPLAN|CORE|SHAFT\tPLAN|CORE\n");
    EXPECT_TRUE(holds(out("entities --in PLAN|NONE", 6), "PLAN has no insert"));
    EXPECT_TRUE(holds(out("entities --in PLAN|A3", 6), "moradmin:"));
}

TEST_F(Looking, AnInsertWithoutHandleIsLookedThrough) {
    DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf"),
               .entities = "0 INSERT|8 0|2 PLAN|10 1.0|20 0.0|30 0.0|"}
        .save("d.dxf");
    EXPECT_EQ(out("point --in PLAN 1 2"), "2.0 2.0 0.0\n");
    DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf"),
               .entities = lineEntity("10", "0") + insertEntity("10", "0", "PLAN")}
        .save("d.dxf");
    EXPECT_EQ(out("entities --in PLAN --count"), "5\n");
    expectCode(6, "matrix D --in PLAN", "the handle 10 of its insert stands twice");
}

TEST_F(Looking, AnInsertInABlockLeadsToCoordinatesOfTheBlock) {
    DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf") +
                         blockDefinition("B", insertEntity("20", "0", "PLAN", "10 1.0|20 2.0|")),
               .entities = insertEntity("21", "0", "B", "10 7.0|20 7.0|")}
        .save("d.dxf");
    const Outcome point = call("point D --in 20 0 0");
    EXPECT_EQ(point.out, "1.0 2.0 0.0\n");
    EXPECT_TRUE(holds(point.err, "coordinates of that block"));
    EXPECT_TRUE(holds(call("ls D --in PLAN").err, "nowhere inserted"));
}

TEST_F(Looking, OneRecordShowsGroupsAndAttributes) {
    EXPECT_EQ(run({"put", m_plan, "/cfg/x", "(1 2)"}).code, 0);
    const json anchor = json::parse(out("entity A1 --json --in PLAN"));
    EXPECT_EQ(anchor["layer"], "PLAN|WALLS");
    EXPECT_EQ(anchor["groups"][3], json::parse(R"({"code":10,"value":0.0})"));
    EXPECT_TRUE(holds(out("entity A2"), "1\ta^Jb\n"));
    EXPECT_EQ(json::parse(out("entity A1 --json"))["layer"], "WALLS");
    EXPECT_TRUE(holds(out("entity FF", 6), "no record has the handle FF"));
    const std::string rows = run({"entities", m_plan, "--layer", "MOR*", "--all"}).out;
    const std::string directory = rows.substr(rows.find('\n') + 1, 2);
    EXPECT_TRUE(holds(run({"entity", m_plan, directory}).out, "attribute\tx\t(1 2)\n")) << rows;
}

TEST_F(Looking, NumbersOfGroupsAreExact) {
    DxfDrawing{.entities =
                   "0 LINE|5 A1|8 0|62 3.7|70 +12|71 1e1|90 99999999999999999999|"
                   "160 -9223372036854775808|40 1e999|"}
        .save("d.dxf");
    const json record = json::parse(out("entity A1 --json"));
    std::string values;
    for (const json& group : record["groups"]) values += group["value"].dump() + " ";
    EXPECT_EQ(values,
              "\"LINE\" \"A1\" \"0\" 3.7 12 10.0 \"99999999999999999999\" "
              "-9223372036854775808 \"1e999\" ");
}

TEST_F(Looking, ReferencesAreConfinedToAFolder) {
    std::ofstream(file("secret.txt")) << "0\nthe password\n";
    DxfDrawing{.blocks = referenceDefinition("PLAN", file("secret.txt"))}.save("d.dxf");
    const Outcome shown = call("xrefs D -v");
    EXPECT_TRUE(holds(shown.err, "no DXF text"));
    EXPECT_EQ((shown.out + shown.err).find("password"), std::string::npos);
    EXPECT_TRUE(holds(call("xrefs D -v --xref-root @").err, "no DXF text"));
    std::filesystem::create_directory(file("own"));
    EXPECT_TRUE(holds(call("xrefs D -v --xref-root @own").err, "secret.txt: lies outside "));
    expectCode(2,
               "xrefs D --xref-root ''; xrefs D --xref-root @none; xrefs D --xref-root D; "
               "run D -c 'layers --xref-root .'");
}

TEST_F(Looking, TextsOfDrawingsReachNoTerminal) {
    // Escape sequences as bytes, in caret coding and beyond ASCII, line ends, a turned direction.
    const std::string bad = "N\x1B[2J^J^[]0^I\\U+009B1m\\U+2028\\U+202E\x7F";
    const std::string shown = "N^[[2J^J^[]0^I\\U+009B1m\\U+2028\\U+202E^?";
    DxfDrawing{.layers = {"0", bad},
               .blocks = blockDefinition(bad, lineEntity("D1", "0")) +
                         referenceDefinition("LOST", bad) + referenceDefinition("PLAN", m_plan),
               .entities = insertEntity("A1", bad, bad) + insertEntity("A2", "0", "LOST") +
                           "0 X\x1B[2J|5 A3|8 0|1 " + bad + "|" + insertEntity("A4", "0", "PLAN") +
                           lineEntity("A3", "0"),
               .header = "9 $DWGCODEPAGE|3 ANSI\x1B[|",
               .version = "AC1032"}
        .save("d.dxf");
    const struct {
        const char* line;
        std::string part;  // is printed; of the others nothing but its form is looked at
    } cases[] = {{"layers", shown + "\t7\tCONTINUOUS\ton\t7 CONTINUOUS on\t-\n"},
                 {"blocks", shown + "\t-\t1\t1\t"},
                 {"blocks --dump --in PLAN", "\t[DOOR]\n"},
                 {"entities", "A1\tINSERT\t" + shown + "\tModelSpace\n"},
                 {"entity A3", "1\t" + shown + "\n"},
                 {"xrefs", "\t" + shown + "\t"},
                 {"xrefs --tree", "LOST (not found) " + shown + "\n"},
                 {"xrefs -v", "not there\n"},
                 {"matrix --in A3", ""},
                 {"matrix --in LOST", ""},
                 {"draw -o @p.svg", "not drawn: 1 X^[[2J: "},
                 {"info", "release   R2018 (AC1032)\n"},
                 {"check", "other-handle-doubled"}};
    for (const auto& c : cases) {
        std::vector<std::string> call = words(c.line);
        call.insert(call.begin() + 1, file("d.dxf"));
        const Outcome outcome = run(call);
        const std::string all = outcome.out + outcome.err;
        EXPECT_TRUE(holds(all, c.part)) << c.line;
        for (const char* raw : {"\x1B", "\x7F", "\xC2\x9B", "\xE2\x80\xA8", "\xE2\x80\xAE"})
            EXPECT_EQ(all.find(raw), std::string::npos) << c.line;
    }
    const json layer = json::parse(out("layers --json"))["layers"][1];
    EXPECT_EQ(layer["name"],
              "N\x1B[2J\n\x1B]0\t\xC2\x9B"
              "1m\xE2\x80\xA8\xE2\x80\xAE\x7F");
}

TEST_F(Looking, ANameThatStandsForSeveralInsertsPlacesNothing) {
    exchange(file("d.dxf"), "0 INSERT|5 13|8 0|2 LOST",
             "0 INSERT|5 14|8 0|2 PLAN|10 5.0|0 INSERT|5 13|8 0|2 LOST");
    for (const char* line :
         {"point --in PLAN 1 2", "matrix --in PLAN", "entities --world --in PLAN"})
        EXPECT_TRUE(holds(out(line, 6), "PLAN is inserted 2 times, by 10 14; --in 10 says"))
            << line;
    EXPECT_EQ(out("point --in 14 1 2"), "6.0 2.0 0.0\n");
    EXPECT_EQ(handles("entities --in PLAN --layer WALLS"), "A1");
}

TEST_F(Looking, MissingReferencesAreToldWithWhatHelps) {
    for (const char* line : {"layers D", "blocks D", "entities D", "entities D --deep", "grep x D"})
        EXPECT_TRUE(
            holds(call(line).err,
                  "a reference is missing: LOST (gone\\lost.dwg); --xref-path DIR and --map"))
            << line;
    EXPECT_TRUE(holds(out("entities --in LOST", 6), "--xref-path DIR and --map"));
    EXPECT_TRUE(holds(call("draw D -o @p.svg").err, "--xref-path DIR and --map"));
    expectCode(2, "xrefs D --xref-path @none; xrefs D --xref-path @none/**", "none");
    EXPECT_TRUE(holds(out("entities --in PLAM", 6), "did you mean \"PLAN\"?"));
    std::filesystem::create_directories(file("some/where"));
    std::filesystem::rename(m_plan, file("some/where/plan.dxf"));
    EXPECT_EQ(call("entities D --in PLAN --count --xref-path @some").code, 6);
    EXPECT_EQ(call("entities D --in PLAN --count --xref-path @some/**").out, "5\n");
}

TEST_F(Looking, LayersAreMeantByTheirNamesAsPrinted) {
    EXPECT_EQ(handles("entities --in PLAN --layer plan|walls,Doors"), "A1 A2 A3");
    EXPECT_EQ(handles("layers --layer PLAN|W*,WALLS"), "WALLS PLAN|WALLS");
    EXPECT_EQ(handles("layers --in PLAN --layer PLAN|WALLS"), "WALLS");
    EXPECT_EQ(handles("layers --in PLAN --layer WALLS"), "WALLS");
    for (const char* line : {"layers D --layer WALS", "entities D --layer WALS"})
        EXPECT_TRUE(holds(call(line).err, "matches WALS; did you mean \"WALLS\"?")) << line;
}

TEST_F(Looking, WhatLiesInBlocksAndReferencesHasItsPlaceInTheDrawing) {
    EXPECT_EQ(out("entities --deep --type LINE"),
              "A1\tLINE\tWALLS\tModelSpace\t0.0 0.0 0.0\t1.0 0.0 0.0\n"
              "A1\tLINE\tPLAN|WALLS\tPLAN\t100.0 200.0 0.0\t100.0 202.0 0.0\n"
              "A2\tLINE\tPLAN|Doors\tPLAN\t100.0 200.0 0.0\t100.0 202.0 0.0\n"
              "B1\tLINE\t0\tPLAN/PLAN|DOOR\t100.0 200.0 0.0\t100.0 202.0 0.0\n"
              "F1\tLINE\tPLAN|CORE|SHAFT\tPLAN/PLAN|CORE\t100.0 210.0 2.0\t100.0 212.0 2.0\n"
              "A1\tLINE\t0\tPLAN/PLAN|CORE\t100.0 210.0 2.0\t100.0 212.0 2.0\n"
              "D1\tLINE\t0\tGATE\t0.0 0.0 0.0\t1.0 0.0 0.0\n");
    EXPECT_EQ(out("entities --deep --count --layer *SHAFT"), "1\n");
    EXPECT_TRUE(holds(call("entities D").err, "9 more lie in blocks and references"));
    EXPECT_FALSE(holds(call("entities D -q").err, "9 more"));
    EXPECT_TRUE(holds(call("entities D --type lines").err, "there are INSERT LINE TEXT"));
}

TEST_F(Looking, TheStoresOwnRecordsAreListedOnRequestOnly) {
    const auto all = [&] { return out("entities") + out("layers") + out("blocks"); };
    const std::string before = all();
    EXPECT_EQ(call("put D /a/x 1").code, 0);
    EXPECT_EQ(all(), before);
    EXPECT_TRUE(holds(call("entities D -v").err, "2 entities of the store are not listed"));
    EXPECT_EQ(out("entities --count"), "5\n");
    EXPECT_EQ(out("entities --count --all"), "7\n");
    EXPECT_TRUE(holds(out("layers --all"), "MOR_CONTROL_LAYER"));
}

TEST_F(Looking, TextsAreFoundWhereverTheyStand) {
    EXPECT_EQ(call("put D /cfg/note '\"see plan\"'").code, 0);
    EXPECT_EQ(call("put @plan.dxf /in/x '\"deep note\"'").code, 0);
    const auto grep = [&](const std::string& line) { return call("grep " + line).out; };
    EXPECT_EQ(grep("-i DOOR D"),
              "PLAN|DOOR\t-\tBLOCK\tPLAN|DOOR\nPLAN|LAYER\t-\tLAYER\tDoors\n"
              "PLAN|DOOR\t-\tBLOCK\tDOOR\n");
    EXPECT_EQ(grep("note D"),
              "/cfg/note\t-\tfile\t\"see plan\"\nPLAN|/in/x\t-\tfile\t\"deep note\"\n");
    EXPECT_EQ(grep("a.b D"), "*Paper_Space\tA2\tTEXT\ta^Jb\n");
    EXPECT_EQ(call("grep -F a.b D").code, 1);
    EXPECT_EQ(call("grep -F a.b D @plan.dxf @core.dxf").code, 1);
    EXPECT_EQ(call("grep SHAFT D @core.dxf -q").code, 0);
    expectCode(2, "grep ( D", "is no regular expression");
}

TEST_F(Looking, WhatOtherProgramsKeepIsShown) {
    DxfDrawing{
        .entities = lineEntity("A1", "0") + "1001 ACME|1000 label|1070 7|1001 OTHER|1040 1.5|",
        .header = "9 $INSUNITS|70 4|9 $EXTMIN|10 0.0|20 1.0|30 0.0|9 $EXTMAX|10 5.0|20 6.0|30 0.0|",
        .version = "AC1015",
        .objects =
            "0 DICTIONARY|5 C|330 0|3 ACME_DICT|350 D|0 DICTIONARY|5 D|330 C|3 one/two|350 E|"
            "0 XRECORD|5 E|330 D|1 hello|70 3|"}
        .save("o.dxf");
    EXPECT_EQ(call("header @o.dxf INSUNITS").out, "$INSUNITS\t4\n");
    EXPECT_EQ(call("header @o.dxf $EXT*").out, "$EXTMIN\t0.0 1.0 0.0\n$EXTMAX\t5.0 6.0 0.0\n");
    EXPECT_EQ(call("dict @o.dxf").out, "D\tDICTIONARY\tACME_DICT/\n");
    EXPECT_TRUE(holds(call("dict @o.dxf /ACME_DICT/one/two").out, "1\thello\n70\t3\n"));
    EXPECT_EQ(call("xdata @o.dxf A1").out,
              "A1\tLINE\tACME\t1000\tlabel\nA1\tLINE\tACME\t1070\t7\nA1\tLINE\tOTHER\t1040\t1.5\n");
    EXPECT_EQ(call("xdata @o.dxf --app other").out, "A1\tLINE\tOTHER\t1040\t1.5\n");
    EXPECT_EQ(call("grep label @o.dxf").out, "ModelSpace\tA1\tACME\tlabel\n");
    const std::string info = call("info @o.dxf").out;
    for (const char* line :
         {"units     millimetres\n", "extents   0.0 1.0 0.0 to 5.0 6.0 0.0\n", "entities  1 LINE\n",
          "xdata     1 ACME, 1 OTHER\n", "dicts     ACME_DICT\n"})
        EXPECT_TRUE(holds(info, line));
    expectCode(6, "header @o.dxf INSUNIT; dict @o.dxf /ACME_DIC", "did you mean");
    EXPECT_EQ(call("xdata @o.dxf A1 --app other").out, call("xdata @o.dxf --app other").out);
    EXPECT_TRUE(holds(call("xdata @o.dxf A1 --app OTHR").err, "did you mean \"OTHER\"?"));
    expectCode(2, "xdata @o.dxf", "a HANDLE is wanted, or --app NAME");
}

TEST_F(Looking, WrongCallsSayWhatWouldWork) {
    EXPECT_EQ(call("put D /a/x 1 --in ''").code, 2);
    EXPECT_TRUE(holds(out("point 1 2", 2), "--in NAME"));
    EXPECT_TRUE(holds(out("point --in PLAN 1 x", 2), "\"x\" is no coordinate"));
    for (const auto& [name, why] : {std::pair{"GATE", "is no external reference"},
                                    {"LOST", "lost.dxf: not there"},
                                    {"A1", "no insert of that handle"}})
        EXPECT_TRUE(holds(out(std::string("matrix --in ") + name, 6), why));
}

}  // namespace
}  // namespace mor::test
