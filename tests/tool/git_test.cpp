#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <array>

namespace mor::test {
namespace {

/// A repository of drawings, set up as the README says.
class Git : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        std::filesystem::current_path(folder());
        writeFile(".gitattributes", "*.dxf diff=moradmin\n*.dwg diff=moradmin\n");
        filledDrawing({{"/cfg/x", "1"}}, "a.dxf");
        filledDrawing({{"/cfg/x", "1"}}, "b.dxf");
        git("init -q .");
        git("config user.email a@b.c");
        git("config user.name x");
        commit();
    }
    void TearDown() override {
        std::filesystem::current_path("/");
        ToolTest::TearDown();
    }
    std::string git(const std::string& line) const {
        std::vector<std::string> all = words(line);
        all.insert(all.begin(),
                   {"/usr/bin/env", "GIT_CONFIG_GLOBAL=/dev/null", "GIT_PAGER=cat", "git"});
        const Outcome outcome = runProgram(all, folder());
        EXPECT_EQ(outcome.code, 0) << line << outcome.err;
        return outcome.out;
    }
    void commit() const {
        git("add -A .");
        git("commit -q -m x");
    }
    void use(const std::string& key, const std::string& command) const {
        git("config diff.moradmin." + key + " '" MORADMIN_PROGRAM " " + command + "'");
    }
    /// Another line of geometry in a drawing.
    static void draw(const std::string& drawing) {
        exchange(drawing, "0 SECTION|2 ENTITIES|", "0 SECTION|2 ENTITIES|" + lineEntity("F1", "0"));
    }
    /// Every kind of change at once.
    void changeEverything() const {
        filledDrawing({{"/n/x", "7"}}, "new.dxf");
        EXPECT_EQ(run({"put", "a.dxf", "/cfg/x", "2", "--no-backup"}).code, 0);
        draw("a.dxf");
        std::filesystem::remove("b.dxf");
        git("add -AN .");
    }
};

constexpr const char* kFacts = "DXF R2018, ";

TEST_F(Git, ShowsLinesOfTheStoreAndTheDrawing) {
    use("textconv", "dump --textconv");
    changeEverything();
    const std::string diff = git("diff HEAD --no-renames");
    for (const char* line :
         {"\n-/cfg/x\t1\n-drawing\tDXF R2018, ", "\n+/cfg/x\t2\n", "\n+/n/x\t7\n",
          "\n-drawing\tDXF R2018, ", "b/new.dxf", "deleted file"})
        EXPECT_TRUE(holds(diff, line));
    commit();
    // The store alone, then geometry alone: the other's line stays as it is.
    EXPECT_EQ(run({"put", "a.dxf", "/cfg/y", "3", "--no-backup"}).code, 0);
    EXPECT_TRUE(holds(git("diff HEAD"), std::string("\n+/cfg/y\t3\n drawing\t") + kFacts));
    commit();
    exchange("a.dxf", "10 0.0|20 0.0|30 0.0|11 1.0", "10 0.0|20 0.5|30 0.0|11 1.0");
    EXPECT_TRUE(holds(git("diff HEAD"), std::string("\n /cfg/y\t3\n-drawing\t") + kFacts));
    writeFile("a.dxf", readFile("a.dxf").substr(0, 300));
    EXPECT_TRUE(holds(git("diff HEAD"), "\n+unreadable\t"));
    writeFile("a.dxf", "no drawing");
    writeFile("a.dxf.bak", "");  // neither a name nor what lies beside it makes a difference
    EXPECT_TRUE(holds(git("diff HEAD"),
                      "\n+unreadable\tline 1: no DXF text: a drawing begins "
                      "with group 0 SECTION\n"));
}

TEST_F(Git, ShowsOneLineForEachDifference) {
    use("command", "diff --git");
    changeEverything();
    const std::string diff = git("diff HEAD --no-renames");
    EXPECT_TRUE(holds(diff, "diff a.dxf\n~ /cfg/x\t1\t->\t2\n~ drawing\tDXF R2018, "));
    EXPECT_TRUE(holds(diff, "diff b.dxf (deleted)\n- /cfg/\n- /cfg/x\t1\n~ drawing\tDXF R2018, "));
    EXPECT_TRUE(holds(diff, "diff new.dxf (added)\n+ /n/\n+ /n/x\t7\n~ drawing\t->\tDXF R2018, "));
    commit();
    std::filesystem::rename("a.dxf", "c.dxf");
    EXPECT_EQ(run({"put", "c.dxf", "/cfg/x", "9", "--no-backup"}).code, 0);
    git("add -A .");
    EXPECT_TRUE(holds(git("diff -M --cached"), "diff a.dxf -> c.dxf\n~ /cfg/x\t2\t->\t9\n"));
    commit();
    writeFile("c.dxf", readFile("c.dxf").substr(0, 300));
    EXPECT_TRUE(holds(git("diff HEAD"), "diff c.dxf\n! after: the drawing is damaged"));
}

TEST_F(Git, IsToldThatOnlyTheStoreChangedWhateverTheRelease) {
    for (const char* release : {"R12", "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"}) {
        newDrawing("d.dxf", release);
        const std::string before = call("dump --text d.dxf").out;
        EXPECT_EQ(call("put --no-backup d.dxf /a/b/c 1").code, 0);
        EXPECT_EQ(call("dump --text d.dxf").out, "/a/b/c\t1\n" + before) << release;
        std::filesystem::remove("d.dxf");
    }
    // Without handles, without a header at all: both are made.
    DxfDrawing{.entities = lineEntity("", "0")}.save("old.dxf");
    writeFile("none.dxf",
              dxfText("0 SECTION|2 ENTITIES|" + lineEntity("", "0") + "0 ENDSEC|0 EOF|"));
    for (const std::string name : {"old.dxf", "none.dxf"}) {
        const std::string before = call("dump --text " + name).out;
        EXPECT_EQ(call("put --no-backup " + name + " /a/b 1").code, 0);
        EXPECT_EQ(call("dump --text " + name).out, "/a/b\t1\n" + before);
        exchange(name, "11 1.0", "11 1.5");
        EXPECT_NE(call("dump --text " + name).out, "/a/b\t1\n" + before);
    }
    EXPECT_EQ(call("mkdir a.dxf /e").code, 0);
    EXPECT_TRUE(holds(call("dump --text a.dxf").out, "\n/e/\t\n"));
}

}  // namespace
}  // namespace mor::test
