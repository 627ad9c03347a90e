#pragma once

#include "host/result.h"
#include "platform/documents.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Documents of the embedded drawing database: opening, saving, what is current.
namespace mor::host {

enum class Release { R12, R13, R14, R2000, R2004, R2007, R2010, R2013, R2018 };
/// "R12" to "R2018", and back without regard to case.
[[nodiscard]] std::string releaseName(Release release);
[[nodiscard]] std::optional<Release> releaseOfName(std::string_view name);

/// A new document holding the smallest valid drawing of that release; unnamed, unsaved, neither
/// current nor active. `lineEnd` is "\n" or "\r\n".
[[nodiscard]] AcApDocument* createDocument(Release release, std::string_view lineEnd = "\n");

/// Opens a drawing; the document is neither current nor active.
/// Errors: no such file, no drawing, a form or release that is not read, a drawing that breaks off.
Result<AcApDocument*> openDocument(const std::filesystem::path& path);

/// Releases the document. It must not be locked; when it is current or active there is none
/// afterwards. Sends no messages: make it current and send message 3 before.
void closeDocument(AcApDocument* document);

/// Sets the document in whose context calls run, the active window's document; null for none.
void setCurrentDocument(AcApDocument* document);
void setActiveDocument(AcApDocument* document);
[[nodiscard]] std::size_t documentCount();

struct DocumentInfo {
    std::filesystem::path path;  ///< empty for one that was never opened from or saved to a file
    Release release = Release::R12;
    std::string version;   ///< $ACADVER as the file has it, empty when it has none
    std::string codePage;  ///< $DWGCODEPAGE as the file has it, empty when it has none
    std::string encoding;  ///< the encoding in which its texts are read
    std::string lineEnd;   ///< "LF" or "CRLF"
    std::uint64_t bytes = 0;
    std::size_t records = 0;  ///< group-0 records of the file, structure included
    std::uint64_t handleSeed = 0;
};
[[nodiscard]] DocumentInfo documentInfo(const AcApDocument* document);

// ---- saving

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
/// Takes away what an unfinished save has made beside its target, for signal handlers that end the
/// process. False, and nothing done, when a document has been saved: then it is too late to end.
bool abandonSaves() noexcept;

// ---- command line, break key, system variables

/// What was printed since the last call. Empty while a printer is set.
[[nodiscard]] std::wstring takePrintedText();
/// Sends printed text on as it comes; an empty function goes back to capturing.
void setPrinter(std::function<void(std::wstring_view)> printer);
/// The next poll of the break key answers yes, once. Safe to call from a signal handler.
void pressBreakKey() noexcept;
/// Sets a system variable of the application; nil removes it. `name` in any case.
void setSystemVariable(std::wstring_view name, const CMORAdsLispVar& value);

}  // namespace mor::host
