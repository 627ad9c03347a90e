#include "tests/host/host_fixture.h"
#include "tests/support/dxf_binary.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace mor::test {
namespace {

/// Layers, a block with a definition, entities of both spaces, and values.
const DxfDrawing kDrawing{
    .layers = {"0", "WALLS"},
    .blocks =
        blockDefinition("B", "0 ATTDEF|5 B1|8 0|10 0.0|20 0.0|30 0.0|40 1.0|1 |3 p|2 T|70 3|"),
    .entities = lineEntity("A1", "WALLS") + lineEntity("A2", "0", "67 1|") +
                insertEntity("A3", "0", "B") +
                attributeTags("1000 x|1071 70000|1000 y|1002 {|1040 0.1|1005 A1|1070 0|1002 }|"),
    .header = "9 $HANDSEED|5 B9|",
    .tables = "0 TABLE|2 APPID|70 1|0 APPID|2 MOR_ATTRIBUTES|70 0|0 ENDTAB|"};

class DxfForms : public HostTest {
protected:
    /// All records with their groups, and what the attributes hold.
    [[nodiscard]] std::string content() const {
        std::string all;
        host::forEachRecord(document(), [&](const host::RecordInfo& record) {
            all += "\n" + record.type + " " + host::handleText(record.handle) + " " +
                   record.container + " " + std::to_string(static_cast<int>(record.place));
            for (const auto& item : host::recordAttributes(document(), record.name).items)
                all += " " + host::toUtf8(item.name) + "=" + host::lispText(item.value);
            bool extended = false;
            for (const host::RecordGroup& group : host::recordGroups(document(), record.name)) {
                if (group.code < 10 || group.code == 70) all += "|" + group.value;
                extended |= group.code == 1001;
            }
            EXPECT_LE(extended, record.extended) << all;
            all += record.extended ? " x" : "";
        });
        return all;
    }
    void changeSomething() {
        Connected line{named(L"A1")};
        EXPECT_TRUE(line.SetAttribute(L"long", host::makeString(std::wstring(700, L'\u00E4'))));
        EXPECT_TRUE(line.SetAttribute(L"real", host::makeReal(1e300)));
        EXPECT_TRUE(line.Flush());
        CMORAdsLayer layer;
        EXPECT_TRUE(layer.Connect(L"WALLS") && layer.IsLocked(true) && layer.Flush());
        EXPECT_EQ(makeLine(), RTNORM);
    }
};

TEST_F(DxfForms, AllSayTheSame) {
    open(kDrawing);
    const std::string expected = content();
    EXPECT_TRUE(holds(expected, "INSERT A3  5 x=70000 y=(0.1 (handent \"A1\") nil)")) << expected;
    EXPECT_TRUE(holds(expected, "ATTDEF B1 B "));
    const std::string tags = kDrawing.tags();
    std::string mixed;
    const std::string lines = kDrawing.bytes();
    for (std::size_t i = 0, line = 0; i < lines.size(); ++i) {
        if (lines[i] != '\n')
            mixed += lines[i];
        else
            mixed += lines[i + 1] == '\n' ? "\n" : std::array{"\n", "\r\n", "\r"}[line++ % 3];
    }
    for (const std::string& bytes : {kDrawing.bytes("\r\n"), kDrawing.bytes("\r"), mixed,
                                     dxfBinary(tags, true), dxfBinary(tags, false)}) {
        open(bytes);
        EXPECT_EQ(content(), expected);
        EXPECT_EQ(savedBytes(), bytes);
        EXPECT_EQ(host::verifySave(document()), std::vector<std::string>());
    }
}

TEST_F(DxfForms, TakeChangesInTheirOwnForm) {
    open(kDrawing);
    changeSomething();
    reopen();
    const std::string expected = content();
    const std::string tags = kDrawing.tags();
    for (const std::string& bytes :
         {kDrawing.bytes("\r"), dxfBinary(tags, true), dxfBinary(tags, false)}) {
        open(bytes);
        const std::string start = bytes.substr(0, 30);
        changeSomething();
        const std::string saved = savedBytes();
        EXPECT_EQ(saved.substr(0, 30), start);
        EXPECT_EQ(saved.find('\n') == std::string::npos, bytes.find('\n') == std::string::npos);
        reopen();
        EXPECT_EQ(content(), expected);
    }
}

TEST_F(DxfForms, OfBinaryDrawingsHaveNoCarets) {
    DxfDrawing drawing = kDrawing;
    drawing.layers = {"0", "a^Jb"};
    open(dxfBinary(drawing.tags(), false));
    EXPECT_TRUE(host::findSymbol(document(), "LAYER", L"a^Jb"));
    open(drawing);
    EXPECT_TRUE(host::findSymbol(document(), "LAYER", L"a\nb"));
}

TEST_F(DxfForms, CutAtAnyByteAreReadUpToThereOrRefused) {
    const std::string tags = kDrawing.tags();
    for (const std::string& whole : {kDrawing.bytes(), dxfBinary(tags, true)}) {
        std::size_t records = 0;
        for (std::size_t size = 0; size < whole.size(); ++size) {
            writeFile(file(), whole.substr(0, size));
            auto opened = host::openDocument(file());
            if (!opened) continue;
            use(opened.value());
            const host::DocumentInfo info = host::documentInfo(document());
            EXPECT_GE(info.records + 1, records) << size;
            records = std::max(records, info.records);
            if (!info.damage) continue;
            EXPECT_LE(info.damage->offset, size);
            use(host::openDocument(file(), host::Opening::Salvaged).value());
            EXPECT_FALSE(host::documentInfo(document()).damage) << size;
            EXPECT_EQ(host::verifySave(document()), std::vector<std::string>()) << size;
        }
        EXPECT_GT(records, 20u);
    }
}

TEST_F(DxfForms, AreReadTheSameManyLinesAtATimeAndOneByOne) {
    std::mt19937 random(7);
    std::string whole = kDrawing.bytes();
    for (int i = 0; i < 6; ++i) whole.insert(whole.rfind("0\nENDSEC"), dxfText(kDrawing.entities));
    const std::string pieces[] = {" ", "0", "00", "\r", "\n", "  0\n", "1001\n", "-5\nx\n", "\xE4"};
    std::string many;  // several stretches of a file, of which the later ones are read ahead
    while (many.size() < 600'000) many += dxfText(kDrawing.entities);
    for (int round = 0; round < 400; ++round) {
        std::string lines = whole;
        if (round % 200 >= 198) lines.insert(lines.rfind("0\nENDSEC"), many);
        std::string bytes;
        for (const char c : lines) {
            if (c == '\n' && round % 2 == 1) bytes += '\r';
            bytes += c;
        }
        for (unsigned n = random() % 4; n > 0; --n)
            bytes.insert(random() % bytes.size(), pieces[random() % std::size(pieces)]);
        SCOPED_TRACE("round " + std::to_string(round));
        std::string found[2];
        for (const bool slow : {false, true}) {
            host::faults::readLineByLine(slow);
            writeFile(file(), bytes);
            auto opened = host::openDocument(file());
            if (!opened) {
                found[slow ? 1 : 0] = opened.error().message();
                continue;
            }
            use(opened.value());
            const auto damage = host::documentInfo(document()).damage;
            found[slow ? 1 : 0] =
                content() + (damage ? damage->text + std::to_string(damage->line) : std::string());
        }
        ASSERT_EQ(found[0], found[1]);
    }
}

}  // namespace
}  // namespace mor::test
