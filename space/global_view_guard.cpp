#include "space/global_view_guard.h"

#include "dwgfs/dwg_file_system.h"
#include "platform/document_data.h"
#include "space/view.h"

namespace MorAdmin::Workaround {

GlobalViewEnsureMS::GlobalViewEnsureMS() : m_valid(_PrivateEnsureMS()) {}

GlobalViewEnsureMS::~GlobalViewEnsureMS() {
    if (m_valid) _PrivateEnsureMS();
}

bool GlobalViewEnsureMS::IsValid() const { return m_valid; }

bool GlobalViewEnsureMS::_PrivateEnsureMS() {
    const CMORCadDwgFileSystem* fileSystem = CMORCadDwgFileSystem::getTheGlobalObject();
    if (fileSystem == nullptr) return false;
    return fileSystem->IsInModelSpace() || TrySwitchGlobalViewIntoMS();
}

bool GlobalViewEnsureMS::TrySwitchGlobalViewIntoMS() {
    if (!CMORCadView::connectTheGlobalObject()) return false;
    CMORCadView* view = CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
    if (view == nullptr || view->ViewType() != CMORCadView::eModelSpace) return false;
    const CMORCadDwgFileSystem* fileSystem = CMORCadDwgFileSystem::getTheGlobalObject();
    return fileSystem != nullptr && fileSystem->IsInModelSpace();
}

}  // namespace MorAdmin::Workaround
