#include "tests/dwgfs/stored_drawing.h"

#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

class StoredDrawing : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        open(storedDrawing().save("stored.dxf"));
    }
    [[nodiscard]] std::string spaces() const {
        std::string result;
        for (const char* path : {"/", "/a", "/a/b"})
            result += host::recordInfo(document(), entityOf(path))->place == host::Place::PaperSpace
                          ? "p"
                          : "m";
        return result;
    }
};

TEST_F(StoredDrawing, ADirectoryInPaperSpaceIsMovedBack) {
    EXPECT_EQ(tree(), "/ [a/ [f=5 b/ [g=\"x\"]]]");
    ASSERT_EQ(spaces(), "mpm");
    EXPECT_EQ(read("/a/f"), "5");
    EXPECT_EQ(spaces(), "mmm");
    EXPECT_TRUE(write("/a/b/h", "1"));
    reopen();
    EXPECT_EQ(spaces(), "mmm");
    EXPECT_EQ(tree(), "/ [a/ [f=5 b/ [g=\"x\" h=1]]]");
}

TEST_F(StoredDrawing, ADirectoryInPaperSpaceIsRefusedThroughAReadOnlyView) {
    ads_name name;
    entityOf("/a").copyTo(name);
    CMOREntity entity;
    OpenFileSystem readOnly{CMORCadView{}};
    EXPECT_FALSE(readOnly.commonConnectEntity(name, entity));
    entityOf("/").copyTo(name);
    EXPECT_TRUE(readOnly.commonConnectEntity(name, entity));
    EXPECT_EQ(spaces(), "mpm");
}

}  // namespace
}  // namespace mor::test
