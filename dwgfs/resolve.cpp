#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"

#include <string_view>

bool CMORCadDwgFileSystem::getRoot(CMOREntity& root, bool create) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getRoot", create);
    CMOREntity block;
    if (!getBlockEntity(block)) {
        if (!create || !makeBlock()) return false;
        getBlockEntity(block);  // not tested: nothing is made under a block that is not there
    }
    checkBlock(block);
    return getDir(block, mor::kRootPath, mor::kRootPath, root, true);
}

bool CMORCadDwgFileSystem::getDir(const wchar_t* path, bool create, CMOREntity& dir) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getDir", create);
    if (!mor::isRooted(path)) return false;
    if (getDirFromHashTable(path, create, dir)) return true;
    bool found = false;
    if (std::wstring_view{path} == mor::kRootPath) {
        found = getRoot(dir, create);
    } else {
        const wchar_t* name = nullptr;
        CMOREntity parent;
        const bool parentFound = getDir(splitPath(path, name), create, parent);
        mergePath(path, name);
        found = parentFound && getDir(parent, name, path, dir, create);
    }
    return found && putDirInHashTable(path, dir);
}

bool CMORCadDwgFileSystem::getDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path,
                                  CMOREntity& dir, bool create) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getDir", create);
    mor::NameBuffer link;
    if (!mor::makeLinkName(link, name)) return false;
    mor::AttributeBuffer text;
    if (parent.GetAttributeText(link.c_str(), text.data())) return getLinkedDir(text.c_str(), dir);
    if (!create) return false;
    const bool fileInTheWay = isFile(parent, name);
    return !fileInTheWay && makeDir(parent, name, path, dir);
}

bool CMORCadDwgFileSystem::getLinkedDir(const wchar_t* handle, CMOREntity& dir) {
    ads_name entity = {};
    if (!m_view.handEnt(handle, entity)) {
        zero();
        return false;
    }
    if (commonConnectEntity(entity, dir)) return true;
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAsFound};
    acdbEntDel(entity);  // restores an erased one; not tested: connecting shows it
    if (commonConnectEntity(entity, dir)) return true;
    zero();
    return false;
}

bool CMORCadDwgFileSystem::getDirFromHashTable(const wchar_t* path, bool create, CMOREntity& dir) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getDirFromHashTable", create);
    const auto entry = m_directories.find(std::wstring_view{path});
    if (entry == m_directories.end()) return false;
    if (commonConnectEntity(entry->second, dir)) return true;
    m_directories.erase(entry);
    return false;
}

bool CMORCadDwgFileSystem::putDirInHashTable(const wchar_t* path, CMOREntity& dir) {
    ads_name name = {};
    dir.GetEName(name);
    m_directories.try_emplace(path, mor::EntityName{name});
    return true;
}

bool CMORCadDwgFileSystem::getParentDir(const wchar_t* path, bool create, CMOREntity& parent,
                                        wchar_t* name) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getParentDir", create);
    if (!mor::isRooted(path) || path[1] == L'\0') return false;
    const wchar_t* last = nullptr;
    const wchar_t* parentPath = splitPath(path, last);
    const auto lastName = mor::measured(last, mor::kMaxFileNameLength);
    const bool found = lastName && getDir(parentPath, create, parent);
    mergePath(path, last);
    if (!found) return false;
    lastName->copy(name, lastName->size());
    name[lastName->size()] = L'\0';
    return true;
}

bool CMORCadDwgFileSystem::getFile(const wchar_t* path, bool create, CMOREntity& dir,
                                   wchar_t* name) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::getFile", create);
    if (!getParentDir(path, create, dir, name)) return false;
    if (!isDirectory(dir, name)) return true;
    dir.Disconnect();
    return false;
}

bool CMORCadDwgFileSystem::isDirectory(CMOREntity& dir, const wchar_t* name) {
    mor::NameBuffer link;
    mor::AttributeBuffer text;
    return mor::makeLinkName(link, name) && dir.GetAttributeText(link.c_str(), text.data());
}

bool CMORCadDwgFileSystem::isFile(CMOREntity& dir, const wchar_t* name) {
    mor::AttributeBuffer text;
    return std::wstring_view{name} != mor::kRootPath && dir.GetAttributeText(name, text.data());
}

bool CMORCadDwgFileSystem::isDirectory(const wchar_t* path) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy)) return false;
    if (copy.view() == mor::kRootPath) return true;
    if (!mor::isDirPath(copy.view())) return false;
    CMOREntity parent;
    mor::NameBuffer name;
    return getParentDir(copy.c_str(), false, parent, name.data()) &&
           isDirectory(parent, name.c_str());
}

bool CMORCadDwgFileSystem::isFile(const wchar_t* path) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy) || !mor::isFilePath(copy.view())) return false;
    CMOREntity parent;
    mor::NameBuffer name;
    return getParentDir(copy.c_str(), false, parent, name.data()) && isFile(parent, name.c_str());
}

// Whether one of the directories on the way to `path` is the one that it names. Every directory
// that has resolved is in the table, with those on the way to it.
bool CMORCadDwgFileSystem::isOwnAncestor(const wchar_t* path) const {
    const auto own = m_directories.find(std::wstring_view{path});
    if (own == m_directories.end()) return false;
    for (std::wstring_view upper = path; upper.size() > 1;) {
        upper = mor::parentPath(upper);
        const auto entry = m_directories.find(upper);
        if (entry != m_directories.end() && entry->second == own->second) return true;
    }
    return false;
}

// The look-up goes on: what exists resolves, and where something must be made that is refused.
void CMORCadDwgFileSystem::warnIfReadOnly(const wchar_t* operation, bool create) const {
    if (!create || m_view.isWriteable()) return;
    reportViewNotWriteable(operation, m_view, mor::kWarningNotWriteable, mor::kGoesOn);
}
