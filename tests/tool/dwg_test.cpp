#include "tests/support/dwg_drawing.h"
#include "tests/tool/tool_test.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>

namespace mor::test {
namespace {

/// A store in a drawing of R2000, as DXF and as DWG.
class DwgTool : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        newDrawing("d.dxf", "R2000");
        for (const char* line : {"put D /a/b 42", "put D /a/t --string \u00E9t\u00E9",
                                 "put D /c/x '(1 2.5 (\"a\" . nil) (handent \"25\"))'"})
            ASSERT_EQ(call(line).code, 0) << line;
        m_dwg = DwgDrawing(splitDxf(readFile(file("d.dxf")))).build();
        writeFile(file("d.dwg"), m_dwg.bytes);
    }
    [[nodiscard]] const DwgFileBytes& dwg() const { return m_dwg; }
    /// What the program prints, the name of the drawing left out.
    [[nodiscard]] std::string answer(const std::string& command, const std::string& drawing) const {
        std::vector<std::string> all = words(command);
        all.insert(all.begin() + 1, file(drawing));
        const Outcome outcome = run(all);
        std::string text = std::to_string(outcome.code) + ": " + outcome.out + outcome.err;
        for (std::size_t at = 0; (at = text.find(file(drawing))) != std::string::npos;)
            text.replace(at, file(drawing).size(), "DRAWING");
        // The DWG is made without the records that name layouts.
        for (const std::string name : {"=Model", "=Layout1"})
            for (std::size_t at = 0; (at = text.find(name)) != std::string::npos;)
                text.erase(at, name.size());
        return text;
    }

private:
    DwgFileBytes m_dwg;
};

TEST_F(DwgTool, ReadsAStoreAsInItsDxfTwin) {
    for (const char* command :
         {"ls -R /",    "ls --json", "cat /a/b", "cat /a/t",         "cat /c/x",
          "cat /none",  "tree",      "dir",      "find /*",          "df",
          "dump",       "check",     "entities", "entities --world", "entities --count",
          "layers",     "blocks",    "xrefs",    "entity 25",        "point 27",
          "diff @d.dxf"})
        EXPECT_EQ(answer(command, "d.dwg"), answer(command, "d.dxf")) << command;
    EXPECT_TRUE(holds(answer("info", "d.dwg"), "text      CP1252, DWG"));
    EXPECT_TRUE(holds(answer("info --json", "d.dwg"), "\"form\":\"DWG\""));
    // Names of applications are the same in any case.
    std::string other = readFile(file("d.dxf"));
    for (std::size_t at = 0; (at = other.find("MOR_ATTRIBUTES")) != std::string::npos;)
        other.replace(at, 14, "Mor_Attributes");
    writeFile(file("other.dwg"), DwgDrawing(splitDxf(other)).build().bytes);
    EXPECT_EQ(answer("dump", "other.dwg"), answer("dump", "d.dxf"));
}

// After every change the DWG shows what its DXF twin shows.
TEST_F(DwgTool, ChangesAStoreAsInItsDxfTwin) {
    const std::string longText(3000, 'x');
    for (const std::string& command :
         {std::string("put /a/b 1"), std::string("put /new/deep/er '(1 . 2)'"),
          "put /a/long --string " + longText, std::string("rm /a/t"), std::string("mv /c /moved"),
          std::string("cp -R /a /copy"), std::string("rm -r /new"),
          std::string("put /a/b --string \u00E9"), std::string("rm -r /copy"),
          std::string("repair"), std::string("wipe --yes"), std::string("put /again/x 3.5"),
          std::string("wipe --yes --all"), std::string("put /anew/x 4.5")}) {
        const std::string changed = answer(command + " --experimental-dwg", "d.dwg");
        EXPECT_EQ(changed, answer(command, "d.dxf")) << command;
        for (const char* look :
             {"dump", "check", "ls -R /", "entities --all", "layers --all", "blocks --all"})
            EXPECT_EQ(answer(look, "d.dwg"), answer(look, "d.dxf")) << command << ", " << look;
        EXPECT_EQ(call("verify @d.dwg").code, 0) << command;
    }
    EXPECT_TRUE(holds(call("info @d.dwg").out, "bytes of older versions of objects"));
}

// Header variables that get longer no longer fit where they stood.
TEST_F(DwgTool, GivesHandlesThatAreAByteLonger) {
    exchange(file("d.dxf"), "9 $HANDSEED|5 29", "9 $HANDSEED|5 FE");
    writeFile(file("d.dwg"), DwgDrawing(splitDxf(readFile(file("d.dxf")))).build().bytes);
    for (const char* path : {"/p", "/q", "/r", "/s"}) {
        const std::string put = std::string("put ") + path + "/x 1";
        EXPECT_EQ(answer(put + " --experimental-dwg", "d.dwg"), answer(put, "d.dxf"));
        EXPECT_EQ(answer("entities", "d.dwg"), answer("entities", "d.dxf"));
    }
    EXPECT_EQ(call("verify @d.dwg").code, 0);
}

TEST_F(DwgTool, IsChangedOnlyWithAWordAndABackup) {
    EXPECT_TRUE(holds(call("put --no-backup @d.dwg /a/b 1").err, "no strict judge"));
    EXPECT_EQ(readFile(file("d.dwg.bak")), dwg().bytes);
    std::filesystem::remove(file("d.dwg.bak"));
    const Outcome known = call("put --no-backup --experimental-dwg @d.dwg /a/b 2");
    EXPECT_EQ(known.err, "");
    EXPECT_FALSE(std::filesystem::exists(file("d.dwg.bak")));
    const std::string bytes = readFile(file("d.dwg"));
    const Outcome dry = call("put --dry-run @d.dwg /a/b 3");
    EXPECT_TRUE(holds(dry.out, "changed\tINSERT\t27\t/a"));
    EXPECT_EQ(readFile(file("d.dwg")), bytes);
    EXPECT_EQ(call("put -o @x.dwg --experimental-dwg @d.dwg /a/b 4").code, 0);
    EXPECT_EQ(call("cat @x.dwg /a/b").out, "4\n");
    EXPECT_EQ(readFile(file("d.dwg")), bytes);
}

TEST_F(DwgTool, ReadsOnBehindADamagedObject) {
    std::string bytes = dwg().bytes;
    const std::size_t line = dwg().places.at(0x15);  // a text style
    bytes[line + 9] = static_cast<char>(bytes[line + 9] ^ 4);
    writeFile(file("d.dwg"), bytes);
    const std::string told = "damaged in one place: object 15: its checksum is wrong";
    expectCode(5, "put @d.dwg /a/b 1;repair @d.dwg", "cannot be saved over");
    EXPECT_EQ(readFile(file("d.dwg")), bytes);
    const Outcome cat = call("cat @d.dwg /a/b");
    EXPECT_EQ(cat.code, 4);
    EXPECT_EQ(cat.out, "42\n");
    EXPECT_TRUE(holds(cat.err, told + "; all else is read"));
    EXPECT_TRUE(holds(call("info @d.dwg").out, "damage    in one place: object 15"));
    EXPECT_TRUE(holds(call("check @d.dwg").out, told));
    writeFile(file("d.dwg"), dwg().bytes.substr(0, dwg().map));
    EXPECT_EQ(call("info @d.dwg").code, 3);
}

TEST_F(DwgTool, IsLookedIntoAsAReference) {
    const auto refer = [&](const std::string& path) {
        std::filesystem::remove(file("host.dxf"));
        exchange(newDrawing("host.dxf", "R2000"), "0 ENDSEC|0 SECTION|2 ENTITIES|",
                 "0 BLOCK|5 F1|330 F0|100 AcDbEntity|8 0|100 AcDbBlockBegin|2 PLAN|70 4|10 0|20 0|"
                 "30 0|3 PLAN|1 " +
                     path +
                     "|0 ENDBLK|5 F2|330 F0|100 AcDbEntity|8 0|100 AcDbBlockEnd|0 ENDSEC|0 "
                     "SECTION|2 ENTITIES|" +
                     insertEntity("F3", "0", "PLAN"));
    };
    refer("d.dwg");
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "42\n");
    EXPECT_TRUE(holds(call("xrefs @host.dxf").out, "d.dwg"));
    EXPECT_TRUE(holds(call("layers @host.dxf --in PLAN --all").out, "MOR_CONTROL_LAYER"));
    // The ending that was saved comes first, the twin after it.
    ASSERT_EQ(call("put D /a/b 7").code, 0);
    refer("d.dxf");
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "7\n");
    std::filesystem::remove(file("d.dxf"));
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "42\n");
    // What changed in the DWG is seen through the drawing that refers to it.
    ASSERT_EQ(call("put --experimental-dwg @d.dwg /a/b 8").code, 0);
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "8\n");
}

// ---- real drawings ------------------------------------------------------------------------------

// The store goes in, changes, and goes away again, and is at every step what it is in a DXF.
TEST_F(DwgTool, KeepsAStoreInEveryDrawingThatIsWritten) {
    const char* corpus = std::getenv("MORADMIN_CORPUS_DWG");
    if (corpus == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder of drawings";
    newDrawing("model.dxf", "R2018");
    std::string script;
    for (int i = 0; i < 50; ++i)
        script += "put /d" + std::to_string(i % 5) + "/v" + std::to_string(i) + " '(" +
                  std::to_string(i) + " 2.5 \"" +
                  std::string(static_cast<std::size_t>(i * 7), 'y') + "\u00E9\")'\n";
    writeFile(file("fill.txt"), script);
    const std::vector<std::string> steps = {"run FILE @fill.txt", "rm -r FILE /d2",
                                            "mv FILE /d3/v8 /d0/moved", "wipe --yes --all FILE"};
    const auto perform = [&](std::string step, const std::string& drawing) {
        step.replace(step.find("FILE"), 4, "@" + drawing);
        const Outcome outcome = call(step + " --experimental-dwg --no-backup");
        EXPECT_EQ(outcome.code, 0) << step << outcome.err;
        return call("dump @" + drawing).out;
    };
    std::vector<std::string> dumps;
    for (const std::string& step : steps) dumps.push_back(perform(step, "model.dxf"));
    std::size_t written = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (entry.path().extension() != ".dwg") continue;
        writeFile(file("c.dwg"), readFile(entry.path()));
        if (call("put --dry-run @c.dwg /a/b 1").code == 5) continue;
        ++written;
        const std::string before = call("layers --all @c.dwg").out + call("dump --text @c.dwg").out;
        for (std::size_t i = 0; i < steps.size(); ++i)
            EXPECT_EQ(perform(steps[i], "c.dwg"), dumps[i]) << entry.path() << " " << steps[i];
        EXPECT_EQ(call("verify @c.dwg").code, 0) << entry.path();
        EXPECT_EQ(call("layers --all @c.dwg").out + call("dump --text @c.dwg").out, before);
    }
    EXPECT_GT(written, 30u);
}

TEST_F(DwgTool, ShowsOfItsHeaderWhatItsDxfTwinHas) {
    const char* corpus = std::getenv("MORADMIN_CORPUS_DWG");
    if (corpus == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder of drawings";
    const auto header = [&](const std::string& drawing, const std::string& name) {
        const Outcome told = run({"header", drawing, name, "--json"});
        return told.code == 0 ? nlohmann::json::parse(told.out)["variables"].dump() : told.err;
    };
    int twins = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        const std::string dwg = entry.path().string();
        if (entry.path().extension() != ".dwg") continue;
        const std::string stem = dwg.substr(0, dwg.size() - 4);
        for (const std::string ending : {".dxf", "_binary.dxf"}) {
            if (!std::filesystem::exists(stem + ending)) continue;
            for (const char* name : {"$LIMM*", "$INSUNITS", "$LTSCALE", "$PDMODE", "$PDSIZE"})
                EXPECT_EQ(header(dwg, name), header(stem + ending, name)) << stem;
            // The others were drawn anew before they were saved as DXF.
            if (ending != ".dxf") {
                EXPECT_EQ(header(dwg, "$EXTM*"), header(stem + ending, "$EXTM*")) << stem;
            }
            ++twins;
        }
    }
    EXPECT_GT(twins, 5);
}

/// By layer, how many entities model space has; none for layers with others than plain ones, of
/// which the other reader makes more or none.
std::map<std::string, int> plainEntities(const std::string& json) {
    static const std::set<std::string> plain = {"LINE",   "ARC",        "CIRCLE", "ELLIPSE",
                                                "SPLINE", "LWPOLYLINE", "TEXT",   "SOLID"};
    std::map<std::string, int> counts;
    std::set<std::string> others;
    std::istringstream lines{json};
    for (std::string line; std::getline(lines, line);) {
        const auto entity = nlohmann::json::parse(line);
        const std::string layer = entity["layer"];
        if (!std::string(entity["space"]).starts_with("Model")) continue;
        if (!plain.contains(entity["type"])) others.insert(layer);
        ++counts[layer];
    }
    std::erase_if(counts, [&](const auto& count) { return others.contains(count.first); });
    return counts;
}

// GDAL reads DWG of R2000 alone, on its own.
TEST_F(DwgTool, CountsEntitiesAsAnotherReaderDoes) {
    const char* corpus = std::getenv("MORADMIN_CORPUS_DWG");
    if (corpus == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder of drawings";
    const std::string reader = "/usr/bin/ogrinfo";
    if (!std::filesystem::exists(reader)) GTEST_SKIP() << "no ogrinfo (gdal-bin)";
    int layers = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (entry.path().extension() != ".dwg" || !readFile(entry.path()).starts_with("AC1015"))
            continue;
        const auto ours = plainEntities(run({"entities", "--json", entry.path().string()}).out);
        std::istringstream lines{
            runProgram({reader, "-ro", "-so", "-al", entry.path().string()}, folder()).out};
        std::string layer;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("Layer name: ")) layer = line.substr(12);
            const auto known = ours.find(layer);
            if (!line.starts_with("Feature Count: ") || known == ours.end()) continue;
            EXPECT_EQ(std::stoi(line.substr(15)), known->second) << entry.path() << " " << layer;
            ++layers;
        }
    }
    EXPECT_GT(layers, 5);
}

}  // namespace
}  // namespace mor::test
