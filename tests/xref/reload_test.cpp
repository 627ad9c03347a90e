#include "platform/owned.h"
#include "tests/support/dxf_records.h"
#include "tests/xref/reference_fixture.h"
#include "xref/xref_space.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace mor::test {
namespace {

/// PLAN as a space, and by its insert 11 as a view, while its file changes: another base point,
/// another first entity, A1 on another layer.
class Reloading : public IteratorTest {
protected:
    void SetUp() override {
        IteratorTest::SetUp();
        ASSERT_TRUE(m_plan.connect(L"PLAN"));
        find(L"11", m_insert);
        ASSERT_TRUE(m_view.connect(m_insert));
        ASSERT_TRUE(CMORCadView::connectTheGlobalObject(m_insert));
    }
    /// As programs save: the new file takes the place of the old one.
    static void replace(const std::string& name, const DxfDrawing& drawing) {
        const std::filesystem::path file = drawing.save("saved.dxf");
        std::filesystem::rename(file, std::filesystem::path{file}.replace_filename(name));
    }
    static void replacePlan() {
        replace("plan.dxf", {.layers = {"0", "NEW"},
                             .blocks = referenceDefinition("CORE", "core.dxf"),
                             .entities = lineEntity("71", "NEW") + lineEntity("A1", "NEW"),
                             .header = "9 $INSBASE|10 3.0|20 0.0|30 0.0|"});
    }
    bool reload(const wchar_t* name) { return host::reloadReference(document(), name); }
    [[nodiscard]] host::ReferenceInfo info() const { return host::references(document()).at(0); }
    static void expectEmpty(const CMORCadSpace& space) {
        ads_name name{7, 8};
        EXPECT_FALSE(space.isConnected() || space.handEnt(L"A1", name));
        EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
        EXPECT_EQ(space.getName(), nullptr);
        EXPECT_FALSE(space.tblSearch(L"LAYER", L"NEW") || space.searchBlock(L"CORE"));
        EXPECT_EQ(walk(space), L"empty");
    }
    static double placed(const CMORCadView& view) {
        CMORMathPoint point{10, 0, 0};
        return view.toWCS(point) ? point.x : -1;
    }
    MOR_XRef m_plan;
    MOR_XRefView m_view;
    ads_name m_insert{};
};

TEST_F(Reloading, TheNextConnectSeesTheNewFilesAndEmptiesTheOldEnvelopes) {
    MOR_XRef core;
    ASSERT_TRUE(core.connect(L"PLAN|CORE"));
    replacePlan();
    replace("core.dxf", {.layers = {"0"}, .entities = lineEntity("F2", "0")});
    EXPECT_EQ(walk(m_plan) + walk(core), L"1A2F A1 C2 C3 C4 F1 ");
    EXPECT_FALSE(reload(L"PLAN|CORE"));  // no block of this drawing
    ASSERT_TRUE(reload(L"plan"));
    EXPECT_EQ(info().entities, 2u);
    EXPECT_EQ(walk(m_plan), L"none none none none none ");  // names without entities
    MOR_XRef now;
    MOR_XRef coreNow;
    ASSERT_TRUE(now.connect(L"PLAN") && coreNow.connect(L"PLAN|CORE"));
    EXPECT_EQ(letters(), 3u);  // with that of model space
    expectEmpty(m_plan);
    expectEmpty(core);
    EXPECT_EQ(walk(now, texts({L"new"})) + walk(coreNow), L"71 A1 F2 ");
    EXPECT_FALSE(ResbufList{now.tblSearch(L"LAYER", L"WALLS")});
    EXPECT_TRUE(ResbufList{now.tblSearch(L"LAYER", L"NEW")});
}

TEST_F(Reloading, NamesOfTheFormerStateNameNothing) {
    ads_name old{};
    CMOREntity entity;
    ASSERT_TRUE(m_plan.handEnt(L"A1", old) && entity.Connect(old));
    OpenIterator iterator{m_plan};
    ASSERT_NE(iterator(), nullptr);
    replacePlan();
    ASSERT_TRUE(reload(L"PLAN") && MOR_XRef{}.connect(L"PLAN"));
    const wchar_t* text = L"untouched";
    short number = 7;
    EXPECT_EQ(entity.GetLayer(nullptr) + std::wstring{entity.Type().GetString()}, L"");
    EXPECT_TRUE(entity.Handle().IsEmpty());
    EXPECT_FALSE(entity.GetEntityEntry(8, text) || entity.GetGroupShort(67, &number));
    EXPECT_FALSE(entity.Flush() || entity.Destroy() || entity.Connect(old));
    EXPECT_EQ(handles(iterator), L"none none none none ");
    EXPECT_EQ(acdbEntNext(old, old), RTERROR);
}

TEST_F(Reloading, ANameKeptForAHandleIsNoHandleOfTheDrawingAfterwards) {
    const auto line = [](const std::string& handle) {  // with an attribute: a handle of no entity
        return lineEntity("A1", "0") + "1001 MOR_ATTRIBUTES|1070 1|1000 x|1005 " + handle + "|";
    };
    DxfDrawing{.entities = line("BEEF")}.save("plan.dxf");
    open(DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf"), .entities = line("CAFE")}
             .save("site.dxf"));
    CMOREntity entity;
    CMORAdsLispVar own;
    CMORAdsLispVar old;
    ads_name name{};
    find(L"A1", name);
    ASSERT_TRUE(entity.Connect(name) && entity.GetAttribute(L"x", own));
    ASSERT_TRUE(mor_xref::HandEnt(L"PLAN", L"A1", name));
    ASSERT_TRUE(entity.Connect(name) && entity.GetAttribute(L"x", old));
    EXPECT_EQ(host::lispText(own) + host::lispText(old), R"((handent "CAFE")(handent "BEEF"))");
    ASSERT_TRUE(reload(L"PLAN"));
    EXPECT_EQ(host::lispText(old), R"((handent ""))");
}

TEST_F(Reloading, AViewKeepsOnlyAPlacementThatItHasRead) {
    const MOR_XRefView unread{m_view};
    const CMORCadView& global = *CMORCadView::getTheGlobalObject();
    EXPECT_EQ(placed(m_view) + placed(global), 20);
    replacePlan();
    ASSERT_TRUE(reload(L"PLAN") && MOR_XRef{}.connect(L"PLAN"));
    EXPECT_EQ(placed(unread), -1);
    for (const CMORCadView* view : {static_cast<const CMORCadView*>(&m_view), &global}) {
        EXPECT_EQ(placed(*view), 10);
        EXPECT_FALSE(view->isConnected());
        EXPECT_STREQ(view->SpaceName(), L"<nameless>");
        expectEmpty(*view->getSpace());
        EXPECT_EQ(walk(*view), L"empty");
    }
    ASSERT_TRUE(m_view.connect(m_insert) && CMORCadView::connectTheGlobalObject(m_insert));
    EXPECT_EQ(placed(m_view) + placed(global), 14);
    EXPECT_EQ(walk(m_view) + walk(global), L"71 A1 71 A1 ");
}

TEST_F(Reloading, AnotherBlockOnTheSameFileKeepsItsState) {
    open(DxfDrawing{.blocks = referenceDefinition("P1", "plan.dxf") +
                              referenceDefinition("P2", "PLAN.DXF")}
             .save("site.dxf"));
    MOR_XRef first;
    MOR_XRef second;
    ASSERT_TRUE(first.connect(L"P1") && second.connect(L"P2"));
    replacePlan();
    ASSERT_TRUE(reload(L"P1") && first.forget() && first.connect(L"P1"));
    EXPECT_EQ(walk(first) + walk(second, texts({L"doors"})), L"71 A1 A1 C3 ");
    MOR_XRef again;
    ASSERT_TRUE(again.connect(L"P2"));
    EXPECT_TRUE(again == second);
    ASSERT_TRUE(reload(L"P2") && again.forget() && again.connect(L"P2"));
    EXPECT_EQ(walk(first) + walk(again), L"71 A1 71 A1 ");
}

TEST_F(Reloading, AFileThatIsRewrittenInPlaceOrGoneIsReadAsItIsAtTheReload) {
    DxfDrawing{.entities = lineEntity("A1", "0")}.save("plan.dxf");
    static_cast<void>(walk(m_plan));  // any answer
    ResbufList{m_plan.searchBlock(L"DOOR")};
    ASSERT_TRUE(reload(L"PLAN") && m_plan.forget() && m_plan.connect(L"PLAN"));
    EXPECT_EQ(walk(m_plan), L"A1 ");
    std::filesystem::remove(info().found);
    EXPECT_EQ(walk(m_plan), L"A1 ");
    ASSERT_TRUE(reload(L"PLAN"));
    EXPECT_FALSE(MOR_XRef{}.connect(L"PLAN"));
    expectEmpty(m_plan);
    EXPECT_EQ(info().status, host::ReferenceStatus::NotFound);
}

TEST_F(Reloading, OnlyTheReferencesOnTheWayToOneAreRead) {
    DxfDrawing{.entities = lineEntity("A1", "0")}.save("next.dxf");
    open(DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf") +
                              referenceDefinition("NEXT", "next.dxf") + blockDefinition("GATE", "")}
             .save("site.dxf"));
    EXPECT_TRUE(host::isReference(document(), L"next"));
    EXPECT_FALSE(host::isReference(document(), L"GATE") || host::isReference(document(), L"NONE"));
    const auto core = host::findReference(document(), L"plan|core");
    ASSERT_TRUE(core);
    EXPECT_EQ(core->name + L" " + core->block, L"PLAN|CORE CORE");
    EXPECT_EQ(core->depth, 1u);
    EXPECT_EQ(host::findReference(document(), L"PLAN|OVER")->status,
              host::ReferenceStatus::Orphaned);
    for (const wchar_t* none : {L"GATE", L"PLAN|DOOR", L"PLAN|NONE", L"PLAN|", L"", L"NONE|CORE"})
        EXPECT_FALSE(host::findReference(document(), none)) << host::toUtf8(none);
    replace("next.dxf", {.entities = lineEntity("A1", "0") + lineEntity("A2", "0")});
    EXPECT_EQ(host::findReference(document(), L"NEXT")->entities, 2u);
}

TEST_F(Reloading, ADetachedBlockIsNoReferenceAnyMore) {
    EXPECT_FALSE(host::detachReference(document(), L"GATE"));
    ASSERT_TRUE(host::detachReference(document(), L"plan"));
    EXPECT_FALSE(host::detachReference(document(), L"PLAN") || reload(L"PLAN"));
    EXPECT_FALSE(MOR_XRef{}.connect(L"PLAN") || m_view.connect(m_insert));
    expectEmpty(m_plan);
    EXPECT_EQ(info().name, L"LOST");
    const std::filesystem::path file = host::documentInfo(document()).path;
    ASSERT_TRUE(host::saveDocument(document()));
    EXPECT_EQ(splitDxf(readFile(file)).named("BLOCK", "PLAN")->text(),
              "0 BLOCK|8 0|2 PLAN|70 0|10 0.0|20 0.0|30 0.0|3 PLAN|1 ");
}

}  // namespace
}  // namespace mor::test
