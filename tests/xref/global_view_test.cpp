#include "space/global_view.h"

#include "dwgfs/dwg_file_system.h"
#include "space/global_view_guard.h"
#include "tests/xref/reference_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

using mor_xref::SwitchGlobalView;
using MorAdmin::Workaround::GlobalViewEnsureMS;

class GlobalXRefView : public ReferenceTest {
protected:
    /// Type and space of the global view, then whether the file system is in model space.
    static std::wstring state() {
        CMORCadView* view = CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
        const CMORCadDwgFileSystem* fileSystem =
            CMORMDIDocumentData::GetCurrentDocumentData().GetMorDwgFileSystem();
        return std::to_wstring(view->ViewType()) + L" " + view->SpaceName() +
               (fileSystem != nullptr && fileSystem->IsInModelSpace() ? L" files in model space"
                                                                      : L"");
    }
};

constexpr const wchar_t* kModelSpace = L"1 ModelSpace files in model space";

TEST_F(GlobalXRefView, IsSwitchedByHandle) {
    EXPECT_TRUE(SwitchGlobalView(L"10"));
    EXPECT_EQ(state(), L"2 PLAN");
    EXPECT_TRUE(SwitchGlobalView(L""));
    EXPECT_EQ(state(), L"1 ModelSpace");
    EXPECT_TRUE(SwitchGlobalView(L"11"));
    EXPECT_FALSE(SwitchGlobalView(L"13"));  // its file is missing
    EXPECT_EQ(state(), L"0 <empty>");
}

TEST_F(GlobalXRefView, AGuardMovesItIntoModelSpaceForGood) {
    ASSERT_TRUE(SwitchGlobalView(L"10"));
    {
        const GlobalViewEnsureMS guard;
        EXPECT_TRUE(guard.IsValid());
        EXPECT_EQ(state(), kModelSpace);
    }
    EXPECT_EQ(state(), kModelSpace);
}

TEST_F(GlobalXRefView, AGuardBringsItBackAtTheEndOfTheScope) {
    {
        const GlobalViewEnsureMS guard;
        ASSERT_TRUE(SwitchGlobalView(L"10"));
        ASSERT_NE(CMORCadDwgFileSystem::getTheGlobalObject(), nullptr);
        EXPECT_EQ(state(), L"2 PLAN");
    }
    EXPECT_EQ(state(), kModelSpace);
}

TEST_F(GlobalXRefView, GoesWithTheDocumentsObjects) {
    ASSERT_TRUE(SwitchGlobalView(L"10"));
    releaseDocumentObjects();
    EXPECT_EQ(letters(), 0u);
    EXPECT_TRUE(SwitchGlobalView(L"10"));
    EXPECT_EQ(state(), L"2 PLAN");
}

}  // namespace
}  // namespace mor::test
