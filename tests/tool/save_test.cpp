#include "dwgfs/dwg_file_system.h"
#include "frame/module.h"
#include "host/faults.h"
#include "host/host.h"
#include "tests/support/dwg_drawing.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace mor::test {
namespace {

namespace fs = std::filesystem;

/// Stores a value in an open drawing and saves it, as the tool does, `meanwhile` before the save.
/// Why that failed; empty when it did not.
std::string failureToSave(const std::string& drawing, const fs::path& output,
                          const std::function<void()>& meanwhile) {
    if (attachModule() != 1) return "not attached";
    AcApDocument* document = host::openDocument(drawing).value();
    host::setCurrentDocument(document);
    host::setActiveDocument(document);
    CMORCadDwgFileSystem* store = CMORCadDwgFileSystem::getTheGlobalObject();
    const bool written = store->write(L"/cfg/x", host::makeString(L"new"));
    meanwhile();
    const auto saved = host::saveDocument(document, {.output = output});
    detachModule();
    host::closeDocument(document);
    return !saved ? saved.error().message() : written ? "" : "not written";
}
bool storeAndSave(const std::string& drawing) {
    return failureToSave(drawing, {}, [] {}).empty();
}

class Saving : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        host::faults::reset();
        m_drawing = filledDrawing({{"/cfg/x", "\"old\""}});
        learn(readFile(m_drawing));
    }
    /// The drawing becomes a DWG that holds the same.
    void useDwg() {
        newDrawing("r2000.dxf", "R2000");
        ASSERT_EQ(call("put @r2000.dxf /cfg/x \"old\"").code, 0);
        learn(DwgDrawing(splitDxf(readFile(file("r2000.dxf")))).build().bytes);
        restore();
    }
    /// The bytes are the drawing from now on.
    void learn(std::string bytes) {
        m_old = std::move(bytes);
        writeFile(file("model"), m_old);
        EXPECT_TRUE(storeAndSave(file("model")));
        m_new = readFile(file("model"));
        EXPECT_NE(m_new, m_old);
        fs::remove(file("model"));
        fs::remove(file("model.bak"));
    }
    void TearDown() override {
        host::faults::reset();
        ToolTest::TearDown();
    }
    /// The exit code of a process of its own that does `work`.
    template <typename Work>
    static int inProcess(Work work) {
        const pid_t child = ::fork();
        if (child == 0) ::_exit(work() ? 0 : 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    [[nodiscard]] const std::string& drawing() const { return m_drawing; }
    [[nodiscard]] const std::string& before() const { return m_old; }
    [[nodiscard]] const std::string& after() const { return m_new; }
    /// Puts everything back for the next round.
    void restore() const {
        for (const auto& entry : fs::directory_iterator(folder())) fs::remove(entry.path());
        writeFile(m_drawing, m_old);
    }
    [[nodiscard]] Outcome put(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"put", m_drawing, "/cfg/x", "\"new\""});
        return run(options);
    }
    [[nodiscard]] Outcome putInjected(const std::string& call, int nth, const std::string& what,
                                      std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"put", m_drawing, "/cfg/x", "\"new\""});
        return runInjected(call, nth, what, options);
    }

private:
    std::string m_drawing;
    std::string m_old;
    std::string m_new;
};

/// The same for drawings in either form: they are saved in one way.
class SavingBothForms : public Saving, public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        Saving::SetUp();
        if (GetParam() == std::string("DWG")) useDwg();
    }
};
INSTANTIATE_TEST_SUITE_P(Forms, SavingBothForms, ::testing::Values("DXF", "DWG"));

TEST_P(SavingBothForms, LeavesTheOldOrTheNewFileWhenTheProcessDiesAtAnyCall) {
    int code = 99;
    std::size_t nth = 0;
    while (code == 99) {
        SCOPED_TRACE("dying before call " + std::to_string(++nth));
        restore();
        code = inProcess([&] {
            host::faults::dieAtSaveCall(nth);
            return storeAndSave(drawing());
        });
        const std::string left = readFile(drawing());
        EXPECT_TRUE(left == before() || left == after());
        EXPECT_TRUE(!fs::exists(drawing() + ".bak") || readFile(drawing() + ".bak") == before());
        EXPECT_TRUE(left == before() || fs::exists(drawing() + ".bak"));
        const Outcome next = call("put D /cfg/y 1");
        EXPECT_EQ(next.code, 0) << next.err;
        EXPECT_EQ(names(), "d.dxf d.dxf.bak");
        EXPECT_EQ(readFile(drawing() + ".bak"), left);
    }
    EXPECT_EQ(code, 0);
    EXPECT_GT(nth, 10u);
}

TEST_P(SavingBothForms, FailsCleanlyWhenAnyCallFails) {
    bool struck = true;
    for (std::size_t nth = 1; struck; ++nth) {
        restore();
        host::faults::reset();
        host::faults::failSaveCall(nth);
        const bool saved = storeAndSave(drawing());
        struck = host::faults::struck();
        SCOPED_TRACE("failing call " + std::to_string(nth) + ", " +
                     (struck ? host::faults::saveCalls()[nth - 1] : "none"));
        EXPECT_TRUE(readFile(drawing()) == (saved ? after() : before()));
        EXPECT_TRUE(struck || saved);
        EXPECT_EQ(names().find("moradmin"), std::string::npos) << names();
        EXPECT_EQ(call("put D /cfg/y 1").code, 0);
    }
}

TEST_F(Saving, KeepsTheOldFileAsBackupUnlessToldNotTo) {
    EXPECT_EQ(put({"--no-backup"}).code, 0);
    EXPECT_EQ(names(), "d.dxf");
    EXPECT_EQ(readFile(drawing()), after());
    for (const char* older : {"", "older"}) {
        restore();
        if (*older != '\0') writeFile(drawing() + ".bak", older);
        EXPECT_EQ(put().code, 0);
        EXPECT_EQ(names(), "d.dxf d.dxf.bak");
        EXPECT_EQ(readFile(drawing()), after());
        EXPECT_EQ(readFile(drawing() + ".bak"), before());
    }
}

TEST_F(Saving, WritesAnotherFileAndLeavesTheDrawingAlone) {
    EXPECT_EQ(put({"-o", file("other.dxf")}).code, 0);
    EXPECT_EQ(names(), "d.dxf other.dxf");
    EXPECT_EQ(readFile(drawing()), before());
    EXPECT_EQ(readFile(file("other.dxf")), after());
    writeFile(file("other.dxf"), "precious");
    EXPECT_EQ(put({"--output", file("other.dxf")}).code, 5);
    EXPECT_EQ(readFile(file("other.dxf")), "precious");
    EXPECT_EQ(put({"--output", file("other.dxf"), "--force"}).code, 0);
    EXPECT_EQ(names(), "d.dxf other.dxf other.dxf.bak");
    EXPECT_EQ(readFile(file("other.dxf.bak")), "precious");
}

TEST_F(Saving, FollowsSymbolicLinks) {
    fs::create_directory(folder() / "sub");
    fs::rename(drawing(), folder() / "sub" / "real.dxf");
    fs::create_symlink("sub/real.dxf", drawing());
    EXPECT_EQ(put().code, 0);
    EXPECT_EQ(names(), "d.dxf sub");
    EXPECT_TRUE(fs::is_symlink(drawing()));
    EXPECT_EQ(readFile(folder() / "sub" / "real.dxf"), after());
    EXPECT_EQ(readFile(folder() / "sub" / "real.dxf.bak"), before());
    fs::create_symlink("later.dxf", file("link.dxf"));  // leads to none yet
    EXPECT_EQ(put({"-o", file("link.dxf")}).code, 0);
    EXPECT_EQ(names(), "d.dxf later.dxf link.dxf sub");
    EXPECT_TRUE(fs::is_symlink(file("link.dxf")));
}

TEST_F(Saving, KeepsTheMode) {
    for (const mode_t mode : {0600U, 0644U, 0660U, 0755U}) {
        ASSERT_EQ(::chmod(drawing().c_str(), mode), 0);
        ASSERT_EQ(run({"put", drawing(), "/cfg/m", std::to_string(mode)}).code, 0);
        struct stat status {};
        ASSERT_EQ(::stat(drawing().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
    }
}

TEST_F(Saving, IsRefusedWhenTheFileChangedSinceItWasLoaded) {
    for (const fs::path& output : {fs::path{}, folder() / "." / "d.dxf"}) {
        const std::string why =
            failureToSave(drawing(), output, [this] { writeFile(drawing(), before() + "\n"); });
        EXPECT_TRUE(holds(why, "changed by another program"));
        EXPECT_EQ(readFile(drawing()), before() + "\n");
        EXPECT_EQ(names(), "d.dxf");
        restore();
    }
}

TEST_F(Saving, ToANewNameIsRefusedWhileAnotherOneIsAtWork) {
    const std::string other = file(".new.dxf.moradmin-0123abcd");
    writeFile(other, "being written");
    const struct {
        std::string locked;
        std::vector<std::string> options;
        const char* left;
    } cases[] = {{drawing(), {"--no-backup"}, ".new.dxf.moradmin-0123abcd d.dxf"},
                 {other, {"-o", file("new.dxf")}, "d.dxf new.dxf"}};
    for (const auto& c : cases) {
        const int descriptor = ::open(c.locked.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(::flock(descriptor, LOCK_EX), 0);
        const Outcome refused = put(c.options);
        EXPECT_EQ(refused.code, 5);
        EXPECT_TRUE(holds(refused.err, "another process"));
        EXPECT_EQ(names(), ".new.dxf.moradmin-0123abcd d.dxf");
        EXPECT_EQ(readFile(drawing()), before());
        ::close(descriptor);
        EXPECT_EQ(put(c.options).code, 0);
        EXPECT_EQ(names(), c.left);
        writeFile(drawing(), before());
    }
}

TEST_F(Saving, IsRefusedWhereOnlyTheOwnerMayReplaceTheFile) {
    const struct {
        mode_t drawing;
        mode_t folder;
        bool mine;
    } cases[] = {{0666, 0555, true}, {0444, 0755, true}, {0666, 01777, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.folder);
        if (!c.mine && ::geteuid() != 0) continue;  // only the superuser can become somebody else
        ASSERT_EQ(::chmod(drawing().c_str(), c.drawing), 0);
        ASSERT_EQ(::chmod(folder().c_str(), c.folder), 0);
        const int code = inProcess([&] {
            // The superuser would be allowed to.
            constexpr uid_t kNobody = 65534;
            return (::geteuid() != 0 || ::setuid(kNobody) == 0) && !storeAndSave(drawing());
        });
        ASSERT_EQ(::chmod(folder().c_str(), 0755), 0);
        EXPECT_EQ(code, 0);
        EXPECT_EQ(readFile(drawing()), before());
        EXPECT_EQ(names(), "d.dxf");
    }
}

TEST_F(Saving, IsRefusedWhenTheOutputCannotBeWritten) {
    EXPECT_EQ(put({"-o", file("nowhere/d.dxf")}).code, 5);
    EXPECT_EQ(put({"-o", folder().string()}).code, 5);
    const Outcome full =
        runProgram({"/bin/sh", "-c", "exec \"$@\" > /dev/full", "sh", MORADMIN_PROGRAM, "run",
                    drawing(), "-c", "put /cfg/x 1; cat /cfg/x"},
                   folder());
    EXPECT_EQ(full.code, 5);
    EXPECT_EQ(names(), "d.dxf");
    EXPECT_EQ(readFile(drawing()), before());
}

TEST_F(Saving, IsRefusedWhenAReadingFails) {
    EXPECT_EQ(call("put D /a/b/c 1 --no-backup").code, 0);
    const std::string old = readFile(drawing());
    int code = -1;
    std::string codes;
    for (int reading = 1; code != 0; ++reading) {
        const Outcome tree = runInjected("pread", reading, "fail", {"tree", drawing()});
        EXPECT_TRUE(tree.code == 3 || tree.out == call("tree D").out) << reading;
        const Outcome outcome =
            runInjected("pread", reading, "fail", {"put", drawing(), "/a/b/new/d", "1"});
        code = outcome.code;
        if (!codes.ends_with(std::to_string(code))) codes += std::to_string(code);
        EXPECT_EQ(readFile(drawing()) == old, code != 0) << reading;
        EXPECT_TRUE(code == 0 || outcome.err.find("reading failed") != std::string::npos)
            << outcome.err;
    }
    EXPECT_EQ(codes, "350");
}

TEST_F(Saving, IsRefusedWhenTheFileChangesMeanwhile) {
    for (const std::string call : {"fsync", "renameat2"})
        for (const std::string what : {"append", "replace"})
            for (const bool backup : {true, false}) {
                SCOPED_TRACE(call + " " + what + (backup ? "" : " without backup"));
                restore();
                writeFile(drawing() + ".bak", "older");
                std::vector<std::string> options;
                if (!backup) options.emplace_back("--no-backup");
                const Outcome outcome = putInjected(call, 1, what + ":" + drawing(), options);
                EXPECT_EQ(outcome.code, 5);
                EXPECT_TRUE(holds(outcome.err, "was changed by another program"));
                EXPECT_EQ(readFile(drawing()),
                          what == "append" ? before() + "appended\n" : "replaced\n");
                EXPECT_EQ(fs::hard_link_count(drawing()), 1u);
                EXPECT_EQ(names().find("moradmin"), std::string::npos) << names();
                // Seen before the names change, it costs nothing; else the older backup at most.
                const bool early = call == "fsync" || !backup;
                EXPECT_EQ(readFile(drawing() + ".bak"), early              ? "older"
                                                        : what == "append" ? ""
                                                                           : before());
            }
}

TEST_F(Saving, WorksWhereNamesCannotBeExchanged) {
    EXPECT_EQ(putInjected("renameat2", 0, "fail").code, 0);
    EXPECT_EQ(readFile(drawing()), after());
    EXPECT_EQ(readFile(drawing() + ".bak"), before());
    for (const int code : {0, 5})
        EXPECT_EQ(runInjected("renameat2", 0, "fail", {"new", file("e.dxf")}).code, code);
    EXPECT_EQ(names(), "d.dxf d.dxf.bak e.dxf");
}

TEST_F(Saving, IsDoneWhenOnlyTheFolderCannotBeFlushed) {
    const Outcome outcome = putInjected("fsync", 2, "fail");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(holds(outcome.err, "saved, but its folder could not be flushed"));
    EXPECT_EQ(readFile(drawing()), after());
}

TEST_F(Saving, LeavesNothingBehindWhenASignalEndsIt) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const std::string what = "signal:" + std::to_string(signal);
        restore();
        EXPECT_EQ(putInjected("fsync", 1, what).code, 128 + signal);
        EXPECT_EQ(readFile(drawing()), before());
        EXPECT_EQ(names(), "d.dxf");
        // The names have changed already: too late.
        EXPECT_EQ(putInjected("renameat2", 1, what).code, 0);
        EXPECT_EQ(readFile(drawing()), after());
        EXPECT_EQ(names(), "d.dxf d.dxf.bak");
    }
}

TEST_F(Saving, TakesAwayWhatOthersHaveLeft) {
    writeFile(file(".d.dxf.moradmin-0123abcd"), "left");
    fs::create_hard_link(drawing(), file(".d.dxf.moradmin-4567abcd"));
    EXPECT_EQ(put({"--no-backup"}).code, 0);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Saving, ToANewNameTakesItFromNobody) {
    const std::string name = file("new.dxf");
    const Outcome refused = putInjected("renameat2", 1, "replace:" + name, {"-o", name});
    EXPECT_EQ(refused.code, 5);
    EXPECT_TRUE(holds(refused.err, "made by another program"));
    EXPECT_EQ(readFile(name), "replaced\n");
    EXPECT_EQ(names(), "d.dxf new.dxf");
}

TEST_F(Saving, ToOneNewNameAtOnceIsDoneByOneAlone) {
    const std::string whole = readFile(newDrawing("model.dxf"));
    const std::string name = file("new.dxf");
    for (int round = 0; round < 20; ++round) {
        std::vector<pid_t> running;
        for (int i = 0; i < 3; ++i) {
            running.push_back(::fork());
            if (running.back() != 0) continue;
            static_cast<void>(std::freopen("/dev/null", "w", stderr));
            ::execl(MORADMIN_PROGRAM, MORADMIN_PROGRAM, "new", name.c_str(), nullptr);
            ::_exit(127);
        }
        std::vector<int> codes;
        for (const pid_t process : running) {
            int status = 0;
            ::waitpid(process, &status, 0);
            codes.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
        }
        std::ranges::sort(codes);
        EXPECT_EQ(codes, (std::vector<int>{0, 5, 5}));
        EXPECT_TRUE(readFile(name) == whole);
        fs::remove(name);
    }
    EXPECT_EQ(names(), "d.dxf model.dxf");
}

TEST_F(Saving, OfNothingWritesNothing) {
    struct stat first {};
    struct stat second {};
    ASSERT_EQ(::stat(drawing().c_str(), &first), 0);
    EXPECT_EQ(run({"put", drawing(), "/cfg/x", "\"old\""}).code, 0);
    ASSERT_EQ(::stat(drawing().c_str(), &second), 0);
    EXPECT_EQ(first.st_ino, second.st_ino);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Saving, IsOnlyDescribedInADryRun) {
    const std::string told = put({"--dry-run"}).out;
    EXPECT_TRUE(told.starts_with("~ /cfg/x\t") || told.starts_with("+ /cfg/")) << told;
    EXPECT_TRUE(told.ends_with("\nchanged\tINSERT\t27\t/cfg\n")) << told;
    EXPECT_EQ(readFile(drawing()), before());
    EXPECT_EQ(names(), "d.dxf");
    const std::string fresh = newDrawing("fresh.dxf");
    const std::string bytes = readFile(fresh);
    EXPECT_EQ(run({"put", fresh, "/a/b", "1", "--dry-run"}).out,
              "+ /a/\n+ /a/b\t1\nchanged\tHEADER\t-\t$HANDSEED\n"
              "changed\tTABLE\t1\tLAYER\nmade\tLAYER\t20\tMOR_CONTROL_LAYER\n"
              "changed\tTABLE\t3\tAPPID\nmade\tAPPID\t26\tMOR_ATTRIBUTES\n"
              "changed\tTABLE\t9\tBLOCK_RECORD\nmade\tBLOCK_RECORD\t21\tMOR_DWGFILES\n"
              "made\tBLOCK\t22\tMOR_DWGFILES\nmade\tATTDEF\t23\t\n"
              "made\tINSERT\t25\t/\nmade\tINSERT\t27\t/a\n");
    EXPECT_EQ(readFile(fresh), bytes);
}

}  // namespace
}  // namespace mor::test
