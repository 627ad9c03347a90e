#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "platform/output_calls.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <vector>

/// The way down through a directory that is being removed, kept off the machine's stack: links may
/// lead deeper than any path.
struct CMORCadDwgFileSystem::RemovalWay {
    struct Level {
        mor::EntityName entity;
        CMORStringList names;  // of the directories below it
        std::size_t next = 0;  // of those names
        std::size_t pathSize = 0;
    };
    std::vector<Level> levels;
    mor::PathBuffer path;
    std::set<mor::EntityName> open;  // the directories on the way
    std::set<mor::EntityName> removed;
};

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
    if (!mayRemove(name)) return false;
    const auto text = mor::measured(path, mor::kMaxPathLength);
    if (!text) return false;
    RemovalWay way;
    noteAncestors(*text, way);
    ads_name entity = {};
    if (parent.GetEName(entity)) way.open.emplace(entity);
    if (!beginRemoval(parent, name, path, way)) return false;
    while (!way.levels.empty()) {
        RemovalWay::Level& level = way.levels.back();
        if (level.next == level.names.Entries()) {
            endRemoval(way);
            continue;
        }
        const wchar_t* below = level.names.Nth(level.next++);
        way.path.truncate(level.pathSize);
        // A path that is too long stays as it is: nothing is made, so none is needed.
        if (!way.path.append(L"/") || !way.path.append(below)) way.path.truncate(level.pathSize);
        CMOREntity dir;
        level.entity.copyTo(entity);
        // Not tested: the others go all the same.
        if (dir.Connect(entity) && mayRemove(below))
            beginRemoval(dir, below, way.path.c_str(), way);
    }
    return true;
}

// The directories above `path`: no link below may lead back to one. Those on the way resolve, as
// they did for the directory itself.
void CMORCadDwgFileSystem::noteAncestors(std::wstring_view path, RemovalWay& way) {
    if (!mor::isRooted(path)) return;
    for (std::wstring_view upper = path; upper.size() > 1;) {
        upper = mor::parentPath(upper);
        mor::PathBuffer copy;
        CMOREntity dir;
        ads_name entity = {};
        if (copy.assign(upper) && getDir(copy.c_str(), false, dir) && dir.GetEName(entity))
            way.open.emplace(entity);
    }
}

bool CMORCadDwgFileSystem::mayRemove(const wchar_t* name) {
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::removeDir", m_view,
                               mor::kWarningNotWriteable, mor::kRefused);
        return false;
    }
    if (std::wstring_view{name} == mor::kRootPath) {
        acutPrintf(mor::kRootStays, L"CMORCadDwgFileSystem::removeDir");
        return false;
    }
    return true;
}

// Goes down into a directory. A link to one that is above, or that was removed already, is followed
// no further: it goes with the directory that holds it.
bool CMORCadDwgFileSystem::beginRemoval(CMOREntity& parent, const wchar_t* name,
                                        const wchar_t* path, RemovalWay& way) {
    if (way.removed.contains(linkedEntity(parent, name)))
        return true;  // a look-up would restore it
    CMOREntity dir;
    if (!getDir(parent, name, path, dir, false)) return false;
    ads_name entity = {};
    dir.GetEName(entity);
    if (!way.open.emplace(entity).second) return true;
    if (way.levels.empty() && !way.path.assign(path)) return false;
    way.levels.push_back({mor::EntityName{entity}, {}, 0, way.path.size()});
    getAll(dir, way.levels.back().names, Directories);
    return true;
}

void CMORCadDwgFileSystem::endRemoval(RemovalWay& way) {
    const mor::EntityName name = way.levels.back().entity;
    way.levels.pop_back();
    way.open.erase(name);
    way.removed.insert(name);
    CMOREntity dir;
    if (dir.Connect(name)) dir.Destroy();  // not tested: the link goes in any case
}

// What the link names, without connecting it: none when there is no link or it leads nowhere.
mor::EntityName CMORCadDwgFileSystem::linkedEntity(CMOREntity& parent, const wchar_t* name) const {
    mor::NameBuffer link;
    mor::AttributeBuffer text;
    ads_name entity = {};
    if (!mor::makeLinkName(link, name) || !parent.GetAttributeText(link.c_str(), text.data()) ||
        !m_view.handEnt(text.c_str(), entity))
        return {};
    return mor::EntityName{entity};
}
