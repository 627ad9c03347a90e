#include "xref/xref_space.h"

#include "platform/owned.h"
#include "tests/xref/reference_fixture.h"
#include "xref/space_iterator.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <set>
#include <string>

namespace mor::test {
namespace {

class XRefSpace : public ReferenceTest {
protected:
    /// The layer of the entity in PLAN that has the handle.
    static std::wstring layerOf(const wchar_t* handle) {
        ads_name name{};
        CMOREntity entity;
        EXPECT_TRUE(mor_xref::HandEnt(L"PLAN", handle, name) && entity.Connect(name));
        return entity.GetLayer(nullptr);
    }
    /// What handle look-up finds in PLAN: the handle of the entity, or "none".
    static std::wstring look(const wchar_t* handle) {
        ads_name name{7, 8};
        const bool found = mor_xref::HandEnt(L"PLAN", handle, name);
        EXPECT_EQ(found, !EntityName{name}.isNone());
        return handleOf(name);
    }
};

TEST_F(XRefSpace, EnvelopesShareOneLetterWhateverTheCaseOfTheName) {
    MOR_XRef a;
    CMORCadSpace b;
    ASSERT_TRUE(a.connect(L"PLAN") && b.connect(L"plan"));
    EXPECT_EQ(a == b, 1);
    EXPECT_STREQ(b.getName(), L"PLAN");  // as it was first given
    EXPECT_EQ(letters(), 1u);
    EXPECT_TRUE(a.isConnected());
    EXPECT_FALSE(a.isWriteable());
}

TEST_F(XRefSpace, OnlyAReferenceWithEntitiesConnects) {
    for (const std::wstring& name :
         {std::wstring{L"GATE"}, std::wstring{L"NOSUCH"}, std::wstring{L"LOST"}, std::wstring{},
          std::wstring{L"PLAN|DOOR"}, std::wstring(256, L'x')}) {
        MOR_XRef xref;
        EXPECT_FALSE(xref.connect(name.c_str())) << host::toUtf8(name);
        EXPECT_TRUE(xref.isEmpty());
        EXPECT_EQ(letters(), 0u);
    }
    EXPECT_EQ(printed(), L"");
}

TEST_F(XRefSpace, LooksSymbolsUpUnderTheirQualifiedNames) {
    MOR_XRef xref;
    ASSERT_TRUE(xref.connect(L"PLAN"));
    EXPECT_EQ(nameIn(ResbufList{xref.tblSearch(L"LAYER", L"WALLS")}), L"PLAN|WALLS");
    EXPECT_EQ(nameIn(ResbufList{xref.searchBlock(L"DOOR")}), L"PLAN|DOOR");
    EXPECT_EQ(xref.searchBlock(L"GATE"), nullptr);
    EXPECT_EQ(xref.tblSearch(L"LAYER", L"0"), nullptr);  // layer 0 is never qualified
    EXPECT_EQ(xref.tblSearch(L"LAYER", std::wstring(251, L'x').c_str()), nullptr);
    EXPECT_EQ(xref.searchBlock(std::wstring(5000, L'x').c_str()), nullptr);
}

TEST_F(XRefSpace, OfTwoEntitiesWithOneHandleTheFirstOfTheReferenceIsFound) {
    ads_name inPlan{};
    ads_name inSite{};
    ASSERT_TRUE(mor_xref::HandEnt(L"PLAN", L"A1", inPlan));
    find(L"A1", inSite);
    EXPECT_NE(EntityName{inPlan}, EntityName{inSite});
    EXPECT_EQ(layerOf(L"A1"), L"PLAN|Doors");
    DxfDrawing plan = planDrawing();
    plan.entities += lineEntity("1A2F", "Doors");
    plan.save("plan.dxf");
    open(siteDrawing().save("site.dxf"));
    EXPECT_EQ(layerOf(L"1A2F"), L"PLAN|WALLS");
}

TEST_F(XRefSpace, FindsHandlesOfEntitiesAndSubEntitiesInAnyCase) {
    const struct {
        const wchar_t* handle;
        const wchar_t* found;
    } cases[] = {{L"1A2F", L"1A2F"}, {L"1a2f", L"1A2F"}, {L"C3", L"C3"}, {L"E1", L"E1"},
                 {L"e2", L"E2"},     {L"E3", L"E3"},     {L"E4", L"E4"}, {L"D1", L"none"},
                 {L"10", L"none"},   {L"B1", L"none"},   {L"", L"none"}, {L"01a2f", L"1A2F"},
                 {L"0", L"none"}};
    for (const auto& c : cases) EXPECT_EQ(look(c.handle), c.found) << host::toUtf8(c.handle);
}

TEST_F(XRefSpace, EachSpaceFindsItsOwnEntityOfAHandle) {
    const auto sub = [](const std::string& type, const std::string& layer) {
        return "0 " + type + "|5 E1|8 " + layer + "|10 0.0|20 0.0|0 SEQEND|5 E2|8 " + layer + "|";
    };

    DxfDrawing{.entities = lineEntity("A1", "IN") + lineEntity("E1", "IN")}.save("c.dxf");
    DxfDrawing{.blocks = referenceDefinition("C", "c.dxf"),
               .entities = insertEntity("A1", "MID", "C") + sub("ATTRIB", "MID")}
        .save("p.dxf");

    DxfDrawing{.entities = "0 POLYLINE|5 A1|8 OUT|" + sub("VERTEX", "OUT")}.save("q.dxf");
    open(DxfDrawing{.blocks = referenceDefinition("P", "p.dxf") + referenceDefinition("Q", "q.dxf"),
                    .entities = lineEntity("A1", "OWN") + lineEntity("E2", "OWN")}
             .save("site.dxf"));
    const struct {
        const wchar_t* space;
        const wchar_t* found[3];  // of the handles A1, E1 and E2
    } cases[] = {{L"", {L"LINE OWN", L"none", L"LINE OWN"}},
                 {L"P", {L"INSERT P|MID", L"ATTRIB P|MID", L"SEQEND P|MID"}},
                 {L"Q", {L"POLYLINE Q|OUT", L"VERTEX Q|OUT", L"SEQEND Q|OUT"}},
                 {L"P|C", {L"LINE P|C|IN", L"LINE P|C|IN", L"none"}}};
    std::set<EntityName> names;
    for (const auto& c : cases) {
        CMORCadSpace space;
        ASSERT_TRUE(*c.space == L'\0' ? space.connect() : space.connect(c.space));
        for (std::size_t i = 0; i < 3; ++i) {
            ads_name name{};
            CMOREntity entity;
            std::wstring found = L"none";
            if (space.handEnt(i == 0 ? L"A1" : i == 1 ? L"E1" : L"E2", name)) {
                ASSERT_TRUE(entity.Connect(name));
                found = std::wstring{entity.Type().GetString()} + L" " + entity.GetLayer(nullptr);
                EXPECT_TRUE(names.insert(EntityName{name}).second) << "a name that stands twice";
            }
            EXPECT_EQ(found, c.found[i]);
        }
    }
}

TEST_F(XRefSpace, AnUnknownReferenceFindsNothingAndTouchesNothing) {
    ads_name name{7, 8};
    EXPECT_FALSE(mor_xref::HandEnt(L"NOSUCH", L"A1", name));
    EXPECT_FALSE(mor_xref::HandEnt(nullptr, L"A1", name));
    EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
}

TEST_F(XRefSpace, TheReferenceIsWalkedOnce) {
    EXPECT_EQ(look(L"C2"), L"C2");
    host::faults::failCall("acdbEntNext", 1);
    EXPECT_EQ(look(L"A1"), L"A1");
    EXPECT_FALSE(host::faults::struck());
}

TEST_F(XRefSpace, AnEntityThatCannotBeReadIsPassedOver) {
    host::faults::failCall("CMOREntity::Connect", 2);
    EXPECT_EQ(look(L"C2"), L"none");
    EXPECT_EQ(look(L"1A2F") + look(L"A1"), L"1A2FA1");
}

TEST_F(XRefSpace, AStaleLetterIsReplacedByTheNextConnect) {
    MOR_XRef before;
    ASSERT_TRUE(before.connect(L"PLAN"));
    host::faults::failCall("acdbTblSearch", 1);  // the block is not found again
    MOR_XRef after;
    ASSERT_TRUE(after.connect(L"PLAN"));
    EXPECT_EQ(letters(), 1u);
    EXPECT_TRUE(before.isEmpty());
    EXPECT_EQ(before == after, 0);
    EXPECT_EQ(look(L"C2"), L"C2");
}

class XRefLetter : public ReferenceTest {
protected:
    MOR_Letter_XRef m_letter;
};

TEST_F(XRefLetter, AFreshOneHasNothing) {
    ads_name name{7, 8};
    EXPECT_FALSE(m_letter.isConnected() || m_letter.isValid() || m_letter.isLocal());
    EXPECT_FALSE(m_letter.isModelSpace() || m_letter.isHashtableBuilt());
    EXPECT_FALSE(m_letter.buildHashtable());
    EXPECT_STREQ(m_letter.getName(), L"");
    EXPECT_EQ(m_letter.searchBlock(L"DOOR"), nullptr);
    EXPECT_EQ(m_letter.getIterator(host::makeList({host::makeString(L"*")})), nullptr);
    EXPECT_EQ(printed(), L"");
    EXPECT_FALSE(m_letter.handEnt(L"C2", name));
    EXPECT_EQ(printed(), L"unable building hashtable\n");
    EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
}

TEST_F(XRefLetter, ConnectsAndBuildsItsTablesOnce) {
    EXPECT_FALSE(m_letter.connect(L"NOSUCH"));
    EXPECT_TRUE(m_letter.connect(L"plan"));
    EXPECT_FALSE(m_letter.connect(L"PLAN"));
    EXPECT_STREQ(m_letter.getName(), L"plan");
    EXPECT_TRUE(m_letter.hasName(L"PLAN") && m_letter.isValid());
    EXPECT_FALSE(m_letter.hasName(L"PLA") || m_letter.isHashtableBuilt());
    EXPECT_TRUE(m_letter.buildHashtable() && m_letter.isHashtableBuilt());
    EXPECT_FALSE(m_letter.buildHashtable());
}

TEST_F(XRefLetter, StaysConnectedWhenItsBlockIsNotFoundAgain) {
    ASSERT_TRUE(m_letter.connect(L"PLAN"));
    host::faults::failCall("acdbTblSearch", 1);
    EXPECT_FALSE(m_letter.findBlock());
    EXPECT_TRUE(m_letter.isConnected());
    EXPECT_FALSE(m_letter.isValid());  // its first entity is no longer known
    EXPECT_TRUE(m_letter.findBlock());
    EXPECT_TRUE(m_letter.isValid());
}

TEST_F(XRefLetter, WhateverFailsLeavesNothingBehind) {
    for (std::size_t n = 1;; ++n) {
        host::faults::reset();
        host::faults::failAnyCall(n);
        MOR_XRef xref;
        try {
            static_cast<void>(xref.connect(L"PLAN"));
            ads_name name{};
            static_cast<void>(xref.handEnt(L"C2", name));  // any answer
            MOR_SpaceIterator entities{xref};
            while (entities() != nullptr) {
            }
            ResbufList{xref.searchBlock(L"DOOR")};
        } catch (const std::bad_alloc&) {  // NOLINT(*-empty-catch): passes through, as it should
        }
        releaseDocumentObjects();
        ASSERT_EQ(host::counters().resbufsOpen, 0u) << n;
        ASSERT_TRUE(xref.isEmpty()) << n;
        if (!host::faults::struck()) break;
    }
}

}  // namespace
}  // namespace mor::test
