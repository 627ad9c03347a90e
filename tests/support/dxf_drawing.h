#pragma once

#include "tests/support/test_folder.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

/// Small R12 drawings as files, for tests that need entities, layers and references as a file
/// brings them. Pieces are written as "code value" tags, each ended by a semicolon: "0 LINE;5 A1;8
/// WALLS;".
namespace mor::test {

[[nodiscard]] inline std::string lineEntity(std::string_view handle, std::string_view layer) {
    std::ostringstream tags;
    tags << "0 LINE;5 " << handle << ";8 " << layer
         << ";10 0.0;20 0.0;30 0.0;11 1.0;21 0.0;31 0.0;";
    return tags.str();
}

[[nodiscard]] inline std::string insertEntity(std::string_view handle, std::string_view layer,
                                              std::string_view block,
                                              std::string_view more = "10 0.0;20 0.0;30 0.0;") {
    std::ostringstream tags;
    tags << "0 INSERT;5 " << handle << ";8 " << layer << ";2 " << block << ";" << more;
    return tags.str();
}

[[nodiscard]] inline std::string blockDefinition(std::string_view name, std::string_view entities,
                                                 int flags = 0, std::string_view path = "",
                                                 std::string_view base = "10 0.0;20 0.0;30 0.0;") {
    std::ostringstream tags;
    tags << "0 BLOCK;8 0;2 " << name << ";70 " << flags << ";" << base << "3 " << name << ";1 "
         << path << ";" << entities << "0 ENDBLK;8 0;";
    return tags.str();
}

/// The definition of an external reference to the drawing at `path`; `flags` 12 makes it an
/// overlay.
[[nodiscard]] inline std::string referenceDefinition(std::string_view name, std::string_view path,
                                                     int flags = 4) {
    return blockDefinition(name, "", flags, path);
}

struct DxfDrawing {
    std::vector<std::string> layers = {};
    std::string blocks = {};    ///< pieces of `blockDefinition`
    std::string entities = {};  ///< pieces of `lineEntity` and the like
    std::string header = {};    ///< more header variables: "9 $INSBASE;10 1.0;20 0.0;30 0.0;"
    std::string records = {};   ///< records behind those of the layers, of their table
    std::string tables = {};    ///< whole tables behind that of the layers
    std::string version = "AC1009";

    [[nodiscard]] std::string tags() const {
        std::string all = "0 SECTION;2 HEADER;9 $ACADVER;1 " + version + ";" + header + "0 ENDSEC;";
        all += "0 SECTION;2 TABLES;0 TABLE;2 LAYER;70 " + std::to_string(layers.size()) + ";";
        for (const std::string& name : layers)
            all += "0 LAYER;2 " + name + ";70 0;62 7;6 CONTINUOUS;";
        all += records + "0 ENDTAB;" + tables + "0 ENDSEC;";
        all += "0 SECTION;2 BLOCKS;" + blocks + "0 ENDSEC;";
        return all + "0 SECTION;2 ENTITIES;" + entities + "0 ENDSEC;0 EOF;";
    }

    [[nodiscard]] std::string bytes() const {
        std::string text;
        std::istringstream all{tags()};
        for (std::string tag; std::getline(all, tag, ';');) {
            const std::size_t blank = tag.find(' ');
            text += tag.substr(0, blank) + '\n' + tag.substr(blank + 1) + '\n';
        }
        return text;
    }

    /// Writes the drawing as a text file of that name, over an older one, into a folder that only
    /// the running test uses.
    [[nodiscard]] std::filesystem::path save(const std::string& name) const {
        const std::filesystem::path path = testFolder() / name;
        std::ofstream file{path, std::ios::binary | std::ios::trunc};
        file << bytes();
        return path;
    }
};

}  // namespace mor::test
