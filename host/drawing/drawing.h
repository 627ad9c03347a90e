#pragma once

#include "host/drawing/attributes.h"
#include "host/dxf/dxf_index.h"
#include "host/dxf/dxf_record.h"
#include "host/host.h"
#include "host/text/dxf_text.h"
#include "platform/entity_name.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace mor::host {

/// What is to change in a record: values of single groups, its named attributes, a handle given to
/// it.
struct RecordEdit {
    std::map<int, std::variant<std::int64_t, std::string>> groups;  ///< first group of that code
    std::shared_ptr<const AttributeList> attributes;                ///< null: as they were
    std::uint64_t handle = 0;
};

/// How records of a drawing look that are written anew; markers and owners depend on their type.
struct RecordStyle {
    Release release = Release::R12;
    bool markers = false;  ///< group 100
    bool owners = false;   ///< group 330
    LineStyle lines;
};

/// One drawing: an index over its file, and what changed since. Records are read again and decoded
/// when asked for; nothing of the file changes before a save.
class Drawing final : public HandleResolver {
public:
    /// `file` stands in the errors.
    static Result<std::unique_ptr<Drawing>> load(std::shared_ptr<Source> source,
                                                 const std::string& file);
    ~Drawing() override;
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    // Facts about the file.
    /// Of its records only those of the file count; they are kept here.
    [[nodiscard]] const DxfIndex& index() const { return *m_index; }
    [[nodiscard]] RecordNumber lastFileRecord() const { return m_lastFileRecord; }
    /// Where the record of the file ends.
    [[nodiscard]] std::uint64_t endOf(RecordNumber number) const {
        return number < m_lastFileRecord ? m_records[number + 1].place : m_index->end;
    }
    [[nodiscard]] Release release() const { return m_style.release; }
    [[nodiscard]] const LineStyle& lines() const { return m_style.lines; }
    /// How a new record of that type looks: as the file's own ones, else as its table records or
    /// its entities do. From R13 on all have markers.
    [[nodiscard]] RecordStyle tableStyle(std::string_view type);
    [[nodiscard]] RecordStyle entityStyle(std::string_view type);
    [[nodiscard]] const TextCoding& text() const { return m_text; }
    [[nodiscard]] const std::string& version() const { return m_version; }
    [[nodiscard]] const std::string& codePage() const { return m_codePage; }
    [[nodiscard]] std::uint64_t seed() const { return m_seed; }
    /// $INSBASE; empty when the header does not have it.
    [[nodiscard]] const std::optional<std::array<double, 3>>& insertionBase() const {
        return m_base;
    }

    // Names and records.
    [[nodiscard]] RecordNumber lastRecord() const {
        return static_cast<RecordNumber>(m_records.size() - 1);
    }
    [[nodiscard]] EntityName nameOf(RecordNumber number) const;
    /// 0 for none, another drawing's, or one that ended with a redefinition.
    [[nodiscard]] RecordNumber numberOf(EntityName name) const;
    [[nodiscard]] const RecordEntry& entry(RecordNumber number) const { return m_records[number]; }
    [[nodiscard]] const std::string& typeOf(RecordNumber number) const;
    [[nodiscard]] std::uint16_t typeNumber(std::string_view type) {
        return m_index->types.number(type);
    }
    [[nodiscard]] const TypeNames& types() const { return m_index->types; }
    /// The record as it was loaded or made, and with its edits.
    [[nodiscard]] TagList original(RecordNumber number) const;
    [[nodiscard]] TagList current(RecordNumber number);
    /// The first group with that code before the extended data, as the file has it; valid until
    /// the drawing is asked again. Nothing behind it is looked at.
    [[nodiscard]] std::optional<std::string_view> valueOf(RecordNumber number, int code);
    [[nodiscard]] std::optional<std::wstring> textOf(RecordNumber number, int code);
    [[nodiscard]] std::optional<std::int64_t> integerOf(RecordNumber number, int code);
    [[nodiscard]] bool changed(RecordNumber number);
    [[nodiscard]] std::string render(RecordNumber number);

    // Handles.
    [[nodiscard]] RecordNumber findHandle(std::uint64_t handle);
    [[nodiscard]] std::uint64_t handleOf(RecordNumber number) const {
        return m_records[number].handle;
    }
    /// Handles that several records of the file carry, and how many.
    [[nodiscard]] const std::vector<std::pair<std::uint64_t, std::size_t>>& doubledHandles();
    /// Gives the record a handle when it has none; 0 when there is none left.
    std::uint64_t giveHandle(RecordNumber number);
    /// Gives the record another handle; 0 when there is none left.
    std::uint64_t renewHandle(RecordNumber number);
    [[nodiscard]] EntityName nameForHandle(std::uint64_t handle) override;
    [[nodiscard]] std::uint64_t handleForName(EntityName name) override;
    /// The next handle that a new record may get; 0 when there is none left. Stays clear of those
    /// that attribute values keep although no record has them: such a value must not come to name
    /// a foreign record.
    [[nodiscard]] std::uint64_t nextHandle();
    [[nodiscard]] bool gaveHandles() const { return m_gaveHandles; }

    // Containers.
    [[nodiscard]] const std::vector<Container>& containers() const { return m_containers; }
    [[nodiscard]] const Container& container(ContainerNumber number) const {
        return m_containers[number];
    }
    /// The member after `after` (0: from the start) that is not erased and no edge; 0 at the end.
    [[nodiscard]] RecordNumber nextMember(ContainerNumber container, RecordNumber after) const;
    [[nodiscard]] ContainerNumber findTable(
        std::string_view table) const;  ///< 0 when there is none
    [[nodiscard]] ContainerNumber findBlock(std::wstring_view name);
    /// How often each block is inserted by live records, definitions included; by upper-case name.
    /// Counted once, and again after a change.
    [[nodiscard]] const std::map<std::wstring, std::size_t>& insertCounts();
    [[nodiscard]] RecordNumber findSymbol(std::string_view table, std::wstring_view name);
    [[nodiscard]] std::wstring containerName(ContainerNumber number) const;
    [[nodiscard]] bool isSpace(ContainerNumber number) const;
    [[nodiscard]] bool isPaper(ContainerNumber number) const;
    [[nodiscard]] std::uint64_t blockRecordHandle(std::wstring_view block);
    /// The last main entity of the spaces that is not erased; 0 when there is none.
    [[nodiscard]] RecordNumber lastEntity() const;

    // Changes.
    void setInteger(RecordNumber number, int code, std::int64_t value);
    void setText(RecordNumber number, int code, std::wstring_view value);
    [[nodiscard]] std::shared_ptr<const AttributeList> attributesOf(RecordNumber number);
    /// The caller has tested room and values. Registers the application.
    void setAttributes(RecordNumber number, AttributeList attributes);
    void toggleErased(RecordNumber number);
    void moveToModelSpace(RecordNumber number);
    /// Adds a made record at the end of a container. `bytes` carries the handle when it has one.
    RecordNumber add(ContainerNumber container, std::string_view type, std::string bytes,
                     std::uint64_t handle, std::uint16_t flags = 0);
    [[nodiscard]] std::uint64_t takeHandle();  ///< 0 when there is none left
    ContainerNumber ensureTable(std::string_view table);
    RecordNumber addLayer(std::wstring_view name);
    ContainerNumber addBlock(std::wstring_view name, std::int64_t flags, const double* base);
    void endBlockDefinition(ContainerNumber block);
    void clearBlock(ContainerNumber block);  ///< ends the entities of a definition for good
    void registerApplication(std::string_view name);

    [[nodiscard]] bool isMade(RecordNumber number) const { return number > m_lastFileRecord; }

private:
    Drawing(std::unique_ptr<DxfIndex> index, RecordStyle style, TextCoding text);
    static Result<std::unique_ptr<Drawing>> loadSource(std::shared_ptr<Source> source,
                                                       const std::string& file);
    [[nodiscard]] RecordStyle styleFor(std::string_view type, const RecordForm& kind);
    [[nodiscard]] bool wantsBlockRecords();
    static Result<Release> releaseOf(const std::string& version, const std::string& file,
                                     std::uint64_t line);
    /// Valid until another record is read.
    [[nodiscard]] std::string_view originalBytes(RecordNumber number) const;
    void applyEdit(RecordNumber number, const RecordEdit& edit, TagList& loaded);
    void buildHandles();
    void learnKeptHandles();
    void learnName(ContainerNumber container, RecordNumber number);
    [[nodiscard]] const std::unordered_map<std::wstring, RecordNumber>& symbols(
        ContainerNumber table);

    std::int64_t m_number;  ///< of this drawing in the process
    std::unique_ptr<DxfIndex> m_index;
    RecordStyle m_style;
    TextCoding m_text;
    std::string m_version;
    std::string m_codePage;
    std::uint64_t m_seed = 0;
    std::optional<std::array<double, 3>> m_base;
    std::uint64_t m_nextHandle = 1;
    bool m_gaveHandles = false;
    std::vector<RecordEntry> m_records;  ///< the file's, then the made ones
    std::vector<Container> m_containers;
    std::vector<std::string> m_made;  ///< bytes of the made records; an entry's place is the index
    std::unordered_map<RecordNumber, RecordEdit> m_edits;
    std::unordered_map<RecordNumber, std::shared_ptr<const AttributeList>> m_attributes;
    bool m_handlesBuilt = false;
    std::vector<std::pair<std::uint64_t, RecordNumber>>
        m_fileHandles;  ///< sorted, first record of each
    std::vector<std::pair<std::uint64_t, std::size_t>> m_doubledHandles;  ///< and how many carry it
    std::map<std::uint64_t, RecordNumber> m_madeHandles;
    std::map<std::uint64_t, std::int64_t> m_unknownHandles;  ///< reserved first words
    std::optional<std::vector<std::uint64_t>>
        m_keptHandles;  ///< of values in the file that new handles could meet, sorted
    std::map<ContainerNumber, std::unordered_map<std::wstring, RecordNumber>> m_symbols;
    std::optional<std::unordered_map<std::wstring, ContainerNumber>> m_blocks;
    std::optional<std::map<std::wstring, std::size_t>> m_insertCounts;
    mutable std::string m_window;  ///< the record read last, and what a walk has read ahead
    TagList m_edited;              ///< the edited record looked into last
    mutable std::uint64_t m_windowAt = 0;
    mutable RecordNumber m_lastRead = 0;
    mutable std::size_t m_walkAt = 0;  ///< where the last walk stood among the added members
    RecordNumber m_lastFileRecord = 0;
};

/// The text of the smallest valid drawing of that release.
[[nodiscard]] std::string newDrawingText(Release release, std::string_view lineEnd);

}  // namespace mor::host
