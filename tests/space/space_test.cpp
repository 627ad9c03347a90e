#include "space/space.h"

#include "space/model_space.h"
#include "tests/space/space_fixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

namespace mor::test {
namespace {

constexpr const wchar_t* kNotEmpty = L"CMORCadSpace::connect: object is not empty\n";

class Spaces : public SpaceTest {};

TEST_F(Spaces, EnvelopesOfModelSpaceShareOneLetter) {
    CMORCadSpace a;
    CMORCadModelSpace b;
    ASSERT_TRUE(a.connect());
    ASSERT_TRUE(b.connect());
    EXPECT_EQ(a == b, 1);
    EXPECT_EQ(letters(), 1u);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, EmptyEnvelopesCompareUnequal) {
    const CMORCadSpace empty;
    const CMORCadSpace other;
    CMORCadSpace connected;
    connected.connect();
    EXPECT_EQ(empty == other, 0);
    EXPECT_EQ(empty == empty, 0);
    EXPECT_EQ(empty == connected, 0);
    EXPECT_EQ(connected == empty, 0);
    EXPECT_EQ(connected == connected, 1);
}

TEST_F(Spaces, AnEmptyEnvelopeAnswersNothing) {
    CMORCadSpace empty;
    ads_name name{7, 8};
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isConnected());
    EXPECT_FALSE(empty.isWriteable());
    EXPECT_FALSE(empty.handEnt(L"1", name));
    EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
    EXPECT_EQ(empty.tblSearch(L"LAYER", L"0"), nullptr);
    EXPECT_EQ(empty.searchBlock(L"*Model_Space"), nullptr);
    EXPECT_EQ(empty.getName(), nullptr);
    EXPECT_TRUE(empty.forget());
    EXPECT_TRUE(std::unique_ptr<CMORCadSpace> { empty.clone() } -> isEmpty());
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, NullTextsFindNothing) {
    CMORCadSpace space;
    space.connect();
    ads_name name{};
    EXPECT_FALSE(space.handEnt(nullptr, name));
    EXPECT_EQ(space.tblSearch(nullptr, L"0"), nullptr);
    EXPECT_EQ(space.tblSearch(L"LAYER", nullptr), nullptr);
    EXPECT_EQ(space.searchBlock(nullptr), nullptr);
    EXPECT_FALSE(space.connect(nullptr));
}

TEST_F(Spaces, ConnectingAgainPrintsOneMessageAndConnects) {
    CMORCadSpace space;
    space.connect();
    EXPECT_TRUE(space.connect());
    EXPECT_EQ(printed(), kNotEmpty);
    EXPECT_STREQ(space.getName(), L"ModelSpace");
}

TEST_F(Spaces, AFailedConnectLeavesTheEnvelopeEmpty) {
    CMORCadSpace space;
    space.connect();
    EXPECT_FALSE(space.connect(L"NOSUCH"));
    EXPECT_EQ(printed(), kNotEmpty);
    EXPECT_TRUE(space.isEmpty());
    EXPECT_EQ(letters(), 1u);  // only model space
    EXPECT_FALSE(space.connect(L"NOSUCH"));
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, ForgettingLeavesTheLetterInTheTable) {
    CMORCadSpace space;
    space.connect();
    EXPECT_TRUE(space.forget());
    EXPECT_TRUE(space.isEmpty());
    EXPECT_EQ(letters(), 1u);
    EXPECT_TRUE(space.connect());
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, ACloneIsAPlainEnvelopeOnTheSameLetter) {
    CMORCadModelSpace space;
    space.connect();
    const std::unique_ptr<CMORCadSpace> clone{space.clone()};
    const CMORCadSpace& plain = *clone;
    EXPECT_EQ(typeid(plain), typeid(CMORCadSpace));
    EXPECT_EQ(*clone == space, 1);
    space.forget();
    EXPECT_STREQ(clone->getName(), L"ModelSpace");
}

TEST_F(Spaces, ACopyOfAModelSpaceSharesItsLetter) {
    CMORCadModelSpace space;
    EXPECT_TRUE(CMORCadModelSpace{space}.isEmpty());
    space.connect();
    EXPECT_EQ(CMORCadModelSpace{space} == space, 1);
}

TEST_F(Spaces, AnEnvelopeWhoseLetterIsGoneIsEmpty) {
    CMORCadSpace space;
    CMORCadSpace other;
    space.connect();
    other.connect();
    releaseDocumentObjects();
    EXPECT_TRUE(space.isEmpty());
    EXPECT_EQ(space.getName(), nullptr);
    EXPECT_EQ(space == other, 0);
    EXPECT_TRUE(space.connect());
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(space == other, 0);  // even when the new letter lies where the old one lay
    EXPECT_TRUE(other.isEmpty());
}

TEST_F(Spaces, ALetterTakenOutOfTheTableStillAnswersItsEnvelopes) {
    NamedLetter letter{L"PLAN"};
    auto& table = CMORMDIDocumentData::GetCurrentDocumentData().GetSpaceTable2();
    table.insert(&letter);
    CMORCadSpace space;
    ASSERT_TRUE(space.connect(L"PLAN"));
    table.erase(&letter);
    EXPECT_FALSE(space.isEmpty());
    EXPECT_STREQ(space.getName(), L"PLAN");
    EXPECT_EQ(
        std::unique_ptr<CMORCadSpace> { space.clone() } -> operator==(space), 1);
}

TEST_F(Spaces, AnEnvelopeIsEmptyWhileAnotherDocumentIsCurrent) {
    CMORCadSpace space;
    space.connect();
    AcApDocument* other = host::createDocument(host::Release::R12);
    makeCurrent(other);
    EXPECT_TRUE(space.isEmpty());
    CMORCadSpace others;
    others.connect();
    EXPECT_TRUE(space.isEmpty());
    EXPECT_EQ(space == others, 0);
    makeCurrent(document());
    EXPECT_STREQ(space.getName(), L"ModelSpace");
    EXPECT_TRUE(others.isEmpty());
    host::closeDocument(other);
}

TEST_F(Spaces, AnExceptionInABlockSearchGivesNull) {
    insertLetter(std::make_unique<NamedLetter>(L"PLAN").release());  // the table owns it
    CMORCadSpace space;
    ASSERT_TRUE(space.connect(L"PLAN"));
    for (const wchar_t* block : {L"DOOR", NamedLetter::kThrowsANumber})
        EXPECT_EQ(space.searchBlock(block), nullptr);
    EXPECT_EQ(printed(), L"");
}

}  // namespace
}  // namespace mor::test
