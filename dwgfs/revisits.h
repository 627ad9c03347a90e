#pragma once

#include "dwgfs/dwg_file_system.h"

#include <cstddef>
#include <set>

/// How often a walk may look into directories that it has seen before. Two links to one directory
/// are both followed; where links are doubled on every level the ways multiply, and the walk must
/// still end.
class CMORCadDwgFileSystem::Revisits {
public:
    static constexpr std::size_t kMost = 1000;

    /// False, for a directory seen before, when that was too often already.
    [[nodiscard]] bool mayVisit(mor::EntityName directory) {
        return m_seen.insert(directory).second || ++m_count <= kMost;
    }

private:
    std::set<mor::EntityName> m_seen;
    std::size_t m_count = 0;
};
