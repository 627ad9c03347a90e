#include "xref/insert_view.h"

#include "dwgfs/dwg_file_system.h"
#include "platform/owned.h"
#include "space/global_view.h"
#include "space/global_view_guard.h"
#include "space/space.h"
#include "tests/xref/reference_fixture.h"
#include "xref/xref_space.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace mor::test {
namespace {

class InsertViews : public ReferenceTest {
protected:
    static bool connect(MOR_XRefView& view, const wchar_t* handle) {
        ads_name insert{};
        find(handle, insert);
        return view.connect(insert);
    }
    static void erase(const wchar_t* handle) {
        ads_name insert{};
        find(handle, insert);
        ASSERT_EQ(acdbEntDel(insert), RTNORM);
    }
    void SetUp() override {
        ReferenceTest::SetUp();
        ASSERT_TRUE(connect(m_view, L"10"));
    }
    /// Type, space and handle of a view.
    static std::wstring state(CMORCadView& view) {
        const wchar_t* handle = view.getHandle();
        return std::to_wstring(view.ViewType()) + L" " + view.SpaceName() + L" " +
               (handle == nullptr ? L"null" : handle);
    }
    /// Where the point (1, 0, 0) of the reference lies; "unchanged" when that is not known.
    static std::string place(const CMORCadView& view) {
        CMORMathPoint point{1, 0, 0};
        if (!view.toWCS(point)) {
            EXPECT_EQ(point.x * 100 + point.y * 10 + point.z, 100);
            return "unchanged";
        }
        const auto rounded = [](double v) { return std::to_string(std::lround(v * 1000)); };
        return rounded(point.x) + " " + rounded(point.y) + " " + rounded(point.z);
    }
    MOR_XRefView m_view;
};

constexpr const wchar_t* kEmpty = L"0 <empty> null";
constexpr const char* kPlaced = "100000 202000 0";  // doubled, turned to the y axis, moved

TEST_F(InsertViews, NothingElseConnectsAndTheViewIsEmptyThen) {
    MOR_XRefView view;
    EXPECT_EQ(state(view), kEmpty);
    EXPECT_EQ(place(view), "unchanged");
    ads_name insert{};
    find(L"10", insert);
    for (const wchar_t* handle : {L"12", L"13", L"A1", L"D1"}) {
        ASSERT_TRUE(view.connect(insert));
        EXPECT_EQ(state(view), L"2 PLAN 10");
        EXPECT_TRUE(view.isConnected());
        EXPECT_FALSE(view.isWriteable());
        EXPECT_FALSE(connect(view, handle)) << host::toUtf8(handle);
        EXPECT_EQ(state(view), kEmpty);
    }
    const ads_name none{};
    EXPECT_FALSE(view.connect(none));
    erase(L"10");
    EXPECT_FALSE(view.connect(insert));
    EXPECT_EQ(printed(), L"");
}

TEST_F(InsertViews, RecordsThatOnlyMentionTheReferenceDoNotConnect) {
    open(DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf"),
                    .entities = "0 ATTDEF|5 A1|8 0|2 PLAN|" + insertEntity("10", "0", "PLAN"),
                    .records = "0 LAYER|5 A2|2 PLAN|70 0|"}
             .save("site.dxf"));
    MOR_XRefView view;
    EXPECT_FALSE(connect(view, L"A1") || connect(view, L"A2"));
    EXPECT_TRUE(connect(view, L"10"));
}

TEST_F(InsertViews, AnInsertWithinAReferenceHasNoPlacementInTheDrawing) {
    DxfDrawing{.blocks = referenceDefinition("CORE", "core.dxf"),
               .entities = insertEntity("12", "0", "CORE", "10 7.0|20 0.0|")}
        .save("plan.dxf");
    MOR_XRefView view;
    ads_name insert{};
    open(siteDrawing().save("site.dxf"));
    ASSERT_TRUE(mor_xref::HandEnt(L"PLAN", L"12", insert));
    ASSERT_TRUE(view.connect(insert));
    EXPECT_EQ(state(view), L"2 PLAN|CORE 12");
    EXPECT_TRUE(view.handEnt(L"F1", insert));
    EXPECT_EQ(place(view), "unchanged");  // 12 is another insert in the drawing itself
    // Not even where that one inserts what the drawing keeps of the same block.
    open(DxfDrawing{.blocks = referenceDefinition("PLAN", "plan.dxf") +
                              referenceDefinition("PLAN|CORE", "core.dxf", 20),
                    .entities = insertEntity("10", "0", "PLAN") +
                                insertEntity("12", "0", "PLAN|CORE", "10 3.0|20 0.0|")}
             .save("site.dxf"));
    ASSERT_TRUE(mor_xref::HandEnt(L"PLAN", L"12", insert));
    ASSERT_TRUE(view.connect(insert));
    EXPECT_EQ(place(view), "unchanged");
    ASSERT_TRUE(connect(view, L"12"));
    EXPECT_EQ(place(view), "4000 0 0");
}

TEST_F(InsertViews, LookIntoTheReference) {
    ads_name name{};
    EXPECT_TRUE(m_view.handEnt(L"1a2f", name));
    EXPECT_EQ(handleOf(name), L"1A2F");
    EXPECT_FALSE(m_view.handEnt(L"10", name));
    EXPECT_EQ(nameIn(ResbufList{m_view.tblSearch(L"LAYER", L"WALLS")}), L"PLAN|WALLS");
    EXPECT_TRUE(ResbufList{m_view.searchBlock(L"DOOR")});
}

TEST_F(InsertViews, CarryPointsIntoTheDrawing) {
    MOR_XRefView plain;
    ASSERT_TRUE(connect(plain, L"11"));
    EXPECT_TRUE(m_view.sameSpace(plain));
    EXPECT_EQ(letters(), 1u);
    EXPECT_EQ(place(m_view), kPlaced);
    EXPECT_EQ(place(plain), "1000 0 0");
    double coordinates[] = {0, 0, 1};
    EXPECT_TRUE(m_view.toWCS(coordinates));
    EXPECT_NEAR(coordinates[2], 2.0, 1e-12);
    CMORAdsTransformation transformation;
    EXPECT_TRUE(m_view.getMat(transformation));
    EXPECT_NEAR(transformation.matrix.rows[1][3], 200.0, 1e-12);
}

TEST_F(InsertViews, ThePlacementIsReadOnFirstUseAndKept) {
    MOR_XRefView unused;
    ASSERT_TRUE(connect(unused, L"10"));
    EXPECT_EQ(place(m_view), kPlaced);
    erase(L"10");
    EXPECT_EQ(place(m_view), kPlaced);
    EXPECT_EQ(place(unused), "unchanged");
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_FALSE(unused.getMat(transformation));
    EXPECT_EQ(transformation.matrix.rows[0][3], 9);
    erase(L"10");  // restores it
    EXPECT_EQ(place(unused), kPlaced);
}

TEST_F(InsertViews, ACopyIsAnInsertViewWithItsOwnPlacement) {
    MOR_XRefView unread{m_view};
    EXPECT_EQ(place(m_view), kPlaced);
    MOR_XRefView copy{m_view};
    erase(L"10");
    EXPECT_EQ(place(copy), kPlaced);
    EXPECT_EQ(place(unread), "unchanged");
    MOR_XRefView moved{std::move(copy)};
    for (CMORCadView* view : {&copy, &moved})  // NOLINT(*use-after-move): moving copies
        EXPECT_EQ(state(*view), L"3 PLAN 10");
    moved = unread;
    EXPECT_EQ(place(moved), "unchanged");
}

TEST_F(InsertViews, LettersCopyFromEachOther) {
    ads_name insert{};
    find(L"10", insert);
    MOR_Letter_InsertView letter;
    ASSERT_TRUE(letter.connect(insert));
    EXPECT_EQ(letter.viewType(), 3);
    MOR_Letter_XRefView other;
    EXPECT_EQ(other.viewType(), 2);
    other.copyFrom(letter);
    EXPECT_STREQ(other.getHandle(), L"10");
    EXPECT_TRUE(other.isConnected());
    const MOR_Letter_InsertView empty;
    other.copyFrom(empty);
    EXPECT_EQ(other.getHandle(), nullptr);
    EXPECT_TRUE(other.isEmpty());
    EXPECT_FALSE(other.MOR_Letter_InsertView::connect());
}

using mor_xref::SwitchGlobalView;
using MorAdmin::Workaround::GlobalViewEnsureMS;

class GlobalXRefView : public ReferenceTest {
protected:
    /// Type and space of the global view, then whether the file system is in model space.
    static std::wstring state() {
        CMORCadView* view = CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
        const CMORCadDwgFileSystem* fileSystem =
            CMORMDIDocumentData::GetCurrentDocumentData().GetMorDwgFileSystem();
        return std::to_wstring(view->ViewType()) + L" " + view->SpaceName() +
               (fileSystem != nullptr && fileSystem->IsInModelSpace() ? L" files in model space"
                                                                      : L"");
    }
};

constexpr const wchar_t* kModelSpace = L"1 ModelSpace files in model space";

TEST_F(GlobalXRefView, IsSwitchedByHandle) {
    EXPECT_TRUE(SwitchGlobalView(L"10"));
    EXPECT_EQ(state(), L"2 PLAN");
    EXPECT_TRUE(SwitchGlobalView(L""));
    EXPECT_EQ(state(), L"1 ModelSpace");
    EXPECT_TRUE(SwitchGlobalView(L"11"));
    EXPECT_FALSE(SwitchGlobalView(L"13"));  // its file is missing
    EXPECT_EQ(state(), L"0 <empty>");
}

TEST_F(GlobalXRefView, AGuardMovesItIntoModelSpaceAndBringsItBackAtTheEndOfTheScope) {
    ASSERT_TRUE(SwitchGlobalView(L"10"));
    {
        const GlobalViewEnsureMS guard;
        EXPECT_TRUE(guard.IsValid());
        EXPECT_EQ(state(), kModelSpace);
        ASSERT_TRUE(SwitchGlobalView(L"10"));
        ASSERT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
        EXPECT_EQ(state(), L"2 PLAN");
    }
    EXPECT_EQ(state(), kModelSpace);
}

}  // namespace
}  // namespace mor::test
