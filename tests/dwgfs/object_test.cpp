#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "tests/dwgfs/store_fixture.h"
#include "tests/support/dxf_drawing.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace mor::test {
namespace {

class FileSystemObject : public StoreTest {
protected:
    static CMORCadDwgFileSystem*& slot() {
        return CMORMDIDocumentData::GetCurrentDocumentData().GetMorDwgFileSystem();
    }
    static int registrations() {
        MOR_AdsMsgSystemClass* registry = MOR_AdsMsgSystemClass::getTheGlobalObject();
        registry->registerFct(OpenFileSystem::callBack);
        const int left = registry->unregisterFct(OpenFileSystem::callBack);
        return left;
    }
    /// Whether the object's table holds the directory.
    static bool knows(OpenFileSystem& object, const wchar_t* path) {
        CMOREntity dir;
        return object.getDirFromHashTable(path, false, dir);
    }
    /// Looks /a up in a store that holds /a/f.
    static void fill(OpenFileSystem& object) {
        ASSERT_TRUE(object.write(L"/a/f", value("5")));
        CMOREntity dir;
        ASSERT_TRUE(object.getDir(std::wstring{L"/a"}.data(), false, dir));
    }
};

TEST_F(FileSystemObject, IsMadeOncePerDocument) {
    EXPECT_EQ(slot(), nullptr);
    CMORCadDwgFileSystem* object = &fs();
    EXPECT_EQ(slot(), object);
    EXPECT_EQ(&fs(), object);
    EXPECT_EQ(registrations(), 1);
    EXPECT_TRUE(object->IsInModelSpace() && object->hasWriteableView());
    EXPECT_STREQ(object->ViewHandle(), L"");
    EXPECT_STREQ(object->getViewHandle(), L"");
    EXPECT_STREQ(object->getViewName(), L"ModelSpace");
}

TEST_F(FileSystemObject, IsUselessWithoutAView) {
    CMORCadDwgFileSystem object{CMORCadView{}};
    EXPECT_FALSE(object.IsInModelSpace() || object.hasWriteableView());
    EXPECT_EQ(object.getViewHandle(), nullptr);
    EXPECT_EQ(object.getViewName(), nullptr);
    EXPECT_FALSE(object.connect(CMORCadView{}));
    const std::unique_ptr<CMORMDIDocumentVariable> instance{object.CreateInstance()};
    const std::unique_ptr<CMORMDIDocumentVariable> copy{object.CreateCopy()};
    EXPECT_TRUE(dynamic_cast<CMORCadDwgFileSystem&>(*instance).IsInModelSpace());
    EXPECT_FALSE(dynamic_cast<CMORCadDwgFileSystem&>(*copy).IsInModelSpace());
    EXPECT_TRUE(object.connect(*CMORCadView::getTheGlobalObject()));
    EXPECT_TRUE(object.IsInModelSpace());
}

TEST_F(FileSystemObject, IsNotGivenOutWhileTheGlobalViewIsEmpty) {
    CMORCadDwgFileSystem* object = CMORCadDwgFileSystem::getTheGlobalObject();
    const ads_name nothing = {};
    EXPECT_FALSE(CMORCadView::connectTheGlobalObject(nothing));
    EXPECT_EQ(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
    EXPECT_EQ(slot(), object);
    EXPECT_TRUE(CMORCadView::connectTheGlobalObject());
    EXPECT_EQ(CMORCadDwgFileSystem::getTheGlobalObject(), object);
}

TEST_F(FileSystemObject, KeepsItsDirectoriesInCopiesAndForAViewOfTheSameSpace) {
    OpenFileSystem object;
    fill(object);
    OpenFileSystem copy{object};
    EXPECT_TRUE(knows(copy, L"/a"));
    OpenFileSystem assigned{CMORCadView{}};
    assigned = object;
    EXPECT_TRUE(knows(assigned, L"/a") && assigned.IsInModelSpace());
    object = *&object;
    EXPECT_TRUE(knows(object, L"/a"));
    EXPECT_TRUE(object.connect(CMORCadView{*CMORCadView::getTheGlobalObject()}));
    EXPECT_TRUE(knows(object, L"/a"));
    EXPECT_FALSE(object.connect(CMORCadView{}) || knows(object, L"/a"));
}

TEST_F(FileSystemObject, OneMessageTakesTheRegistrationsOfTwoDocuments) {
    static_cast<void>(fs());
    const OtherDocument other;
    static_cast<void>(fs());
    EXPECT_EQ(registrations(), 2);
    releaseDocumentObjects();
    EXPECT_EQ(slot(), nullptr);
    EXPECT_EQ(registrations(), 0);
    static_cast<void>(fs());
    EXPECT_EQ(registrations(), 1);
    releaseDocumentObjects();
    other.leave();
    releaseDocumentObjects();
    EXPECT_NE(slot(), nullptr) << "nobody listens any more";
}

TEST_F(FileSystemObject, OneThatTheLibraryDidNotMakeStays) {
    const std::unique_ptr<CMORMDIDocumentVariable> foreign{fs().CreateInstance()};
    CMORCadDwgFileSystem* own = slot();
    slot() = dynamic_cast<CMORCadDwgFileSystem*>(foreign.get());
    releaseDocumentObjects();
    EXPECT_EQ(slot(), foreign.get());
    slot() = own;
}

TEST_F(FileSystemObject, OtherMessagesOnlyBindItAgain) {
    CMORCadDwgFileSystem* object = CMORCadDwgFileSystem::getTheGlobalObject();
    EXPECT_FALSE(object->connect(CMORCadView{}));
    send(99);
    EXPECT_EQ(slot(), object);
    EXPECT_TRUE(object->IsInModelSpace());
    EXPECT_EQ(tree(), "none");
}

TEST_F(FileSystemObject, ZeroStartsAnEmptyStore) {
    OpenFileSystem object;
    fill(object);
    setLayer(true, false);
    object.zero();
    EXPECT_EQ(tree(), "/");
    EXPECT_EQ(inserts(), 3u) << "the old directories stay, out of reach";
    EXPECT_EQ(layer(), "frozen unlocked") << "as found";
    EXPECT_FALSE(knows(object, L"/") || knows(object, L"/a"));
}

TEST_F(FileSystemObject, ZeroEndsWhenTheBlockCannotBeMade) {
    ASSERT_TRUE(write("/a/f", "5"));
    setText(blockEntity(), kRootLink, L"FFFFFF");
    host::setSystemVariable(L"CMDACTIVE", host::makeInteger(8));  // keeps the check from helping
    host::faults::refuseEntities(true);
    OpenFileSystem object;
    object.zero();
    EXPECT_EQ(tree(), "/ missing");
    host::faults::refuseEntities(false);
    object.zero();
    EXPECT_EQ(tree(), "/");
}

TEST_F(FileSystemObject, RemovalErasesAllDirectories) {
    ASSERT_TRUE(write("/a/b/f", "5"));
    setLayer(false, false);
    CMORCadDwgFileSystem{CMORCadView{}}.removeFileSystem();  // through it only the layer is locked
    EXPECT_EQ(tree(), "/ [a/ [b/ [f=5]]]");
    EXPECT_EQ(layer(), "frozen locked");
    setLayer(false, false);
    fs().removeFileSystem();
    EXPECT_EQ(inserts(), 0u);
    EXPECT_EQ(tree(), "/ erased");
    EXPECT_EQ(layer(), "frozen locked");
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(read("/a/b/f"), "5") << "it comes back with the next look-up";
    EXPECT_EQ(tree(), "/ [a/ [b/ [f=5]]]");
}

TEST_F(FileSystemObject, ExtendedRemovalMovesBlockEntitiesOffTheControlLayer) {
    const std::string lines = lineEntity("D1", "WALL") + lineEntity("D2", "mor_Control_LAYER");
    open(DxfDrawing{.layers = {"0"},
                    .blocks = blockDefinition("PLAN", lineEntity("E1", "MOR_CONTROL_LAYER"), 4) +
                              blockDefinition("DOOR", lines)}
             .save("blocks.dxf"));
    ASSERT_TRUE(write("/a/f", "5"));
    const auto layersInBlocks = [this] {
        std::string result;
        host::forEachRecord(document(), [this, &result](const host::RecordInfo& record) {
            if (record.type == "LINE")
                result += host::recordGroup(document(), record.name, 8).value_or("-") + " ";
        });
        return result;
    };
    fs().removeFileSystem();
    EXPECT_EQ(layersInBlocks(), "MOR_CONTROL_LAYER WALL mor_Control_LAYER ");
    host::faults::failCall("acdbTblSearch", 1);
    fs().removeFileSystemEx();
    EXPECT_TRUE(host::faults::struck());
    EXPECT_EQ(layersInBlocks(), "MOR_CONTROL_LAYER WALL mor_Control_LAYER ")
        << "the look-up that failed was that of DOOR: PLAN is a reference";
    fs().removeFileSystemEx();
    EXPECT_EQ(layersInBlocks(), "MOR_CONTROL_LAYER WALL 0 ");
    EXPECT_EQ(inserts(), 0u);
}

}  // namespace
}  // namespace mor::test
