#include "space/view.h"

#include "platform/owned.h"
#include "space/letter_lists.h"
#include "space/letter_view.h"
#include "space/model_space.h"
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

class Views : public SpaceTest {
protected:
    void SetUp() override {
        SpaceTest::SetUp();
        ASSERT_TRUE(m_view.connect());
    }
    MOR_ModelSpaceView m_view;
};

TEST_F(Views, ANewModelSpaceViewIsEmptyUntilItIsConnected) {
    MOR_ModelSpaceView view;
    EXPECT_TRUE(view.isEmpty());
    EXPECT_EQ(state(view), kEmpty);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(view.connect());
        EXPECT_FALSE(view.isEmpty());
        EXPECT_EQ(state(view), kModelSpace);
    }
    const ads_name reference{1, 1};
    EXPECT_FALSE(OpenView::connectTo(view, reference));
    EXPECT_EQ(state(view), kModelSpace);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Views, AModelSpaceViewReachesTheDrawingUnchanged) {
    CMORMathPoint point{1, 2, 3};
    EXPECT_TRUE(m_view.toWCS(point));
    EXPECT_EQ(point.y, 2);
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_TRUE(m_view.getMat(transformation));
    EXPECT_EQ(transformation.matrix.rows, CMORMathTransMatrix{}.rows);
    EXPECT_NE(findGroup(ResbufList{m_view.tblSearch(L"LAYER", L"0")}, 2), nullptr);
}

TEST_F(Views, AnEmptyViewAnswersNothing) {
    const CMORCadView empty;
    ads_name name{};
    CMORMathPoint point;
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_FALSE(empty.handEnt(L"1", name) || empty.searchBlock(L"A"));
    EXPECT_FALSE(empty.tblSearch(L"LAYER", L"0") || empty.getSpace());
    EXPECT_FALSE(empty.toWCS(point) || empty.toWCS(&point.x) || empty.getMat(transformation));
    EXPECT_EQ(transformation.matrix.rows[0][3], 9);
    EXPECT_FALSE(empty.sameSpace(m_view) || m_view.sameSpace(empty) || empty.sameSpace(empty));
    EXPECT_TRUE(m_view.sameSpace(m_view));
    EXPECT_EQ(printed(), L"");
}

TEST_F(Views, CopiesAreIndependentViewsOfOneSpace) {
    MOR_ModelSpaceView copy{m_view};
    MOR_ModelSpaceView assigned;
    assigned = m_view;
    MOR_ModelSpaceView moved{std::move(assigned)};
    MOR_ModelSpaceView moveAssigned;
    moveAssigned = std::move(moved);
    EXPECT_TRUE(copy.sameSpace(m_view));
    EXPECT_NE(copy.getSpace(), m_view.getSpace());
    EXPECT_EQ(letters(), 1u);
    m_view.forget();
    for (CMORCadView* v : {&copy, &assigned, &moved, &moveAssigned})  // NOLINT(*use-after-move)
        EXPECT_EQ(state(*v), kModelSpace);
    moved = MOR_ModelSpaceView{};
    EXPECT_EQ(state(moved), kEmpty);
}

TEST_F(Views, AssigningAViewToItselfKeepsIt) {
    const CMORCadView& same = m_view;
    m_view.CMORCadView::operator=(same);
    EXPECT_EQ(state(m_view), kModelSpace);
}

TEST_F(Views, AForgottenViewIsEmptyAndForgetsOnce) {
    EXPECT_FALSE(MOR_ModelSpaceView{}.forget());
    const wchar_t* handle = m_view.getHandle();
    const CMORCadSpace* space = m_view.getSpace();
    EXPECT_TRUE(m_view.forget());
    EXPECT_EQ(state(m_view), kEmpty);
    EXPECT_FALSE(m_view.forget());
    EXPECT_STREQ(handle, L"");      // what the caller got from it
    EXPECT_TRUE(space->isEmpty());  // is still there
    releaseDocumentObjects();
}

TEST_F(Views, WhatWasForgottenGoesWithItsOwnDocument) {
    const CMORCadSpace* space = m_view.getSpace();
    EXPECT_TRUE(m_view.forget());
    const OtherDocument other;
    m_view.connect();
    EXPECT_TRUE(m_view.forget());
    EXPECT_EQ(LetterLists::s_forgotten.size(), 4u);  // letter and space of each
    releaseDocumentObjects();
    EXPECT_EQ(LetterLists::s_forgotten.size(), 2u);
    other.leave();
    EXPECT_TRUE(space->isEmpty());  // is still there
    clearSpaceTable();              // registered for the other document as well
    spaceTableCallBack(MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    EXPECT_EQ(LetterLists::s_forgotten.size(), 0u);
}

TEST_F(Views, TheRegistryGetsPlainViews) {
    const std::unique_ptr<CMORMDIDocumentVariable> instance{m_view.CreateInstance()};
    const std::unique_ptr<CMORMDIDocumentVariable> copy{m_view.CreateCopy()};
    EXPECT_TRUE(isPlain(*instance) && isPlain(*copy));
    EXPECT_EQ(state(dynamic_cast<CMORCadView&>(*instance)), kEmpty);
    EXPECT_EQ(state(dynamic_cast<CMORCadView&>(*copy)), kModelSpace);
    const ads_name none{};
    EXPECT_FALSE(OpenView::connectTo(dynamic_cast<CMORCadView&>(*copy), none));
    EXPECT_EQ(state(dynamic_cast<CMORCadView&>(*copy)), kEmpty) << "a failed connect";
}

TEST_F(Views, AViewWhoseSpaceIsGoneIsNameless) {
    const MOR_ModelSpaceView other{m_view};
    releaseDocumentObjects();
    EXPECT_EQ(state(m_view), L"1 <nameless> ''");
    EXPECT_FALSE(m_view.sameSpace(other) || m_view.tblSearch(L"LAYER", L"0"));
    EXPECT_TRUE(m_view.connect());
    EXPECT_EQ(state(m_view), kModelSpace);
}

/// A letter that adds nothing to the base.
class BareLetterView : public CMORCadLetterView {
public:
    int viewType() override { return CMORCadView::eEmpty; }
    CMORCadLetterView* clone() override {
        return std::make_unique<BareLetterView>(*this).release();  // caller owns
    }
};

class LetterViews : public SpaceTest {
protected:
    /// For `setSpace`, which owns it.
    static CMORCadSpace* connectedSpace() {
        auto space = std::make_unique<CMORCadModelSpace>();
        space->connect();
        return space.release();
    }
};

TEST_F(LetterViews, AnEmptyOneForwardsNothing) {
    BareLetterView letter;
    ads_name name{7, 8};
    EXPECT_TRUE(letter.isEmpty());
    EXPECT_FALSE(letter.connect() || letter.connect(name));
    EXPECT_FALSE(letter.isConnected() || letter.isWriteable() || letter.forget());
    EXPECT_FALSE(letter.handEnt(L"1", name));
    EXPECT_EQ(letter.searchBlock(L"*Model_Space"), nullptr);
    EXPECT_EQ(letter.tblSearch(L"LAYER", L"0"), nullptr);
    EXPECT_EQ(letter.getHandle(), nullptr);
    EXPECT_EQ(letter.getSpace(), nullptr);
}

TEST_F(LetterViews, TheBaseLeavesPointsAsTheyAre) {
    BareLetterView letter;
    CMORMathPoint point{1, 2, 3};
    double coordinates[] = {4, 5, 6};
    CMORAdsTransformation transformation;
    transformation.matrix.rows[0][3] = 9;
    EXPECT_TRUE(letter.toWCS(point) && letter.toWCS(coordinates) && letter.getMat(transformation));
    EXPECT_EQ(point.x + point.y * 10 + point.z * 100, 321);
    EXPECT_EQ(coordinates[0] + coordinates[1] * 10 + coordinates[2] * 100, 654);
    EXPECT_EQ(transformation.matrix.rows, CMORMathTransMatrix{}.rows);
}

TEST_F(LetterViews, ForwardsToTheSpaceThatItIsGivenUntilItForgets) {
    BareLetterView letter;
    letter.setSpace(connectedSpace());
    EXPECT_TRUE(letter.isConnected() && letter.isWriteable());
    letter.setSpace(std::make_unique<CMORCadSpace>().release());  // the former one is deleted
    EXPECT_FALSE(letter.isConnected() || letter.isEmpty());
    letter.setSpace(connectedSpace());
    const CMORCadSpace* space = letter.getSpace();
    EXPECT_TRUE(letter.forget() && letter.isEmpty());
    EXPECT_TRUE(space->isEmpty());  // still there, released with the document's objects
    EXPECT_EQ(letters(), 1u);
}

TEST_F(LetterViews, ACopyHasASpaceEnvelopeOfItsOwn) {
    BareLetterView letter;
    letter.setSpace(connectedSpace());
    const std::unique_ptr<CMORCadLetterView> copy{letter.clone()};
    ASSERT_NE(copy->getSpace(), letter.getSpace());
    EXPECT_EQ(*copy->getSpace() == *letter.getSpace(), 1);
    letter.clean();
    EXPECT_TRUE(copy->isConnected());
    copy->copyFrom(letter);
    EXPECT_TRUE(copy->isEmpty());
}

}  // namespace
}  // namespace mor::test
