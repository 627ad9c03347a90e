#pragma once

#include "platform/documents.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// External references of a document.
namespace mor::host {

/// Folders in which references are looked for besides the referring drawing's own, for all
/// documents. Set before a reference is touched.
void setReferenceFolders(std::vector<std::filesystem::path> folders);
/// Beginnings of saved paths and what stands for them here: {"C:\\proj", "/srv/proj"}. Without
/// regard to case.
void setReferenceMappings(std::vector<std::pair<std::string, std::string>> mappings);
/// Confines all references to what lies below the folder: files that a path leads to elsewhere, by
/// itself, by "..", or by a link, are not looked at. Empty: anywhere.
void setReferenceRoot(const std::filesystem::path& folder);

enum class ReferenceStatus {
    Loaded,
    NotFound,    ///< no file was found
    Unresolved,  ///< a file was found but not read: damaged, of another form, or it closes a circle
    Orphaned,    ///< kept of a reference that is not loaded, or an overlay below a reference
    Unreferenced  ///< loaded, but no insert refers to it
};
struct ReferenceTry {
    std::filesystem::path path;  ///< empty where there was no file to look for
    std::string why;             ///< why it was not taken
};
struct ReferenceInfo {
    std::wstring name;   ///< by the path of references: PLAN, PLAN|CORE
    std::wstring block;  ///< in the referring drawing
    bool overlay = false;
    ReferenceStatus status = ReferenceStatus::Unresolved;
    bool loaded = false;  ///< its file was read, whether an insert refers to it or not
    std::wstring saved;   ///< path as the referring drawing has it
    std::filesystem::path found;
    std::vector<ReferenceTry> tries;
    std::size_t inserts = 0;   ///< live ones in the referring drawing, block definitions included
    std::size_t entities = 0;  ///< main entities of the referenced drawing's model space
    std::size_t depth = 0;     ///< 0 for references of the document's own drawing
};
/// The references of a document, each followed by its nested ones. Reads all their files.
[[nodiscard]] std::vector<ReferenceInfo> references(AcApDocument* document);
/// The one of that name, a path of references such as PLAN|CORE, without regard to case; none for
/// anything else. Reads its file and those on the way to it, no others.
[[nodiscard]] std::optional<ReferenceInfo> findReference(AcApDocument* document,
                                                         std::wstring_view name);
/// Whether the document's own drawing refers to a file by the block of that name. Reads no file.
[[nodiscard]] bool isReference(AcApDocument* document, std::wstring_view block);

/// Reads the reference's file again when it is touched next; entity names of the old state are
/// unknown from then on. False when the drawing has no reference block of that name.
bool reloadReference(AcApDocument* document, std::wstring_view name);
/// The same, and the block is no reference any more, nor is what the drawing keeps of the
/// reference's own: they end up without entities, path and flags.
bool detachReference(AcApDocument* document, std::wstring_view name);

}  // namespace mor::host
