#include "frame/module.h"

#include "dwgfs/dwg_file_system.h"
#include "frame/owned_list.h"
#include "platform/document_data.h"
#include "space/letter_space.h"
#include "space/space.h"
#include "space/space_table.h"
#include "space/view.h"
#include "tests/support/drawing_test.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace mor::test {
namespace {

int s_lettersDeleted = 0;

struct CountedLetter : CMORCadLetterSpace {
    ~CountedLetter() override { ++s_lettersDeleted; }
};

class Module : public DrawingTest {
protected:
    void SetUp() override {
        DrawingTest::SetUp();
        s_lettersDeleted = 0;
    }
    static CMORMDIDocumentData& data() { return CMORMDIDocumentData::GetCurrentDocumentData(); }
    static void insertCountedLetter() {
        insertLetter(std::make_unique<CountedLetter>().release());  // the table owns it
    }
};

TEST_F(Module, IsNotLoadedWhenTheHostRefusesIt) {
    ASSERT_EQ(detachModule(), 1);
    host::faults::failCall("AfxInitExtensionModule", 1);
    EXPECT_EQ(attachModule(), 0);
    EXPECT_EQ(attachModule(), 1);
}

TEST_F(Module, TheCurrentDocumentIsLikeANewOneAfterAnUnload) {
    ASSERT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
    detachModule();
    EXPECT_EQ(data().GetMorDwgFileSystem(), nullptr);
    EXPECT_EQ(data().GetMapGlobalObject(), nullptr);
    EXPECT_TRUE(data().GetSpaceTable2().empty());
    attachModule();
    EXPECT_STREQ(CMORCadView::getTheGlobalObject()->SpaceName(), L"ModelSpace");
}

TEST_F(Module, AnObjectThatTheModuleDidNotMakeStaysInItsSlot) {
    CMORCadView foreign;
    data().GetMapGlobalObject() = &foreign;
    detachModule();
    EXPECT_EQ(data().GetMapGlobalObject(), &foreign);
    data().GetMapGlobalObject() = nullptr;
    attachModule();
}

TEST_F(Module, LettersOfAllDocumentsAreReleasedAtUnload) {
    AcApDocument* closed = host::createDocument(host::Release::R12);
    makeCurrent(closed);
    insertCountedLetter();
    makeCurrent(document());
    host::closeDocument(closed);  // without message 3
    insertCountedLetter();
    EXPECT_EQ(s_lettersDeleted, 0);
    detachModule();
    EXPECT_EQ(s_lettersDeleted, 2);
    attachModule();
}

TEST_F(Module, FileSystemsAndViewsOfAClosedDocumentAreReleasedAtUnload) {
    AcApDocument* closed = host::createDocument(host::Release::R12);
    makeCurrent(closed);
    ASSERT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
    makeCurrent(document());
    host::closeDocument(closed);
    detachModule();  // a leak, or a use of the closed document, fails under the sanitizers
    attachModule();
    EXPECT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
}

std::string s_deleted;

struct Item {
    explicit Item(std::string itemName, OwnedList<Item>* last = nullptr)
        : name(std::move(itemName)), leavesTo(last) {}
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() {
        s_deleted += name;
        if (leavesTo != nullptr) leavesTo->append(std::make_unique<Item>("x"));
    }
    std::string name;
    OwnedList<Item>* leavesTo;
};

class OwnedLists : public ::testing::Test {
protected:
    void SetUp() override { s_deleted.clear(); }
};

TEST_F(OwnedLists, RemovingKeepsTheOrderOfTheOthers) {
    {
        OwnedList<Item> list;
        for (const char* name : {"p", "q"}) list.append(std::make_unique<Item>(name));
    }
    EXPECT_EQ(s_deleted, "pq");
    s_deleted.clear();
    OwnedList<Item> list;
    list.append(std::make_unique<Item>("a"));
    const Item* b = list.append(std::make_unique<Item>("b"));
    list.append(std::make_unique<Item>("c"));
    EXPECT_TRUE(list.remove(b));
    EXPECT_FALSE(list.remove(b));
    EXPECT_EQ(s_deleted, "b");
    list.clear();
    EXPECT_EQ(s_deleted, "bac");
}

TEST_F(OwnedLists, WhatIsTakenBelongsToTheTaker) {
    OwnedList<Item> list;
    const Item* a = list.append(std::make_unique<Item>("a"));
    const std::unique_ptr<Item> taken = list.take(a);
    list.clear();
    EXPECT_EQ(s_deleted, "");
    EXPECT_EQ(list.take(a), nullptr);
}

TEST_F(OwnedLists, WhatADestructorAppendsIsDeletedToo) {
    OwnedList<Item> list;
    list.append(std::make_unique<Item>("a", &list));
    list.append(std::make_unique<Item>("b"));
    list.clear();
    EXPECT_EQ(s_deleted, "abx");
    EXPECT_EQ(list.size(), 0u);
}

}  // namespace
}  // namespace mor::test
