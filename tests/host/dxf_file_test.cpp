#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

const std::string kLine = lineEntity("A1", "0");

/// An R12 drawing without tables and blocks.
std::string drawingText(const std::string& header = "", std::string_view end = "\n") {
    return dxfText("0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|" + header +
                       "0 ENDSEC|0 SECTION|2 ENTITIES|" + kLine + "0 ENDSEC|0 EOF",
                   end);
}

class DxfFiles : public HostTest {
protected:
    /// The bytes after an attribute was put on the entity A1.
    std::string changedBytes() {
        Connected line{named(L"A1")};
        EXPECT_TRUE(line.SetAttribute(L"x", host::makeInteger(7)) && line.Flush());
        return savedBytes();
    }
};

TEST_F(DxfFiles, AreSavedUnchangedWhenNothingChanged) {
    const std::string texts[] = {drawingText(),
                                 drawingText("", "\r\n"),
                                 "\xEF\xBB\xBF" + drawingText(),
                                 drawingText() + "0\nLINE\njunk\x01",
                                 dxfText("999 a remark|0 SECTION|999 another|2 ENTITIES|" + kLine +
                                         "999 inside|0 ENDSEC|999 last|0 EOF"),
                                 dxfText("0 SECTION|2 ENTITIES|0 ENDSEC"),
                                 dxfText("0 EOF"),
                                 "  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF"};
    for (const std::string& text : texts) {
        open(text);
        EXPECT_EQ(savedBytes(), text);
    }
}

TEST_F(DxfFiles, GetNewGroupsBehindTheirOwnOnes) {
    for (const char* end : {"\n", "\r\n"}) {
        open(drawingText("9 $HANDSEED|5 B0|", end));
        const std::string bytes = changedBytes();
        for (const std::string& groups :
             {kLine + attributeTags("1000 x|1071 7|0 ENDSEC|0 EOF"),
              std::string("0 TABLE|2 APPID|70 1|0 APPID|2 MOR_ATTRIBUTES|70 0|0 ENDTAB")})
            EXPECT_TRUE(holds(bytes, dxfText(groups, end)));
        EXPECT_EQ(std::ranges::count(bytes, '\r'),
                  *end == '\r' ? std::ranges::count(bytes, '\n') : 0);
    }
    open("  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n  5\nA1\n  8\n0\n  0\nENDSEC\n  0\nEOF\n");
    EXPECT_TRUE(holds(changedBytes(), "1070\n     1\n1000\nx\n1071\n        7\n"));
}

TEST_F(DxfFiles, KeepEveryOddByteBesideAChange) {
    const std::string before =
        "\xEF\xBB\xBF"
        "999\n head\n  0 \nSECTION\n2\nHEADER\n   9\n$ACADVER\n1\n"
        "AC1009\n9\n$CUSTOM\n1\n a \n9\n$CUSTOM\n1\n^J\n999\nremark\n0\nENDSEC\n";
    const std::string tables =
        "0\nSECTION\n 2\nTABLES\n0\nTABLE\n2\nAPPID\n70\n99\n0\nAPPID\n2\n"
        "MOR_ATTRIBUTES\n 70\n    0\n0\nENDTAB\n  0\nENDSEC\n";
    const std::string line =
        "0\nSECTION\n2\nENTITIES\n0\n LINE\n5\n 00a1 \n8\n0\n10\n.5\n20\n+1.\n30\n7\n"
        "11\n1\n21\n0\n31\n-0.0\n";
    const std::string remark = "999\nremark of the line\n";
    const std::string rest = std::string("0\nODD\n 1 \n\n0\nENDSEC\n0\nEOF\ntrash\n\r\n") + '\0';
    open(before + tables + line + remark + rest);
    EXPECT_EQ(changedBytes(), before + tables + line + remark +
                                  "1001\nMOR_ATTRIBUTES\n1070\n     1\n1000\nx\n1071\n        7\n" +
                                  rest);
}

TEST_F(DxfFiles, WithoutALastLineEndAreClosedBeforeSomethingFollows) {
    std::string text = dxfText("0 SECTION|2 ENTITIES|" + kLine + "0 ENDSEC", "\r\n");
    text.resize(text.size() - 2);
    open(text);
    const std::string bytes = changedBytes();
    EXPECT_TRUE(holds(bytes, "ENDSEC\r\n"));
    EXPECT_EQ(std::ranges::count(bytes, '\n'), std::ranges::count(bytes, '\r'));
    EXPECT_EQ(refusal(bytes), "");
}

TEST_F(DxfFiles, TakeNewRecordsWhateverStandsAtTheirEnds) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string header = dxfText("0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|0 ENDSEC");
    const std::string carriage = dxfText("0 SECTION|2 TABLES|0 ENDSEC", "\r\n");
    const std::string texts[] = {mark + header + dxfText("0 EOF"),
                                 mark + dxfText("999 head") + header,
                                 header.substr(0, header.size() - 1),
                                 carriage.substr(0, carriage.size() - 1),
                                 carriage.substr(0, carriage.size() - 2),
                                 header + "\n",
                                 header + "  ",
                                 header + "\n \n\n",
                                 header + "\x1A\n",
                                 carriage + "\r\n\x1A" + std::string(3, '\0'),
                                 header + "0\nEOF\x1A\n",
                                 header + "0\nEOF\n\n\n\x1A"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(testing::PrintToString(text));
        open(text);
        EXPECT_FALSE(host::documentInfo(document()).damage);
        EXPECT_EQ(savedBytes(), text);
        EXPECT_EQ(makeLine(), RTNORM);
        EXPECT_EQ(savedBytes().starts_with(mark), text.starts_with(mark));
        const std::size_t end =
            std::min(text.find_first_of(std::string_view("\x1A\0", 2)), text.size());
        EXPECT_TRUE(savedBytes().ends_with(text.substr(end)));
        reopen();
        EXPECT_EQ(walk(), "LINE:1");
    }
}

TEST_F(DxfFiles, WithoutALastLineEndTakeChangesOfTheirLastRecord) {
    for (const char* end : {"", "\n", "\r"}) {
        open(dxfText("0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|0 ENDSEC|0 LINE|5 A1") + "8\n0" + end);
        Connected line{named(L"A1")};
        EXPECT_TRUE(line.SetAttribute(L"x", host::makeInteger(7)) && line.Flush());
        EXPECT_EQ(makeLine(), RTNORM);
        reopen();
        EXPECT_EQ(host::recordAttributes(document(), named(L"A1")).items.size(), 1u);
        EXPECT_EQ(walk(), "LINE:A2");
    }
}

TEST_F(DxfFiles, AreRefusedWhenTheyAreNoDrawings) {
    const char* foreign = "1: no DXF text: a drawing begins with group 0 SECTION";
    const std::pair<std::string, const char*> cases[] = {
        {"", "1: the file is empty, not a drawing"},
        {"hello\nworld\n", foreign},
        {"hello\rworld\r", foreign},
        {"AC1032\x01\x02", "0: a DWG file that breaks off in its first bytes"},
        {std::string("0\0\nSECTION\n", 11), "1: binary data, not DXF text"},
        {dxfText("0 LINE|8 0"), foreign},
        {dxfText("8 0|0 SECTION"), foreign}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(refusal(bytes), text);
}

TEST_F(DxfFiles, ThatBreakOffAreReadUpToThere) {
    const std::string start = dxfText("0 SECTION|2 ENTITIES|" + kLine + "0 POINT|8 0");  // 26 lines
    const struct {
        std::string bytes;
        std::uint64_t line;
        const char* text;
        const char* walk;
    } cases[] = {
        {start, 27, "the file ends inside the section ENTITIES", "LINE:A1"},
        {start + "x\n", 27, "a group code was expected, found \"x\"", "LINE:A1"},
        {start + "\n\nx", 27, "a group code was expected, found \"\"", "LINE:A1"},
        {start + "\n\n\x1A", 27, "the file ends inside the section ENTITIES", "LINE:A1"},
        {start + "10\n", 27, "the file ends after a group code, without its value", "LINE:A1"},
        {start + dxfText("0 SECTION|2 OBJECTS|0 ENDSEC"), 31,
         "a section begins inside the section ENTITIES, which has no ENDSEC", "LINE:A1 POINT:"},
        {start + dxfText("0 ENDSEC|0 ENDSEC"), 31, "ENDSEC without a section", "LINE:A1 POINT:"},
        {dxfText("0 SECTION|2 TABLES|0 TABLE|2 LAYER|0 ENDSEC"), 11,
         "the section TABLES ends inside a table", ""},
        {dxfText("0 SECTION|2 TABLES|0 LAYER|2 A|70 0|0 ENDSEC"), 13,
         "the section TABLES ends inside a table", ""},
        {dxfText("0 SECTION|2 BLOCKS|0 BLOCK|2 A|0 BLOCK|2 B"), 13,
         "a block begins inside another one, which has no ENDBLK", ""}};
    for (const auto& c : cases) {
        open(c.bytes);
        const auto damage = host::documentInfo(document()).damage;
        ASSERT_TRUE(damage) << c.text;
        EXPECT_EQ(damage->text, c.text);
        EXPECT_EQ(damage->line, c.line) << c.text;
        EXPECT_EQ(walk(), c.walk) << c.text;
        EXPECT_TRUE(holds(host::saveDocument(document(), {.output = file("o.dxf")}).error().text,
                          "it is damaged"));
        EXPECT_FALSE(std::filesystem::exists(file("o.dxf")));
        use(host::openDocument(file(), host::Opening::Salvaged).value());
        EXPECT_EQ(walk(), c.walk) << c.text;
        reopen();
        EXPECT_FALSE(host::documentInfo(document()).damage) << c.text;
        EXPECT_EQ(walk(), c.walk) << c.text;
    }
}

TEST_F(DxfFiles, OfReleasesWithoutValuesAreSavedAsTheyAreOnly) {
    const auto refusalOf = [this](const std::string& version) {
        return refusal(DxfDrawing{.version = version}.bytes());
    };
    EXPECT_EQ(refusalOf("AC1033"),
              "8: $ACADVER is AC1033, newer than R2018 (AC1032); save the drawing as one of R2.5 "
              "(AC1002) to R2018 (AC1032)");
    EXPECT_TRUE(holds(refusalOf("R12"), "not a release that is read"));
    EXPECT_LT(refusalOf(std::string(5000, 'x')).size(), 200u);
    for (const char* version :
         {"AC1009", "AC1012", "AC1014", "AC1015", "AC1018", "AC1021", "AC1024", "AC1027", "AC1032"})
        EXPECT_EQ(refusalOf(version), "") << version;
    for (const char* version : {"AC1002", "AC1003", "AC1004", "AC1006"}) {
        const DxfDrawing old{.entities = lineEntity("", "0"), .version = version};
        open(old);
        EXPECT_EQ(savedBytes(), old.bytes());
        EXPECT_EQ(makeLine(), RTNORM);
        const auto saved = host::saveDocument(document(), {.output = file("o.dxf")});
        ASSERT_FALSE(saved) << version;
        EXPECT_TRUE(holds(saved.error().text, "hold no values")) << saved.error().text;
    }
}

TEST_F(DxfFiles, TellTheirFacts) {
    const std::string text = dxfText(
        "0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|9 $DWGCODEPAGE|3 ansi_1251|9 $HANDSEED|5 "
        "00ff|0 ENDSEC|0 EOF",
        "\r\n");
    open(text);
    const host::DocumentInfo info = host::documentInfo(document());
    EXPECT_EQ(host::releaseName(info.release), "R2000");
    EXPECT_EQ(info.version, "AC1015");
    EXPECT_EQ(info.codePage, "ansi_1251");
    EXPECT_EQ(info.encoding, "CP1251");
    EXPECT_EQ(info.lineEnd, "CRLF");
    EXPECT_EQ(info.bytes, text.size());
    EXPECT_EQ(info.records, 3u);
    EXPECT_EQ(info.handleSeed, 0xFFu);
    EXPECT_TRUE(host::documentProblems(document()).empty());
}

TEST_F(DxfFiles, ReportAMissingEndAndDoubledHandles) {
    open(dxfText("0 SECTION|2 ENTITIES|" + kLine + kLine + kLine + "0 ENDSEC"));
    const auto problems = host::documentProblems(document());
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems[0].kind, host::Problem::Kind::MissingEof);
    EXPECT_EQ(problems[1].text, "the handle A1 stands on 3 records");
}

TEST_F(DxfFiles, ReadXrecordsAndDynamicBlocksWithoutTakingDataForExtendedData) {
    open(DxfDrawing{.version = "AC1015",
                    .objects = "0 XRECORD|5 A1|102 {ACAD_REACTORS|330 9|102 }|330 7|"
                               "100 AcDbXrecord|280 1|1070 5|1000 text|1010 1.0|"});
    const auto attributes = host::recordAttributes(document(), named(L"A1"));
    EXPECT_EQ(attributes.damage, "");
    EXPECT_EQ(attributes.used, 0);
}

}  // namespace
}  // namespace mor::test
