#include "space/space.h"

#include "platform/owned.h"
#include "space/model_space.h"
#include "space/space_table.h"
#include "tests/space/space_fixture.h"
#include "tests/support/dxf_drawing.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>

namespace mor::test {
namespace {

constexpr const wchar_t* kNotEmpty = L"CMORCadSpace::connect: object is not empty\n";

class Spaces : public SpaceTest {};

TEST_F(Spaces, EmptyEnvelopesCompareUnequal) {
    const CMORCadSpace empty;
    const CMORCadSpace other;
    CMORCadSpace a;
    CMORCadModelSpace b;
    EXPECT_TRUE(CMORCadModelSpace{b}.isEmpty());
    ASSERT_TRUE(a.connect() && b.connect());
    EXPECT_EQ((empty == other) + (empty == empty) + (empty == a) + (a == empty), 0);
    EXPECT_TRUE(a == a && a == b && CMORCadModelSpace{b} == b);
    EXPECT_EQ(letters(), 1u);
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, AnEmptyEnvelopeAnswersNothing) {
    CMORCadSpace empty;
    ads_name name{7, 8};
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isConnected() || empty.isWriteable() || empty.handEnt(L"1", name));
    EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
    EXPECT_FALSE(empty.tblSearch(L"LAYER", L"0") || empty.searchBlock(L"*Model_Space"));
    EXPECT_EQ(empty.getName(), nullptr);
    EXPECT_TRUE(empty.forget());
    const std::unique_ptr<CMORCadSpace> clone{empty.clone()};
    EXPECT_TRUE(clone->isEmpty());
    EXPECT_EQ(printed(), L"");
}

TEST_F(Spaces, NullTextsFindNothing) {
    CMORCadSpace space;
    space.connect();
    ads_name name{};
    EXPECT_FALSE(space.handEnt(nullptr, name) || space.searchBlock(nullptr));
    EXPECT_FALSE(space.tblSearch(nullptr, L"0") || space.tblSearch(L"LAYER", nullptr));
    EXPECT_FALSE(space.connect(nullptr));
}

TEST_F(Spaces, ConnectingAgainPrintsOneMessageAndConnects) {
    CMORCadSpace space;
    space.connect();
    EXPECT_TRUE(space.connect());
    EXPECT_EQ(printed(), kNotEmpty);
    EXPECT_STREQ(space.getName(), L"ModelSpace");
    EXPECT_FALSE(space.connect(L"NOSUCH"));
    EXPECT_EQ(printed(), kNotEmpty);
    EXPECT_TRUE(space.isEmpty());
    EXPECT_FALSE(space.connect(L"NOSUCH"));
    EXPECT_TRUE(space.connect() && space.forget() && space.isEmpty());
    EXPECT_EQ(letters(), 1u);  // that of model space stays
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
    const std::unique_ptr<CMORCadSpace> clone{space.clone()};
    EXPECT_TRUE(*clone == space);
}

TEST_F(Spaces, AnEnvelopeIsEmptyWhileAnotherDocumentIsCurrent) {
    CMORCadSpace space;
    CMORCadSpace others;
    space.connect();
    const OtherDocument other;
    EXPECT_TRUE(space.isEmpty());
    others.connect();
    EXPECT_TRUE(space.isEmpty());
    EXPECT_EQ(space == others, 0);
    other.leave();
    EXPECT_STREQ(space.getName(), L"ModelSpace");
    EXPECT_TRUE(others.isEmpty());
}

TEST_F(Spaces, AnExceptionInABlockSearchGivesNull) {
    insertLetter(std::make_unique<NamedLetter>(L"PLAN").release());  // the table owns it
    CMORCadSpace space;
    ASSERT_TRUE(space.connect(L"PLAN"));
    for (const wchar_t* block : {L"DOOR", NamedLetter::kThrowsANumber})
        EXPECT_EQ(space.searchBlock(block), nullptr);
    EXPECT_EQ(printed(), L"");
}

class SpaceTables : public SpaceTest {
protected:
    /// Owned by the table.
    static NamedLetter* insertNamed(const wchar_t* name, bool* destroyed = nullptr) {
        auto letter = std::make_unique<NamedLetter>(name, destroyed);
        insertLetter(letter.get());
        return letter.release();
    }
};

TEST_F(SpaceTables, TheBaseLetterAnswersAsASpaceThatHasNothing) {
    CMORCadLetterSpace letter;
    ads_name name{7, 8};
    EXPECT_FALSE(letter.hasName(L""));
    EXPECT_FALSE(letter.isModelSpace() || letter.isValid() || letter.isConnected());
    EXPECT_FALSE(letter.isLocal() || letter.isWriteable());
    EXPECT_STREQ(letter.getName(), L"");
    EXPECT_EQ(letter.searchBlock(L"A"), nullptr);
    EXPECT_EQ(letter.tblSearch(L"BLOCK", L"A"), nullptr);
    EXPECT_FALSE(letter.handEnt(L"1", name));
    EXPECT_EQ(EntityName{name}, (EntityName{7, 8}));
    EXPECT_EQ(letter.getIterator(CMORStringList{}), nullptr);
    EXPECT_EQ(letter.getIterator(CMORAdsLispVar{}), nullptr);
}

TEST_F(SpaceTables, TheFirstLetterOfATableRegistersItsFunction) {
    EXPECT_EQ(registrations(), 0);
    for (int round = 0; round < 2; ++round) {  // a table that fills again registers again
        NamedLetter* letter = insertNamed(L"A");
        EXPECT_EQ(registrations(), 1);
        EXPECT_EQ(insertLetter(letter), letter);
        EXPECT_EQ(letters(), 1u);
        insertNamed(L"B");
        EXPECT_EQ(registrations(), 1);
        releaseDocumentObjects();
        EXPECT_EQ(letters(), 0u);
    }
}

TEST_F(SpaceTables, OnlyALetterOfTheTableIsRemovedAndDestroyed) {
    bool destroyed = false;
    NamedLetter* letter = insertNamed(L"A", &destroyed);
    bool strangerDestroyed = false;
    NamedLetter stranger{L"B", &strangerDestroyed};
    EXPECT_FALSE(removeLetter(&stranger));
    EXPECT_FALSE(strangerDestroyed);
    EXPECT_TRUE(removeLetter(letter));
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(letters(), 0u);
}

TEST_F(SpaceTables, AValidLetterIsFoundByNameAndAStaleOneDestroyed) {
    bool destroyed = false;
    NamedLetter* letter = insertNamed(L"PLAN", &destroyed);
    EXPECT_EQ(findOrCreateXRefLetter(L"PLAN"), letter);
    EXPECT_EQ(findOrCreateXRefLetter(L"OTHER"), nullptr);
    CMORCadLetterSpace* modelSpace = findOrCreateModelSpaceLetter();
    EXPECT_EQ(findOrCreateModelSpaceLetter(), modelSpace);
    EXPECT_TRUE(modelSpace->isModelSpace());
    EXPECT_EQ(letters(), 2u);
    CMORCadSpace space;
    ASSERT_TRUE(space.connect(L"PLAN"));
    letter->valid = false;
    EXPECT_FALSE(space.connect(space.getName()));  // the drawing has no such reference
    EXPECT_TRUE(destroyed && space.isEmpty());
    EXPECT_EQ(letters(), 1u);
}

TEST_F(SpaceTables, OnlyMessage3EmptiesTheTable) {
    bool destroyed = false;
    insertNamed(L"A", &destroyed);
    for (int message : {0, 1, 2, 4, 5}) send(message);
    EXPECT_EQ(letters(), 1u);
    EXPECT_EQ(registrations(), 1);
    send(3);
    EXPECT_EQ(letters(), 0u);
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(registrations(), 0);
}

TEST_F(SpaceTables, ClearingAnEmptyTableStillRemovesARegistration) {
    insertNamed(L"A");
    clearSpaceTable();
    EXPECT_EQ(registrations(), 0);
    insertNamed(L"A");
    {
        const OtherDocument other;
        clearSpaceTable();
        EXPECT_EQ(registrations(), 0);
    }
    EXPECT_EQ(letters(), 1u);
}

TEST_F(SpaceTables, OneMessageUsesUpTheRegistrationsOfTwoDocuments) {
    insertNamed(L"A");
    {
        const OtherDocument other;
        insertNamed(L"B");
        EXPECT_EQ(registrations(), 2);
        releaseDocumentObjects();
        EXPECT_EQ(letters(), 0u);
        EXPECT_EQ(registrations(), 0);
    }
    releaseDocumentObjects();  // reaches nobody
    EXPECT_EQ(letters(), 1u);
}

/// A drawing with a block DOOR, a line A1 in model space and a line A2 on paper.
class ModelSpace : public SpaceTest {
protected:
    void SetUp() override {
        SpaceTest::SetUp();
        open(DxfDrawing{.layers = {"0", "WALLS"},
                        .blocks = blockDefinition("DOOR", lineEntity("D1", "0")),
                        .entities = lineEntity("A1", "WALLS") + lineEntity("A2", "0|67 1")}
                 .save("model_space.dxf"));
        ASSERT_TRUE(m_space.connect());
    }
    CMORCadSpace m_space;
};

TEST_F(ModelSpace, IsConnectedWriteableLocalAndNamedButNotFoundByName) {
    EXPECT_TRUE(m_space.isConnected() && m_space.isWriteable());
    EXPECT_STREQ(m_space.getName(), L"ModelSpace");
    CMORCadLetterModelSpace letter;
    EXPECT_TRUE(letter.isModelSpace() && letter.isValid() && letter.isLocal());
    EXPECT_FALSE(letter.isXRef() || letter.hasName(L"ModelSpace"));
    CMORCadSpace space;
    EXPECT_FALSE(space.connect(L"ModelSpace"));
    EXPECT_TRUE(space.isEmpty());
}

TEST_F(ModelSpace, FindsBlocksAndSymbolsUnderTheirOwnNames) {
    const ResbufList layer{m_space.tblSearch(L"LAYER", L"walls")};
    const ResbufList block{m_space.searchBlock(L"DOOR")};
    EXPECT_STREQ(findGroup(layer, 2)->resval.rstring, L"WALLS");
    EXPECT_STREQ(findGroup(block, 2)->resval.rstring, L"DOOR");
    EXPECT_FALSE(m_space.tblSearch(L"BLOCK", L"WALLS") || m_space.searchBlock(L"WALLS"));
}

TEST_F(ModelSpace, FindsHandlesWhereverTheEntityLies) {
    ads_name name{};
    for (const wchar_t* handle : {L"A1", L"a2", L"D1"}) {
        EXPECT_TRUE(m_space.handEnt(handle, name)) << host::toUtf8(handle);
        EXPECT_EQ(host::findHandle(document(), handle), EntityName{name});
    }
    EXPECT_FALSE(m_space.handEnt(L"FFFF", name) || m_space.handEnt(L"no handle", name));
    host::faults::failCall("acdbHandEnt", 1);  // a look-up that fails is an answer
    EXPECT_FALSE(m_space.handEnt(L"A1", name));
    host::faults::failCall("acdbTblSearch", 1);
    EXPECT_EQ(m_space.searchBlock(L"DOOR"), nullptr);
}

}  // namespace
}  // namespace mor::test
