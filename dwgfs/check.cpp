#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"

#include <optional>
#include <set>
#include <string>

namespace {

constexpr short kDialogActive = 8;  // of CMDACTIVE

bool dialogActive() {
    short state = 0;
    CMORAdsLisp::SetQ(state, CMORAdsLisp::GetVar(L"CMDACTIVE"));
    return (state & kDialogActive) != 0;
}

// Erases the entity and restores it, or the other way round: it is the same again afterwards.
bool canBeErased(const ads_name entity) {
    if (entity[0] == 0 || entity[1] == 0) return false;
    const CMORSwitchMDIReactorOnOff reactorsOff{eMORReactorImportanceHigh};
    for (int call = 0; call < 2; ++call)
        if (acdbEntDel(entity) != RTNORM) return false;
    return true;
}

}  // namespace

void CMORCadDwgFileSystem::checkFileSystem() {
    const mor::DocumentLock lock;
    if (lock.result() != mor::LockResult::Locked || !m_view.isWriteable()) return;
    mor::PathBuffer path;
    if (path.assign(mor::kRootPath)) checkDirAndSubdirs(path.data());
}

void CMORCadDwgFileSystem::checkDirAndSubdirs(wchar_t* path) {
    std::set<mor::EntityName> checked;
    checkBelow(path, checked);
}

// A directory that several links reach is looked into once: a second time would find nothing else.
void CMORCadDwgFileSystem::checkBelow(wchar_t* path, std::set<mor::EntityName>& checked) {
    CMOREntity entity;
    ads_name name = {};
    if (!getDir(path, false, entity) || !entity.GetEName(name)) return;
    if (!checked.emplace(name).second) return;
    CMORStringList names;
    getAll(entity, names, Directories);
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        const mor::ExtendedPath subdirectory{path, names.Nth(i)};
        if (subdirectory.fits()) checkBelow(path, checked);
    }
}

void CMORCadDwgFileSystem::checkBlock(CMOREntity& block) {
    if (!m_view.isWriteable() || dialogActive()) return;
    mor::AttributeBuffer text;
    std::optional<std::wstring> link;
    if (block.GetAttributeText(mor::kRootLink, text.data())) link = text.c_str();
    ads_name root = {};
    if (link && !m_view.handEnt(link->c_str(), root)) {
        link.reset();
        block.DeleteAttribute(mor::kRootLink);
        block.Flush();
        deleteAllInserts();
    }
    if (link) {
        const ControlLayerGuard guard{ControlLayerGuard::kRelockAsFound};
        if (!canBeErased(root)) {
            link.reset();
            block.DeleteAttribute(mor::kRootLink);
            deleteAllInserts();
            block.Flush();
        }
    }
    if (block.Type().CompareNoCase(L"ATTDEF") == 0) return;
    block.Disconnect();
    makeBlock();
    getBlockEntity(block);  // not tested: a look-up under no block finds nothing
    // Without a link none is written: the look-up that follows makes a new root.
    if (link) block.SetAttributeText(mor::kRootLink, link->c_str());
    block.Flush();
}
