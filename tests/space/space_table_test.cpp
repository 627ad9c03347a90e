#include "space/space_table.h"

#include "space/space.h"
#include "tests/space/space_fixture.h"

#include <gtest/gtest.h>

#include <memory>

namespace mor::test {
namespace {

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
    insertNamed(L"A");
    EXPECT_EQ(registrations(), 1);
    insertNamed(L"B");
    EXPECT_EQ(registrations(), 1);
}

TEST_F(SpaceTables, ALetterStandsOnceInATable) {
    NamedLetter* letter = insertNamed(L"A");
    EXPECT_EQ(insertLetter(letter), letter);
    EXPECT_EQ(letters(), 1u);
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

TEST_F(SpaceTables, AValidLetterIsFoundByName) {
    NamedLetter* letter = insertNamed(L"PLAN");
    EXPECT_EQ(findOrCreateXRefLetter(L"PLAN"), letter);
    EXPECT_EQ(findOrCreateXRefLetter(L"OTHER"), nullptr);
    EXPECT_EQ(letters(), 1u);
}

TEST_F(SpaceTables, AStaleLetterIsDestroyedByTheNextLookUp) {
    bool destroyed = false;
    insertNamed(L"PLAN", &destroyed)->valid = false;
    insertNamed(L"OTHER");
    CMORCadSpace space;
    EXPECT_FALSE(space.connect(L"PLAN"));  // the drawing has no such reference
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(letters(), 1u);
}

TEST_F(SpaceTables, ASpaceMayBeConnectedByTheNameThatItsStaleLetterHolds) {
    CMORCadSpace space;
    NamedLetter* letter = insertNamed(L"PLAN");
    ASSERT_TRUE(space.connect(L"PLAN"));
    letter->valid = false;
    EXPECT_FALSE(space.connect(space.getName()));
    EXPECT_TRUE(space.isEmpty());
}

TEST_F(SpaceTables, ModelSpaceHasOneLetterBesideTheOthers) {
    insertNamed(L"A");
    CMORCadLetterSpace* letter = findOrCreateModelSpaceLetter();
    EXPECT_EQ(findOrCreateModelSpaceLetter(), letter);
    EXPECT_EQ(letters(), 2u);
    EXPECT_TRUE(letter->isModelSpace());
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
    AcApDocument* other = host::createDocument(host::Release::R12);
    makeCurrent(other);
    clearSpaceTable();
    EXPECT_EQ(registrations(), 0);
    makeCurrent(document());
    EXPECT_EQ(letters(), 1u);
    host::closeDocument(other);
}

TEST_F(SpaceTables, ATableThatFillsAgainRegistersAgain) {
    insertNamed(L"A");
    releaseDocumentObjects();
    insertNamed(L"A");
    EXPECT_EQ(registrations(), 1);
    releaseDocumentObjects();
    EXPECT_EQ(letters(), 0u);
}

TEST_F(SpaceTables, OneMessageUsesUpTheRegistrationsOfTwoDocuments) {
    insertNamed(L"A");
    AcApDocument* other = host::createDocument(host::Release::R12);
    makeCurrent(other);
    insertNamed(L"B");
    EXPECT_EQ(registrations(), 2);
    releaseDocumentObjects();
    EXPECT_EQ(letters(), 0u);
    EXPECT_EQ(registrations(), 0);
    makeCurrent(document());
    releaseDocumentObjects();  // reaches nobody
    EXPECT_EQ(letters(), 1u);
    host::closeDocument(other);
}

}  // namespace
}  // namespace mor::test
