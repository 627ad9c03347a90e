#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace mor::test {
namespace {

/// What the program says to words that are not right, and its help.
class Words : public ToolTest {
protected:
    void expectSaid(const std::vector<std::pair<std::string, std::string>>& rows) const {
        for (const auto& [line, said] : rows) EXPECT_TRUE(holds(call(line).err, said)) << line;
    }
    /// Runs the example of a page in a folder with the sample drawings and what examples want.
    [[nodiscard]] int codeOfExample(const std::string& page) const {
        const std::filesystem::path place = folder() / "samples";
        std::filesystem::remove_all(place);
        std::filesystem::create_directories(place);
        for (const char* name : {"floor_plan.dxf", "site_plan.dxf"})
            std::filesystem::copy(std::filesystem::path(MORADMIN_SAMPLES) / name, place);
        const std::string begin = "\nExample\n  ";
        const std::size_t at = page.find(begin) + begin.size();
        const std::string example = page.substr(at, page.find('\n', at) - at);
        const std::string before =
            "moradmin run floor_plan.dxf -c 'put /cfg/user/x 1; put /cfg/title 2; put /cfg/old/y 3;"
            "mkdir /cfg/new' && moradmin dump floor_plan.dxf > store.json";
        const bool import = example.starts_with("moradmin import");
        const Outcome outcome = runProgram(
            {"/bin/bash", "-c",
             "cd " + place.string() +
                 "; PATH=" + std::filesystem::path(MORADMIN_PROGRAM).parent_path().string() +
                 ":$PATH; " + before + (import ? " && moradmin export floor_plan.dxf values" : "") +
                 " || exit 99; " + example},
            folder());
        EXPECT_TRUE(outcome.code < 2) << example << ": " << outcome.err;
        return outcome.code;
    }
};

TEST_F(Words, ThatAreNearlyRightAreTold) {
    filledDrawing({{"/cfg/user/x", "1"}, {"/cfg/scale", "2"}});
    writeFile(file("old.dxf.bak"), "");
    expectSaid({
        {"lst D", "(did you mean \"ls\"?); \"moradmin help\" lists all"},
        {"get D", "did you mean \"cat\"?"},
        {"help puts", "did you mean \"put\"?"},
        {"put --helpp", "put: \"--helpp\" is no option of this command (did you mean --help?)"},
        {"ls D --jsn", "did you mean --json?"},
        {"cat D", "moradmin: cat: PATH is missing; it is called as \"moradmin cat DRAWING PATH..."},
        {"cat /cfg/x", "a drawing is missing"},
        {"put /cfg/x D 1",
         "the drawing stands first: \"moradmin put " + file("d.dxf") + " /cfg/x ...\""},
        {"cat D /cfg", "/cfg is a directory, not a file; there are user/ scale"},
        {"rm D /cfg", "with -r it goes"},
        {"ls D /cgf", "/cgf is not there; did you mean \"/cfg\"?"},
        {"cat D /cfg/scael", "did you mean \"/cfg/scale\"?"},
        {"cat D /cfg/zzzzzz", "is not there; there are /cfg/user/ /cfg/scale"},
        {"ls @e.dxf", "did you mean \""},
        {"ls @old.dxf", "old.dxf.bak is there"},
        {"ls @. ", "-r takes the drawings in it"},
        {"find D /cfg/[a", "the [ of \"[a\" is not closed"},
        {"load D @d.dxf", "no JSON; \"moradmin dump DRAWING > FILE\" makes one"},
        {"run D -c 'put /a/b 1; lst'", "line 1, command 2: \"lst\" is not a command"},
        {"run D -c 'put /a/b x'", "a script takes quotes away: '\"...\"', or --string"},
        {"df D /cgf", "did you mean \"/cfg\"?"},
        {"tree D /cfg/scale", "/cfg/scale is a file, not a directory; \"moradmin cat\" prints"},
        {"rmdir D /cfg/scale", "is a file, not a directory"},
        {"cat D /cfg/scale/x", "/cfg/scale/x is not there; /cfg/scale is a file"},
        {"put D /cfg/b 1 2", "a value is one word, in quotes: '(1 2 3)'"},
        {"rm D -z /cfg/scale", "\"-z\" is no option of this command"},
        {"new - -o -", "\"-o\" is no option of this command"},
        {"new @d.dwg", "choose a name such as d.dxf"},
        {"put D /cfg/b 1 -o @e.dwg", "the drawing is DXF and is not converted"},
        {"ls D -r --ext ''", "an ending is wanted"},
    });
}

TEST_F(Words, OfHelpNameTheArgumentsAndGiveAnExample) {
    const std::string overview = call("help").out;
    EXPECT_EQ(call("--help").out, overview);
    std::istringstream rows(overview.substr(overview.find("Commands\n") + 9));
    int commands = 0;
    for (std::string row; std::getline(rows, row) && row.starts_with("  ");) {
        const std::string name = row.substr(2, row.find(' ', 2) - 2);
        if (name.empty()) continue;  // a text that goes on
        ++commands;
        const std::string page = call("help " + name).out;
        EXPECT_TRUE(holds(page, "moradmin " + name)) << name;
        EXPECT_TRUE(holds(page, "\nExample\n  moradmin " + name)) << name;
        EXPECT_EQ(call(name + " --help").out, page);
        EXPECT_EQ(codeOfExample(page), name == "diff" ? 1 : 0) << name;  // the stores differ
    }
    EXPECT_GT(commands, 25);
    EXPECT_TRUE(call("help cat").out.starts_with("moradmin cat DRAWING PATH...\n"));
    EXPECT_TRUE(call("version").out.starts_with("moradmin 0."));
}

TEST_F(Words, ThatAreWrongAreToldAsJson) {
    filledDrawing({{"/cfg/x", "1"}});
    const auto note = nlohmann::json::parse(call("entities D --layer NONE --json").err);
    EXPECT_EQ(note["drawing"], file("d.dxf"));
    EXPECT_TRUE(holds(note["note"], "no entity lies on a layer that matches NONE"));
    for (const char* line : {"lst --json", "cat --json", "--json ls D --nope"}) {
        const Outcome outcome = call(line);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(nlohmann::json::parse(outcome.err)["error"]["code"], 2) << outcome.err;
    }
}

TEST_F(Words, OfOptionsStandBeforeTheCommandToo) {
    filledDrawing({{"/cfg/x", "1"}});
    EXPECT_EQ(call("--json cat D /cfg/x").out, call("cat D /cfg/x --json").out);
    EXPECT_EQ(call("-o @e.dxf --no-backup put D /cfg/x 2").code, 0);
    EXPECT_EQ(call("cat @e.dxf /cfg/x").out, "2\n");
}

// ---- Paths and scripts --------------------------------------------------------------------------

TEST_F(Words, OfPathsMayBePatterns) {
    filledDrawing(
        {{"/cfg/user/x", "1"}, {"/cfg/a1", "2"}, {"/cfg/a2", "3"}, {"/log/deep/er/x", "4"}});
    const std::pair<const char*, const char*> rows[] = {
        {"cat D /cfg/a#", "2\n3\n"},
        {"ls D /*/a*", "/cfg/a1\n/cfg/a2\n"},
        {"find D /**/x", "/cfg/user/x\n/log/deep/er/x\n"},
        {"find D /**/er/**", "/log/deep/er/x\n"},
        {"find D /** -type d", "/cfg\n/cfg/user\n/log\n/log/deep\n/log/deep/er\n"},
        {"find D /*/u* --type d", "/cfg/user\n"}};
    for (const auto& [line, out] : rows) EXPECT_EQ(call(line).out, out) << line;
    std::istringstream listed(call("ls -R D").out);
    for (std::string path; std::getline(listed, path);)
        EXPECT_EQ(run({"ls", file("d.dxf"), path}).code, 0) << path;
    expectCode(6, "cat D /cfg/z*; rm D /cfg/z*; rm D /cfg/*; ls D /z*");
    EXPECT_EQ(call("rm D /cfg/a*").code, 0);
    EXPECT_EQ(call("rm -r D /*/*").code, 0);
    EXPECT_EQ(call("ls -R D").out, "/cfg/\n/log/\n");
}

TEST_F(Words, MakeAndRemoveDirectories) {
    filledDrawing({{"/cfg/x", "1"}});
    EXPECT_EQ(call("mkdir D /new/sub /cfg/y").code, 0);
    EXPECT_EQ(call("ls -R D").out, "/cfg/\n/cfg/x\n/cfg/y/\n/new/\n/new/sub/\n");
    expectCode(6, "rmdir D /cfg; rmdir D /; rmdir D /none; mkdir D /cfg/x", "moradmin: ");
    EXPECT_EQ(call("rmdir D /new/sub /new/").code, 0);
    EXPECT_EQ(call("ls D").out, "cfg/\n");
}

TEST_F(Words, ToCopyWithoutClobberingKeepWhatIsThere) {
    filledDrawing({{"/a/x", "1"}, {"/a/y", "2"}, {"/b/x", "3"}});
    EXPECT_EQ(call("cp -n D /a/x /b/x").code, 0);
    EXPECT_EQ(call("mv -n D /a/x /b/x").code, 0);
    EXPECT_EQ(call("cat D /a/x /b/x").out, "1\n3\n");
    filledDrawing({{"/k/a/x", "9"}}, "e.dxf");
    EXPECT_EQ(run({"cp", "-n", file("d.dxf") + ":/a", file("e.dxf") + ":/k"}).code, 0);
    EXPECT_EQ(call("cat @e.dxf /k/a/x /k/a/y").out, "9\n2\n");
}

TEST_F(Words, OfAScriptCopyCompareAndHoldListsAsTheyAre) {
    filledDrawing({{"/a/x", "1"}});
    writeFile(file("s"),
              "put /b/l (1 2 \"a ) b\"\n  (3 . 4)) # a list over two lines\n"
              "cp /a/x /b/x; mv /b/x /b/y\ndiff\n");
    EXPECT_EQ(call("run D @s").out, "+ /b/\n+ /b/l\t(1 2 \"a ) b\" (3 . 4))\n+ /b/y\t1\n");
    EXPECT_EQ(call("cat D /b/l /b/y").out, "(1 2 \"a ) b\" (3 . 4))\n1\n");
    EXPECT_TRUE(holds(call("run D -c 'ls; put /b/l (1 2'").err, "the list that begins here"));
    EXPECT_EQ(call("run D -c 'check; info'").code, 0);
}

// ---- Pipes --------------------------------------------------------------------------------------

TEST_F(Words, MayMeanAStreamWhereADrawingIsMeant) {
    const std::string bytes = readFile(filledDrawing({{"/cfg/x", "1"}}));
    EXPECT_EQ(call("cat - /cfg/x", bytes).out, "1\n");
    const Outcome put = call("put - /cfg/x 2 -o - -v", bytes);
    EXPECT_TRUE(put.err.starts_with("~ /cfg/x\t1\t->\t2\n")) << put.err;
    EXPECT_EQ(call("cat - /cfg/x", put.out).out, "2\n");
    EXPECT_EQ(call("put - /cfg/x 2", bytes).code, 2);
    EXPECT_TRUE(holds(call("put - /cfg/x - -o -", bytes).err, "stdin is the drawing"));
    EXPECT_EQ(call("put D /cfg/x 3 -o -").out.size(), put.out.size());
    EXPECT_EQ(readFile(file("d.dxf")), bytes);
    EXPECT_EQ(call("put - /cfg/x 4 -o -", call("new -").out).code, 0);
    EXPECT_EQ(call("cp -:/cfg @d.dxf:/in", bytes).code, 0);
    EXPECT_EQ(call("cat D /in/x").out, "1\n");
    EXPECT_EQ(call("cat - /k/x", call("cp @d.dxf:/in/x -:/k/x -o -", bytes).out).out, "1\n");
    expectCode(2, {{"cp", file("d.dxf") + ":/cfg", "-:/in"}}, "saved to -o FILE");
    EXPECT_TRUE(holds(call("run D", "put /cfg/x - --string\n").err, "stdin is the script"));
}

TEST_F(Words, OfTextsGoInAndOutByteForByte) {
    newDrawing();
    for (const std::string text : {"", "\n", "a\r\n\tb\n\n", "\xC3\xA4", "(1 2"}) {
        EXPECT_EQ(call("put D /a/x --string -", text).code, 0);
        EXPECT_EQ(call("cat --raw D /a/x").out, text);
    }
    EXPECT_EQ(call("put D /a/x --string --line -", "one\n").code, 0);
    EXPECT_EQ(call("cat --raw D /a/x").out, "one");
    EXPECT_EQ(call("cat --raw --line D /a/x").out, "one\n");
}

}  // namespace
}  // namespace mor::test
