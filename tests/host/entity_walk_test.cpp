#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

std::string entity(const std::string& type, const std::string& handle,
                   const std::string& more = "") {
    return "0 " + type + "|5 " + handle + "|8 0|" + more;
}

/// An insert with two attributes, a line, a polyline, and a line in paper space between them.
std::string mixedEntities() {
    return entity("INSERT", "A1", "66 1|2 B|") + entity("ATTRIB", "A2") + entity("ATTRIB", "A3") +
           "0 SEQEND|5 A4|8 0|" + entity("LINE", "A5", "67 1|") + entity("POLYLINE", "A6") +
           entity("VERTEX", "A7") + "0 SEQEND|5 A8|8 0|" + entity("LINE", "A9");
}
std::string block(const std::string& name, const std::string& entities) {
    return "0 BLOCK|8 0|2 " + name + "|70 0|" + entities + "0 ENDBLK|5 F" +
           std::to_string(name.size()) + "|8 0|";
}

class Walking : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        openMixed();
    }
    void openMixed() {
        openEntities(mixedEntities(), "",
                     block("B", entity("LINE", "B1") + entity("INSERT", "B2", "2 CC|") +
                                    entity("CIRCLE", "B3")) +
                         block("CC", "") + block("*Paper_Space0", entity("LINE", "C1")));
    }
    bool toggle(const wchar_t* handle) const { return acdbEntDel(named(handle)) == RTNORM; }
};

TEST_F(Walking, VisitsSubEntitiesBehindTheirOwnerAndStaysInTheSpace) {
    EXPECT_EQ(walk(),
              "INSERT:A1 ATTRIB:A2 ATTRIB:A3 SEQEND:A4 POLYLINE:A6 VERTEX:A7 SEQEND:A8 LINE:A9");
    EXPECT_EQ(walk(named(L"A5")), "LINE:A5");
    EXPECT_EQ(walk(named(L"A7")), "VERTEX:A7 SEQEND:A8 LINE:A9");
}

TEST_F(Walking, EndsWithTheBlockDefinitionAndEntersNoInsert) {
    EXPECT_EQ(walk(named(L"B1")), "LINE:B1 INSERT:B2 CIRCLE:B3");
    ads_name name = {7, 7};
    EXPECT_EQ(acdbEntNext(named(L"B3"), name), RTERROR);
    const ads_name unknown[] = {{0, 0}, {99999, 1}, {1, 99999}, {-1, 1}};
    for (const auto& one : unknown) {
        EXPECT_EQ(acdbEntNext(one, name), RTERROR);
        EXPECT_EQ(acdbEntDel(one), RTERROR);
    }
    EXPECT_EQ(name[0], 7);
    create();  // an empty drawing
    EXPECT_EQ(acdbEntNext(nullptr, name), RTERROR);
    EXPECT_EQ(acdbEntLast(name), RTERROR);
}

TEST_F(Walking, LastIsTheLastMainEntityOfTheSpaces) {
    EXPECT_EQ(titleOf(lastEntity()), "LINE:A9");
    EXPECT_TRUE(toggle(L"A9"));
    EXPECT_EQ(titleOf(lastEntity()), "POLYLINE:A6");  // not its SEQEND
    EXPECT_TRUE(toggle(L"A6"));
    EXPECT_EQ(titleOf(lastEntity()), "LINE:A5");
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_EQ(titleOf(lastEntity()), "LINE:F14");
}

TEST_F(Walking, ErasingTogglesWithSubEntities) {
    EXPECT_TRUE(toggle(L"A1"));
    EXPECT_EQ(walk(), "POLYLINE:A6 VERTEX:A7 SEQEND:A8 LINE:A9");
    EXPECT_EQ(titleOf(named(L"A1")) + titleOf(named(L"A3")), "nonenone");
    ads_name found = {};
    EXPECT_EQ(acdbHandEnt(L"a1", found), RTNORM);  // erased ones are found
    EXPECT_TRUE(toggle(L"A1"));
    EXPECT_EQ(walk().substr(0, 29), "INSERT:A1 ATTRIB:A2 ATTRIB:A3");
}

TEST_F(Walking, OnlyMainEntitiesOfTheSpacesCanBeErased) {
    for (const wchar_t* handle : {L"A2", L"A4", L"A7", L"B1", L"F1"})
        EXPECT_FALSE(toggle(handle)) << host::toUtf8(handle);
    EXPECT_TRUE(toggle(L"C1"));  // another layout
    EXPECT_TRUE(toggle(L"A5"));
    EXPECT_EQ(acdbEntDel(host::findSymbol(document(), "BLOCK", L"B").value_or(EntityName{})),
              RTERROR);
}

TEST_F(Walking, ASaveLeavesErasedRecordsOut) {
    const std::string before = readFile(file());
    EXPECT_TRUE(toggle(L"A1") && toggle(L"A9"));
    std::string wanted = before;
    for (const std::string& gone :
         {dxfText(entity("INSERT", "A1", "66 1|2 B|") + entity("ATTRIB", "A2") +
                  entity("ATTRIB", "A3") + "0 SEQEND|5 A4|8 0|"),
          dxfText(entity("LINE", "A9"))})
        wanted.erase(wanted.find(gone), gone.size());
    EXPECT_EQ(savedBytes(), wanted);
    EXPECT_TRUE(toggle(L"A1") && toggle(L"A9"));  // until the drawing is closed
    EXPECT_EQ(savedBytes(), before);
    EXPECT_EQ(makeLine(), RTNORM);
    for (const bool there : {false, true}) {
        EXPECT_TRUE(toggle(L"F14"));
        EXPECT_EQ(titleOf(lastEntity()), there ? "LINE:F14" : "LINE:A9");
        EXPECT_EQ(savedBytes().find("\nF14\n") != std::string::npos, there);
    }
}

TEST_F(Walking, NamesAreNeverUsedAgain) {
    ads_name name = {};
    named(L"A9").copyTo(name);
    openMixed();
    CMOREntity old;
    EXPECT_FALSE(old.Connect(name));
    EXPECT_EQ(acdbEntNext(name, name), RTERROR);
}

}  // namespace
}  // namespace mor::test
