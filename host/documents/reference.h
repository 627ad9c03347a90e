#pragma once

#include "host/documents/xref_loader.h"
#include "host/drawing/drawing.h"
#include "host/host.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class AcApDocument;

namespace mor::host {

class References;

/// One external reference of the document's drawing, or of a referenced one: the drawing behind it
/// under a number and a name of its own. Two references to one file share its index.
struct Mount {
    std::int64_t number = 0;               ///< second word of its entities' names
    std::wstring name;                     ///< by the path of references: PLAN, PLAN|CORE
    Mount* parent = nullptr;               ///< null below the document's own drawing
    ContainerNumber block = kNoContainer;  ///< of the referring drawing
    std::shared_ptr<Drawing> drawing;      ///< null when it is not loaded
    std::filesystem::path path;            ///< of the file, as it was found
    std::filesystem::path real;            ///< the same, links resolved; of one that is loaded
    ReferenceStatus status = ReferenceStatus::Unresolved;
    std::vector<ReferenceTry> tries;
    std::map<ContainerNumber, std::unique_ptr<Mount>> children;  ///< by block of `drawing`
    /// Names of layers as the document knows them, by the numbers of their texts in that drawing;
    /// empty while nobody has asked.
    mutable std::vector<std::wstring> layerNames;
    mutable std::int64_t namedDrawing = 0;
};

/// The references of one document, resolved on first touch and kept until they are reloaded.
class References {
public:
    /// Drawings that refer to each other twice and more multiply at every step; what goes beyond
    /// this is not loaded.
    static constexpr std::size_t kMost = 10'000;
    /// A longer path of references is not followed.
    static constexpr std::size_t kLongestName = 2047;
    /// Beyond this many bytes only the last place is noted where a file was looked for.
    static constexpr std::size_t kMostNoted = 16U << 20U;

    explicit References(AcApDocument& document) : m_document(document) {}

    /// The mount behind a reference block; never null for one, whatever became of its file.
    /// `parent` is null for blocks of the document's own drawing. Null for an ordinary block and
    /// for an overlay below a reference.
    Mount* mount(Mount* parent, ContainerNumber block);
    [[nodiscard]] const Mount* find(std::int64_t number) const;
    /// The drawing that holds the block and the rest of a qualified name: "PLAN|DOOR" is DOOR of
    /// PLAN's drawing.
    struct Target {
        Mount* mount = nullptr;
        std::wstring rest;
    };
    [[nodiscard]] Target resolve(std::wstring_view qualified);
    /// Forgets what was loaded for a block of the document's own drawing, and its file's index.
    void drop(ContainerNumber block);

private:
    void load(Mount& mount);
    /// Whether the search for the mount's file ends with this one.
    bool take(Mount& mount, const std::filesystem::path& file);
    [[nodiscard]] Result<std::shared_ptr<Drawing>> open(const std::filesystem::path& file,
                                                        const std::filesystem::path& real);
    [[nodiscard]] Drawing& drawingOf(const Mount* parent) const;
    [[nodiscard]] std::filesystem::path fileOf(const Mount* parent) const;
    [[nodiscard]] bool closesCircle(const Mount& mount, const std::filesystem::path& file) const;
    void forget(Mount& mount);

    AcApDocument& m_document;
    std::map<ContainerNumber, std::unique_ptr<Mount>> m_mounts;
    std::map<std::int64_t, Mount*> m_byNumber;
    std::map<std::filesystem::path, std::shared_ptr<Drawing>> m_drawings;
    FolderNames m_folders;    ///< kept while nothing is read again
    std::size_t m_noted = 0;  ///< bytes that the tries of all mounts take
};

/// An external reference of the drawing's own; not what it keeps of a reference's reference.
[[nodiscard]] bool isReferenceBlock(Drawing& drawing, ContainerNumber block);
/// What the drawing keeps of a reference's reference.
[[nodiscard]] bool isKeptReferenceBlock(Drawing& drawing, ContainerNumber block);
[[nodiscard]] bool isOverlayBlock(Drawing& drawing, ContainerNumber block);

}  // namespace mor::host
