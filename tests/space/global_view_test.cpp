#include "space/global_view.h"

#include "dwgfs/dwg_file_system.h"
#include "space/global_view_guard.h"
#include "tests/space/space_fixture.h"
#include "tests/support/dxf_drawing.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace mor::test {
namespace {

using mor_xref::SwitchGlobalView;
using MorAdmin::Workaround::GlobalViewEnsureMS;

/// A drawing with a line A1 and an insert A2 of an ordinary block.
class GlobalView : public SpaceTest {
protected:
    void SetUp() override {
        SpaceTest::SetUp();
        open(DxfDrawing{.blocks = blockDefinition("DOOR", lineEntity("D1", "0")),
                        .entities = lineEntity("A1", "0") + insertEntity("A2", "0", "DOOR")}
                 .save("global_view.dxf"));
    }
    static CMORCadView*& slot() {
        return CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
    }
    /// Type and space of the document's global view; "absent" when it has none.
    static std::wstring state() {
        if (slot() == nullptr) return L"absent";
        return std::to_wstring(slot()->ViewType()) + L" " + slot()->SpaceName();
    }
};

TEST_F(GlobalView, EveryDocumentHasItsOwn) {
    EXPECT_EQ(state(), L"absent");
    const CMORCadView* view = CMORCadView::getTheGlobalObject();
    EXPECT_EQ(state(), L"1 ModelSpace");
    {
        const OtherDocument other;
        EXPECT_EQ(state(), L"absent");
        EXPECT_NE(CMORCadView::getTheGlobalObject(), view);
        releaseDocumentObjects();
    }
    EXPECT_EQ(CMORCadView::getTheGlobalObject(), view);
    EXPECT_EQ(state(), L"1 ModelSpace");
}

TEST_F(GlobalView, AnUnknownHandleLeavesItAsItIs) {
    for (const wchar_t* handle : {L"FFFF", L"none"}) EXPECT_FALSE(SwitchGlobalView(handle));
    EXPECT_FALSE(SwitchGlobalView(nullptr));
    EXPECT_EQ(state(), L"absent");
    EXPECT_TRUE(SwitchGlobalView(L""));
    EXPECT_FALSE(SwitchGlobalView(L"FFFF"));
    EXPECT_EQ(state(), L"1 ModelSpace");
}

TEST_F(GlobalView, AnEntityThatIsNoReferenceLeavesItEmpty) {
    for (const wchar_t* handle : {L"A1", L"A2", L"D1"}) {
        EXPECT_FALSE(SwitchGlobalView(handle)) << host::toUtf8(handle);
        EXPECT_EQ(state(), L"0 <empty>");
        EXPECT_TRUE(CMORCadView::connectTheGlobalObject());
        EXPECT_EQ(state(), L"1 ModelSpace");
    }
    EXPECT_EQ(printed(), L"");
}

TEST_F(GlobalView, IsDeletedOnceUnlessTheModuleDidNotMakeIt) {
    static_cast<void>(CMORCadView::getTheGlobalObject());
    for (int round = 0; round < 2; ++round) {
        CMORCadView::deleteTheGlobalObject();
        EXPECT_EQ(state(), L"absent");
    }
    CMORCadView foreign;
    slot() = &foreign;
    EXPECT_EQ(CMORCadView::getTheGlobalObject(), &foreign);
    CMORCadView::deleteTheGlobalObject();
    EXPECT_EQ(slot(), &foreign);
    EXPECT_TRUE(CMORCadView::connectTheGlobalObject());
    EXPECT_EQ(state(), L"1 ModelSpace");
    slot() = nullptr;
}

TEST_F(GlobalView, GoesWithTheDocumentsObjectsBeforeTheLettersOfTheSpaces) {
    struct Witness : NamedLetter {
        explicit Witness(bool& viewWasGone) : NamedLetter(L"PLAN"), m_viewWasGone(viewWasGone) {}
        ~Witness() override { m_viewWasGone = slot() == nullptr; }
        bool& m_viewWasGone;
    };
    bool viewWasGone = false;
    static_cast<void>(CMORCadView::getTheGlobalObject());
    insertLetter(std::make_unique<Witness>(viewWasGone).release());  // the table owns it
    releaseDocumentObjects();
    EXPECT_TRUE(viewWasGone);
    EXPECT_EQ(state(), L"absent");
    EXPECT_EQ(letters(), 0u);
}

TEST_F(GlobalView, AGuardMakesViewAndFileSystem) {
    const GlobalViewEnsureMS guard;
    EXPECT_TRUE(guard.IsValid());
    EXPECT_EQ(state(), L"1 ModelSpace");
    EXPECT_TRUE(CMORCadDwgFileSystem::getTheGlobalObject()->IsInModelSpace());
}

TEST_F(GlobalView, AGuardOnAnEmptyViewSwitchesNothing) {
    for (const bool deleted : {false, true}) {
        ASSERT_FALSE(SwitchGlobalView(L"A1"));
        {
            const GlobalViewEnsureMS guard;
            EXPECT_FALSE(guard.IsValid());
            EXPECT_EQ(state(), L"0 <empty>");
            if (deleted) CMORCadView::deleteTheGlobalObject();
        }
        EXPECT_EQ(state(), deleted ? L"absent" : L"0 <empty>");
    }
}

}  // namespace
}  // namespace mor::test
