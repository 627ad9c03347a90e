#include "space/view.h"

#include "platform/owned.h"
#include "space/letter_lists.h"
#include "space/model_space_view.h"
#include "space/space.h"
#include "tests/space/space_fixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

namespace mor::test {
namespace {

/// Reaches the protected operation of any view as a subclass outside the library may.
struct OpenView : CMORCadView {
    static bool connectTo(CMORCadView& view, const ads_name ename) {
        bool (CMORCadView::*connectByName)(const ads_name) = &OpenView::connect;
        return (view.*connectByName)(ename);
    }
};

/// What a view says of itself: type, space, handle, and w for writeable, c for connected.
std::wstring state(CMORCadView& view) {
    const wchar_t* handle = view.getHandle();
    std::wstring text = std::to_wstring(view.ViewType()) + L" " + view.SpaceName() + L" ";
    text += handle == nullptr ? std::wstring{L"null"} : L"'" + std::wstring{handle} + L"'";
    return text + (view.isWriteable() ? L" w" : L"") + (view.isConnected() ? L" c" : L"");
}

bool isPlain(const CMORMDIDocumentVariable& view) { return typeid(view) == typeid(CMORCadView); }

constexpr const wchar_t* kEmpty = L"0 <empty> null";
constexpr const wchar_t* kModelSpace = L"1 ModelSpace '' w c";

class Views : public SpaceTest {};

TEST_F(Views, ANewModelSpaceViewIsEmptyUntilItIsConnected) {
    MOR_ModelSpaceView view;
    EXPECT_TRUE(view.isEmpty());
    EXPECT_EQ(state(view), kEmpty);
    EXPECT_TRUE(view.connect());
    EXPECT_FALSE(view.isEmpty());
    EXPECT_EQ(state(view), kModelSpace);
}

TEST_F(Views, AnEmptyViewAnswersNothing) {
    const CMORCadView empty;
    ads_name name{};
    CMORMathPoint point;
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_FALSE(empty.handEnt(L"1", name));
    EXPECT_EQ(empty.tblSearch(L"LAYER", L"0"), nullptr);
    EXPECT_EQ(empty.searchBlock(L"A"), nullptr);
    EXPECT_EQ(empty.getSpace(), nullptr);
    EXPECT_FALSE(empty.toWCS(point) || empty.toWCS(&point.x));
    EXPECT_FALSE(empty.getMat(transformation));
    EXPECT_EQ(transformation.matrix.rows[0][3], 9);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Views, AModelSpaceViewReachesTheDrawingUnchanged) {
    MOR_ModelSpaceView view;
    view.connect();
    CMORMathPoint point{1, 2, 3};
    EXPECT_TRUE(view.toWCS(point));
    EXPECT_EQ(point.y, 2);
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_TRUE(view.getMat(transformation));
    EXPECT_EQ(transformation.matrix.rows, CMORMathTransMatrix{}.rows);
    EXPECT_NE(findGroup(ResbufList{view.tblSearch(L"LAYER", L"0")}, 2), nullptr);
}

TEST_F(Views, ConnectingAgainPrintsNothing) {
    MOR_ModelSpaceView view;
    view.connect();
    EXPECT_TRUE(view.connect());
    EXPECT_EQ(state(view), kModelSpace);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Views, CopiesAreIndependentViewsOfOneSpace) {
    MOR_ModelSpaceView view;
    view.connect();
    MOR_ModelSpaceView copy{view};
    EXPECT_TRUE(copy.sameSpace(view));
    EXPECT_NE(copy.getSpace(), view.getSpace());
    EXPECT_EQ(letters(), 1u);
    view.forget();
    EXPECT_EQ(state(copy), kModelSpace);
}

TEST_F(Views, AssigningAndMovingCopy) {
    MOR_ModelSpaceView view;
    view.connect();
    MOR_ModelSpaceView assigned;
    assigned = view;
    MOR_ModelSpaceView moved{std::move(view)};
    MOR_ModelSpaceView moveAssigned;
    moveAssigned = std::move(assigned);
    for (CMORCadView* v : {&view, &assigned, &moved, &moveAssigned})  // NOLINT(*use-after-move)
        EXPECT_EQ(state(*v), kModelSpace);
    moved = MOR_ModelSpaceView{};
    EXPECT_EQ(state(moved), kEmpty);
}

TEST_F(Views, AssigningAViewToItselfKeepsIt) {
    MOR_ModelSpaceView view;
    view.connect();
    const CMORCadView& same = view;
    view.CMORCadView::operator=(same);
    EXPECT_EQ(state(view), kModelSpace);
}

TEST_F(Views, AForgottenViewIsEmptyAndForgetsOnce) {
    MOR_ModelSpaceView view;
    EXPECT_FALSE(view.forget());
    view.connect();
    const wchar_t* handle = view.getHandle();
    const CMORCadSpace* space = view.getSpace();
    EXPECT_TRUE(view.forget());
    EXPECT_EQ(state(view), kEmpty);
    EXPECT_FALSE(view.forget());
    EXPECT_STREQ(handle, L"");      // what the caller got from it
    EXPECT_TRUE(space->isEmpty());  // is still there
    releaseDocumentObjects();
}

TEST_F(Views, WhatWasForgottenGoesWithItsOwnDocument) {
    MOR_ModelSpaceView view;
    view.connect();
    const CMORCadSpace* space = view.getSpace();
    EXPECT_TRUE(view.forget());
    AcApDocument* other = host::createDocument(host::Release::R12);
    makeCurrent(other);
    view.connect();
    EXPECT_TRUE(view.forget());
    EXPECT_EQ(LetterLists::s_forgotten.size(), 4u);  // letter and space of each
    releaseDocumentObjects();
    EXPECT_EQ(LetterLists::s_forgotten.size(), 2u);
    makeCurrent(document());
    EXPECT_TRUE(space->isEmpty());  // is still there
    clearSpaceTable();              // registered for the other document as well
    spaceTableCallBack(MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    EXPECT_EQ(LetterLists::s_forgotten.size(), 0u);
    host::closeDocument(other);
}

TEST_F(Views, AModelSpaceViewRefusesBlockReferences) {
    MOR_ModelSpaceView view;
    view.connect();
    const ads_name reference{1, 1};
    EXPECT_FALSE(OpenView::connectTo(view, reference));
    EXPECT_EQ(state(view), kModelSpace);
}

TEST_F(Views, AFailedConnectLeavesAViewEmpty) {
    MOR_ModelSpaceView view;
    view.connect();
    CMORCadView plain{view};
    const ads_name none{};
    EXPECT_FALSE(OpenView::connectTo(plain, none));
    EXPECT_EQ(state(plain), kEmpty);
}

TEST_F(Views, TheRegistryGetsPlainViews) {
    MOR_ModelSpaceView view;
    view.connect();
    const std::unique_ptr<CMORMDIDocumentVariable> instance{view.CreateInstance()};
    const std::unique_ptr<CMORMDIDocumentVariable> copy{view.CreateCopy()};
    EXPECT_TRUE(isPlain(*instance));
    EXPECT_TRUE(isPlain(*copy));
    EXPECT_EQ(state(dynamic_cast<CMORCadView&>(*instance)), kEmpty);
    EXPECT_EQ(state(dynamic_cast<CMORCadView&>(*copy)), kModelSpace);
}

TEST_F(Views, AnEmptyViewIsInNoSpace) {
    MOR_ModelSpaceView view;
    view.connect();
    const CMORCadView empty;
    EXPECT_FALSE(empty.sameSpace(view));
    EXPECT_FALSE(view.sameSpace(empty));
    EXPECT_FALSE(empty.sameSpace(empty));
    EXPECT_TRUE(view.sameSpace(view));
}

TEST_F(Views, AViewWhoseSpaceIsGoneIsNameless) {
    MOR_ModelSpaceView view;
    view.connect();
    const MOR_ModelSpaceView other{view};
    releaseDocumentObjects();
    EXPECT_EQ(state(view), L"1 <nameless> ''");
    EXPECT_FALSE(view.sameSpace(other));
    EXPECT_EQ(view.tblSearch(L"LAYER", L"0"), nullptr);
    EXPECT_TRUE(view.connect());
    EXPECT_EQ(state(view), kModelSpace);
}

}  // namespace
}  // namespace mor::test
