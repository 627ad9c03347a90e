#pragma once

#include "tests/support/process.h"
#include "tests/support/test_folder.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Small drawings, written as "0 LINE|5 A1|8 WALLS|": groups, each ended by a bar. A bar that no
/// group code follows belongs to the value: "2 PLAN|WALLS". `DxfRecord::text` reads them back.
namespace mor::test {

namespace detail {

/// Where the first group of `groups` ends.
[[nodiscard]] inline std::size_t groupEnd(std::string_view groups) {
    for (std::size_t bar = groups.find('|'); bar != groups.npos; bar = groups.find('|', bar + 1)) {
        const std::size_t end = groups.find_first_not_of("0123456789", bar + 1);
        if (end == groups.npos || (end > bar + 1 && groups[end] == ' ')) return bar;
    }
    return groups.size();
}

}  // namespace detail

/// The lines of groups, unpadded.
[[nodiscard]] inline std::string dxfText(std::string_view groups, std::string_view end = "\n") {
    std::string text;
    while (!groups.empty()) {
        const std::string_view group = groups.substr(0, detail::groupEnd(groups));
        const std::size_t blank = std::min(group.find(' '), group.size());
        text += group.substr(0, blank);
        text += end;
        text += group.substr(std::min(blank + 1, group.size()));
        text += end;
        groups.remove_prefix(std::min(group.size() + 1, groups.size()));
    }
    return text;
}

/// `more` stands between handle and layer: "67 1|".
[[nodiscard]] inline std::string lineEntity(const std::string& handle, const std::string& layer,
                                            const std::string& more = "") {
    return "0 LINE|" + (handle.empty() ? "" : "5 " + handle + "|") + more + "8 " + layer +
           "|10 0.0|20 0.0|30 0.0|11 1.0|21 0.0|31 0.0|";
}

[[nodiscard]] inline std::string insertEntity(const std::string& handle, const std::string& layer,
                                              const std::string& block,
                                              const std::string& more = "10 0.0|20 0.0|30 0.0|") {
    return "0 INSERT|5 " + handle + "|8 " + layer + "|2 " + block + "|" + more;
}

[[nodiscard]] inline std::string blockDefinition(
    const std::string& name, const std::string& entities, int flags = 0,
    const std::string& path = "", const std::string& base = "10 0.0|20 0.0|30 0.0|") {
    return "0 BLOCK|8 0|2 " + name + "|70 " + std::to_string(flags) + "|" + base + "3 " + name +
           "|1 " + path + "|" + entities + "0 ENDBLK|8 0|";
}

/// The definition of an external reference to the drawing at `path`; `flags` 12 makes it an
/// overlay.
[[nodiscard]] inline std::string referenceDefinition(const std::string& name,
                                                     const std::string& path, int flags = 4) {
    return blockDefinition(name, "", flags, path);
}

/// The extended data that holds attributes.
[[nodiscard]] inline std::string attributeTags(const std::string& items) {
    return "1001 MOR_ATTRIBUTES|1070 1|" + items;
}

struct DxfDrawing {
    std::vector<std::string> layers = {};
    std::string blocks = {};    ///< pieces of `blockDefinition`
    std::string entities = {};  ///< pieces of `lineEntity` and the like
    std::string header = {};    ///< more header variables: "9 $INSBASE|10 1.0|20 0.0|30 0.0|"
    std::string records = {};   ///< records behind those of the layers, of their table
    std::string tables = {};    ///< whole tables behind that of the layers
    std::string version = "AC1009";
    std::string objects = {};

    [[nodiscard]] std::string tags() const {
        std::string all = "0 SECTION|2 HEADER|9 $ACADVER|1 " + version + "|" + header + "0 ENDSEC|";
        all += "0 SECTION|2 TABLES|0 TABLE|2 LAYER|70 " + std::to_string(layers.size()) + "|";
        for (const std::string& name : layers)
            all += "0 LAYER|2 " + name + "|70 0|62 7|6 CONTINUOUS|";
        all += records + "0 ENDTAB|" + tables + "0 ENDSEC|";
        all += "0 SECTION|2 BLOCKS|" + blocks + "0 ENDSEC|";
        all += "0 SECTION|2 ENTITIES|" + entities + "0 ENDSEC|";
        return all + (objects.empty() ? "" : "0 SECTION|2 OBJECTS|" + objects + "0 ENDSEC|") +
               "0 EOF|";
    }
    [[nodiscard]] std::string bytes(std::string_view end = "\n") const {
        return dxfText(tags(), end);
    }
    /// Writes the drawing as a text file of that name, over an older one, into a folder that only
    /// the running test uses; answers its path.
    std::filesystem::path save(const std::string& name) const {
        const std::filesystem::path path = testFolder() / name;
        writeFile(path, bytes());
        return path;
    }
};

}  // namespace mor::test
