#pragma once

#include "dwgfs/dwg_file_system.h"
#include "platform/entity_name.h"

#include <string>
#include <vector>

namespace mor::tool {

/// The file system of the library, with the listing of both kinds of entries in their stored order.
class Store : public CMORCadDwgFileSystem {
public:
    using CMORCadDwgFileSystem::CMORCadDwgFileSystem;

    struct Entry {
        std::wstring name;
        bool directory = false;
    };
    /// Empty when the directory does not resolve.
    [[nodiscard]] std::vector<Entry> entries(const std::wstring& path);
    /// Makes a directory and those above it; false when one cannot be made.
    [[nodiscard]] bool makeDirectory(const std::wstring& path);
    /// The entity that anchors the store, making the block when it is missing or holds something
    /// else.
    [[nodiscard]] bool connectAnchor(CMOREntity& anchor);
    /// Makes one directory and links it from its parent (the anchor, for "/").
    [[nodiscard]] bool makeLinked(CMOREntity& parent, const std::wstring& name,
                                  const std::wstring& path, CMOREntity& directory);
    /// None when the directory does not resolve.
    [[nodiscard]] mor::EntityName directoryName(const std::wstring& path);
};

}  // namespace mor::tool
