#pragma once

#include "host/result.h"
#include "platform/documents.h"
#include "platform/entity_name.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// Saving documents.
namespace mor::host {

/// What stands under a name, links followed, at one moment.
struct FileState {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t seconds = 0;  ///< of its last change
    std::int64_t nanoseconds = 0;
    friend bool operator==(const FileState&, const FileState&) = default;
};
[[nodiscard]] FileState fileState(const std::filesystem::path& path);

struct SaveOptions {
    std::filesystem::path output;  ///< empty: the file the document was opened from
    bool backup = true;            ///< keep the old file as NAME.bak
    bool dryRun = false;           ///< everything but writing to the folder
    bool overwrite = true;         ///< false: refuse when the target exists
    /// Of `output` when the work began: refuse when something else stands there now.
    std::optional<FileState> before = {};
};

/// One record that a save writes anew, in the order of the file.
struct SavedEdit {
    enum class Kind { Changed, Made, Erased };
    Kind kind = Kind::Changed;
    std::string type;    ///< group 0; "HEADER" for the header variables
    std::string handle;  ///< empty when it has none
    std::string what;    ///< the name of a symbol, block or header variable, may be empty
    EntityName name;     ///< of the record; none for the header and for heads of tables
};
struct SaveReport {
    std::vector<SavedEdit> edits;
    bool written = false;          ///< false when nothing had changed, and for a dry run
    std::filesystem::path backup;  ///< the backup that was kept, empty when none
    std::uint64_t bytes = 0;       ///< size of the file as written, or as it would be
    std::string warning;           ///< what did not go well although the file is saved
};

/// Saves: lock, temporary file beside the target, flush, read back and compare, backup, rename,
/// flush the folder. At no moment is there no file under the target's name. Nothing changed:
/// nothing is written. Refused where another program has changed or made the target meanwhile.
/// Signals that end the process wait while the names change.
Result<SaveReport> saveDocument(AcApDocument* document, const SaveOptions& options = {});
/// What a save would lose or change although nobody asked for it: the drawing is written to memory
/// as it is and compared with its file byte by byte, and every record is cut into its groups. Empty
/// when a save keeps everything.
[[nodiscard]] std::vector<std::string> verifySave(const AcApDocument* document);
/// Takes away what an unfinished save has made beside its target, for signal handlers that end the
/// process. False, and nothing done, when a document has been saved: then it is too late to end.
bool abandonSaves() noexcept;

}  // namespace mor::host
