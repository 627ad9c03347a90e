#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

std::string line(const std::string& handle, const std::string& more = "") {
    return lineEntity(handle, "WALLS", more);
}

/// A drawing with the line A1 on the layer WALLS, unless a test opens another one.
class Entities : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openEntities(line("A1"));
    }
    /// The layer in the drawing.
    [[nodiscard]] std::wstring layerOf(std::wstring_view handle) const {
        return Connected{named(handle)}.GetLayer(nullptr);
    }
    [[nodiscard]] host::RecordAttributes attributes() const {
        return host::recordAttributes(document(), named(L"A1"));
    }
    /// "a=1 b="x"": the attributes as an entity object of its own sees them.
    [[nodiscard]] std::string stored(std::wstring_view handle) const {
        Connected entity{named(handle)};
        return shown(entity);
    }
    static std::string shown(const CMOREntity& entity) {
        CMORStringList names;
        entity.GetAttributeNames(names);
        std::string all;
        for (std::size_t i = 0; i < names.Entries(); ++i) {
            CMORAdsLispVar value;
            EXPECT_TRUE(entity.GetAttribute(names.Nth(i), value));
            all += (i == 0 ? "" : " ") + host::toUtf8(names.Nth(i)) + "=" + host::lispText(value);
        }
        return all;
    }
    static CMORAdsLispVar number(int value) { return host::makeInteger(value); }
};

TEST_F(Entities, AreUnconnectedAtFirstAndAnswerNothing) {
    CMOREntity entity;
    ads_name name = {7, 7};
    short space = 7;
    const wchar_t* text = nullptr;
    CMORAdsLispVar value;
    EXPECT_FALSE(entity.Disconnect() || entity.Flush() || entity.Destroy());
    EXPECT_FALSE(entity.GetEName(name));
    EXPECT_EQ(name[0], 0);
    EXPECT_TRUE(entity.Handle().IsEmpty() && entity.Type().IsEmpty());
    EXPECT_STREQ(entity.GetLayer(nullptr), L"");
    EXPECT_FALSE(entity.SetLayer(L"0") || entity.GetEntityEntry(8, text));
    EXPECT_FALSE(entity.GetGroupShort(67, &space) || entity.SetGroupShort(67, 0));
    EXPECT_FALSE(entity.SetAttribute(L"x", number(1)) || entity.GetAttribute(L"x", value));
    EXPECT_FALSE(entity.DeleteAttribute(L"x") || entity.SetAttributeText(L"x", L"y"));
    EXPECT_EQ(entity.GetFreeXDataMem() + entity.GetXDataSize(L"x"), 0);
}

TEST_F(Entities, FlushAndDestroyNothingThatIsErased) {
    Connected first{named(L"A1")};
    Connected second{named(L"A1")};
    EXPECT_TRUE(first.SetAttribute(L"a", number(1)) && second.Destroy());
    EXPECT_FALSE(second.Destroy() || second.Flush() || first.Flush() || first.Destroy());
    EXPECT_EQ(walk(), "");
}

TEST_F(Entities, TellWhatTheirRecordsSay) {
    openEntities("0 INSERT|5 00a1|8 Doors|2 B|62 256|41 2.0|", "", blockDefinition("B", ""));
    Connected entity{named(L"A1")};
    const wchar_t* text = nullptr;
    short colour = 0;
    wchar_t layer[16] = L"";
    EXPECT_EQ(titleOf(named(L"A1")), "INSERT:A1");
    EXPECT_STREQ(entity.GetLayer(layer), L"Doors");
    EXPECT_STREQ(layer, L"Doors");
    EXPECT_TRUE(entity.GetEntityEntry(2, text));
    EXPECT_STREQ(text, L"B");
    EXPECT_FALSE(entity.GetEntityEntry(7, text));
    EXPECT_TRUE(entity.GetGroupShort(62, &colour));
    EXPECT_EQ(colour, 256);
    EXPECT_FALSE(entity.GetGroupShort(70, &colour));
}

TEST_F(Entities, ConnectToRecordsOfEveryKindButStructure) {
    openEntities(line("A1"), "0 LAYER|5 B1|2 WALLS|70 0|62 7|6 CONTINUOUS|",
                 "0 BLOCK|5 C1|8 0|2 B|70 0|" + line("C2") + "0 ENDBLK|5 C3|8 0|");
    EXPECT_EQ(titleOf(named(L"B1")) + " " + titleOf(named(L"C2")), "LAYER:B1 LINE:C2");
    EXPECT_EQ(titleOf(named(L"C1")) + " " + titleOf(named(L"C3")), "none none");
    Connected entity{named(L"A1")};
    ads_name unknown = {12345, 1};
    EXPECT_FALSE(entity.Connect(unknown));
    EXPECT_FALSE(entity.Flush());  // unconnected now
}

TEST_F(Entities, KeepChangesForThemselvesUntilTheFlush) {
    Connected entity{named(L"A1")};
    EXPECT_TRUE(entity.SetAttribute(L"a", number(1)) && entity.SetLayer(L"DOORS"));
    EXPECT_EQ(shown(entity), "a=1");
    EXPECT_STREQ(entity.GetLayer(nullptr), L"DOORS");
    const wchar_t* text = nullptr;
    EXPECT_TRUE(entity.GetEntityEntry(8, text));
    EXPECT_STREQ(text, L"DOORS");
    short layer = 0;
    EXPECT_FALSE(entity.GetGroupShort(8, &layer));
    EXPECT_TRUE(entity.SetGroupShort(62, 3) && entity.GetEntityEntry(62, text));
    EXPECT_STREQ(text, L"3");
    EXPECT_EQ(stored(L"A1"), "");
    EXPECT_EQ(layerOf(L"A1"), L"WALLS");
    EXPECT_TRUE(entity.Flush());
    EXPECT_EQ(stored(L"A1"), "a=1");
    EXPECT_EQ(layerOf(L"A1"), L"DOORS");
}

TEST_F(Entities, DiscardChangesThatAreNotFlushed) {
    openEntities(line("A1") + line("A2"));
    EXPECT_TRUE(Connected{named(L"A1")}.SetAttribute(L"destroyed", number(1)));
    Connected entity{named(L"A1")};
    EXPECT_TRUE(entity.SetAttribute(L"disconnected", number(1)) && entity.Disconnect());
    EXPECT_FALSE(entity.Flush());
    Connected moved{named(L"A1")};
    EXPECT_TRUE(moved.SetAttribute(L"connected", number(1)));
    EXPECT_TRUE(moved.Connect(named(L"A2")) && moved.Flush());
    EXPECT_EQ(stored(L"A1") + stored(L"A2"), "");
}

TEST_F(Entities, KeepAttributesInTheOrderInWhichTheyWereFirstSet) {
    Connected entity{named(L"A1")};
    for (const wchar_t* name : {L"c", L"a", L"b"})
        EXPECT_TRUE(entity.SetAttribute(name, number(1)));
    EXPECT_TRUE(entity.SetAttribute(L"a", number(2)));
    EXPECT_EQ(shown(entity), "c=1 a=2 b=1");
    EXPECT_TRUE(entity.Flush() && entity.SetAttribute(L"c", number(3)));
    EXPECT_EQ(shown(entity), "c=3 a=2 b=1");
    EXPECT_TRUE(entity.DeleteAttribute(L"c") && entity.SetAttribute(L"c", number(4)));
    EXPECT_EQ(shown(entity), "a=2 b=1 c=4");
    EXPECT_TRUE(entity.Flush());
    reopen();
    EXPECT_EQ(stored(L"A1"), "a=2 b=1 c=4");
}

TEST_F(Entities, LoseAttributesThatAreSetToNilOrDeleted) {
    Connected entity{named(L"A1")};
    EXPECT_TRUE(entity.SetAttribute(L"none", {}));  // a missing one: true, nothing stored
    EXPECT_FALSE(entity.DeleteAttribute(L"none"));
    EXPECT_TRUE(entity.SetAttribute(L"a", number(1)) && entity.SetAttribute(L"A", number(2)));
    EXPECT_EQ(shown(entity), "a=1 A=2");  // names differ in case
    EXPECT_TRUE(entity.SetAttribute(L"a", {}) && entity.Flush());
    EXPECT_EQ(stored(L"A1"), "A=2");
    EXPECT_TRUE(entity.DeleteAttribute(L"A") && entity.Flush());
    EXPECT_EQ(stored(L"A1"), "");
    EXPECT_EQ(savedBytes().find("1001"), std::string::npos);  // no empty list stays
    CMORAdsLispVar value = number(9);
    EXPECT_FALSE(entity.GetAttribute(L"B", value));
    EXPECT_EQ(host::integerOf(value), 9);
    EXPECT_FALSE(entity.SetAttribute(L"", number(1)) || entity.SetAttribute(nullptr, number(1)));
}

TEST_F(Entities, GiveTextsUpTo2047Characters) {
    Connected entity{named(L"A1")};
    wchar_t buffer[2048] = L"untouched";
    CMORAdsLispVar value;
    EXPECT_FALSE(entity.GetAttributeText(L"t", buffer));
    EXPECT_STREQ(buffer, L"untouched");
    EXPECT_TRUE(entity.SetAttributeText(L"t", std::wstring(3000, L'x').c_str()));
    EXPECT_TRUE(entity.GetAttributeText(L"t", buffer) && entity.GetAttribute(L"t", value));
    EXPECT_EQ(std::wstring(buffer), std::wstring(2047, L'x'));
    EXPECT_EQ(host::stringOf(value).size(), 3000u);
    EXPECT_TRUE(entity.SetAttribute(L"n", host::makeList({number(1), host::makeReal(0.5)})));
    EXPECT_TRUE(entity.GetAttributeText(L"n", buffer));
    EXPECT_STREQ(buffer, L"(1 0.5)");
}

TEST_F(Entities, CountTheirRoomForAllApplicationsTogether) {
    openEntities(line("A1") +
                 "1001 ACAD|1000 foreign|1070 1|1040 1.0|1010 1.0|1020 1.0|1030 0.0|1004 "
                 "FFFF|1005 A1|1002 {|1002 }|");
    Connected entity{named(L"A1")};
    const long foreign = 9 + 3 + 9 + 25 + 4 + 9 + 4;
    EXPECT_EQ(entity.GetFreeXDataMem(), 16383 - foreign);
    EXPECT_TRUE(entity.SetAttribute(L"n", number(1)));
    EXPECT_EQ(entity.GetXDataSize(L"n"), 3 + 5);
    EXPECT_EQ(entity.GetFreeXDataMem(), 16383 - foreign - 3 - 8);
    const auto fits = [&](std::size_t size) {
        return entity.SetAttributeText(L"t", std::wstring(size, L'x').c_str());
    };
    EXPECT_FALSE(fits(17000));
    EXPECT_EQ(shown(entity), "n=1");
    EXPECT_TRUE(fits(16000) && entity.Flush());
    EXPECT_FALSE(fits(16383));
    EXPECT_EQ(attributes().free, entity.GetFreeXDataMem());
}

TEST_F(Entities, OnOneRecordKeepTheChangesOfBoth) {
    Connected first{named(L"A1")};
    Connected second{named(L"A1")};
    EXPECT_TRUE(first.SetAttribute(L"a", number(1)) && second.SetAttribute(L"b", number(2)));
    EXPECT_TRUE(first.SetAttribute(L"both", number(1)) && second.SetAttribute(L"both", number(2)));
    EXPECT_TRUE(first.Flush());
    EXPECT_EQ(shown(second), "a=1 both=2 b=2");
    EXPECT_TRUE(second.SetLayer(L"DOORS") && second.Flush());
    EXPECT_EQ(shown(first), "a=1 both=2 b=2");
    EXPECT_STREQ(first.GetLayer(nullptr), L"DOORS");
    const std::wstring big(9000, L'x');
    EXPECT_TRUE(first.SetAttributeText(L"a", big.c_str()));
    EXPECT_TRUE(second.SetAttributeText(L"b", big.c_str()) && second.SetLayer(L"WALLS"));
    EXPECT_TRUE(first.Flush());
    EXPECT_FALSE(second.Flush());  // no longer fits: all changes or none
    EXPECT_EQ(layerOf(L"A1"), L"DOORS");
    EXPECT_EQ(attributes().items.size(), 3u);
}

TEST_F(Entities, OverTheirRoomMayShrink) {
    std::string items;
    for (int i = 0; i < 70; ++i)
        items += "1000 n" + std::to_string(i) + "|1000 " + std::string(250, 'x') + "|";
    openEntities(line("A1") + attributeTags(items));
    Connected entity{named(L"A1")};
    EXPECT_LT(entity.GetFreeXDataMem(), 0);
    EXPECT_FALSE(entity.SetAttribute(L"more", number(1)));
    EXPECT_TRUE(entity.SetAttribute(L"n5", number(1)) && entity.Flush());
    EXPECT_TRUE(entity.DeleteAttribute(L"n6") && entity.Flush());
    EXPECT_EQ(attributes().items.size(), 69u);
}

TEST_F(Entities, OfAnotherLayoutVersionAreNotWritten) {
    openEntities(line("A1") + "1001 MOR_ATTRIBUTES|1070 2|1000 a|1071 1|");
    Connected entity{named(L"A1")};
    EXPECT_EQ(shown(entity), "");
    EXPECT_FALSE(entity.SetAttribute(L"a", number(1)) || entity.SetAttribute(L"a", {}));
    EXPECT_EQ(attributes().damage, "unknown layout version 2");
    EXPECT_TRUE(entity.SetLayer(L"DOORS") && entity.Flush());
    EXPECT_TRUE(holds(savedBytes(), dxfText("1001 MOR_ATTRIBUTES|1070 2|1000 a|1071 1")));
}

TEST_F(Entities, NameTheDamageOfTheirLists) {
    constexpr const char* kNoVersion = "the layout version is missing";
    constexpr const char* kBroken = "the list of attributes breaks off";
    const std::pair<const char*, const char*> cases[] = {
        {"", kNoVersion},
        {"1000 a|", kNoVersion},
        {"1070 1|1000 a|", kBroken},
        {"1070 1|1000 a|1002 {|1071 1|", kBroken},
        {"1070 1|1000 a|1002 }|", kBroken},
        {"1070 1|1000 a|1070 3|1000 x|1000 y|", kBroken},
        {"1070 1|1000 a|1041 1.0|", kBroken},
        {"1070 1|1071 5|1071 5|", kBroken},
        {"1070 1|1000 a|1071 1|1000 a|1071 2|", "two attributes of the name \"a\""},
        {"1070 1|1000 a|1071 1|1001 Mor_Attributes|1070 1|1000 b|1071 1|",
         "two lists of attributes on one record"}};
    for (const auto& [items, damage] : cases) {
        openEntities(line("A1") + "1001 MOR_ATTRIBUTES|" + items);
        EXPECT_TRUE(attributes().damage.starts_with(damage)) << items << attributes().damage;
        EXPECT_TRUE(attributes().items.empty()) << items;
        EXPECT_FALSE(Connected{named(L"A1")}.SetAttribute(L"n", number(1))) << items;
    }
}

TEST_F(Entities, MoveFromTheActiveLayoutInPlace) {
    openEntities(line("A1") + line("A2", "67 1|") + "0 INSERT|5 A3|67 1|66 1|8 0|2 B|" +
                     "0 ATTRIB|5 A4|67 1|8 0|0 SEQEND|5 A5|67 1|8 0|" + line("A6"),
                 "", blockDefinition("B", ""));
    short space = 0;
    Connected insert{named(L"A3")};
    EXPECT_TRUE(insert.GetGroupShort(67, &space));
    EXPECT_EQ(space, 1);
    EXPECT_TRUE(insert.SetGroupShort(67, 0) && insert.Flush() && insert.GetGroupShort(67, &space));
    EXPECT_EQ(space, 0);
    EXPECT_EQ(walk(), "LINE:A1 INSERT:A3 ATTRIB:A4 SEQEND:A5 LINE:A6");
    reopen();
    EXPECT_EQ(walk(), "LINE:A1 INSERT:A3 ATTRIB:A4 SEQEND:A5 LINE:A6");
}

TEST_F(Entities, MoveFromAnotherLayoutsBlockToTheEndOfModelSpace) {
    open(DxfDrawing{
        .blocks = "0 BLOCK|5 E1|330 D2|8 0|2 *Paper_Space0|70 0|0 LINE|5 A1|330 D2|67 1|8 0|"
                  "0 LINE|5 A2|330 D2|67 1|8 0|0 ENDBLK|5 E2|330 D2|8 0|",
        .entities = "0 LINE|5 A3|330 D1|8 0|",
        .tables = "0 TABLE|2 BLOCK_RECORD|5 1|70 2|0 BLOCK_RECORD|5 D1|330 1|2 *Model_Space|"
                  "0 BLOCK_RECORD|5 D2|330 1|2 *Paper_Space0|0 ENDTAB|",
        .version = "AC1015"});
    Connected entity{named(L"A1")};
    EXPECT_TRUE(entity.SetGroupShort(67, 0) && entity.Flush());
    EXPECT_EQ(walk(), "LINE:A3 LINE:A1");
    reopen();
    EXPECT_EQ(walk() + " " + walk(named(L"A2")), "LINE:A3 LINE:A1 LINE:A2");
    EXPECT_EQ(host::recordGroup(document(), named(L"A1"), 330), "D1");
    EXPECT_EQ(host::recordGroup(document(), named(L"A1"), 67), "0");
}

TEST_F(Entities, StayAsTheyWereWhenEverythingIsSetBack) {
    openEntities(line("A1") + attributeTags("1000 a|1071 1|1000 \\U+00e4|1000 \\U+00e4|"));
    Connected entity{named(L"A1")};
    for (const auto& [value, layer] : {std::pair{2, L"DOORS"}, {1, L"WALLS"}})
        EXPECT_TRUE(entity.SetAttribute(L"a", number(value)) && entity.SetLayer(layer) &&
                    entity.Flush());
    EXPECT_TRUE(entity.SetAttributeText(L"\u00E4", L"\u00E4") && entity.Flush());
    const auto report = host::saveDocument(document(), {.output = {}, .dryRun = true});
    ASSERT_TRUE(report);
    std::string edits;
    for (const auto& edit : report.value().edits) edits += edit.type + " ";
    EXPECT_EQ(edits, "TABLE APPID ");  // a registered application stays
}

TEST_F(Entities, KeepUnknownHandlesInValues) {
    openEntities(line("A1") + attributeTags("1000 a|1005 BAD1|1000 b|1005 0|"));
    EXPECT_EQ(stored(L"A1"), "a=(handent \"BAD1\") b=(handent \"0\")");
    Connected entity{named(L"A1")};
    CMORAdsLispVar value;
    ads_name name = {};
    EXPECT_TRUE(entity.GetAttribute(L"a", value));
    CMORAdsLisp::SetQ(name, value);
    CMOREntity other;
    EXPECT_FALSE(other.Connect(name));
    EXPECT_TRUE(entity.SetAttribute(L"c", value) && entity.Flush());
    reopen();
    EXPECT_EQ(stored(L"A1"), "a=(handent \"BAD1\") b=(handent \"0\") c=(handent \"BAD1\")");
}

TEST_F(Entities, RefuseNamesOfAnotherDrawing) {
    AcApDocument* other = host::createDocument(host::Release::R12);
    host::setCurrentDocument(other);
    ASSERT_EQ(makeLine(), RTNORM);
    const EntityName foreign = lastEntity();
    host::setCurrentDocument(document());
    Connected entity{named(L"A1")};
    EXPECT_FALSE(entity.SetAttribute(L"a", CMORAdsLispVar(foreign)));
    EXPECT_FALSE(entity.SetAttribute(L"a", host::makeList({CMORAdsLispVar(foreign)})));
    host::closeDocument(other);
}

TEST_F(Entities, OnALockedLayerAreRefusedOnlyWhenFaultsEnforceLocks) {
    openEntities(line("A1"), "0 LAYER|2 WALLS|70 4|62 7|6 CONTINUOUS|");
    Connected entity{named(L"A1")};
    host::faults::enforceLayerLocks(true);
    EXPECT_TRUE(entity.SetAttribute(L"a", number(1)));
    EXPECT_FALSE(entity.Flush() || entity.Destroy());
    host::faults::enforceLayerLocks(false);
    EXPECT_TRUE(entity.Flush() && entity.Destroy());
}

}  // namespace
}  // namespace mor::test
