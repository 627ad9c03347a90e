#pragma once

#include "host/host.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::host {

/// Absolute, links and dots resolved as far as the path leads to something.
[[nodiscard]] std::filesystem::path realPath(const std::filesystem::path& path);

/// Names in folders, each of which is listed once; without regard to case.
class FolderNames {
public:
    /// A search without case ends after so many steps, all of a document together: links may make a
    /// path mean more and more folders at each of its parts.
    static constexpr std::size_t kMostSteps = 1'000'000;

    [[nodiscard]] bool takeStep() { return ++m_steps <= kMostSteps; }
    /// The names in the folder that equal the given one, sorted.
    [[nodiscard]] const std::vector<std::string>& like(const std::string& folder,
                                                       const std::string& name);
    void clear() { m_folders.clear(); }

private:
    using Names = std::map<std::wstring, std::vector<std::string>>;      // by upper-case name
    std::map<std::pair<std::uint64_t, std::uint64_t>, Names> m_folders;  // by device and inode
    std::size_t m_steps = 0;
};

/// Visits the files that a reference may mean, until `take` answers that it has taken one: the
/// saved path as it is (either slash; relative to the referring file's folder), after the user's
/// mappings; the bare name in that folder; in the extra folders; each as .dxf too where it says
/// .dwg; and all that once more without regard to case. Places where there is no file are noted,
/// and those outside the folder to which references are confined.
void searchReference(std::wstring_view saved, const std::filesystem::path& referring,
                     FolderNames& folders, std::vector<ReferenceTry>& tries,
                     const std::function<bool(const std::filesystem::path&)>& take);

}  // namespace mor::host
