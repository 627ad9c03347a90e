#include "dwgfs/link_names.h"

#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"

#include <cwchar>

namespace mor {

namespace {

constexpr wchar_t kLinkMark = L'^';

}  // namespace

bool makeLinkName(NameBuffer& link, std::wstring_view name) {
    if (name == kRootPath) return link.assign(kRootLink);
    name = withoutArrow(name);
    if (name.size() > kMaxDirNameLength) return false;
    link.truncate(0);
    return link.append({&kLinkMark, 1}) && link.append(name);
}

std::wstring linkNameOf(std::wstring_view name) {
    if (name == kRootPath) return kRootLink;
    return kLinkMark + std::wstring(withoutArrow(name));
}

std::optional<std::wstring_view> dirNameOfLink(std::wstring_view link) {
    if (link == kRootLink) return kRootPath;
    if (!link.starts_with(kLinkMark)) return std::nullopt;
    return link.substr(1);
}

}  // namespace mor

void CMORCadDwgFileSystem::makeXDataDirNameFromDirName(wchar_t* link, const wchar_t* name) {
    mor::NameBuffer buffer;
    if (!mor::makeLinkName(buffer, name)) buffer.truncate(0);
    buffer.view().copy(link, buffer.size());
    link[buffer.size()] = L'\0';
}

bool CMORCadDwgFileSystem::makeDirNameFromXDataDirName(wchar_t* name, const wchar_t* link) {
    const auto found = mor::dirNameOfLink(link);
    if (!found) return false;
    wmemmove(name, found->data(), found->size());  // `name` may be the buffer of `link`
    name[found->size()] = L'\0';
    return true;
}
