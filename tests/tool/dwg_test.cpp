#include "tests/support/dwg_drawing.h"
#include "tests/tool/tool_test.h"

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
}

TEST_F(DwgTool, RefusesToChangeIt) {
    expectCode(5,
               "put @d.dwg /a/b 1;put --dry-run @d.dwg /a/b 1;put -o @x.dwg @d.dwg /a/b 1;"
               "rm @d.dwg /a/b;mv @d.dwg /a/b /a/c;wipe --yes @d.dwg;repair @d.dwg",
               "DWG is read, not yet written; save it as DXF");
    EXPECT_EQ(readFile(file("d.dwg")), dwg().bytes);
    EXPECT_FALSE(std::filesystem::exists(file("x.dwg")));
}

TEST_F(DwgTool, ReadsOnBehindADamagedObject) {
    std::string bytes = dwg().bytes;
    const std::size_t line = dwg().places.at(0x15);  // a text style
    bytes[line + 9] = static_cast<char>(bytes[line + 9] ^ 4);
    writeFile(file("d.dwg"), bytes);
    const std::string told = "damaged in one place: object 15: its checksum is wrong";
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
    EXPECT_TRUE(holds(call("layers @host.dxf --in PLAN").out, "MOR_CONTROL_LAYER"));
    // The ending that was saved comes first, the twin after it.
    ASSERT_EQ(call("put D /a/b 7").code, 0);
    refer("d.dxf");
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "7\n");
    std::filesystem::remove(file("d.dxf"));
    EXPECT_EQ(call("cat @host.dxf /a/b --in PLAN").out, "42\n");
}

}  // namespace
}  // namespace mor::test
