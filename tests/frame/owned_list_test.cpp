#include "frame/owned_list.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace mor::test {
namespace {

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

TEST_F(OwnedLists, WhatIsListedAtTheEndIsDeletedInListOrder) {
    {
        OwnedList<Item> list;
        for (const char* name : {"a", "b", "c"}) list.append(std::make_unique<Item>(name));
    }
    EXPECT_EQ(s_deleted, "abc");
}

TEST_F(OwnedLists, RemovingKeepsTheOrderOfTheOthers) {
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
