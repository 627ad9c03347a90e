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
    static void release() { send(MOR_AdsMsgSystemClass::ReleaseDocumentObjects); }
    static void check() { send(MOR_AdsMsgSystemClass::CheckDwgFileSystem); }
};

TEST_F(FileSystemObject, IsMadeOncePerDocument) {
    EXPECT_EQ(slot(), nullptr);
    CMORCadDwgFileSystem* object = CMORCadDwgFileSystem::getTheGlobalObject();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(slot(), object);
    EXPECT_EQ(CMORCadDwgFileSystem::getTheGlobalObject(), object);
    EXPECT_EQ(registrations(), 1);
}

TEST_F(FileSystemObject, KnowsItsView) {
    EXPECT_TRUE(fs().IsInModelSpace());
    EXPECT_TRUE(fs().hasWriteableView());
    EXPECT_STREQ(fs().ViewHandle(), L"");
    EXPECT_STREQ(fs().getViewHandle(), L"");
    EXPECT_STREQ(fs().getViewName(), L"ModelSpace");
}

TEST_F(FileSystemObject, IsUselessWithoutAView) {
    CMORCadDwgFileSystem object{CMORCadView{}};
    EXPECT_FALSE(object.IsInModelSpace());
    EXPECT_FALSE(object.hasWriteableView());
    EXPECT_EQ(object.getViewHandle(), nullptr);
    EXPECT_EQ(object.getViewName(), nullptr);
    EXPECT_FALSE(object.connect(CMORCadView{}));
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

TEST_F(FileSystemObject, KeepsItsDirectoriesForAViewOfTheSameSpace) {
    ASSERT_TRUE(write("/a/f", "5"));
    OpenFileSystem object;
    CMOREntity dir;
    wchar_t path[] = L"/a";
    ASSERT_TRUE(object.getDir(path, false, dir));
    EXPECT_TRUE(object.connect(CMORCadView{*CMORCadView::getTheGlobalObject()}));
    EXPECT_TRUE(object.getDirFromHashTable(L"/a", false, dir));
    EXPECT_FALSE(object.connect(CMORCadView{}));
    EXPECT_FALSE(object.getDirFromHashTable(L"/a", false, dir));
}

TEST_F(FileSystemObject, IsCopiedWithItsDirectories) {
    ASSERT_TRUE(write("/a/f", "5"));
    OpenFileSystem object;
    CMOREntity dir;
    wchar_t path[] = L"/a";
    ASSERT_TRUE(object.getDir(path, false, dir));
    OpenFileSystem copy{object};
    EXPECT_TRUE(copy.getDirFromHashTable(L"/a", false, dir));
    OpenFileSystem assigned{CMORCadView{}};
    assigned = object;
    EXPECT_TRUE(assigned.getDirFromHashTable(L"/a", false, dir));
    EXPECT_TRUE(assigned.IsInModelSpace());
    object = *&object;
    EXPECT_TRUE(object.getDirFromHashTable(L"/a", false, dir));
}

TEST_F(FileSystemObject, MakesOthersOfItsClass) {
    const CMORCadDwgFileSystem object{CMORCadView{}};
    const std::unique_ptr<CMORMDIDocumentVariable> instance{object.CreateInstance()};
    const std::unique_ptr<CMORMDIDocumentVariable> copy{object.CreateCopy()};
    EXPECT_TRUE(dynamic_cast<CMORCadDwgFileSystem&>(*instance).IsInModelSpace());
    EXPECT_FALSE(dynamic_cast<CMORCadDwgFileSystem&>(*copy).IsInModelSpace());
}

TEST_F(FileSystemObject, IsDeletedWithItsDocumentsObjects) {
    static_cast<void>(fs());
    release();
    EXPECT_EQ(slot(), nullptr);
    EXPECT_EQ(registrations(), 0);
    EXPECT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
    EXPECT_EQ(registrations(), 1);
}

TEST_F(FileSystemObject, OneMessageTakesTheRegistrationsOfTwoDocuments) {
    static_cast<void>(fs());
    AcApDocument* other = host::createDocument(host::Release::R12);
    makeCurrent(other);
    static_cast<void>(fs());
    EXPECT_EQ(registrations(), 2);
    release();
    EXPECT_EQ(slot(), nullptr);
    EXPECT_EQ(registrations(), 0);
    makeCurrent(document());
    EXPECT_NE(slot(), nullptr);
    release();
    EXPECT_NE(slot(), nullptr) << "nobody listens any more";
    host::closeDocument(other);
}

TEST_F(FileSystemObject, OneThatTheLibraryDidNotMakeStays) {
    const std::unique_ptr<CMORMDIDocumentVariable> foreign{fs().CreateInstance()};
    CMORCadDwgFileSystem* own = slot();
    slot() = dynamic_cast<CMORCadDwgFileSystem*>(foreign.get());
    release();
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
    ASSERT_TRUE(write("/a/f", "5"));
    setLayer(true, false);
    OpenFileSystem object;
    CMOREntity dir;
    ASSERT_TRUE(object.getDir(std::wstring{L"/a"}.data(), false, dir));
    object.zero();
    EXPECT_EQ(tree(), "/");
    EXPECT_EQ(inserts(), 3u) << "the old directories stay, out of reach";
    EXPECT_EQ(layer(), "frozen unlocked") << "as found";
    for (const wchar_t* path : {L"/", L"/a"})
        EXPECT_FALSE(object.getDirFromHashTable(path, false, dir));
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
    fs().removeFileSystem();
    EXPECT_EQ(inserts(), 0u);
    EXPECT_EQ(tree(), "/ erased");
    EXPECT_EQ(layer(), "frozen locked");
    EXPECT_EQ(printed(), L"");
}

TEST_F(FileSystemObject, WhatWasRemovedComesBackWithTheNextLookUp) {
    ASSERT_TRUE(write("/a/f", "5"));
    fs().removeFileSystem();
    EXPECT_EQ(read("/a/f"), "5");
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
}

TEST_F(FileSystemObject, RemovalThroughAnEmptyViewOnlyLocksTheLayer) {
    ASSERT_TRUE(write("/a/f", "5"));
    setLayer(false, false);
    CMORCadDwgFileSystem{CMORCadView{}}.removeFileSystem();
    EXPECT_EQ(tree(), "/ [a/ [f=5]]");
    EXPECT_EQ(layer(), "frozen locked");
    check();  // takes back what the removal left for it
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
