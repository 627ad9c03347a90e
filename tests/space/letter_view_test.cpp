#include "space/letter_view.h"

#include "space/model_space.h"
#include "space/model_space_view.h"
#include "tests/space/space_fixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace mor::test {
namespace {

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
    EXPECT_FALSE(letter.connect());
    EXPECT_FALSE(letter.connect(name));
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
    EXPECT_TRUE(letter.toWCS(point));
    EXPECT_TRUE(letter.toWCS(coordinates));
    EXPECT_TRUE(letter.getMat(transformation));
    EXPECT_EQ(point.x + point.y * 10 + point.z * 100, 321);
    EXPECT_EQ(coordinates[0] + coordinates[1] * 10 + coordinates[2] * 100, 654);
    EXPECT_EQ(transformation.matrix.rows, CMORMathTransMatrix{}.rows);
}

TEST_F(LetterViews, ForwardsToTheSpaceThatItIsGiven) {
    BareLetterView letter;
    letter.setSpace(connectedSpace());
    EXPECT_TRUE(letter.isConnected());
    EXPECT_TRUE(letter.isWriteable());
    letter.setSpace(std::make_unique<CMORCadSpace>().release());  // the former one is deleted
    EXPECT_FALSE(letter.isConnected());
    EXPECT_FALSE(letter.isEmpty());
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

TEST_F(LetterViews, ForgettingEmptiesTheSpaceAndDropsIt) {
    BareLetterView letter;
    letter.setSpace(connectedSpace());
    const CMORCadSpace* space = letter.getSpace();
    EXPECT_TRUE(letter.forget());
    EXPECT_TRUE(letter.isEmpty());
    EXPECT_TRUE(space->isEmpty());  // still there, released with the document's objects
    EXPECT_EQ(letters(), 1u);
}

TEST_F(LetterViews, TheOneOfModelSpaceConnectsToItOnly) {
    CMORCadLetterModelSpaceView letter;
    EXPECT_STREQ(letter.getHandle(), L"");
    EXPECT_EQ(letter.viewType(), 1);
    const ads_name reference{1, 1};
    EXPECT_FALSE(letter.connect(reference));
    EXPECT_TRUE(letter.connect());
    EXPECT_TRUE(letter.connect());
    EXPECT_STREQ(letter.getSpace()->getName(), L"ModelSpace");
    EXPECT_EQ(
        std::unique_ptr<CMORCadLetterView> { letter.clone() } -> viewType(), 1);
    EXPECT_EQ(printed(), L"");
}

}  // namespace
}  // namespace mor::test
