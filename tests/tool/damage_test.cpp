#include "tests/support/dxf_records.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace mor::test {
namespace {

using nlohmann::json;

/// A store of /a/b/f = 1, /a/g = 2 and /c/h = 3 that is damaged in its file.
class DamagedStore : public ToolTest {
public:
    void SetUp() override {
        ToolTest::SetUp();
        m_drawing = filledDrawing({{"/a/b/f", "1"}, {"/a/g", "2"}, {"/c/h", "3"}});
        m_sound = readFile(m_drawing);
    }
    [[nodiscard]] const std::string& drawing() const { return m_drawing; }
    void restore() const {
        for (const auto& entry : std::filesystem::directory_iterator(folder()))
            std::filesystem::remove(entry.path());
        writeFile(m_drawing, m_sound);
    }
    /// The handle of the directory of that path.
    [[nodiscard]] std::string handle(const std::string& path) const {
        for (const DxfRecord& record : splitDxf(readFile(m_drawing)).records)
            if (record.text().find("|1000 $INFO|1000 " + path + "|") != std::string::npos)
                return *record.first(5);
        throw std::runtime_error("no directory " + path);
    }
    /// The link as its groups stand in the file.
    [[nodiscard]] static std::string link(const std::string& name, const std::string& target) {
        return "1000 \\U+005E" + name + "|1000 " + target;
    }
    [[nodiscard]] std::string rootLink() const { return link("DWG_FILESYSTEM_ROOT", handle("/")); }
    void damage(const std::string& old, const std::string& fresh) const {
        exchange(m_drawing, old, fresh);
    }
    /// Lets the link `name` to the directory `path` name something else.
    void relink(const std::string& name, const std::string& path, const std::string& target) const {
        damage(link(name, handle(path)), link(name, target));
    }
    /// Leaves out the records that hold `part`, or stand in that block.
    void leaveOut(const std::string& part, const std::string& block = "-") const {
        std::string bytes;
        for (const DxfRecord& record : splitDxf(readFile(m_drawing)).records)
            if (record.text().find(part) == std::string::npos && record.container != block)
                bytes += record.bytes;
        writeFile(m_drawing, bytes);
    }
    void leaveOutRootLink() const {
        damage("1001 MOR_ATTRIBUTES|1070 1|" + rootLink() + "|0 ENDBLK", "0 ENDBLK");
    }
    /// A file of the root, before its directories.
    void putFileIntoRoot() const {
        const std::string first = link("a", handle("/a"));
        damage("1000 $INFO|1000 /|" + first, "1000 $INFO|1000 /|1000 lost|1071 4|" + first);
    }
    /// The codes of what `check` finds.
    [[nodiscard]] std::string findings() const {
        std::string all;
        const json report = json::parse(call("check D --json").out);
        for (const auto& finding : report["findings"])
            all += finding["code"].get<std::string>() + " ";
        return all;
    }
    /// The values of all files, wherever they stand, sorted: none may be lost, none doubled.
    [[nodiscard]] std::string values() const {
        std::vector<std::string> found;
        collect(json::parse(call("dump D").out)["entries"], found);
        std::sort(found.begin(), found.end());
        std::string all;
        for (const std::string& value : found) all += value + " ";
        return all;
    }
    /// Every command is refused with the finding's code, and changes nothing.
    void expectRefusal(const std::string& code) const {
        const std::string bytes = readFile(m_drawing);
        for (const char* line : {"cat D /a/g", "ls D", "ls D /a", "find D /*/*", "df D",
                                 "put D /a/g 9", "put D /n/n 9", "rm D /a/g"}) {
            const Outcome outcome = call(line);
            EXPECT_EQ(outcome.code, 4) << line;
            EXPECT_EQ(outcome.out, "") << line;
            EXPECT_TRUE(holds(outcome.err, "(" + code + ")"));
            EXPECT_TRUE(holds(outcome.err, "moradmin repair"));
        }
        const Outcome info = call("info D --json");
        EXPECT_EQ(info.code, 0);
        EXPECT_EQ(json::parse(info.out)["store"]["state"], "damaged");
        EXPECT_EQ(readFile(m_drawing), bytes);
        EXPECT_EQ(names(), "d.dxf");
    }
    /// It reads as empty, and the next value fills it anew.
    void expectEmpty() const {
        EXPECT_EQ(call("ls D").out, "");
        EXPECT_EQ(call("ls D").code, 0);
        EXPECT_EQ(call("cat D /a/g").code, 6);
        EXPECT_EQ(call("find D /*/*").code, 1);
        EXPECT_EQ(call("put D /n/n 9").code, 0);
        EXPECT_EQ(call("ls D -R").out + call("cat D /n/n").out, "/n/\n/n/n\n9\n");
    }

private:
    static void collect(const json& entries, std::vector<std::string>& found) {
        for (const auto& entry : entries) {
            if (entry["kind"] == "file")
                found.push_back(entry["lisp"]);
            else
                collect(entry["entries"], found);
        }
    }
    std::string m_drawing;
    std::string m_sound;
};

using Repair = DamagedStore;

/// What commands and `check` say of a damage.
enum class State {
    Refused,  ///< by every command, until it is repaired
    Found,    ///< an error to `check`; commands go on
    Noted     ///< by `check`
};

struct Damage {
    const char* code;
    State state;
    std::function<void(const DamagedStore&)> make;
};

void swapLinks(const DamagedStore& t) {
    const std::string a = t.handle("/a");
    const std::string c = t.handle("/c");
    t.relink("a", "/a", "FFF1");
    t.relink("c", "/c", a);
    t.damage(t.link("a", "FFF1"), t.link("a", c));
}

void linkToLine(const DamagedStore& t) {
    t.damage("0 ENDSEC|0 SECTION|2 OBJECTS",
             "0 LINE|5 FFF0|330 18|100 AcDbEntity|8 0|100 AcDbLine|10 0.0|20 0.0|30 0.0|11 1.0|"
             "21 0.0|31 0.0|0 ENDSEC|0 SECTION|2 OBJECTS");
    t.relink("b", "/a/b", "FFF0");
}

const Damage kDamages[] = {
    {"root-link-dead", State::Refused,
     [](const auto& t) { t.relink("DWG_FILESYSTEM_ROOT", "/", "FFF0"); }},
    {"root-link-absent", State::Refused, [](const auto& t) { t.leaveOutRootLink(); }},
    {"root-link-wrong", State::Refused,
     [](const auto& t) { t.relink("DWG_FILESYSTEM_ROOT", "/", "14"); }},
    // A look-up takes a number for the text of a handle: that of the layer.
    {"root-link-wrong", State::Refused,
     [](const auto& t) { t.damage(t.rootLink(), "1000 \\U+005EDWG_FILESYSTEM_ROOT|1071 14"); }},
    {"block-empty", State::Refused, [](const auto& t) { t.leaveOut("0 ATTDEF|"); }},
    {"block-missing", State::Refused, [](const auto& t) { t.leaveOut("0 -", "MOR_DWGFILES"); }},
    {"link-dead", State::Refused, [](const auto& t) { t.relink("b", "/a/b", "FFF0"); }},
    {"link-wrong", State::Refused, [](const auto& t) { t.relink("b", "/a/b", "14"); }},
    {"link-wrong", State::Refused, linkToLine},
    {"link-wrong", State::Refused,
     [](const auto& t) { t.damage(t.link("b", t.handle("/a/b")), "1000 \\U+005Eb|1071 14"); }},
    {"orphan", State::Refused,
     [](const auto& t) { t.damage(t.link("b", t.handle("/a/b")) + "|1000 g", "1000 g"); }},
    {"link-doubled", State::Found, [](const auto& t) { t.relink("b", "/a/b", t.handle("/c")); }},
    {"circle", State::Found, [](const auto& t) { t.relink("b", "/a/b", t.handle("/")); }},
    {"info-contradicts", State::Noted, swapLinks},
    {"file-in-root", State::Refused,  // those of a directory that the root link names
     [](const auto& t) { t.relink("DWG_FILESYSTEM_ROOT", "/", t.handle("/a")); }},
    {"name-taken-twice", State::Refused,
     [](const auto& t) { t.damage("1000 g|1071 2", "1000 b|1071 2"); }},
    {"layer-not-locked", State::Noted,
     [](const auto& t) { t.damage("2 MOR_CONTROL_LAYER|70 5", "2 MOR_CONTROL_LAYER|70 0"); }},
    {"application-unregistered", State::Found, [](const auto& t) { t.leaveOut("0 APPID|5 26|"); }},
};

TEST_F(DamagedStore, IsLeftAloneByCommandsAndMendedWithoutLosingAValue) {
    for (const Damage& row : kDamages) {
        SCOPED_TRACE("row " + std::to_string(&row - kDamages) + " " + row.code);
        restore();
        row.make(*this);
        const std::string bytes = readFile(drawing());
        EXPECT_TRUE(holds(findings(), row.code));
        EXPECT_EQ(call("check D").code, row.state == State::Noted ? 0 : 4);
        EXPECT_EQ(readFile(drawing()), bytes);
        if (row.state == State::Refused) expectRefusal(row.code);
        const Outcome repair = call("repair D");
        EXPECT_EQ(repair.code, 0) << repair.out << repair.err;
        EXPECT_EQ(readFile(drawing() + ".bak"), bytes);
        EXPECT_EQ(findings(), "");
        EXPECT_EQ(values(), "1 2 3 ");
    }
}

TEST_F(DamagedStore, WithAttributesThatCannotBeReadIsLeftAlone) {
    const std::string a = "|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a|";
    damage("1000 h|1071 3", "1000 h|1002 {|1071 3");  // breaks off
    expectRefusal("attributes-damaged");
    restore();
    damage("1070 1" + a, "1070 2" + a);  // an unknown layout version
    expectRefusal("attributes-damaged");
    const Outcome repair = call("repair D");  // what lies below is put elsewhere
    EXPECT_EQ(repair.code, 4);
    EXPECT_TRUE(holds(repair.out, "linked /lost-found/dir-"));
    EXPECT_EQ(findings(), "attributes-damaged ");
}

TEST_F(DamagedStore, WhoseFilesLieDeeperThanAPathCanNameIsLeftAlone) {
    std::string levels;
    for (int level = 0; level < 300; ++level) levels += "/n";
    const std::string script = "put /x" + levels + "/f 5\nput /y" + levels + "/g 6\n";
    ASSERT_EQ(run({"run", drawing(), "-", "--no-backup"}, script).code, 0);
    const std::string second = link("y", handle("/y"));
    damage(second + "|0 INSERT", "0 INSERT");
    damage("1000 f|1071 5", second);
    expectRefusal("too-deep");
    EXPECT_EQ(call("repair D --no-backup").code, 0);
    EXPECT_EQ(call("check D").code, 0);
    EXPECT_EQ(json::parse(call("info D --json").out)["store"]["files"], 4);
}

TEST_F(DamagedStore, WithACircleIsShownUpToTheDirectoryThatHoldsItself) {
    damage("1000 h|1071 3", link("h", handle("/")));
    EXPECT_EQ(call("ls D -R").out, "/a/\n/a/b/\n/a/b/f\n/a/g\n/c/\n/c/h/\n");
    EXPECT_EQ(
        call("tree D /c").out,
        "/c\n└── h/\n    ├── a/\n    │   ├── b/\n    │   │   └── f\n    │   └── g\n    └── c/\n");
    const auto dump = json::parse(call("dump D").out);
    EXPECT_EQ(dump["entries"][1]["entries"][0]["entries"], json::array());
    EXPECT_EQ(call("cat D /c/h/a/g").out, "2\n");
    EXPECT_EQ(call("find D /*/*/*/*").out, "/c/h/a/g\n");
    EXPECT_EQ(call("put D /a/g 9").code, 0);
    EXPECT_EQ(call("cat D /c/h/a/g").out, "9\n");
    const Outcome root = call("put D /c/h/new 9");
    EXPECT_EQ(root.code, 6);
    EXPECT_TRUE(holds(root.err, "files lie in directories"));
    EXPECT_EQ(call("cp D /c /d").code, 0);
    EXPECT_EQ(call("ls D -R /d").out, "/d/h/\n/d/h/a/\n/d/h/a/b/\n/d/h/a/b/f\n/d/h/a/g\n/d/h/c/\n");
}

TEST_F(DamagedStore, WithADirectoryLinkedTwiceShowsWhatItHoldsOnce) {
    damage("1000 h|1071 3", link("h", handle("/a")));
    const std::string bytes = readFile(drawing());
    const Outcome list = call("ls D -R");
    EXPECT_EQ(list.out, "/a/\n/a/b/\n/a/b/f\n/a/g\n/c/\n/c/h/\n");
    EXPECT_TRUE(holds(list.err, "/c/h is /a, linked twice"));
    EXPECT_EQ(call("tree D").out,
              "/\n├── a/\n│   ├── b/\n│   │   └── f\n│   └── g\n└── c/\n    └── h/\n");
    // What /c/h reaches would be gone with /a.
    expectCode(4, "dump D; diff D D; cp D / /copy; rm -r D /a; mv D /a /z; rm -r D /c",
               "(link-doubled)");
    EXPECT_EQ(run({"run", drawing(), "-c", "put /b/x 1; rm /b/x; rm -r /a"}).code, 4);
    EXPECT_EQ(readFile(drawing()), bytes);
    EXPECT_EQ(call("cat D /c/h/g").out, "2\n");
    EXPECT_EQ(call("rm D /c/h/g").code, 0);
    EXPECT_EQ(call("cat D /a/g").code, 6);
}

TEST_F(DamagedStore, ThatWasEmptiedReadsAsEmptyAndIsFilledAnew) {
    leaveOut("|1000 $ID|1000 MOR_DWGFILES_DIR|");
    expectEmpty();
    restore();
    leaveOutRootLink();
    leaveOut("|1000 $ID|1000 MOR_DWGFILES_DIR|");
    expectEmpty();
}

TEST_F(DamagedStore, InPaperSpaceOrOnAnOpenLayerWorksAndIsMovedBackAndLocked) {
    const std::string insert = "5 " + handle("/a") + "|330 18|100 AcDbEntity|";
    damage(insert + "8 MOR_CONTROL_LAYER", insert + "67 1|8 MOR_CONTROL_LAYER");
    damage("2 MOR_CONTROL_LAYER|70 5", "2 MOR_CONTROL_LAYER|70 0");
    EXPECT_EQ(call("cat D /a/g").out, "2\n");
    EXPECT_EQ(call("put D /a/g 9").code, 0);
    EXPECT_EQ(call("ls D -R").out, "/a/\n/a/b/\n/a/b/f\n/a/g\n/c/\n/c/h\n");
    EXPECT_EQ(values(), "1 3 9 ");
    const DxfFile file = splitDxf(readFile(drawing()));
    EXPECT_EQ(file.named("LAYER", "MOR_CONTROL_LAYER")->first(70), "5");
    for (const DxfRecord& record : file.records) EXPECT_NE(record.first(67), "1");
}

TEST_F(DamagedStore, OfADrawingThatBreaksOffIsShownAsFarAsItGoes) {
    const std::string whole = readFile(drawing());
    const struct {
        std::string cut;  // the file ends before this; the record in front of it may be part of one
        const char* list;
        const char* cat;
        const char* said;
    } cases[] = {{"0 ENDSEC|0 SECTION|2 OBJECTS", "/a/\n/a/b/\n/a/b/f\n/a/g\n", "2\n",
                  "/c: the link names the handle 29, which does not exist (link-dead)"},
                 {"0 INSERT|5 " + handle("/c"), "/a/\n/a/g\n", "2\n", "/a/b: the link names"},
                 {"0 INSERT|5 " + handle("/a"), "", "", "the file ends inside the section"}};
    for (const auto& c : cases) {
        const std::string text = dxfText(c.cut);
        std::string bytes;
        for (const DxfRecord& record : splitDxf(whole).records) bytes += dxfText(record.text());
        writeFile(drawing(), bytes.substr(0, bytes.find(text)));
        EXPECT_EQ(call("ls D -R").out, c.list);
        EXPECT_EQ(call("cat D /a/g").out, c.cat);
        for (const char* line : {"ls D", "cat D /a/g", "dump D", "find D /*/*", "tree D", "df D"}) {
            const Outcome shown = call(line);
            EXPECT_EQ(shown.code, 4) << line;
            EXPECT_TRUE(holds(shown.err, c.said));
        }
    }
}

// ---- repair -------------------------------------------------------------------------------------

TEST_F(Repair, PutsDirectoriesThatDoNotSayWhereTheyWereIntoLostFound) {
    relink("c", "/c", "FFF0");
    damage("1000 $INFO|1000 /c", "1000 $INFO|1000 ?");
    EXPECT_EQ(call("repair D").code, 0);
    EXPECT_TRUE(call("find D /lost-found/*/* --values").out.starts_with("/lost-found/dir-"));
    EXPECT_EQ(values(), "1 2 3 ");
}

TEST_F(Repair, GivesFilesInTheRootAPlace) {
    putFileIntoRoot();
    expectRefusal("file-in-root");
    EXPECT_EQ(call("repair D").out,
              "made the missing directory /lost-found\nmoved the file /lost to /lost-found/lost\n");
    EXPECT_EQ(call("check D").code, 0);
    EXPECT_EQ(call("cat D /lost-found/lost").out, "4\n");
    EXPECT_EQ(values(), "1 2 3 4 ");
}

/// The file with one to three links, the root's among them, that name something else: another
/// directory, a layer, or nothing.
std::string withRandomLinks(const std::string& bytes, std::mt19937& random) {
    std::vector<std::string> lines;
    std::istringstream text(bytes);
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    std::vector<std::size_t> targets;
    for (std::size_t i = 0; i + 2 < lines.size(); ++i)
        if (lines[i].starts_with("\\U+005E")) targets.push_back(i + 2);
    for (auto changes = 1 + random() % 3; changes > 0; --changes) {
        const std::size_t at = targets[random() % targets.size()];
        const std::string others[] = {lines[targets[random() % targets.size()]], "14", "FFF0"};
        lines[at] = others[random() % 3];
    }
    std::string result;
    for (const std::string& line : lines) result += line + "\n";
    return result;
}

TEST_F(Repair, LosesNoValueWhateverTheLinksName) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::filesystem::remove(drawing());
        newDrawing();
        std::string script;
        for (int i = 10; i < 22; ++i) {
            script += "put ";
            for (unsigned depth = 0; depth <= random() % 3; ++depth)
                script += std::string("/") + static_cast<char>('x' + random() % 3);
            script += "/f" + std::to_string(i) + " " + std::to_string(i) + "\n";
        }
        ASSERT_EQ(run({"run", drawing(), "-", "--no-backup"}, script).code, 0);
        const std::string before = values();
        writeFile(drawing(), withRandomLinks(readFile(drawing()), random));
        const Outcome repair = call("repair D --no-backup");
        EXPECT_EQ(repair.code, 0) << repair.out << repair.err;
        EXPECT_EQ(call("check D").code, 0);
        EXPECT_EQ(values(), before);
    }
}

TEST_F(Repair, KeepsTwoDirectoriesOfOnePathBesideEachOther) {
    relink("c", "/c", "FFF0");
    damage("1000 $INFO|1000 /c", "1000 $INFO|1000 /a");
    EXPECT_EQ(call("repair D").code, 0);
    EXPECT_EQ(call("cat D /a/g /a-2/h").out, "2\n3\n");
}

TEST_F(Repair, KeepsTheOrderOfEntriesAndLeavesASoundStoreAlone) {
    const std::string before = call("dump D").out;
    const std::string bytes = readFile(drawing());
    EXPECT_EQ(call("repair D").code, 0);
    EXPECT_EQ(call("repair D").out, "");
    EXPECT_EQ(readFile(drawing()), bytes);
    EXPECT_EQ(names(), "d.dxf");
    relink("b", "/a/b", "FFF0");
    relink("a", "/a", handle("/c"));
    EXPECT_EQ(call("repair D").code, 0);
    EXPECT_EQ(call("dump D").out, before);
}

TEST_F(Repair, MayEmptyTheStoreOnlyWhenThatIsMeant) {
    const std::string bytes = readFile(drawing());
    for (const std::string& line : {std::string("repair --reset D"), std::string("wipe D")}) {
        EXPECT_EQ(call(line).code, 2);
        EXPECT_EQ(readFile(drawing()), bytes);
        EXPECT_EQ(call(line + " --yes").code, 0);
        EXPECT_EQ(call("check D").code, 0);
        expectEmpty();
        restore();
    }
    relink("DWG_FILESYSTEM_ROOT", "/", "FFF0");
    EXPECT_EQ(call("repair D --library").code, 0);
    EXPECT_EQ(call("ls D").out, "");
}

}  // namespace
}  // namespace mor::test
