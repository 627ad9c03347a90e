#pragma once

#include "host/handles.h"
#include "platform/documents.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Records of a drawing, read-only.
namespace mor::host {

/// The application under which named attributes lie in the extended data.
inline constexpr std::string_view kAttributeApplication = "MOR_ATTRIBUTES";
/// Bytes of extended data that one record may hold, all applications together.
inline constexpr long kRoomPerRecord = 16383;

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
    bool opaque = false;     ///< its own data are not read, only what all records have
    bool extended = false;   ///< it may have extended data; else it has none
};

/// One group: its code and its value as text, decoded to UTF-8 and without padding.
struct RecordGroup {
    int code = 0;
    std::string value;
};

/// The same; its value stays where it came from.
struct GroupView {
    int code = 0;
    std::string_view value;
};

struct RecordAttribute {
    std::wstring name;
    CMORAdsLispVar value;
    long bytes = 0;
};

/// Every record of the drawing in file order, then the made ones. Changes nothing.
void forEachRecord(const AcApDocument* document,
                   const std::function<void(const RecordInfo&)>& visit);
/// Those of some types alone, which is quicker; with `Extended` also those that may have extended
/// data, each sub-entity among them behind the entity to which it belongs.
enum class AndThose { None, Extended };
void forEachRecordOf(const AcApDocument* document, std::initializer_list<std::string_view> types,
                     const std::function<void(const RecordInfo&)>& visit,
                     AndThose also = AndThose::None);
/// How many entities of each type lie in model space and the layouts, sub-entities left out.
[[nodiscard]] std::map<std::string, std::size_t> entityTypes(const AcApDocument* document);
[[nodiscard]] std::optional<RecordInfo> recordInfo(const AcApDocument* document,
                                                   mor::EntityName name);
/// Where a record stands, of all that `recordInfo` tells; none when there is no such record.
[[nodiscard]] std::optional<Place> recordPlace(const AcApDocument* document, mor::EntityName name);
/// What a walk asks of every entity.
struct EntityFacts {
    std::string_view type;  ///< valid as long as nothing is added to the drawing
    std::uint64_t handle = 0;
    /// A number for the text of its layer, the same for the same text in a drawing; none where the
    /// layer has to be asked for.
    std::optional<std::uint16_t> layer;
};
/// None where there is no such entity, or it is erased.
[[nodiscard]] std::optional<EntityFacts> entityFacts(const AcApDocument* document,
                                                     mor::EntityName name);
/// The record that a handle look-up finds, erased ones included.
[[nodiscard]] std::optional<mor::EntityName> findHandle(const AcApDocument* document,
                                                        std::wstring_view handle);
/// The same in the drawing that holds the record `beside`, which may be a reference.
[[nodiscard]] std::optional<mor::EntityName> findHandleBeside(const AcApDocument* document,
                                                              mor::EntityName beside,
                                                              std::wstring_view handle);
/// All groups with pending edits applied, group 0 first.
[[nodiscard]] std::vector<RecordGroup> recordGroups(const AcApDocument* document,
                                                    mor::EntityName name);
/// Reads records one after the other, for those who read many: values are copied only where they
/// have to be decoded. What it answers holds until it reads again or ends.
class GroupReader {
public:
    GroupReader();
    ~GroupReader();
    GroupReader(GroupReader&& other) noexcept;
    GroupReader& operator=(GroupReader&& other) noexcept;
    GroupReader(const GroupReader&) = delete;
    GroupReader& operator=(const GroupReader&) = delete;

    /// As `recordGroups`.
    [[nodiscard]] std::span<const GroupView> read(const AcApDocument* document,
                                                  mor::EntityName name);

private:
    struct Kept;
    std::unique_ptr<Kept> m_kept;
};
/// Reads records one after the other for a thread beside the one that uses the drawing, which is
/// not to be changed meanwhile. What it answers holds until it reads others.
class RecordRun {
public:
    RecordRun();
    ~RecordRun();
    RecordRun(const RecordRun&) = delete;
    RecordRun& operator=(const RecordRun&) = delete;

    void read(const AcApDocument* document, std::span<const mor::EntityName> names);
    /// As `GroupReader` gives them; none for a record that it has to read itself: of a reference,
    /// of a form of drawings that one thread has to read, or with texts that have to be decoded.
    [[nodiscard]] std::optional<std::span<const GroupView>> groups(std::size_t number) const;

private:
    struct Kept;
    std::unique_ptr<Kept> m_kept;
};
/// Of which applications a record has extended data, in its order, as UTF-8.
[[nodiscard]] std::vector<std::string> recordApplications(const AcApDocument* document,
                                                          mor::EntityName name);
/// The bytes of a record whose own data no groups tell; empty for all others. For telling whether
/// it changed.
[[nodiscard]] std::string undecodedBytes(const AcApDocument* document, mor::EntityName name);
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

/// Whether the drawing behind a reference holds a block; `reference` as in `forEachSymbol`.
[[nodiscard]] bool hasBlock(AcApDocument* document, std::wstring_view reference,
                            std::wstring_view block);

/// Takes a block with its record, or a record of another symbol table, out of the drawing. Nothing
/// may use it any more. False when there is none.
bool purgeSymbol(AcApDocument* document, std::string_view table, std::wstring_view name);

}  // namespace mor::host
