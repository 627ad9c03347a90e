#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace mor::test {
namespace {

class Carry : public ToolTest {
protected:
    [[nodiscard]] std::string list(const std::string& drawing) const {
        return run({"ls", "-R", drawing}).out;
    }
};

/// Random values and directories as lines of a script.
std::string randomScript(unsigned seed) {
    std::mt19937 engine(seed);
    const auto random = [&engine] { return static_cast<unsigned>(engine()); };
    static const char* const values[] = {"1",
                                         "-2.5",
                                         "'\"a \\\"b\\\" ^J\"'",
                                         "'(1 (2 . 3) nil \"x\")'",
                                         "'(\"é\" . 1e-300)'",
                                         "2147483647",
                                         "'((1) (2 (3)))'"};
    std::string script;
    for (int i = 0; i < 25; ++i) {
        std::string path;
        for (unsigned depth = 1U + random() % 3U; depth > 0; --depth)
            path += std::string("/") + static_cast<char>('x' + random() % 3);
        script +=
            "put " + path + "/f" + std::to_string(random() % 9) + " " + values[random() % 7] + "\n";
    }
    return script;
}

TEST_F(Carry, DumpAndLoadAreInverseForRandomTrees) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const std::string a = newDrawing("a.dxf");
        const std::string b = newDrawing("b.dxf", "R12");
        EXPECT_EQ(call("run @a.dxf -", randomScript(seed)).code, 0);
        const Outcome dump = call("dump @a.dxf");
        EXPECT_EQ(call("load @b.dxf -", dump.out).code, 0);
        EXPECT_EQ(call("diff @a.dxf @b.dxf").out, "");
        EXPECT_EQ(call("dump @b.dxf").out, dump.out);
        std::filesystem::remove(a);
        std::filesystem::remove(b);
    }
}

TEST_F(Carry, ExportAndImportAreInverseForRandomTrees) {
    for (unsigned seed = 11; seed <= 13; ++seed) {
        newDrawing("a.dxf");
        newDrawing("b.dxf");
        EXPECT_EQ(call("run @a.dxf -", randomScript(seed)).code, 0);
        EXPECT_EQ(call("put @a.dxf '/x/>arrow' --string -", "two\r\nlines\n").code, 0);
        EXPECT_EQ(call("export @a.dxf @out").code, 0);
        EXPECT_EQ(readFile(file("out/x/%3Earrow.txt")), "two\r\nlines\n");
        EXPECT_EQ(call("import @out @b.dxf").code, 0);
        EXPECT_EQ(call("diff @a.dxf @b.dxf").out, "");
        for (const char* name : {"out", "a.dxf", "b.dxf"}) std::filesystem::remove_all(file(name));
    }
    writeFile(file("a.dxf"), readFile(filledDrawing({{"/k/s/v", "(1 2)"}}, "c.dxf")));
    EXPECT_EQ(run({"export", file("a.dxf") + ":/k/s", file("out")}).code, 0);
    EXPECT_EQ(readFile(file("out/v.lisp")), "(1 2)\n");
    expectCode(5, "export @a.dxf @out", "is not empty");
    expectCode(2, "import @out @a.dxf", "files lie in directories");
    EXPECT_EQ(run({"import", file("out"), file("a.dxf") + ":/z", "--replace"}).code, 0);
    writeFile(file("out/v.txt"), "doubled");
    expectCode(2, {{"import", file("out"), file("a.dxf") + ":/z"}}, "a value of that name");
    EXPECT_EQ(call("cat @a.dxf /z/v").out, "(1 2)\n");
}

TEST_F(Carry, LoadAddsOrReplaces) {
    const std::string a = filledDrawing({{"/a/x", "1"}}, "a.dxf");
    const std::string dump = call("dump @a.dxf").out;
    const std::string b = filledDrawing({{"/a/x", "9"}, {"/b/y", "2"}}, "b.dxf");
    EXPECT_EQ(call("load @b.dxf", dump).code, 0);
    EXPECT_EQ(list(b), "/a/\n/a/x\n/b/\n/b/y\n");
    EXPECT_EQ(call("cat @b.dxf /a/x").out, "1\n");
    EXPECT_EQ(call("load --replace @b.dxf", dump).code, 0);
    EXPECT_EQ(list(b), "/a/\n/a/x\n");
}

TEST_F(Carry, LoadRefusesWhatIsNoDump) {
    const std::string a = filledDrawing({{"/a/x", "1"}});
    const std::string bytes = readFile(a);
    const std::string head = R"({"command": "dump", "schema": 1, "entries": )";
    const std::string deep(100000, '[');
    const std::string file = R"([{"name": "d", "kind": "directory", "entries": [{"name": )";
    for (const std::string& text :
         {std::string("{}"), std::string("no json"), std::string(R"({"command": 5, "schema": 1})"),
          std::string(R"({"command": "dump", "schema": "1"})"), head + "5}", head + "[7]}",
          head + "{}}", head + file + "5}]}]}", head + file + R"("f", "kind": 2}]}]})",
          head + file + R"("f", "kind": "file", "lisp": 3}]}]})",
          head + R"([{"name": "f", "kind": "file", "lisp": "1"}]})",
          head + file +
              R"("x", "kind": "directory"}, {"name": ">x", "kind": "file", "lisp": "1"}]}]})",
          head + deep, deep, head + deep + std::string(100000, ']') + "}"}) {
        const Outcome load = call("load D", text);
        EXPECT_EQ(load.code, 2) << text.substr(0, 80);
        EXPECT_TRUE(holds(load.err, "this is no dump of a store: "));
    }
    expectCode(2, "load D @; run D @; put D /a/x --file @", "is a directory");
    EXPECT_EQ(readFile(a), bytes);
}

TEST_F(Carry, DiffTellsWhatWasAddedRemovedAndChanged) {
    const std::string a = filledDrawing({{"/a/x", "1"}, {"/a/y", "2"}}, "a.dxf");
    const std::string b = filledDrawing({{"/a/x", "9"}, {"/a/z", "3"}}, "b.dxf");
    const Outcome diff = call("diff @a.dxf @b.dxf");
    EXPECT_EQ(diff.code, 1);
    EXPECT_EQ(diff.out, "~ /a/x\t1\t->\t9\n- /a/y\t2\n+ /a/z\t3\n");
    EXPECT_EQ(call("diff @a.dxf @a.dxf").code, 0);
    EXPECT_EQ(call("diff @a.dxf @b.dxf /none").code, 0);
}

TEST_F(Carry, CopiesAndMovesWithinAndBetweenDrawings) {
    const std::string a = filledDrawing({{"/a/x", "1"}, {"/a/s/y", "2"}}, "a.dxf");
    const std::string b = newDrawing("b.dxf");
    EXPECT_EQ(call("cp @a.dxf /a /k").code, 0);
    EXPECT_EQ(list(a), "/a/\n/a/x\n/a/s/\n/a/s/y\n/k/\n/k/x\n/k/s/\n/k/s/y\n");
    EXPECT_EQ(run({"mv", a + ":/k", b + ":/"}).code, 0);
    EXPECT_EQ(list(a), "/a/\n/a/x\n/a/s/\n/a/s/y\n");
    EXPECT_EQ(list(b), "/k/\n/k/x\n/k/s/\n/k/s/y\n");
    EXPECT_EQ(call("mv @b.dxf /k/x /k/renamed").code, 0);
    EXPECT_EQ(call("cat @b.dxf /k/renamed").out, "1\n");
    EXPECT_EQ(call("cp @a.dxf /a /a/s").code, 6);
    EXPECT_EQ(call("cp @a.dxf /none /z").code, 6);
}

TEST_F(Carry, ScriptsSaveAllOrNothing) {
    const std::string a = filledDrawing({{"/a/x", "1"}}, "a.dxf");
    const std::string bytes = readFile(a);
    const Outcome failed = run({"run", a, "-c", "put /a/y 2; rm /a/none; put /a/z 3"});
    EXPECT_EQ(failed.code, 6);
    EXPECT_TRUE(holds(failed.err, "line 1"));
    EXPECT_EQ(readFile(a), bytes);
    const Outcome done = call("run @a.dxf -",
                              "# a comment\nput /a/y '(1 2)'\nput /a/t --string \"x y\"\n\ncat "
                              "/a/y\nrm -r /a\nput /b/n -7\n");
    EXPECT_EQ(done.code, 0) << done.err;
    EXPECT_EQ(done.out, "(1 2)\n");
    EXPECT_EQ(list(a), "/b/\n/b/n\n");
    EXPECT_EQ(run({"run", a, "-c", "run -c 'ls'"}).code, 2);
}

TEST_F(Carry, ListsAsTheLibraryDoesIt) {
    const std::string a = filledDrawing({{"/a/f", "1"}, {"/a/b/g", "2"}}, "a.dxf");
    const std::string listing = call("dir @a.dxf /a -R").out;
    EXPECT_TRUE(holds(listing, "RECURSIVE LISTING OF PATH: /a\n"));
    EXPECT_TRUE(holds(listing,
                      "\nDir   16324 free    /a\nFile      8 used    /a/f \n"
                      "Dir   16336 free    /a/b\nFile      8 used    /a/b/g \n\n"));
    const Outcome missing = call("dir @a.dxf /none");
    EXPECT_EQ(missing.code, 6);
    EXPECT_TRUE(holds(missing.out, "invalid pszPath        /none\n"));
}

TEST_F(Carry, LooksThroughReferences) {
    const std::string plan = filledDrawing({{"/cfg/x", "(1 2)"}}, "plan.dxf");
    const std::string host = DxfDrawing{.blocks = referenceDefinition("PLAN", "C:\\proj\\PLAN.dwg"),
                                        .entities = insertEntity("A1", "0", "PLAN")}
                                 .save("host.dxf");
    const std::string bytes = readFile(host);
    const std::string planBytes = readFile(plan);
    EXPECT_EQ(run({"ls", "-R", host, "--in", "PLAN"}).out, list(plan));
    EXPECT_EQ(run({"cat", host, "/cfg/x", "--in", "A1"}).out, "(1 2)\n");
    expectCode(6, {{"put", host, "/cfg/x", "3", "--in", "PLAN"},
                   {"mv", host, "/cfg/x", "/cfg/z", "--in", "PLAN"},
                   {"run", host, "-c", "put /cfg/x 3", "--in", "PLAN"},
                   {"wipe", host, "--yes", "--in", "PLAN"},
                   {"repair", host, "--in", "PLAN"},
                   {"run", host, "-c", "put /cfg/x 3 --in PLAN"}});
    EXPECT_EQ(readFile(host), bytes);
    EXPECT_EQ(readFile(plan), planBytes);
    EXPECT_EQ(run({"xrefs", host, "--missing"}).code, 0);
    std::filesystem::remove(plan);
    EXPECT_EQ(run({"xrefs", host, "--missing"}).code, 1);
    expectCode(6, {{"ls", host, "--in", "PLAN"}, {"ls", host, "--in", "OTHER"}});
}

}  // namespace
}  // namespace mor::test
