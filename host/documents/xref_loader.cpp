#include "host/documents/xref_loader.h"

#include "host/permanent.h"
#include "platform/runtime.h"

#include <algorithm>
#include <climits>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace mor::host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestPath = PATH_MAX - 1;
constexpr std::size_t kMostTails = 6;

struct Places {
    std::vector<fs::path> folders;
    std::vector<std::pair<std::string, std::string>> mappings;
    fs::path root;  // with its links resolved; empty: anywhere
};

Places& places() {
    static Permanent<Places> state;
    return *state;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return equalNoCase(fromUtf8(a).value_or(L""), fromUtf8(b).value_or(L"")) && !a.empty();
}

/// A saved path with forward slashes.
struct SavedPath {
    std::string text;
    bool mapped = false;  ///< it begins with a place of this machine

    /// On a drive or a share of another machine.
    [[nodiscard]] bool isElsewhere() const {
        return !mapped && ((text.size() > 1 && text[1] == ':') || text.starts_with("//"));
    }
};

std::string withoutSlashAtEnd(std::string text) {
    while (text.ends_with('/')) text.pop_back();
    return text;
}

/// After the user's mappings; a mapping's prefix ends at a slash.
SavedPath mapped(std::string saved) {
    std::ranges::replace(saved, '\\', '/');
    for (auto [from, to] : places().mappings) {
        std::ranges::replace(from, '\\', '/');
        from = withoutSlashAtEnd(std::move(from));
        if (saved.size() < from.size() || from.empty()) continue;
        if (!equalIgnoringCase(std::string_view(saved).substr(0, from.size()), from)) continue;
        if (saved.size() > from.size() && saved[from.size()] != '/') continue;
        return {withoutSlashAtEnd(to) + saved.substr(from.size()), true};
    }
    return {std::move(saved)};
}

/// The file itself, then its twin in the other form of drawings.
std::vector<fs::path> forms(const fs::path& path) {
    std::vector<fs::path> all = {path};
    const std::string ending = path.extension().string();
    const auto addTwin = [&](const char* lower, const char* upper) {
        all.push_back(fs::path(path).replace_extension(lower));
        all.push_back(fs::path(path).replace_extension(upper));
    };
    if (equalIgnoringCase(ending, ".dwg")) addTwin(".dxf", ".DXF");
    if (equalIgnoringCase(ending, ".dxf")) addTwin(".dwg", ".DWG");
    return all;
}

/// The last parts of a saved path, the longest end first, the bare name of the file last: a tree of
/// folders often comes along whole, to another place.
std::vector<fs::path> tails(const std::string& saved) {
    std::vector<fs::path> all;
    fs::path tail;
    std::string_view rest = saved;
    while (all.size() < kMostTails) {
        const std::size_t cut = rest.find_last_of("/:");
        const std::string_view part = cut == std::string_view::npos ? rest : rest.substr(cut + 1);
        if (part == "..") break;
        if (!part.empty() && part != ".") {
            tail = tail.empty() ? fs::path(part) : fs::path(part) / tail;
            all.push_back(tail);
        }
        if (cut == std::string_view::npos || rest[cut] == ':') break;
        rest = rest.substr(0, cut);
    }
    std::ranges::reverse(all);
    return all;
}

std::vector<fs::path> candidates(const SavedPath& saved, const fs::path& folder) {
    std::vector<fs::path> all;
    const auto add = [&all](const fs::path& path) {
        for (fs::path& form : forms(path))
            if (std::ranges::find(all, form) == all.end()) all.push_back(std::move(form));
    };
    const fs::path path = saved.text;
    if (!saved.isElsewhere()) add(folder / path);  // an absolute path stays as it is
    const std::vector<fs::path> ends = tails(saved.text);
    for (const fs::path& end : ends) add(folder / end);
    for (const fs::path& extra : places().folders) {
        if (!saved.isElsewhere() && path.is_relative()) add(extra / path);
        for (const fs::path& end : ends) add(extra / end);
    }
    return all;
}

/// Whether what the path leads to, links resolved, lies outside the folder to which references are
/// confined, whether it is there or not.
bool isOutside(const fs::path& path) {
    const fs::path& root = places().root;
    if (root.empty()) return false;
    std::error_code code;
    const fs::path real = fs::weakly_canonical(fs::absolute(path, code), code);
    return code ||
           std::mismatch(root.begin(), root.end(), real.begin(), real.end()).first != root.end();
}

bool isFile(const fs::path& path) {
    std::error_code code;
    return fs::is_regular_file(path, code);
}

/// The regular files that a path means when the case of its names does not count; in an order that
/// does not depend on the folders'.
class CaselessSearch {
public:
    explicit CaselessSearch(FolderNames& folders) : m_folders(folders) {}

    std::vector<fs::path> files(const fs::path& path) {
        m_parts.clear();
        for (const fs::path& part : path.relative_path())
            if (part != ".") m_parts.push_back(part.string());
        m_files.clear();
        below(path.root_path().string(), 0);
        return std::move(m_files);
    }

private:
    void below(const std::string& found, std::size_t part) {
        if (!m_folders.takeStep()) return;
        if (part == m_parts.size()) {
            if (isFile(found)) m_files.emplace_back(found);
            return;
        }
        const std::string folder = found.empty() || found.ends_with('/') ? found : found + '/';
        if (m_parts[part] == "..") return below(folder + "..", part + 1);
        for (const std::string& name : m_folders.like(found, m_parts[part]))
            below(folder + name, part + 1);
    }

    FolderNames& m_folders;
    std::vector<std::string> m_parts;
    std::vector<fs::path> m_files;
};

/// The path in its shortest form, where that means the same file: behind a link, "..", leads
/// elsewhere.
fs::path shortest(const fs::path& path) {
    std::error_code code;
    const fs::path shorter = path.lexically_normal();
    return fs::equivalent(path, shorter, code) ? shorter : path;
}

}  // namespace

void setReferenceFolders(std::vector<fs::path> folders) { places().folders = std::move(folders); }
void setReferenceMappings(std::vector<std::pair<std::string, std::string>> mappings) {
    places().mappings = std::move(mappings);
}

void setReferenceRoot(const fs::path& folder) {
    places().root = folder.empty() ? folder : realPath(folder);
}

fs::path realPath(const fs::path& path) {
    std::error_code code;
    const fs::path absolute = fs::absolute(path, code);
    const fs::path real = fs::weakly_canonical(code ? path : absolute, code);
    return code ? path : real;
}

const std::vector<std::string>& FolderNames::like(const std::string& folder,
                                                  const std::string& name) {
    static const std::vector<std::string> none;
    const std::string path = folder.empty() ? "." : folder;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return none;
    const auto [known, added] = m_folders.try_emplace({status.st_dev, status.st_ino});
    Names& names = known->second;
    if (added) {
        std::error_code code;
        for (fs::directory_iterator at(path, code), end; !code && at != end; at.increment(code)) {
            std::string entry = at->path().filename().string();
            if (const auto text = fromUtf8(entry))
                names[upperCase(*text)].push_back(std::move(entry));
        }
        for (auto& [upper, entries] : names) std::ranges::sort(entries);
    }
    const auto found = names.find(upperCase(fromUtf8(name).value_or(L"")));
    return found == names.end() ? none : found->second;
}

void searchReference(std::wstring_view saved, const fs::path& referring, FolderNames& folders,
                     std::vector<ReferenceTry>& tries,
                     const std::function<bool(const fs::path&)>& take) {
    if (saved.size() > kLongestPath) {
        tries.push_back({"", "the saved path has " + std::to_string(saved.size()) +
                                 " characters; those of files have at most " +
                                 std::to_string(kLongestPath)});
        return;
    }
    const SavedPath text = mapped(toUtf8(saved));
    if (text.text.empty()) {
        tries.push_back({"", "the reference saves no path"});
        return;
    }
    const std::vector<fs::path> all = candidates(text, referring.parent_path());
    std::vector<fs::path> visited;
    for (const fs::path& path : all) {
        if (isOutside(path)) {
            tries.push_back(
                {path.lexically_normal(), "lies outside " + places().root.string() +
                                              ", the folder that references are confined to"});
            continue;
        }
        if (isFile(path)) {
            visited.push_back(shortest(path));
            if (take(visited.back())) return;
            continue;
        }
        std::error_code code;
        const bool there = fs::exists(path, code);
        tries.push_back({path.lexically_normal(), there ? "is no regular file" : "not there"});
    }
    CaselessSearch caseless(folders);
    for (const fs::path& path : all) {
        for (const fs::path& found : caseless.files(path)) {
            const fs::path file = shortest(found);
            if (isOutside(file) || std::ranges::find(visited, file) != visited.end()) continue;
            visited.push_back(file);
            if (take(file)) return;
        }
    }
}

}  // namespace mor::host
