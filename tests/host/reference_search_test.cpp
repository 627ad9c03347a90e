#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"
#include "tests/support/dxf_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace mor::test {
namespace {

namespace fs = std::filesystem;

/// A drawing in the folder "home" that refers to one file, and files elsewhere that it may mean.
/// Each is told by its line's handle.
class ReferenceSearch : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        fs::create_directories(file("home"));
    }
    void TearDown() override {
        host::setReferenceFolders({});
        host::setReferenceMappings({});
        host::setReferenceRoot({});
        HostTest::TearDown();
    }
    void put(const std::string& name, const std::string& handle) {
        putDrawing(name, {.entities = lineEntity(handle, "0")});
    }
    void putDrawing(const std::string& name, const DxfDrawing& drawing) {
        putBytes(name, drawing.bytes());
    }
    /// `found` for each of the paths.
    void expectFound(const std::vector<std::string>& saved, const std::string& handle) {
        for (const std::string& path : saved) EXPECT_EQ(found(path), handle) << path;
    }
    void putBytes(const std::string& name, std::string_view bytes) {
        fs::create_directories(file(name).parent_path());
        writeFile(file(name), bytes);
    }
    /// Opens a drawing that saves this path for PLAN.
    AcApDocument* refer(const std::string& saved, const std::string& name = "home/site.dxf") {
        close();
        putDrawing(name, {.blocks = referenceDefinition("PLAN", saved),
                          .entities = insertEntity("10", "0", "PLAN")});
        auto opened = host::openDocument(file(name));
        EXPECT_TRUE(opened) << opened.error().message();
        return use(opened.value());
    }
    /// The handle of the line in the file that a saved path leads to, "not found" or "unresolved".
    std::string found(const std::string& saved, const std::string& name = "home/site.dxf") {
        AcApDocument* document = refer(saved, name);
        const auto info = host::findReference(document, L"PLAN");
        if (info->status == host::ReferenceStatus::NotFound) return "not found";
        const ResbufList block{acdbTblSearch(L"BLOCK", L"PLAN", 0)};
        const resbuf* first = findGroup(block, -2);
        if (!info->loaded || first == nullptr) return "unresolved";
        return host::handleText(
            host::recordInfo(document, EntityName(first->resval.rlname))->handle);
    }
};

TEST_F(ReferenceSearch, FindsSavedPathsWithEitherSlashThenTheBareName) {
    put("home/sub/plan.dxf", "A1");
    put("other/plan.dxf", "A2");
    expectFound({"sub/plan.dxf", "sub\\plan.dxf", ".\\sub\\plan.dxf"}, "A1");
    expectFound({"..\\other\\plan.dxf", file("other/plan.dxf").string()}, "A2");
    expectFound({"C:\\proj\\sub\\no.dxf", "\\\\server\\share\\plan.dxf", ""}, "not found");
    put("home/plan.dxf", "A3");
    expectFound({"gone/plan.dxf", "C:\\proj\\plan.dxf", "D:plan.dxf", "\\\\server\\share\\plan.dxf",
                 "/nowhere/plan.dxf"},
                "A3");
    fs::create_directory(file("home/folder.dxf"));
    EXPECT_EQ(found("folder.dxf"), "not found");
}

TEST_F(ReferenceSearch, TakesTheLongestEndOfASavedPathThatIsThere) {
    put("home/plans/arch/plan.dxf", "A1");
    put("home/arch/plan.dxf", "A2");
    put("home/plan.dxf", "A3");
    expectFound({"C:\\Projects\\Job 42\\plans\\arch\\plan.dwg", "/srv/plans/arch/plan.dxf"}, "A1");
    expectFound({"C:\\other\\arch\\plan.dwg", "\\\\server\\share\\arch\\plan.dxf"}, "A2");
    expectFound({"C:\\plans\\..\\plan.dwg", "gone\\..\\plan.dxf"}, "A3");  // ".." is no end
}

TEST_F(ReferenceSearch, LooksIntoExtraFoldersInTheirOrder) {
    put("first/plan.dxf", "A1");
    put("second/sub/plan.dxf", "A2");
    host::setReferenceFolders({file("second"), file("first")});
    EXPECT_EQ(found("sub/plan.dxf"), "A2");
    EXPECT_EQ(found("C:/sub/plan.dxf"), "A2");
    EXPECT_EQ(found("C:/other/plan.dxf"), "A1");
    put("home/plan.dxf", "A3");
    EXPECT_EQ(found("sub/plan.dxf"), "A3");
}

TEST_F(ReferenceSearch, PutsPlacesOfThisMachineForBeginningsOfPaths) {
    put("here/x/plan.dxf", "A1");
    host::setReferenceMappings({{"C:\\proj", file("here").string()},
                                {"\\\\server\\share\\", file("here/x").string() + "/"},
                                {"Z:", "/"}});
    EXPECT_EQ(found("c:/PROJ/x/plan.dxf"), "A1");
    EXPECT_EQ(found("C:\\project\\x\\plan.dxf"), "not found");  // the beginning ends at a slash
    EXPECT_EQ(found("\\\\Server\\share\\plan.dxf"), "A1");
    std::string below = "Z:" + file("here/x/plan.dxf").string();
    EXPECT_EQ(found(below), "A1");
    std::ranges::replace(below, '/', '\\');
    EXPECT_EQ(found(below), "A1");
}

TEST_F(ReferenceSearch, TakesTheTwinOfADrawingInAFormThatIsNotRead) {
    putBytes("home/plan.dwg", "AC1009 and so on");
    EXPECT_EQ(found("plan.dwg"), "unresolved");
    put("home/Plan.DXF", "A1");  // another case comes last, but before giving up
    EXPECT_EQ(found("plan.dwg"), "A1");
    put("home/plan.DXF", "A2");
    EXPECT_EQ(found("plan.dwg"), "A2");
    put("home/plan.dxf", "A3");
    EXPECT_EQ(found("plan.DWG"), "A3");
    EXPECT_EQ(found("C:\\proj\\plan.dwg"), "A3");
    // One that is damaged is the one that is meant.
    put("extra/plan.dxf", "A4");
    host::setReferenceFolders({file("extra")});
    putBytes("home/plan.dxf", dxfText("0 SECTION|2 ENTITIES|0 LINE|5 A5|"));
    EXPECT_EQ(found("plan.dxf"), "unresolved");
}

TEST_F(ReferenceSearch, LooksWithoutCaseIntoEveryFolderOfThatName) {
    put("home/SUB/other.dxf", "A1");
    put("home/Sub/Plan.dxf", "A2");
    put("home/sub/nothing.dxf", "A3");
    EXPECT_EQ(found("SUB/PLAN.DXF"), "A2");
    EXPECT_EQ(found("..\\HOME\\sub\\plan.dxf"), "A2");
    EXPECT_EQ(found("sub/plans.dxf"), "not found");
}

TEST_F(ReferenceSearch, GoesUpFromWhereALinkLeads) {
    put("data/site/any.dxf", "A1");
    put("data/xref/plan.dxf", "A2");
    put("xref/plan.dxf", "A3");
    fs::create_directory_symlink(file("data/site"), file("site"));
    EXPECT_EQ(found("..\\xref\\plan.dxf", "site/site.dxf"), "A2");
    fs::remove(file("xref/plan.dxf"));
    EXPECT_EQ(found("..\\xref\\plan.dxf", "site/site.dxf"), "A2");
}

TEST_F(ReferenceSearch, StaysBelowTheFolderThatItIsConfinedTo) {
    put("home/sub/plan.dxf", "A1");
    put("homes/plan.dxf", "A2");
    put("secret/plan.dxf", "A3");
    putBytes("secret/text.txt", "the password\n");
    fs::create_directory_symlink(file("secret"), file("home/out"));
    fs::create_symlink(file("home/sub/plan.dxf"), file("home/in.dxf"));
    fs::create_symlink(file("secret/plan.dxf"), file("home/sub/other.dxf"));
    fs::create_directory_symlink(file("home"), file("root"));
    EXPECT_EQ(found("../secret/plan.dxf"), "A3");
    host::setReferenceRoot(file("root"));
    host::setReferenceFolders({file("secret"), file("home/sub")});
    host::setReferenceMappings({{"Z:", file("secret").string()}});
    expectFound(
        {"sub/plan.dxf", "in.dxf", "../HOME/sub/plan.dxf", file("root/sub/plan.dxf").string()},
        "A1");
    for (const std::string& outside : std::vector<std::string>{
             "out/plan.dxf", "../homes/plan.dxf", "other.dxf", "OUT/PLAN.DXF",
             "sub/../../secret/plan.dxf", "Z:/plan.dxf", file("secret/plan.dxf").string()}) {
        const bool bare = outside != "other.dxf";  // the extra folder has one of the bare name
        EXPECT_EQ(found(outside), bare ? "A1" : "not found") << outside;
        const auto info = host::findReference(document(), L"PLAN");
        EXPECT_TRUE(std::ranges::any_of(info->tries, [](const host::ReferenceTry& attempt) {
            return attempt.why.starts_with("lies outside ");
        })) << outside;
    }
    // Whether there is such a file is not told.
    EXPECT_EQ(found("../secret/text.txt") + found("../secret/none.txt"), "not foundnot found");
}

TEST_F(ReferenceSearch, CountsFromTheFolderOfTheImmediateReferringDrawing) {
    put("home/sub/core.dxf", "A1");
    put("home/core.dxf", "A2");
    putDrawing("home/sub/plan.dxf", {.blocks = referenceDefinition("CORE", "core.dxf"),
                                     .entities = insertEntity("11", "0", "CORE")});
    AcApDocument* document = refer("sub/plan.dxf");
    const auto core = host::findReference(document, L"PLAN|CORE");
    ASSERT_TRUE(core && core->loaded);
    EXPECT_EQ(core->found, file("home/sub/core.dxf"));
}

TEST_F(ReferenceSearch, SaysWhereItLooked) {
    host::setReferenceFolders({file("extra")});
    const auto info = host::findReference(refer("sub\\plan.dwg"), L"PLAN");
    std::vector<std::string> places;
    for (const host::ReferenceTry& attempt : info->tries)
        places.push_back(fs::relative(attempt.path, file("")).string() + " " + attempt.why);
    ASSERT_EQ(places.size(), 12u);
    EXPECT_EQ(places[0], "home/sub/plan.dwg not there");
    EXPECT_EQ(places[1], "home/sub/plan.dxf not there");
    EXPECT_EQ(places[3], "home/plan.dwg not there");
    EXPECT_EQ(places[6], "extra/sub/plan.dwg not there");
    EXPECT_EQ(places[11], "extra/plan.DXF not there");
    const auto nowhere = host::findReference(refer(""), L"PLAN");
    EXPECT_EQ(nowhere->tries.at(0).why, "the reference saves no path");
}

TEST_F(ReferenceSearch, EndsWhereDrawingsReferToEachOtherWithoutEnd) {
    const std::string inserts = insertEntity("10", "0", "A") + insertEntity("11", "0", "B");
    for (int level = 1; level <= 16; ++level) {
        const std::string next = std::to_string(level + 1) + ".dxf";
        putDrawing("home/" + std::to_string(level) + ".dxf",
                   {.blocks = referenceDefinition("A", next) + referenceDefinition("B", next),
                    .entities = inserts});
    }
    putDrawing("home/17.dxf", {.blocks = referenceDefinition("A", "1.dxf"), .entities = inserts});
    AcApDocument* document = refer("1.dxf");
    std::size_t loaded = 0;
    bool said = false;
    for (const host::ReferenceInfo& info : host::references(document)) {
        loaded += info.loaded ? 1 : 0;
        for (const host::ReferenceTry& attempt : info.tries)
            said = said || attempt.why.find("more than 10000 references") != std::string::npos;
    }
    EXPECT_LE(loaded, 10'000u);
    EXPECT_TRUE(said);
    // Round and round: where the circle closes the reading ends.
    putDrawing("home/17.dxf", {.blocks = referenceDefinition("A", "site.dxf"),
                               .entities = insertEntity("10", "0", "A")});
    const auto circle = host::findReference(refer("17.dxf"), L"PLAN|A");
    ASSERT_TRUE(circle);
    EXPECT_EQ(circle->status, host::ReferenceStatus::Unresolved);
    EXPECT_TRUE(holds(circle->tries.back().why, "refers back"));
    EXPECT_EQ(host::findReference(refer("site.dxf"), L"PLAN")->status,
              host::ReferenceStatus::Unresolved);
}

TEST_F(ReferenceSearch, CountsInsertsAsTheyAreNow) {
    AcApDocument* document = refer("gone.dxf");
    const auto inserts = [document] { return host::findReference(document, L"PLAN")->inserts; };
    ads_name insert{};
    named(L"10").copyTo(insert);
    for (const std::size_t left : {1U, 0U}) {
        EXPECT_EQ(inserts(), left);
        ASSERT_EQ(acdbEntDel(insert), RTNORM);
    }
    const double at[] = {0.0, 0.0, 0.0};
    ASSERT_EQ(make(acutBuildList(RTDXF0, L"INSERT", 2, L"plan", 10, at, 0)), RTNORM);
    EXPECT_EQ(inserts(), 2u);
}

/// A drawing with references R0, R1, ... to r0.dxf, r1.dxf, ...
class ManyReferences : public ReferenceSearch {
protected:
    AcApDocument* referTo(int count) {
        DxfDrawing site;
        for (int i = 0; i < count; ++i) {
            const std::string number = std::to_string(i);
            site.blocks += referenceDefinition("R" + number, "r" + number + ".dxf");
            site.entities += insertEntity("1" + number, "0", "R" + number);
        }
        return open(site.bytes());
    }
    /// The record of the line in a reference that is loaded; reads its file.
    std::string line(const std::wstring& reference) {
        const ResbufList block{acdbTblSearch(L"BLOCK", reference.c_str(), 0)};
        std::string text;
        const EntityName name(findGroup(block, -2)->resval.rlname);
        for (const host::RecordGroup& group : host::recordGroups(document(), name))
            text += group.value + " ";
        return text.substr(0, 8);
    }
};

TEST_F(ManyReferences, HoldFewFilesOpen) {
    constexpr int kCount = 150;
    for (int i = 0; i < kCount; ++i) put("r" + std::to_string(i) + ".dxf", std::to_string(100 + i));
    const auto filesOpen = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    const auto before = filesOpen();
    AcApDocument* document = referTo(kCount);
    for (const host::ReferenceInfo& info : host::references(document)) EXPECT_TRUE(info.loaded);
    EXPECT_LT(filesOpen() - before, 80);
    EXPECT_EQ(line(L"R0") + line(L"R149"), "LINE 100LINE 249");
    // One that is held open is read on; of another the file must be as it was.
    fs::remove(file("r149.dxf"));
    EXPECT_EQ(line(L"R149"), "LINE 249");
    fs::remove(file("r1.dxf"));
    put("r2.dxf", "A22");
    EXPECT_THROW(static_cast<void>(line(L"R1")), host::ReadFailure);
    EXPECT_THROW(static_cast<void>(line(L"R2")), host::ReadFailure);
    EXPECT_TRUE(host::takeReadFailure());
    EXPECT_EQ(line(L"R3"), "LINE 103");
    EXPECT_LT(filesOpen() - before, 80);
}

TEST_F(ManyReferences, ListAFolderOnceUntilOneIsReadAgain) {
    AcApDocument* document = referTo(2);
    EXPECT_FALSE(host::findReference(document, L"R0")->loaded);
    put("R1.DXF", "A1");
    EXPECT_FALSE(host::findReference(document, L"R1")->loaded);
    ASSERT_TRUE(host::reloadReference(document, L"R1"));
    EXPECT_TRUE(host::findReference(document, L"R1")->loaded);
}

TEST_F(ReferenceSearch, PathsAndNamesHaveALimit) {
    std::string dots;
    for (int i = 0; i < 2000; ++i) dots += "./";
    put("home/Plan.dxf", "A1");
    EXPECT_EQ(found(dots + "PLAN.DXF"), "A1");
    EXPECT_EQ(found(dots + dots + "plan.dxf"), "not found");
    EXPECT_TRUE(holds(host::findReference(document(), L"PLAN")->tries.at(0).why, "at most 4095"));
    const std::string name(2048, 'N');
    const auto info = host::references(
        open(DxfDrawing{.blocks = referenceDefinition(name, "home/Plan.dxf")}.bytes()));
    EXPECT_TRUE(holds(info.at(0).tries.at(0).why, "more than 2047"));
}

TEST_F(ReferenceSearch, KeptReferencesOfOneThatIsNotLoadedAreOrphans) {
    AcApDocument* document =
        open(DxfDrawing{.blocks = referenceDefinition("PLAN", "gone.dxf") +
                                  referenceDefinition("Plan|CORE", "core.dxf", 20) +
                                  blockDefinition("PLAN|DOOR", "", 16),
                        .entities = insertEntity("10", "0", "PLAN")}
                 .bytes());
    const std::vector<host::ReferenceInfo> all = host::references(document);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[1].name + L" " + all[1].block, L"Plan|CORE CORE");
    EXPECT_EQ(all[1].depth, 1u);
    EXPECT_EQ(all[1].status, host::ReferenceStatus::Orphaned);
    EXPECT_EQ(all[1].tries.at(0).why, "it belongs to Plan, which is not loaded");
    EXPECT_EQ(host::findReference(document, L"plan|core")->status, host::ReferenceStatus::Orphaned);
    EXPECT_FALSE(host::isReference(document, L"PLAN|CORE"));
    ASSERT_TRUE(host::detachReference(document, L"PLAN"));
    EXPECT_TRUE(host::references(document).empty());
}

}  // namespace
}  // namespace mor::test
