#include "tests/tool/damaged_store.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

TEST_F(DamagedStore, WithADeadRootLinkIsLeftAlone) {
    damage(link("DWG_FILESYSTEM_ROOT", handle("/")), link("DWG_FILESYSTEM_ROOT", "FFF0"));
    expectRefusal("root-link-dead");
}

TEST_F(DamagedStore, WithoutItsRootLinkIsLeftAlone) {
    damage(
        "1001 MOR_ATTRIBUTES|1070      1|" + link("DWG_FILESYSTEM_ROOT", handle("/")) + "|0 ENDBLK",
        "0 ENDBLK");
    expectRefusal("root-link-absent");
}

TEST_F(DamagedStore, WithoutItsBlockEntityIsLeftAlone) {
    leaveOut("0 ATTDEF|");
    expectRefusal("block-empty");
}

TEST_F(DamagedStore, WithoutItsBlockIsLeftAlone) {
    const DxfFile file = splitDxf(readFile(drawing()));
    std::string bytes;
    for (const DxfRecord& record : file.records)
        if (record.container != "MOR_DWGFILES") bytes += record.bytes;
    writeFile(drawing(), bytes);
    expectRefusal("block-missing");
}

TEST_F(DamagedStore, WithADeadLinkIsLeftAlone) {
    damage(link("b", handle("/a/b")), link("b", "FFF0"));
    expectRefusal("link-dead");
}

TEST_F(DamagedStore, WithALinkToALineIsLeftAlone) {
    damage("0 ENDSEC|0 SECTION|2 OBJECTS",
           "0 LINE|5 FFF0|330 18|100 AcDbEntity|8 0|100 AcDbLine|10 0.0|20 0.0|30 0.0|11 1.0|21 "
           "0.0|31 0.0|0 ENDSEC|0 SECTION|2 OBJECTS");
    damage(link("b", handle("/a/b")), link("b", "FFF0"));
    expectRefusal("link-wrong");
}

TEST_F(DamagedStore, WithARootLinkToALayerIsLeftAlone) {
    damage(link("DWG_FILESYSTEM_ROOT", handle("/")), link("DWG_FILESYSTEM_ROOT", "14"));
    expectRefusal("root-link-wrong");
}

TEST_F(DamagedStore, WithANumberForALinkIsLeftAlone) {
    // A look-up takes it for the text of a handle: that of the layer.
    damage(link("b", handle("/a/b")), "1000 \\U+005Eb|1071        14");
    expectRefusal("link-wrong");
}

TEST_F(DamagedStore, WithANumberForItsRootLinkIsLeftAlone) {
    damage(link("DWG_FILESYSTEM_ROOT", handle("/")),
           "1000 \\U+005EDWG_FILESYSTEM_ROOT|1071        14");
    expectRefusal("root-link-wrong");
}

TEST_F(DamagedStore, WithAFileInTheRootIsLeftAlone) {
    const std::string first = link("a", handle("/a"));
    damage("1000 $INFO|1000 /|" + first, "1000 $INFO|1000 /|1000 lost|1071         4|" + first);
    expectRefusal("file-in-root");
}

TEST_F(DamagedStore, WhoseFilesLieDeeperThanAPathCanNameIsLeftAlone) {
    std::string script = "put /x";
    for (int level = 0; level < 300; ++level) script += "/n";
    script += "/f 5\nput /y";
    for (int level = 0; level < 300; ++level) script += "/n";
    ASSERT_EQ(run({"run", drawing(), "-", "--no-backup"}, script + "/g 6\n").code, 0);
    const std::string second = link("y", handle("/y"));
    damage(second + "|0 INSERT", "0 INSERT");
    damage("1000 f|1071         5", second);
    expectRefusal("too-deep");
    EXPECT_EQ(run({"repair", drawing(), "--no-backup"}).code, 0);
    EXPECT_EQ(run({"check", drawing()}).code, 0);
    const auto info = nlohmann::json::parse(run({"info", "--json", drawing()}).out);
    EXPECT_EQ(info["store"]["files"], 4);
}

TEST_F(DamagedStore, WithAnOrphanThatHoldsFilesIsLeftAlone) {
    damage("1000 \\U+005Eb|1000 " + handle("/a/b") + "|1000 g", "1000 g");
    expectRefusal("orphan");
}

TEST_F(DamagedStore, WithAnUnknownLayoutVersionIsLeftAlone) {
    damage("1070      1|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a/b",
           "1070      2|1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 /a/b");
    expectRefusal("attributes-damaged");
}

TEST_F(DamagedStore, WithAValueThatBreaksOffIsLeftAlone) {
    damage("1000 h|1071         3", "1000 h|1002 {|1071         3");
    expectRefusal("attributes-damaged");
}

TEST_F(DamagedStore, WithACircleIsShownUpToTheDirectoryThatHoldsItself) {
    damage("1000 h|1071         3", link("h", handle("/")));
    EXPECT_EQ(run({"ls", "-R", drawing()}).out, "a/\na/b/\na/b/f\na/g\nc/\nc/h/\n");
    EXPECT_EQ(
        run({"tree", drawing(), "/c"}).out,
        "/c\n└── h/\n    ├── a/\n    │   ├── b/\n    │   │   └── f\n    │   └── g\n    └── c/\n");
    const auto dump = nlohmann::json::parse(run({"dump", drawing()}).out);
    EXPECT_EQ(dump["entries"][1]["entries"][0]["entries"], nlohmann::json::array());
    EXPECT_EQ(run({"cat", drawing(), "/c/h/a/g"}).out, "2\n");
    EXPECT_EQ(run({"find", drawing(), "/*/*/*/*"}).out, "/c/h/a/g\n");
    EXPECT_EQ(run({"put", drawing(), "/a/g", "9"}).code, 0);
    EXPECT_EQ(run({"cat", drawing(), "/c/h/a/g"}).out, "9\n");
    const Outcome root = run({"put", drawing(), "/c/h/new", "9"});
    EXPECT_EQ(root.code, 6);
    EXPECT_TRUE(holds(root.err, "files lie in directories"));
    EXPECT_EQ(run({"cp", drawing(), "/c", "/d"}).code, 0);
    EXPECT_EQ(run({"ls", "-R", drawing(), "/d"}).out, "h/\nh/a/\nh/a/b/\nh/a/b/f\nh/a/g\nh/c/\n");
}

TEST_F(DamagedStore, WithADirectoryLinkedTwiceShowsWhatItHoldsOnce) {
    damage("1000 h|1071         3", link("h", handle("/a")));
    const std::string bytes = readFile(drawing());
    const Outcome list = run({"ls", "-R", drawing()});
    EXPECT_EQ(list.out, "a/\na/b/\na/b/f\na/g\nc/\nc/h/\n");
    EXPECT_TRUE(holds(list.err, "/c/h is /a, linked twice"));
    const std::string tree = run({"tree", drawing()}).out;
    EXPECT_EQ(tree, "/\n├── a/\n│   ├── b/\n│   │   └── f\n│   └── g\n└── c/\n    └── h/\n");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"dump", drawing()},
          {"diff", drawing(), drawing()},
          {"cp", drawing(), "/", "/copy"},
          {"rm", "-r", drawing(), "/a"},  // what /c/h reaches would be gone
          {"mv", drawing(), "/a", "/z"},
          {"rm", "-r", drawing(), "/c"}}) {
        const Outcome copy = run(words);
        EXPECT_EQ(copy.code, 4) << words.front();
        EXPECT_TRUE(holds(copy.err, "(link-doubled)"));
    }
    EXPECT_EQ(readFile(drawing()), bytes);
    EXPECT_EQ(run({"cat", drawing(), "/c/h/g"}).out, "2\n");
    EXPECT_EQ(run({"rm", drawing(), "/c/h/g"}).code, 0);
    EXPECT_EQ(run({"cat", drawing(), "/a/g"}).code, 6);
}

TEST_F(DamagedStore, WithAFileBehindADirectoryOfItsNameIsLeftAlone) {
    damage("1000 g|1071         2", "1000 b|1071         2");
    expectRefusal("name-taken-twice");
}

TEST_F(DamagedStore, ThatWasEmptiedReadsAsEmptyAndIsFilledAnew) {
    leaveOut("|1000 $ID|1000 MOR_DWGFILES_DIR|");
    expectEmpty();
}

TEST_F(DamagedStore, ThatWasEmptiedWithItsRootLinkIsFilledAnew) {
    damage(
        "1001 MOR_ATTRIBUTES|1070      1|" + link("DWG_FILESYSTEM_ROOT", handle("/")) + "|0 ENDBLK",
        "0 ENDBLK");
    leaveOut("|1000 $ID|1000 MOR_DWGFILES_DIR|");
    expectEmpty();
}

TEST_F(DamagedStore, WithAnOpenLayerWorksAndIsLockedAgain) {
    damage("2 MOR_CONTROL_LAYER|70      5", "2 MOR_CONTROL_LAYER|70      0");
    EXPECT_EQ(run({"cat", drawing(), "/a/g"}).out, "2\n");
    EXPECT_EQ(run({"put", drawing(), "/a/g", "9"}).code, 0);
    EXPECT_EQ(run({"cat", drawing(), "/a/g"}).out, "9\n");
    EXPECT_EQ(splitDxf(readFile(drawing())).named("LAYER", "MOR_CONTROL_LAYER")->first(70), "5");
}

TEST_F(DamagedStore, InPaperSpaceWorksAndIsMovedBack) {
    const std::string bytes = readFile(drawing());
    const std::string insert = "5 " + handle("/a") + "|330 18|100 AcDbEntity|";
    damage(insert + "8 MOR_CONTROL_LAYER", insert + "67      1|8 MOR_CONTROL_LAYER");
    EXPECT_EQ(run({"cat", drawing(), "/a/g"}).out, "2\n");
    EXPECT_EQ(run({"put", drawing(), "/a/g", "9"}).code, 0);
    EXPECT_EQ(run({"ls", "-R", drawing()}).out, "a/\na/b/\na/b/f\na/g\nc/\nc/h\n");
    for (const DxfRecord& record : splitDxf(readFile(drawing())).records)
        EXPECT_NE(record.first(67), "1");
}

}  // namespace
}  // namespace mor::test
