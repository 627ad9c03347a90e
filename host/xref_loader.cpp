#include "host/xref_loader.h"

#include "host/permanent.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

namespace fs = std::filesystem;

struct Places {
    std::vector<fs::path> folders;
    std::vector<std::pair<std::string, std::string>> mappings;
};

Places& places() {
    static Permanent<Places> state;
    return *state;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return equalNoCase(fromUtf8(a).value_or(L""), fromUtf8(b).value_or(L"")) && !a.empty();
}

/// The saved text with forward slashes and the user's mappings; a mapping's prefix ends at a slash.
std::string mapped(std::string saved) {
    std::ranges::replace(saved, '\\', '/');
    for (auto [from, to] : places().mappings) {
        std::ranges::replace(from, '\\', '/');
        while (from.ends_with('/')) from.pop_back();
        if (saved.size() < from.size() || from.empty()) continue;
        if (!equalIgnoringCase(std::string_view(saved).substr(0, from.size()), from)) continue;
        if (saved.size() > from.size() && saved[from.size()] != '/') continue;
        return to + saved.substr(from.size());
    }
    return saved;
}

bool isDriveOrShare(std::string_view path) {
    return (path.size() > 1 && path[1] == ':') || path.starts_with("//");
}

/// The file itself, and as DXF where its name says DWG.
std::vector<fs::path> forms(const fs::path& path) {
    std::vector<fs::path> all = {path};
    if (equalIgnoringCase(path.extension().string(), ".dwg")) {
        // A drawing in the other format cannot be read; its DXF twin comes first.
        all.insert(all.begin(), fs::path(path).replace_extension(".dxf"));
        all.insert(all.begin() + 1, fs::path(path).replace_extension(".DXF"));
    }
    return all;
}

std::vector<fs::path> candidates(const std::string& saved, const fs::path& folder) {
    std::vector<fs::path> all;
    const auto add = [&all](const fs::path& path) {
        for (fs::path& form : forms(path))
            if (std::ranges::find(all, form) == all.end()) all.push_back(std::move(form));
    };
    const fs::path path = saved;
    if (!isDriveOrShare(saved)) add(path.is_absolute() ? path : folder / path);
    const fs::path bare = saved.substr(saved.find_last_of("/:") + 1);
    add(folder / bare);
    for (const fs::path& extra : places().folders) {
        if (!isDriveOrShare(saved) && path.is_relative()) add(extra / path);
        add(extra / bare);
    }
    return all;
}

/// The same path with the case that the folders really have; empty when there is none.
fs::path withoutCase(const fs::path& path) {
    fs::path found = path.is_absolute() ? path.root_path() : fs::path(".");
    for (const fs::path& part : path.relative_path()) {
        std::error_code code;
        if (part == "." || part == ".." || fs::exists(found / part, code)) {
            found /= part;
            continue;
        }
        std::vector<fs::path> matches;
        for (const fs::directory_entry& entry : fs::directory_iterator(found, code))
            if (equalIgnoringCase(entry.path().filename().string(), part.string()))
                matches.push_back(entry.path());
        if (matches.empty()) return {};
        found = *std::ranges::min_element(matches);  // several: always the same one
    }
    return found;
}

}  // namespace

void setReferenceFolders(std::vector<fs::path> folders) { places().folders = std::move(folders); }
void setReferenceMappings(std::vector<std::pair<std::string, std::string>> mappings) {
    places().mappings = std::move(mappings);
}

std::optional<fs::path> findReference(std::wstring_view saved, const fs::path& referring,
                                      std::vector<ReferenceTry>& tries) {
    const std::string text = mapped(toUtf8(saved));
    if (text.empty()) {
        tries.push_back({"", "the reference saves no path"});
        return std::nullopt;
    }
    const fs::path folder = referring.empty() ? fs::current_path() : referring.parent_path();
    const std::vector<fs::path> all = candidates(text, folder);
    std::error_code code;
    for (const fs::path& path : all) {
        if (fs::is_regular_file(path, code)) return path.lexically_normal();
        const bool there = fs::exists(path, code);
        tries.push_back({path.lexically_normal(), there ? "is no regular file" : "not there"});
    }
    for (const fs::path& path : all) {
        const fs::path found = withoutCase(path);
        if (!found.empty() && fs::is_regular_file(found, code)) return found.lexically_normal();
    }
    return std::nullopt;
}

}  // namespace mor::host
