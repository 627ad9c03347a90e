#include "tests/tool/damaged_store.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace mor::test {
namespace {

class Repair : public DamagedStore {
public:
    using DamagedStore::damage;
    using DamagedStore::handle;
    using DamagedStore::leaveOut;
    using DamagedStore::link;
    using ToolTest::run;

    /// The values of all files, wherever they stand, sorted: none may be lost, none doubled.
    [[nodiscard]] std::string values() const {
        const Outcome dump = run({"dump", drawing()});
        std::vector<std::string> found;
        collect(nlohmann::json::parse(dump.out)["entries"], found);
        std::sort(found.begin(), found.end());
        std::string all;
        for (const std::string& value : found) all += value + " ";
        return all;
    }
    [[nodiscard]] bool checkNames(const std::string& code) const {
        const Outcome check = run({"check", "--json", drawing()});
        const auto report = nlohmann::json::parse(check.out);
        for (const auto& finding : report["findings"])
            if (finding["code"] == code) return true;
        return false;
    }
    void circle() const { damage(link("b", handle("/a/b")), Repair::link("b", handle("/"))); }
    void swapLinks() const {
        const std::string a = handle("/a");
        const std::string c = handle("/c");
        damage(link("a", a), Repair::link("a", "FFF1"));
        damage(link("c", c), Repair::link("c", a));
        damage(link("a", "FFF1"), Repair::link("a", c));
    }

private:
    static void collect(const nlohmann::json& entries, std::vector<std::string>& found) {
        for (const auto& entry : entries) {
            if (entry["kind"] == "file")
                found.push_back(entry["lisp"]);
            else
                collect(entry["entries"], found);
        }
    }
};

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

TEST_F(Repair, MendsEachKindOfDamageWithoutLosingAValue) {
    const struct {
        const char* code;
        int check;
        std::function<void(const Repair&)> damage;
    } cases[] = {
        {"root-link-dead", 4,
         [](const Repair& t) {
             t.damage(link("DWG_FILESYSTEM_ROOT", t.handle("/")),
                      link("DWG_FILESYSTEM_ROOT", "FFF0"));
         }},
        {"root-link-wrong", 4,
         [](const Repair& t) {
             t.damage(link("DWG_FILESYSTEM_ROOT", t.handle("/")),
                      link("DWG_FILESYSTEM_ROOT", "14"));
         }},
        {"block-empty", 4, [](const Repair& t) { t.leaveOut("0 ATTDEF|"); }},
        {"link-dead", 4,
         [](const Repair& t) {
             t.damage(Repair::link("b", t.handle("/a/b")), Repair::link("b", "FFF0"));
         }},
        {"link-wrong", 4,
         [](const Repair& t) {
             t.damage(Repair::link("b", t.handle("/a/b")), Repair::link("b", "14"));
         }},
        {"link-doubled", 4,
         [](const Repair& t) {
             t.damage(Repair::link("b", t.handle("/a/b")), Repair::link("b", t.handle("/c")));
         }},
        {"circle", 4, [](const Repair& t) { t.circle(); }},
        {"info-contradicts", 0, [](const Repair& t) { t.swapLinks(); }},
        {"file-in-root", 4,  // those of a directory that the root link names
         [](const Repair& t) {
             t.damage(link("DWG_FILESYSTEM_ROOT", t.handle("/")),
                      link("DWG_FILESYSTEM_ROOT", t.handle("/a")));
         }},
        {"name-taken-twice", 4,
         [](const Repair& t) { t.damage("1000 g|1071         2", "1000 b|1071         2"); }},
        {"layer-not-locked", 0,
         [](const Repair& t) {
             t.damage("2 MOR_CONTROL_LAYER|70      5", "2 MOR_CONTROL_LAYER|70      0");
         }},
        {"application-unregistered", 4, [](const Repair& t) { t.leaveOut("0 APPID|5 26|"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        TearDown();
        SetUp();
        c.damage(*this);
        const std::string bytes = readFile(drawing());
        EXPECT_TRUE(checkNames(c.code));
        EXPECT_EQ(run({"check", drawing()}).code, c.check);
        EXPECT_EQ(readFile(drawing()), bytes);
        const Outcome repair = run({"repair", drawing()});
        EXPECT_EQ(repair.code, 0) << repair.out << repair.err;
        EXPECT_EQ(readFile(drawing() + ".bak"), bytes);
        const Outcome after = run({"check", "--json", drawing()});
        EXPECT_EQ(nlohmann::json::parse(after.out)["findings"], nlohmann::json::array())
            << after.out;
        EXPECT_EQ(values(), "1 2 3 ");
    }
}

TEST_F(Repair, PutsDirectoriesThatDoNotSayWhereTheyWereIntoLostFound) {
    damage(link("c", handle("/c")), Repair::link("c", "FFF0"));
    damage("1000 $INFO|1000 /c", "1000 $INFO|1000 ?");
    EXPECT_EQ(run({"repair", drawing()}).code, 0);
    EXPECT_EQ(run({"find", drawing(), "/lost-found/*/*", "--values"}).out.substr(0, 16),
              "/lost-found/dir-");
    EXPECT_EQ(values(), "1 2 3 ");
}

TEST_F(Repair, PutsWhatLiesBelowAnUnreadableDirectoryElsewhere) {
    damage("1070      1|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a|",
           "1070      2|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a|");
    const Outcome repair = run({"repair", drawing()});
    EXPECT_EQ(repair.code, 4);
    EXPECT_TRUE(holds(repair.out, "linked /lost-found/dir-"));
    const Outcome check = run({"check", "--json", drawing()});
    const auto findings = nlohmann::json::parse(check.out)["findings"];
    ASSERT_EQ(findings.size(), 1u) << check.out;
    EXPECT_EQ(findings[0]["code"], "attributes-damaged");
}

TEST_F(Repair, GivesFilesInTheRootAPlace) {
    const std::string first = Repair::link("a", handle("/a"));
    damage("1000 $INFO|1000 /|" + first, "1000 $INFO|1000 /|1000 lost|1071         4|" + first);
    EXPECT_EQ(run({"repair", drawing()}).out,
              "made the missing directory /lost-found\nmoved the file /lost to /lost-found/lost\n");
    EXPECT_EQ(run({"check", drawing()}).code, 0);
    EXPECT_EQ(run({"cat", drawing(), "/lost-found/lost"}).out, "4\n");
    EXPECT_EQ(values(), "1 2 3 4 ");
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
        const std::string damaged = withRandomLinks(readFile(drawing()), random);
        writeFile(drawing(), damaged);
        const Outcome repair = run({"repair", drawing(), "--no-backup"});
        EXPECT_EQ(repair.code, 0) << repair.out << repair.err;
        EXPECT_EQ(run({"check", drawing()}).code, 0);
        EXPECT_EQ(values(), before);
    }
}

TEST_F(Repair, KeepsTwoDirectoriesOfOnePathBesideEachOther) {
    damage(link("c", handle("/c")), Repair::link("c", "FFF0"));
    damage("1000 $INFO|1000 /c", "1000 $INFO|1000 /a");
    EXPECT_EQ(run({"repair", drawing()}).code, 0);
    EXPECT_EQ(run({"cat", drawing(), "/a/g", "/a-2/h"}).out, "2\n3\n");
}

TEST_F(Repair, KeepsTheOrderOfEntries) {
    const std::string before = run({"dump", drawing()}).out;
    damage(link("b", handle("/a/b")), link("b", "FFF0"));
    damage(link("a", handle("/a")), link("a", handle("/c")));
    EXPECT_EQ(run({"repair", drawing()}).code, 0);
    EXPECT_EQ(run({"dump", drawing()}).out, before);
}

TEST_F(Repair, LeavesASoundStoreAlone) {
    const std::string bytes = readFile(drawing());
    const Outcome repair = run({"repair", drawing()});
    EXPECT_EQ(repair.code, 0);
    EXPECT_EQ(repair.out, "");
    EXPECT_EQ(readFile(drawing()), bytes);
    EXPECT_EQ(names(), "d.dxf");
}

TEST_F(Repair, OfTheLibraryMayEmptyTheStore) {
    damage(link("DWG_FILESYSTEM_ROOT", handle("/")), Repair::link("DWG_FILESYSTEM_ROOT", "FFF0"));
    EXPECT_EQ(run({"repair", "--library", drawing()}).code, 0);
    EXPECT_EQ(run({"ls", drawing()}).out, "");
}

TEST_F(Repair, ResetsOnlyWhenThatIsMeant) {
    const std::string bytes = readFile(drawing());
    EXPECT_EQ(run({"repair", "--reset", drawing()}).code, 2);
    EXPECT_EQ(run({"wipe", drawing()}).code, 2);
    EXPECT_EQ(readFile(drawing()), bytes);
    EXPECT_EQ(run({"repair", "--reset", "--yes", drawing()}).code, 0);
    expectEmpty();
}

TEST_F(Repair, WipedStoresAreFilledAnew) {
    EXPECT_EQ(run({"wipe", "--yes", drawing()}).code, 0);
    EXPECT_EQ(run({"check", drawing()}).code, 0);
    expectEmpty();
}

}  // namespace
}  // namespace mor::test
