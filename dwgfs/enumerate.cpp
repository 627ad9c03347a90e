#include "dwgfs/dwg_file_system.h"
#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/revisits.h"
#include "platform/output_calls.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kMaxMatchedPath = 127;

bool refuseInvalid(const wchar_t* operation, const wchar_t* path) {
    acutPrintf(mor::kInvalidPath, operation, path);
    return false;
}

CMORAdsLispVar lispList(const CMORStringList& texts) {
    CMORAdsLispVar list;
    for (std::size_t i = 0; i < texts.Entries(); ++i)
        CMORAdsLisp::SetQ(list, CMORAdsLisp::Cons(texts.Nth(i), list));
    CMORAdsLisp::SetQ(list, CMORAdsLisp::Reverse(list));
    return list;
}

// The parts of a pattern that begins with "/"; each keeps its "/".
void splitPattern(std::wstring_view pattern, CStringArray& parts) {
    for (int count = 0; !pattern.empty(); ++count) {
        const std::size_t end = std::min(pattern.find(L'/', 1), pattern.size());
        parts.SetAtGrow(count, std::wstring{pattern.substr(0, end)}.c_str());
        pattern.remove_prefix(end);
    }
}

bool makeCandidate(mor::PathBuffer& candidate, const wchar_t* path, const wchar_t* name) {
    return candidate.assign(path) && candidate.append(L"/") && candidate.append(name) &&
           candidate.size() <= kMaxMatchedPath;
}

}  // namespace

bool CMORCadDwgFileSystem::getAll(const CMOREntity& dir, CMORStringList& names, EntryType type) {
    names.Reset();
    CMORStringList attributes;
    dir.GetAttributeNames(attributes);
    for (std::size_t i = 0; i < attributes.Entries(); ++i) {
        const wchar_t* attribute = attributes.Nth(i);
        if (isValidFileName(attribute)) {
            if ((type & Files) != 0) names.Append(attribute);
            continue;
        }
        const auto name = mor::dirNameOfLink(attribute);
        if (name && mor::isDirName(*name) && (type & Directories) != 0)
            names.Append(name->data());  // a link's name ends where the attribute's ends
    }
    return true;
}

bool CMORCadDwgFileSystem::getAll(const wchar_t* path, CMORStringList& names, EntryType type) {
    CMOREntity dir;
    return getDir(path, false, dir) && getAll(dir, names, type);
}

bool CMORCadDwgFileSystem::getAllDirs(const wchar_t* path, CMORStringList& names) {
    mor::PathBuffer copy;
    return mor::copyPath(path, copy) && getAll(copy.c_str(), names, Directories);
}

bool CMORCadDwgFileSystem::getAllFiles(const wchar_t* path, CMORStringList& names) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy) || !mor::isDirPath(copy.view()))
        return refuseInvalid(L"CMORCadDwgFileSystem::getAllFiles", path);
    return getAll(copy.c_str(), names, Files);
}

bool CMORCadDwgFileSystem::getAllDirs(const wchar_t* path, CMORAdsLispVar& names) {
    names = CMORAdsLisp::Nil;
    CMORStringList list;
    if (!getAllDirs(path, list)) return false;
    names = lispList(list);
    return true;
}

bool CMORCadDwgFileSystem::getAllFiles(const wchar_t* path, CMORAdsLispVar& names) {
    names = CMORAdsLisp::Nil;
    CMORStringList list;
    if (!getAllFiles(path, list)) return false;
    names = lispList(list);
    return true;
}

bool CMORCadDwgFileSystem::readAllFiles(const wchar_t* path, CMORAdsLispVar& files) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy) || !mor::isDirPath(copy.view()))
        return refuseInvalid(L"CMORCadDwgFileSystem::readAllFiles", path);
    CMOREntity dir;
    if (!getDir(copy.c_str(), false, dir)) return false;
    CMORStringList names;
    getAll(dir, names, Files);
    CMORAdsLispVar list;
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        CMORAdsLispVar value;
        dir.GetAttribute(names.Nth(i), value);  // not tested: what cannot be read is listed as nil
        const CMORAdsLispVar file{CMORAdsLisp::Cons(names.Nth(i), value)};
        CMORAdsLisp::SetQ(list, CMORAdsLisp::Cons(file, list));
    }
    CMORAdsLisp::SetQ(files, CMORAdsLisp::Reverse(list));
    return true;
}

bool CMORCadDwgFileSystem::readAllMatchingFiles(const wchar_t* pattern, CMORAdsLispVar& files) {
    const auto text = mor::measured(pattern, mor::kMaxPathLength);
    if (!text || !text->starts_with(L'/')) return false;
    CStringArray parts;
    splitPattern(*text, parts);
    return readAllMatchingFiles(L"", parts, 0, files);
}

bool CMORCadDwgFileSystem::readAllMatchingFiles(const wchar_t* path, CStringArray& parts, int index,
                                                CMORAdsLispVar& files) {
    Revisits revisits;
    return readMatchesBelow(path, parts, index, revisits, files);
}

bool CMORCadDwgFileSystem::readMatchesBelow(const wchar_t* path, CStringArray& parts, int index,
                                            Revisits& revisits, CMORAdsLispVar& files) {
    mor::PathBuffer copy;
    CMOREntity dir;
    ads_name own = {};
    if (!copy.assign(*path == L'\0' ? mor::kRootPath : path)) return false;
    if (!getDir(copy.c_str(), false, dir)) return false;
    dir.GetEName(own);
    if (!revisits.mayVisit(mor::EntityName{own})) return true;
    const bool last = index + 1 == parts.GetSize();
    const wchar_t* part = parts[index].GetString() + 1;
    CMORStringList names;
    getAll(dir, names, last ? Files : Directories);
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        if (acutWcMatch(names.Nth(i), part) != RTNORM) continue;
        mor::PathBuffer candidate;
        if (!makeCandidate(candidate, path, names.Nth(i))) continue;
        if (last)
            readMatchingFile(candidate.c_str(), files);
        else
            readMatchesBelow(candidate.c_str(), parts, index + 1, revisits, files);
    }
    return true;
}

void CMORCadDwgFileSystem::readMatchingFile(const wchar_t* path, CMORAdsLispVar& files) {
    CMORAdsLispVar value;
    if (!read(path, value)) return;
    const CMORAdsLispVar added = CMORAdsLisp::List(CMORAdsLisp::List(path, value));
    if (CMORAdsLisp::NilP(files))
        files = added;
    else
        files.Append(added);
}
