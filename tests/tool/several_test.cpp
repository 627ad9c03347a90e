#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <sys/file.h>
#include <thread>

namespace mor::test {
namespace {

using nlohmann::json;

/// Many drawings at once.
class Several : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        std::filesystem::create_directories(folder() / "all/sub");
        filledDrawing({{"/cfg/x", "1"}}, "all/a.dxf");
        filledDrawing({{"/cfg/y", "2"}}, "all/sub/b.DXF");
        newDrawing("all/c.dxf");
        std::string cut = readFile(file("all/a.dxf"));
        cut.resize(cut.find("OBJECTS") + 40);
        writeFile(file("all/cut.dxf"), cut);
        writeFile(file("all/no.dxf"), "no drawing");
        writeFile(file("all/text.txt"), "no drawing");
        std::filesystem::current_path(folder());
    }
    void TearDown() override {
        std::filesystem::current_path("/");
        ToolTest::TearDown();
    }
};

TEST_F(Several, AreListedWithTheirNamesInFrontAndTheMostSeriousCodeWins) {
    const Outcome listed = call("ls all/a.dxf all/c.dxf all/sub/b.DXF /cfg");
    EXPECT_EQ(listed.out, "all/a.dxf\tx\nall/sub/b.DXF\ty\n");
    EXPECT_EQ(listed.code, 6);  // c has no /cfg
    EXPECT_TRUE(holds(listed.err, "3 drawings: 1 refused\n"));
    const Outcome quiet = call("find -q -r all /*/* --values");
    EXPECT_EQ(quiet.out,
              "all/a.dxf\t/cfg/x\t1\nall/cut.dxf\t/cfg/x\t1\nall/sub/b.DXF\t/cfg/y\t2\n");
    EXPECT_EQ(quiet.code, 3);
    EXPECT_FALSE(holds(quiet.err, "drawings:"));
    EXPECT_EQ(call("cat all/a.dxf /cfg/x").out, "1\n");
    EXPECT_EQ(call("ls -H all/a.dxf").out, "all/a.dxf\tcfg/\n");
    EXPECT_EQ(call("ls -r all --ext txt").code, 3);
    EXPECT_EQ(call("ls -r all --ext none").code, 1);
    EXPECT_EQ(call("info -r all --header -q").out.substr(0, 16), "DRAWING\tRELEASE\t");
}

TEST_F(Several, GiveTheSameWhateverWorksAtOnce) {
    for (const char* line : {"info -r all --header", "find -r all /**/*", "check -r all",
                             "entities -r all", "dump -r all --text", "df -r all --json",
                             "layers -r all --header", "xrefs -r all", "blocks -r all"}) {
        const Outcome one = call(line);
        const Outcome many = call(std::string(line) + " --jobs 3");
        EXPECT_EQ(one.out, many.out) << line;
        EXPECT_EQ(one.err, many.err) << line;
        EXPECT_EQ(one.code, many.code) << line;
        EXPECT_EQ(one.code, 3) << line;
    }
}

TEST_F(Several, SayTheirDrawingAsJson) {
    std::istringstream rows(call("ls --json -r all").out);
    std::string all;
    for (std::string row; std::getline(rows, row);)
        all += json::parse(row)["drawing"].get<std::string>() + " ";
    EXPECT_EQ(all, "all/a.dxf all/c.dxf all/cut.dxf all/sub/b.DXF ");
}

TEST_F(Several, AreSilentWhereTheyAreCleanOnRequest) {
    EXPECT_EQ(call("check all/a.dxf").out, "all/a.dxf: clean; 2 directories\n");
    EXPECT_EQ(call("check -q all/a.dxf all/c.dxf").out, "");
}

// ---- Saving -------------------------------------------------------------------------------------

TEST_F(Several, WaitForOneAnotherWhenTheyAreAskedTo) {
    const std::string drawing = file("all/a.dxf");
    const int held = ::open(drawing.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    const Outcome refused = run({"put", drawing, "/cfg/x", "5", "--wait", "0.2"});
    EXPECT_EQ(refused.code, 5);
    EXPECT_TRUE(holds(refused.err, "another process is saving it; it is unchanged, run again"));
    std::thread release([held] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ::close(held);
    });
    EXPECT_EQ(run({"put", drawing, "/cfg/x", "-", "--wait", "60"}, "6").code, 0);
    release.join();
    EXPECT_EQ(run({"cat", drawing, "/cfg/x"}).out, "6\n");
}

TEST_F(Several, ChangesAreToldWithOldAndNewValues) {
    const Outcome told = call("run all/a.dxf -v -c 'put /cfg/x 5; put /cfg/n/z 1; rm -r /cfg/n'");
    EXPECT_EQ(told.out.substr(0, told.out.find('\n')), "~ /cfg/x\t1\t->\t5");
    const json report = json::parse(call("rm all/a.dxf /cfg/x --json").out);
    EXPECT_EQ(report["changes"], json::parse(R"([{"change":"removed","path":"/cfg/x",
        "before":"5","after":null}])"));
    EXPECT_EQ(report["records"][0]["type"], "INSERT");
    const json moved = json::parse(call("mv all/sub/b.DXF /cfg/y /cfg/k --json --dry-run").out);
    EXPECT_EQ(moved["changes"].size(), 2u);
    EXPECT_EQ(moved["dryRun"], true);
    EXPECT_EQ(call("ls all/sub/b.DXF /cfg").out, "y\n");
}

TEST_F(Several, LoseEveryTraceOfAStoreOnRequest) {
    for (const char* release : {"R12", "R2000", "R2018"}) {
        const std::string name = std::string(release) + ".dxf";
        newDrawing(name, release);
        const std::string fresh = call("entities --all " + name).out +
                                  call("layers --all " + name).out +
                                  call("blocks --all " + name).out;
        EXPECT_EQ(call("put " + name + " /a/b/c 1").code, 0);
        EXPECT_EQ(call("wipe --all --yes " + name).code, 0);
        EXPECT_EQ(call("entities --all " + name).out + call("layers --all " + name).out +
                      call("blocks --all " + name).out,
                  fresh);
        EXPECT_EQ(call("verify " + name).code, 0);
        EXPECT_EQ(call("put " + name + " /a/b/c 2").code, 0);
        EXPECT_EQ(call("check " + name).code, 0);
    }
}

}  // namespace
}  // namespace mor::test
