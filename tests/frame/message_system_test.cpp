#include "frame/message_system.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

using Registry = MOR_AdsMsgSystemClass;

std::string s_calls;  // what was called since the last `send`, such as "g3 f3 "

void f(int message) { s_calls += "f" + std::to_string(message) + " "; }
void g(int message) { s_calls += "g" + std::to_string(message) + " "; }
void h(int message) { s_calls += "h" + std::to_string(message) + " "; }
void leaves(int message) {
    f(message);
    Registry::getTheGlobalObject()->unregisterFct(leaves);
}
void invites(int message) {
    f(message);
    Registry::getTheGlobalObject()->registerFct(g);
}
void demolishes(int message) {
    f(message);
    Registry::deleteTheGlobalObject();
}

class Messages : public ::testing::Test {
protected:
    void SetUp() override { Registry::deleteTheGlobalObject(); }
    void TearDown() override { Registry::deleteTheGlobalObject(); }

    static Registry& registry() { return *Registry::getTheGlobalObject(); }
    static std::string send(int message = 3) {
        s_calls.clear();
        registry().sendMessage(static_cast<Registry::Message>(message));
        return s_calls;
    }
};

TEST_F(Messages, AFunctionIsCalledAsOftenAsItIsRegistered) {
    EXPECT_EQ(registry().registerFct(f), 1);
    EXPECT_EQ(registry().registerFct(f), 2);
    EXPECT_EQ(registry().unregisterFct(g), -1) << "a stranger";
    EXPECT_EQ(send(), "f3 f3 ");
    EXPECT_EQ(registry().unregisterFct(f), 1);
    for (const int message : {0, 3, 4, -1, 123456})
        EXPECT_EQ(send(message), "f" + std::to_string(message) + " ");
    EXPECT_EQ(registry().unregisterFct(f), 0);
    EXPECT_EQ(registry().unregisterFct(f), -1);
    EXPECT_EQ(send(), "");
}

TEST_F(Messages, TheFunctionThatIsNewestIsCalledFirst) {
    registry().registerFct(f);
    registry().registerFct(g);
    EXPECT_EQ(send(), "g3 f3 ");
    registry().registerFct(f);
    EXPECT_EQ(send(), "g3 f3 f3 ");
}

TEST_F(Messages, RemovingOneKeepsTheOthersInOrder) {
    const struct {
        Registry::Callback removed;
        const char* left;
    } cases[] = {{h, "g3 f3 "}, {g, "h3 f3 "}, {f, "h3 g3 "}};
    for (const auto& c : cases) {
        Registry::deleteTheGlobalObject();
        for (Registry::Callback function : {f, g, h}) registry().registerFct(function);
        EXPECT_EQ(registry().unregisterFct(c.removed), 0) << c.left;
        EXPECT_EQ(send(), c.left);
    }
}

TEST_F(Messages, AFunctionThatLeavesIsStillCalledForTheMessageUnderWay) {
    registry().registerFct(leaves);
    registry().registerFct(leaves);
    EXPECT_EQ(send(), "f3 f3 ");
    EXPECT_EQ(send(), "");
    EXPECT_EQ(registry().unregisterFct(leaves), -1);
}

TEST_F(Messages, AFunctionRegisteredUnderWayIsCalledFromTheNextMessageOn) {
    registry().registerFct(invites);
    EXPECT_EQ(send(), "f3 ");
    EXPECT_EQ(send(), "g3 f3 ");
}

TEST_F(Messages, DeletingTheRegistryUnderWayEndsNothingButTheRegistrations) {
    registry().registerFct(g);
    registry().registerFct(demolishes);
    EXPECT_EQ(send(), "f3 g3 ");
    EXPECT_EQ(send(), "");
}

TEST_F(Messages, AfterADeletionTheRegistryIsANewAndEmptyOne) {
    registry().registerFct(f);
    EXPECT_EQ(Registry::getTheGlobalConstObject(), Registry::getTheGlobalObject());
    Registry::deleteTheGlobalObject();
    Registry::deleteTheGlobalObject();  // without a registry: nothing
    EXPECT_EQ(send(), "");
    EXPECT_EQ(registry().registerFct(f), 1);
}

}  // namespace
}  // namespace mor::test
