#pragma once

#include "host/drawing/attributes.h"
#include "host/drawing/codec.h"
#include "host/drawing/handle_table.h"
#include "host/drawing/make.h"
#include "host/drawing/names.h"
#include "host/text/text_coding.h"
#include "platform/entity_name.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// One drawing: what its codec opened, and what changed since. Records are read again and decoded
/// when somebody asks; nothing of the file changes before a save. Reading changes nothing but what
/// is kept to answer the next question.
class Drawing final : public HandleResolver {
public:
    explicit Drawing(Opened opened);
    ~Drawing() override;
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    // Facts about the file.
    [[nodiscard]] const Codec& codec() const { return *m_codec; }
    [[nodiscard]] const Source& source() const { return m_codec->source(); }
    [[nodiscard]] RecordNumber lastFileRecord() const { return m_lastFileRecord; }
    [[nodiscard]] Release release() const { return m_skeleton.release; }
    [[nodiscard]] const std::string& version() const { return m_skeleton.version; }
    [[nodiscard]] const std::string& codePage() const { return m_skeleton.codePage; }
    [[nodiscard]] const std::string& form() const { return m_skeleton.form; }
    [[nodiscard]] std::uint64_t deadBytes() const { return m_skeleton.deadBytes; }
    [[nodiscard]] const std::string& unwritable() const { return m_skeleton.unwritable; }
    [[nodiscard]] const std::string& lineEnd() const { return m_skeleton.lineEnd; }
    [[nodiscard]] bool endsWithEof() const { return m_skeleton.sawEof; }
    [[nodiscard]] const std::optional<Damage>& damage() const { return m_skeleton.damage; }
    [[nodiscard]] std::uint64_t seed() const { return m_skeleton.seed; }
    /// $INSBASE; empty when the header does not have it.
    [[nodiscard]] const std::optional<std::array<double, 3>>& insertionBase() const {
        return m_skeleton.insertionBase;
    }
    [[nodiscard]] const DrawingSettings& settings() const { return m_skeleton.settings; }
    [[nodiscard]] const TextCoding& text() const { return m_text; }
    /// How a new record of that type looks: as the file's own ones, else as its table records or
    /// its entities do. From R13 on all have markers.
    [[nodiscard]] RecordStyle tableStyle(std::string_view type) const;
    [[nodiscard]] RecordStyle entityStyle(std::string_view type) const;
    [[nodiscard]] const RecordForm& entityForm() const { return m_skeleton.entityForm; }

    // Names and records.
    [[nodiscard]] RecordNumber lastRecord() const { return m_skeleton.lastRecord(); }
    [[nodiscard]] bool isMade(RecordNumber number) const { return number > m_lastFileRecord; }
    [[nodiscard]] EntityName nameOf(RecordNumber number) const;
    /// 0 for none, another drawing's, or one that ended with a redefinition.
    [[nodiscard]] RecordNumber numberOf(EntityName name) const;
    [[nodiscard]] const RecordEntry& entry(RecordNumber number) const {
        return m_skeleton.records[number];
    }
    [[nodiscard]] const std::string& typeOf(RecordNumber number) const;
    [[nodiscard]] std::uint16_t typeNumber(std::string_view type) const {
        return m_skeleton.types.find(type);
    }
    /// Whether the record is as it stands in the file, or was read from it.
    [[nodiscard]] bool isAsInFile(RecordNumber number) const {
        return !isMade(number) && !m_edits.contains(number);
    }
    /// The record with its changes.
    [[nodiscard]] GroupList groupsOf(RecordNumber number) const;
    /// The same into a list that is used again.
    void readGroups(RecordNumber number, GroupList& list) const;
    /// The first group with that code before the extended data; valid until the drawing is asked
    /// again. Nothing behind it is looked at.
    [[nodiscard]] std::optional<Group> groupOf(RecordNumber number, int code) const;
    /// A number for the text of its layer; TextNumbers::kNone where it has to be read.
    [[nodiscard]] std::uint16_t layerNumberOf(RecordNumber number) const;
    [[nodiscard]] std::optional<std::wstring> textOf(RecordNumber number, int code) const;
    [[nodiscard]] std::optional<std::int64_t> integerOf(RecordNumber number, int code) const;
    [[nodiscard]] std::wstring decoded(const Group& group) const;
    [[nodiscard]] std::shared_ptr<const AttributeList> attributesOf(RecordNumber number) const;
    /// The same for a quick look: valid until the drawing changes.
    [[nodiscard]] const AttributeList& attributesNow(RecordNumber number) const;
    /// Whether they have been set since the drawing was opened.
    [[nodiscard]] bool attributesWereSet(RecordNumber number) const {
        const auto edit = m_edits.find(number);
        return edit != m_edits.end() && edit->second.attributes != nullptr;
    }
    /// Whether it may have extended data; nothing is read.
    [[nodiscard]] bool mayHaveExtendedData(RecordNumber number) const {
        return entry(number).has(kExtended) || isMade(number) || m_edits.contains(number);
    }
    /// Of which applications it has extended data, in its order.
    [[nodiscard]] std::vector<std::wstring> applicationsOf(RecordNumber number) const;
    [[nodiscard]] const Names& names() const { return m_names; }

    // Handles.
    [[nodiscard]] const HandleTable& handles() const { return m_handles; }
    [[nodiscard]] std::uint64_t handleOf(RecordNumber number) const { return entry(number).handle; }
    [[nodiscard]] EntityName nameForHandle(std::uint64_t handle) const override;
    [[nodiscard]] std::uint64_t handleForName(EntityName name) const override;
    [[nodiscard]] std::uint64_t takeHandle() { return m_handles.take(); }  ///< 0: none left
    /// Gives the record a handle when it has none; 0 when there is none left.
    std::uint64_t giveHandle(RecordNumber number);
    /// Gives the record another handle; 0 when there is none left.
    std::uint64_t renewHandle(RecordNumber number);

    // Containers.
    [[nodiscard]] const std::vector<Container>& containers() const { return m_skeleton.containers; }
    [[nodiscard]] const Container& container(ContainerNumber number) const {
        return m_skeleton.containers[number];
    }
    /// The member after `after` (0: from the start) that is not erased and no edge; 0 at the end.
    [[nodiscard]] RecordNumber nextMember(ContainerNumber number, RecordNumber after) const;
    [[nodiscard]] std::wstring containerName(ContainerNumber number) const;
    [[nodiscard]] bool isSpace(ContainerNumber number) const;
    [[nodiscard]] bool isPaper(ContainerNumber number) const { return container(number).paper; }
    [[nodiscard]] std::uint64_t blockRecordHandle(std::wstring_view block) const;
    /// The last main entity of the spaces that is not erased; 0 when there is none.
    [[nodiscard]] RecordNumber lastEntity() const;

    // Changes.
    /// Sets the first group of that code before the extended data, or adds it.
    void setGroup(RecordNumber number, int code, GroupValue value);
    void setText(RecordNumber number, int code, std::wstring_view value);
    /// Sets named attributes one after the other, all or none; nil takes one away. The caller has
    /// tested room and values, and registered the application. Records that values name get
    /// handles.
    void setAttributes(RecordNumber number, std::span<const Attribute> changes);
    void toggleErased(RecordNumber number);
    void moveToModelSpace(RecordNumber number);
    /// Adds a made record at the end of a container. `groups` carry the handle when it has one.
    RecordNumber add(ContainerNumber container, GroupList groups, std::uint64_t handle,
                     std::uint16_t flags = 0);
    /// A table that the file lacks.
    ContainerNumber addTable(std::string_view name, std::uint64_t handle);
    /// A block without records; its BLOCK and ENDBLK are added to it as edges.
    ContainerNumber addBlock(std::wstring_view name, std::uint64_t blockRecord);
    /// Ends the entities of a definition for good.
    void clearBlock(ContainerNumber block);

    /// What a save has to write. Valid until the drawing changes.
    [[nodiscard]] EditSet edits() const;

private:
    struct Edit {
        std::map<int, GroupValue> groups;
        std::shared_ptr<AttributeList> attributes;  ///< null: as they were
        std::uint64_t handle = 0;
    };
    [[nodiscard]] RecordStyle styleFor(std::string_view type, const RecordForm& kind) const;
    [[nodiscard]] GroupList original(RecordNumber number) const;
    [[nodiscard]] RecordChange changeOf(const GroupList& record, const Edit& edit) const;
    /// As the record holds them, whatever was set since.
    [[nodiscard]] const std::shared_ptr<const AttributeList>& decodedAttributes(
        RecordNumber number) const;
    [[nodiscard]] std::vector<std::uint64_t> keptHandles(std::uint64_t from) const;

    std::int64_t m_number;  ///< of this drawing in the process
    std::unique_ptr<Codec> m_codec;
    Skeleton m_skeleton;  ///< its records and containers grow
    RecordNumber m_lastFileRecord = 0;
    TextCoding m_text;
    Names m_names;
    HandleTable m_handles;
    std::vector<GroupList> m_made;  ///< by number, from the first made record on
    std::unordered_map<RecordNumber, Edit> m_edits;
    mutable std::unordered_map<RecordNumber, std::shared_ptr<const AttributeList>> m_attributes;
    mutable GroupList m_edited;        ///< the changed record looked into last
    mutable std::size_t m_walkAt = 0;  ///< where the last walk stood among the added members
};

/// Numbers drawings and mounts; never used again in the process.
[[nodiscard]] std::int64_t nextDrawingNumber();

}  // namespace mor::host
