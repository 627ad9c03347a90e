#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "platform/output_calls.h"

#include <set>
#include <string_view>

bool CMORCadDwgFileSystem::delDir(const wchar_t* path) {
    mor::PathBuffer copy;
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::delDir", m_view, mor::kWarningNotWriteable,
                               mor::kRefused);
        return false;
    }
    if (!mor::copyPath(path, copy) || !mor::isDirPath(copy.view())) return false;
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAlways};
    CMOREntity parent;
    mor::NameBuffer name;
    if (!getParentDir(copy.c_str(), false, parent, name.data())) return false;
    if (!isDirectory(parent, name.c_str())) return false;
    if (!removeDir(parent, name.c_str(), copy.c_str())) return false;
    mor::NameBuffer link;
    if (mor::makeLinkName(link, name.c_str())) parent.DeleteAttribute(link.c_str());
    parent.Flush();  // not tested, nor is the deletion: the directory is gone
    return true;
}

bool CMORCadDwgFileSystem::removeDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path) {
    mor::PathBuffer walked;
    if (!mor::copyPath(path, walked)) return false;
    std::set<mor::EntityName> ancestors;  // of the directory: no link below may lead back to one
    for (std::wstring_view upper = walked.view(); upper.size() > 1;) {
        upper = mor::parentPath(upper);
        const auto entry = m_directories.find(upper);
        if (entry != m_directories.end()) ancestors.insert(entry->second);
    }
    return removeTree(parent, name, walked.data(), ancestors);
}

bool CMORCadDwgFileSystem::removeTree(CMOREntity& parent, const wchar_t* name, wchar_t* path,
                                      std::set<mor::EntityName>& ancestors) {
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::removeDir", m_view,
                               mor::kWarningNotWriteable, mor::kRefused);
        return false;
    }
    if (std::wstring_view{name} == mor::kRootPath) {
        acutPrintf(mor::kRootStays, L"CMORCadDwgFileSystem::removeDir");
        return false;
    }
    CMOREntity dir;
    if (!getDir(parent, name, path, dir, false)) return false;
    ads_name entity = {};
    dir.GetEName(entity);
    if (!ancestors.emplace(entity).second) return true;  // a circle: only the link goes
    CMORStringList names;
    getAll(dir, names, Directories);
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        // A path that is too long stays as it is: nothing is made, so none is needed.
        const mor::ExtendedPath extended{path, names.Nth(i)};
        removeTree(dir, names.Nth(i), path, ancestors);  // not tested: the others go all the same
    }
    ancestors.erase(mor::EntityName{entity});
    dir.Destroy();  // not tested: the link goes in any case
    return true;
}
