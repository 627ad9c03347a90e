#include "frame/module.h"

#include "dwgfs/dwg_file_system.h"
#include "frame/owned_list.h"
#include "platform/document_data.h"
#include "platform/mfc.h"
#include "space/letter_lists.h"
#include "space/view.h"

#include <memory>

namespace mor {

// The lists end in the opposite order of these lines, whether `detachModule` was called or not:
// global views, then file systems, which forget their views, then what was forgotten and the space
// letters.
OwnedList<CMORCadLetterSpace> LetterLists::s_liveLetters;
OwnedList<Forgotten> LetterLists::s_forgotten;

}  // namespace mor

mor::OwnedList<CMORCadDwgFileSystem> CMORCadDwgFileSystem::s_fileSystems;
mor::OwnedList<CMORCadView> CMORCadView::s_globalViews;

namespace mor {
namespace {

AFX_EXTENSION_MODULE s_module;
std::unique_ptr<CDynLinkLibrary> s_library;

// Deletes the listed objects; the current document's slot must not go on pointing to one of them.
template <typename T>
void release(OwnedList<T>& list, T*& slot) {
    if (list.contains(slot)) slot = nullptr;
    list.clear();
}

}  // namespace

int attachModule(void* instance) {
    if (AfxInitExtensionModule(s_module, instance) == 0) {
        detachModule();
        return 0;
    }
    s_library = std::make_unique<CDynLinkLibrary>(s_module, false);
    return 1;
}

int detachModule() {
    s_library.reset();
    AfxTermExtensionModule(s_module, false);
    CMORMDIDocumentData& data = CMORMDIDocumentData::GetCurrentDocumentData();
    release(CMORCadView::s_globalViews, data.GetMapGlobalObject());
    release(CMORCadDwgFileSystem::s_fileSystems, data.GetMorDwgFileSystem());
    LetterLists::releaseAll();
    return 1;
}

}  // namespace mor
