#pragma once

#include "host/result.h"
#include "platform/documents.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The embedded drawing database as tools and tests see it. One thread.
namespace mor::host {

enum class Release { R12, R13, R14, R2000, R2004, R2007, R2010, R2013, R2018 };
/// "R12" to "R2018", and back without regard to case.
[[nodiscard]] std::string releaseName(Release release);
[[nodiscard]] std::optional<Release> releaseOfName(std::string_view name);

/// Bytes of extended data that one record may hold, all applications together.
inline constexpr long kRoomPerRecord = 16383;

// ---- documents ----------------------------------------------------------------------------------

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

// ---- saving -------------------------------------------------------------------------------------

struct SaveOptions {
    std::filesystem::path output;  ///< empty: the file the document was opened from
    bool backup = true;            ///< keep the old file as NAME.bak
    bool dryRun = false;           ///< everything but writing to the folder
    bool overwrite = true;         ///< false: refuse when the target exists
};

/// One record that a save writes anew, in the order of the file.
struct SavedEdit {
    enum class Kind { Changed, Made, Erased };
    Kind kind = Kind::Changed;
    std::string type;    ///< group 0; "HEADER" for the header variables
    std::string handle;  ///< empty when it has none
    std::string what;    ///< a name or a path that tells it apart, may be empty
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

// ---- command line, break key, system variables --------------------------------------------------

/// What was printed since the last call. Empty while a printer is set.
[[nodiscard]] std::wstring takePrintedText();
/// Sends printed text on as it comes; an empty function goes back to capturing.
void setPrinter(std::function<void(std::wstring_view)> printer);
/// The next poll of the break key answers yes, once. Safe to call from a signal handler.
void pressBreakKey() noexcept;
/// Sets a system variable of the application; nil removes it. `name` in any case.
void setSystemVariable(std::wstring_view name, const CMORAdsLispVar& value);

// ---- values -------------------------------------------------------------------------------------

[[nodiscard]] CMORAdsLispVar makeInteger(std::int32_t value);
[[nodiscard]] CMORAdsLispVar makeReal(double value);
[[nodiscard]] CMORAdsLispVar makeString(std::wstring_view text);
/// nil for no items. `tail`, when given and no list, makes the list dotted.
[[nodiscard]] CMORAdsLispVar makeList(const std::vector<CMORAdsLispVar>& items,
                                      const CMORAdsLispVar& tail = {});

enum class ValueKind { Nil, Integer, Real, String, EntityName, List, DottedList };
[[nodiscard]] ValueKind kindOf(const CMORAdsLispVar& value);
[[nodiscard]] std::int32_t integerOf(const CMORAdsLispVar& value);  ///< 0 for other kinds
[[nodiscard]] double realOf(const CMORAdsLispVar& value);           ///< 0.0 for other kinds
[[nodiscard]] std::wstring stringOf(const CMORAdsLispVar& value);   ///< empty for other kinds
[[nodiscard]] mor::EntityName entityNameOf(const CMORAdsLispVar& value);
/// The elements of a list, the tail of a dotted one last; empty for other kinds.
[[nodiscard]] std::vector<CMORAdsLispVar> elementsOf(const CMORAdsLispVar& value);
/// Equal in type, structure and bits.
[[nodiscard]] bool sameValue(const CMORAdsLispVar& a, const CMORAdsLispVar& b);

/// LISP text that reads back to the same value, UTF-8: 42, 1.0, "a\"b", (1 (2 "x") . 3), nil,
/// (handent "1A2F").
[[nodiscard]] std::string lispText(const CMORAdsLispVar& value);
/// Whether a handle that no record has is an error, or kept as a name to which nothing connects.
enum class UnknownHandles { Refuse, Keep };
/// Reads one value; `(handent "1A2F")` looks up the current document. Errors name the column and
/// what would work.
Result<CMORAdsLispVar> readLisp(std::string_view text,
                                UnknownHandles unknown = UnknownHandles::Refuse);
/// What reading an attribute of that value as a text gives: at most 2047 characters; of a value
/// that is no text, what `princ` prints.
[[nodiscard]] std::wstring attributeText(const CMORAdsLispVar& value);
/// Whether an entity name stands anywhere in the value.
[[nodiscard]] bool holdsEntityName(const CMORAdsLispVar& value);

[[nodiscard]] std::string toUtf8(std::wstring_view text);
/// Empty when the bytes are no UTF-8.
[[nodiscard]] std::optional<std::wstring> fromUtf8(std::string_view bytes);

// ---- records, read-only -------------------------------------------------------------------------

// Entity names may be those of references' records, as walks and look-ups give them. Texts are as
// the record's own drawing has them, never qualified.

/// Where a record stands.
enum class Place {
    Structure,
    Header,
    Class,
    Table,
    BlockDefinition,
    ModelSpace,
    PaperSpace,
    Object,
    Other
};

struct RecordInfo {
    mor::EntityName name;
    std::string type;
    std::uint64_t handle = 0;  ///< 0 for none
    Place place = Place::Other;
    std::string container;  ///< the table's or block's name, UTF-8; empty elsewhere
    bool erased = false;
    bool made = false;       ///< made since the drawing was opened
    bool subEntity = false;  ///< ATTRIB, VERTEX or SEQEND behind its owner
};

/// One group: its code and its value as text, decoded to UTF-8 and without padding.
struct RecordGroup {
    int code = 0;
    std::string value;
};

struct RecordAttribute {
    std::wstring name;
    CMORAdsLispVar value;
    long bytes = 0;
};

/// Every record of the drawing in file order, then the made ones. Changes nothing.
void forEachRecord(const AcApDocument* document,
                   const std::function<void(const RecordInfo&)>& visit);
[[nodiscard]] std::optional<RecordInfo> recordInfo(const AcApDocument* document,
                                                   mor::EntityName name);
/// Upper-case hexadecimal; empty for 0.
[[nodiscard]] std::string handleText(std::uint64_t handle);
/// The record that a handle look-up finds, erased ones included.
[[nodiscard]] std::optional<mor::EntityName> findHandle(const AcApDocument* document,
                                                        std::wstring_view handle);
/// All groups with pending edits applied, group 0 first.
[[nodiscard]] std::vector<RecordGroup> recordGroups(const AcApDocument* document,
                                                    mor::EntityName name);
/// The first group with that code before the extended data, decoded to UTF-8; empty when there is
/// none.
[[nodiscard]] std::optional<std::string> recordGroup(const AcApDocument* document,
                                                     mor::EntityName name, int code);

/// The named attributes of a record.
struct RecordAttributes {
    std::vector<RecordAttribute> items;
    long used = 0;       ///< bytes of extended data of all applications
    long free = 0;       ///< room left; negative when the record is over its room
    std::string damage;  ///< why the attributes cannot be read (unknown layout version, broken
                         ///< list), or empty
};
[[nodiscard]] RecordAttributes recordAttributes(const AcApDocument* document, mor::EntityName name);

/// Something odd about the file itself that does not keep it from being read.
struct Problem {
    enum class Kind { MissingEof, DoubledHandle };
    Kind kind = Kind::MissingEof;
    std::string handle;  ///< the doubled one
    std::string text;
};
[[nodiscard]] std::vector<Problem> documentProblems(const AcApDocument* document);

/// The live record of a symbol table of the document's own drawing, by name without regard to case.
[[nodiscard]] std::optional<mor::EntityName> findSymbol(const AcApDocument* document,
                                                        std::string_view table,
                                                        std::wstring_view name);
/// The first entity that is not erased of a block definition; none when the block is unknown or
/// empty.
[[nodiscard]] std::optional<mor::EntityName> firstEntityOfBlock(const AcApDocument* document,
                                                                std::wstring_view block);

[[nodiscard]] bool hasBlock(const AcApDocument* document, std::wstring_view block);
/// Visits the inserts of a block in all spaces that are not erased, in the order of the file.
void forEachInsert(const AcApDocument* document, std::wstring_view block,
                   const std::function<void(const RecordInfo&)>& visit);
/// Bytes of extended data that an attribute of that name and value takes.
[[nodiscard]] long attributeBytes(std::wstring_view name, const CMORAdsLispVar& value);

/// Whether a record that is made still gets a handle.
[[nodiscard]] bool hasFreeHandle(const AcApDocument* document);
/// Gives a record another handle, for one that stands twice; false when there is none left. What
/// names the old handle goes on naming the other record.
bool renewHandle(AcApDocument* document, mor::EntityName name);

/// A record of a symbol table.
struct SymbolInfo {
    mor::EntityName name;
    std::wstring symbol;     ///< as its own drawing has it
    std::wstring qualified;  ///< as the document knows it: PLAN|WALLS
};
/// Visits the live records of a table in table order, without the blocks. `reference` is a path of
/// references such as PLAN or PLAN|CORE, empty for the document's own drawing. None when there is
/// no such reference or it is not loaded.
void forEachSymbol(AcApDocument* document, std::wstring_view reference, std::string_view table,
                   const std::function<void(const SymbolInfo&)>& visit);
/// One of them.
[[nodiscard]] SymbolInfo symbolInfo(const AcApDocument* document, std::string_view table,
                                    mor::EntityName name);
/// The record that a look-up of a qualified name finds: the document's own, which overrides, else
/// the reference's.
[[nodiscard]] std::optional<mor::EntityName> resolveSymbol(AcApDocument* document,
                                                           std::string_view table,
                                                           std::wstring_view qualified);

struct BlockInfo {
    SymbolInfo symbol;                     ///< `name` is that of its BLOCK record
    std::int64_t flags = 0;                ///< as the file has them
    std::array<double, 3> base{};          ///< of a loaded reference that of its drawing
    std::array<double, 3> recordedBase{};  ///< as its BLOCK record has it
    std::wstring path;                     ///< saved with a reference, empty for other blocks
    bool anonymous = false;                ///< by its flag or its name
    bool attributes = false;               ///< holds attribute definitions, or its flag says so
    bool reference = false;                ///< an external reference, attached or overlaid
    bool layout = false;                   ///< stands for model space or a layout
    std::size_t entities = 0;  ///< live main ones; of a reference those of its model space
    std::size_t inserts = 0;   ///< live ones in the same drawing, block definitions included
};
/// Visits the block definitions in the order of the file; `reference` as in `forEachSymbol`. The
/// drawing is not to be changed meanwhile.
void forEachBlock(AcApDocument* document, std::wstring_view reference,
                  const std::function<void(const BlockInfo&)>& visit);

/// The axes x, y and z of the plane in which an entity with that normal has its coordinates, of
/// length 1 (arbitrary axis rule). The normal need not be of length 1; (0, 0, 0) counts as
/// (0, 0, 1).
using PlaneAxes = std::array<std::array<double, 3>, 3>;
[[nodiscard]] PlaneAxes planeAxes(const std::array<double, 3>& normal);
/// Sine and cosine of an angle in degrees; exact at the multiples of 90.
[[nodiscard]] std::array<double, 2> sineAndCosine(double degrees);

// ---- external references ------------------------------------------------------------------------

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
    bool hasStore = false;     ///< the referenced drawing holds a file store's block
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

// ---- counters, for tests ------------------------------------------------------------------------

struct Counters {
    std::size_t flushesReactorsOn = 0;
    std::size_t flushesReactorsOff = 0;
    std::size_t locksTaken = 0;
    std::size_t locksHeld = 0;  ///< over all documents, at this moment
    std::size_t selectionSetsOpen = 0;
    std::size_t resbufsOpen = 0;
    std::vector<std::pair<int, std::wstring>> lastFilter;  ///< of the last `acedSSGet`
};
[[nodiscard]] Counters counters();
void resetCounters();  ///< the running totals; what is held or open stays

}  // namespace mor::host
