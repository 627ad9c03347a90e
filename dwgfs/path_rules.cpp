#include "dwgfs/path_rules.h"

#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "platform/runtime.h"

#include <algorithm>
#include <cwchar>

namespace mor {

namespace {

bool followsNameRules(std::wstring_view name) {
    if (name.empty() || !isAlnum(name.front())) return false;
    bool letters = false;
    for (const wchar_t c : name) {
        if (isAlpha(c))
            letters = true;
        else if (!isAlnum(c) && c != L' ' && c != L'-' && c != L'_')
            return false;
    }
    return letters;
}

}  // namespace

std::optional<std::wstring_view> measured(const wchar_t* text, std::size_t limit) {
    if (text == nullptr) return std::nullopt;
    const std::size_t size = wcsnlen(text, limit + 1);
    if (size > limit) return std::nullopt;
    return std::wstring_view{text, size};
}

bool isRooted(std::wstring_view path) { return path.starts_with(L'/') && !path.starts_with(L"//"); }

bool copyPath(const wchar_t* path, PathBuffer& copy) {
    const auto text = measured(path, kMaxPathLength);
    return text && isRooted(*text) && copy.assign(*text);
}

bool isDirName(std::wstring_view name) {
    return name.size() <= kMaxDirNameLength && followsNameRules(name);
}

bool isFileName(std::wstring_view name) {
    if (name.size() > kMaxFileNameLength) return false;
    return followsNameRules(withoutArrow(name));
}

std::wstring_view withoutArrow(std::wstring_view name) {
    return name.starts_with(kFileArrow) ? name.substr(1) : name;
}

bool isDirPath(std::wstring_view path) {
    if (!path.starts_with(L'/') || path.size() > kMaxPathLength) return false;
    if (path.size() == 1) return true;
    while (!path.empty()) {
        path.remove_prefix(1);
        const std::size_t end = std::min(path.find(L'/'), path.size());
        if (!isDirName(path.substr(0, end))) return false;
        path.remove_prefix(end);
    }
    return true;
}

bool isFilePath(std::wstring_view path) {
    const std::size_t slash = path.rfind(L'/');
    if (slash == std::wstring_view::npos || path.size() > kMaxPathLength) return false;
    const std::wstring_view directory = path.substr(0, slash);
    return directory.size() > 1 && isDirPath(directory) && isFileName(path.substr(slash + 1));
}

std::wstring_view parentPath(std::wstring_view path) {
    return path.substr(0, std::max<std::size_t>(path.rfind(L'/'), 1));
}

ExtendedPath::ExtendedPath(wchar_t* path, std::wstring_view name) : m_end(path + wcslen(path)) {
    const bool separate = std::wstring_view{path} != kRootPath;
    const auto size = static_cast<std::size_t>(m_end - path);
    m_fits = size + (separate ? 1 : 0) + name.size() <= kMaxPathLength;
    if (!m_fits) return;
    wchar_t* position = m_end;
    if (separate) *position++ = L'/';
    position[name.copy(position, name.size())] = L'\0';
}

}  // namespace mor

bool CMORCadDwgFileSystem::isValidDirName(const wchar_t* name) {
    const auto text = mor::measured(name, mor::kMaxDirNameLength);
    return text && mor::isDirName(*text);
}

bool CMORCadDwgFileSystem::isValidFileName(const wchar_t* name) {
    const auto text = mor::measured(name, mor::kMaxFileNameLength);
    return text && mor::isFileName(*text);
}

bool CMORCadDwgFileSystem::isValidDirPathName(const wchar_t* path) {
    const auto text = mor::measured(path, mor::kMaxPathLength);
    return text && mor::isDirPath(*text);
}

bool CMORCadDwgFileSystem::isValidFilePathName(const wchar_t* path) {
    const auto text = mor::measured(path, mor::kMaxPathLength);
    return text && mor::isFilePath(*text);
}

const wchar_t* CMORCadDwgFileSystem::splitPath(const wchar_t* path, const wchar_t*& name) {
    const wchar_t* slash = wcsrchr(path, L'/');
    name = slash + 1;
    if (slash == path) return mor::kRootPath;
    *const_cast<wchar_t*>(slash) = L'\0';  // the buffer is the caller's own
    return path;
}

bool CMORCadDwgFileSystem::mergePath(const wchar_t* /*path*/, const wchar_t* name) {
    const_cast<wchar_t*>(name)[-1] = L'/';
    return true;
}
