#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <sstream>

namespace mor::test {
namespace {

constexpr long kRoom = 16383;

class FullStore : public ToolTest {
protected:
    /// The free bytes of a directory.
    [[nodiscard]] long freeIn(const std::string& drawing, const std::string& path) const {
        std::istringstream rows{run({"df", drawing}).out};
        long used = 0;
        long free = 0;
        long entries = 0;
        for (std::string name; rows >> used >> free >> entries >> name;)
            if (name == path) return free;
        return -1;
    }
    [[nodiscard]] Outcome putText(const std::string& drawing, const std::string& path,
                                  long letters) const {
        writeFile(file("value"), std::string(static_cast<std::size_t>(letters), 'v'));
        Outcome outcome =
            run({"put", drawing, path, "--string", "--file", file("value"), "--no-backup"});
        std::filesystem::remove(file("value"));
        return outcome;
    }
    /// The bytes that a text of ASCII letters takes under a name of one letter.
    static long cost(long letters) {
        const long chunks = letters == 0 ? 1 : (letters + 254) / 255;
        return 3 + letters + 2 * chunks + (chunks > 1 ? 3 : 0);
    }
    /// Leaves so many bytes free in a directory.
    void fillTo(const std::string& drawing, const std::string& directory, long wanted) const {
        const long bytes = freeIn(drawing, directory) - wanted;
        ASSERT_EQ(cost(lettersFor(bytes)), bytes) << "no text takes so many bytes";
        ASSERT_EQ(putText(drawing, directory + "/f", lettersFor(bytes)).code, 0);
        ASSERT_EQ(freeIn(drawing, directory), wanted);
    }
    /// The most letters that fit into so many bytes.
    static long lettersFor(long bytes) {
        long letters = 0;
        while (cost(letters + 1) <= bytes) ++letters;
        return letters;
    }
};

TEST_F(FullStore, TakesAValueThatJustFits) {
    const std::string d = filledDrawing({{"/a/x", "1"}});
    ASSERT_EQ(call("rm D /a/x --no-backup").code, 0);
    const long free = freeIn(d, "/a");
    ASSERT_EQ(free, kRoom - 37);  // list 3, $ID 23, $INFO 7 + 4
    const long most = lettersFor(free);
    EXPECT_EQ(putText(d, "/a/x", most + 1).code, 6);
    EXPECT_EQ(call("ls D /a").out, "");
    EXPECT_EQ(putText(d, "/a/x", most).code, 0);
    EXPECT_EQ(freeIn(d, "/a"), free - cost(most));
    EXPECT_EQ(call("cat -r D /a/x").out.size(), static_cast<std::size_t>(most));
    EXPECT_EQ(putText(d, "/a/x", most - 1).code, 0);  // in the room of the former value
    EXPECT_EQ(putText(d, "/a/x", most + 1).code, 6);
    EXPECT_EQ(call("rm D /a/x --no-backup").code, 0);
    EXPECT_EQ(freeIn(d, "/a"), free);
}

TEST_F(FullStore, RefusesWithTheRoomThatIsLeftAndLosesNothing) {
    const std::string d = filledDrawing({{"/a/big", "1"}, {"/b/x", "5"}});
    ASSERT_EQ(putText(d, "/a/fill", lettersFor(freeIn(d, "/a") - 3) - 20).code, 0);
    const long free = freeIn(d, "/a");
    const std::string before = readFile(d);
    const Outcome refused = putText(d, "/a/n", free);
    EXPECT_EQ(refused.code, 6);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, "moradmin: " + d + ": /a/n does not fit: it takes " +
                               std::to_string(cost(free)) + " bytes, " + std::to_string(free) +
                               " are free in /a\n");
    EXPECT_EQ(readFile(d), before);
    EXPECT_EQ(names(), "d.dxf");
    EXPECT_EQ(call("put D /b/y 6").code, 0);
    EXPECT_EQ(call("cat D /a/big /b/x /b/y").out, "1\n5\n6\n");
}

TEST_F(FullStore, MakesTheLinkThatJustFitsAndNotTheNext) {
    const std::string d = filledDrawing({{"/a/x", "1"}, {"/b/x", "1"}});
    // The link ^s with a handle of two digits takes 2 + 8 + 2 + 2 bytes.
    fillTo(d, "/a", 14);
    fillTo(d, "/b", 13);
    const std::string before = readFile(d);
    const Outcome refused = call("put D /b/s/deep/x 2");
    EXPECT_EQ(refused.code, 6);
    EXPECT_EQ(refused.err, "moradmin: " + d +
                               ": /b/s cannot be made: 13 bytes are free in /b for "
                               "the link to it\n");
    EXPECT_EQ(readFile(d), before);
    EXPECT_EQ(call("put D /a/s/x 2").code, 0);
    EXPECT_EQ(freeIn(d, "/a"), 0);
    EXPECT_EQ(call("ls -R D").out, "/a/\n/a/x\n/a/f\n/a/s/\n/a/s/x\n/b/\n/b/x\n/b/f\n");
}

TEST_F(FullStore, CountsTheExtendedDataOfOtherApplications) {
    const std::string d = filledDrawing({{"/a/x", "1"}});
    const long free = freeIn(d, "/a");
    const std::string foreign = "1001 ACAD|1000 foreign|1070 1";
    exchange(d, "1000 x|1071 1", "1000 x|1071 1|" + foreign);
    EXPECT_EQ(freeIn(d, "/a"), free - (2 + 7) - 3);
    EXPECT_EQ(putText(d, "/a/y", lettersFor(free)).code, 6);
    EXPECT_EQ(putText(d, "/a/y", lettersFor(free - 12)).code, 0);
    EXPECT_TRUE(holds(readFile(d), dxfText(foreign)));
}

TEST_F(FullStore, TakesTheDeepestPathThatTheRulesAllow) {
    const std::string d = newDrawing();
    std::string deep;
    while (deep.size() + 2 + 2 <= 1023) deep += "/d";
    deep += "/x";
    for (const std::string& path :
         {deep, "/l/" + std::string(127, 'n'), "/" + std::string(126, 'm') + "/x"}) {
        EXPECT_EQ(run({"put", d, path, "1"}).code, 0) << path;
        EXPECT_EQ(run({"cat", d, path}).out, "1\n") << path;
    }
    EXPECT_EQ(run({"put", d, "/d" + deep, "1"}).code, 6);
}

}  // namespace
}  // namespace mor::test
