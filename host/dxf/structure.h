#pragma once

#include "host/dxf/dxf_index.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// Finds records, sections and containers in the groups of a file as they come. Only these need be
/// told: 0, 2, 5, 8, 67, 100, 102, 105, 330, 1001, and all before the first record.
class Structure {
public:
    explicit Structure(Indexed& result);

    /// What is wrong, with the place where it shows; nothing else is to be told then.
    using Wrong = std::optional<std::string>;

    /// A group 0; `offset` is where its code begins.
    Wrong begin(std::string_view type, std::uint64_t offset);
    /// The same with the number that the type has.
    Wrong begin(std::uint16_t type, std::uint64_t offset);
    [[nodiscard]] std::uint16_t typeNumber(std::string_view type) {
        if (type.starts_with("EOF\x1A")) type = "EOF";  // programs of old systems ended texts so
        return m_skeleton.types.number(type);
    }
    /// Whether the owner of the record being read is still wanted.
    [[nodiscard]] bool wantsOwner() const {
        return !m_noted.marker && !m_noted.inBrackets && m_noted.owner == 0;
    }
    void owner(std::uint64_t handle) { m_noted.owner = handle; }
    /// The same for its handle, where code 5 tells it, and for the number of its layer's text.
    [[nodiscard]] bool wantsHandle() const { return !m_noted.handleDone && !m_noted.marker; }
    void handle(std::uint64_t handle) {
        m_noted.handleDone = true;
        m_noted.handle = handle;
    }
    [[nodiscard]] bool wantsLayer() const {
        return m_noted.layer == TextNumbers::kNone && !m_noted.inBrackets && !m_noted.extended;
    }
    void layer(std::uint16_t number) { m_noted.layer = number; }
    /// Any other group. `value` gives a std::string_view when it is looked at.
    template <typename Value>
    void group(int code, const Value& value);
    /// Whether a record has begun.
    [[nodiscard]] bool started() const { return m_index.places.size() > 1; }
    /// Whether EOF has begun: what follows is none of the drawing.
    [[nodiscard]] bool ended() const { return m_ended; }
    /// The last record ends at `offset`, where the file does.
    Wrong finish(std::uint64_t offset);
    /// The last record is damaged and none of the index; what it stands in stays open.
    void giveUp();
    /// Makes room for as many records as there may be in all, judging by the bytes that were read.
    void expect(std::uint64_t read, std::uint64_t all);

private:
    /// What is noted of the record being read.
    struct Noted {
        std::uint64_t handle = 0;
        std::uint64_t owner = 0;
        std::uint16_t layer = TextNumbers::kNone;
        bool wantsName = false;
        bool named = false;
        bool handleDone = false;
        bool marker = false;      // a group 100 was seen
        bool inBrackets = false;  // between 102 { and 102 }
        bool extended = false;    // a group 1001 was seen
        bool attributed = false;  // one of them is ours
        bool paper = false;       // group 67 is 1

        /// Field by field: a whole one takes a detour through memory.
        void forget() {
            handle = owner = 0;
            layer = TextNumbers::kNone;
            wantsName = named = handleDone = marker = false;
            inBrackets = extended = attributed = paper = false;
        }
    };
    enum class Known : std::uint8_t {
        None,
        Section,
        EndSection,
        Table,
        EndTable,
        Block,
        EndBlock,
        Eof,
        SubEntity,
        DimensionStyle,
        BlockRecord
    };
    enum class InSection : std::uint8_t { Outside, Header, Tables, Blocks, Entities, Other };

    void know(std::string_view type, Known known);
    [[nodiscard]] Known known(std::uint16_t type) const {
        return type < m_known.size() ? m_known[type] : Known::None;
    }
    [[nodiscard]] static std::uint16_t flagsOf(const Noted& noted) {
        return static_cast<std::uint16_t>((noted.attributed ? kAttributed : 0) |
                                          (noted.extended ? kExtended : 0));
    }
    Wrong endRecord();
    [[nodiscard]] bool isContainerEdge(Known kind) const;
    Wrong endEdge(RecordNumber number, Known kind);
    void endEntity();
    /// The space of an entity that is not its owner's.
    [[nodiscard]] ContainerNumber spaceOf(const Noted& noted) const {
        const bool paper = noted.paper || (noted.owner != 0 && noted.owner == m_paperOwner);
        return paper ? kPaperSpace : kModelSpace;
    }
    Wrong endSection(RecordEntry& entry);
    void beginSection(RecordNumber number);
    void beginTable(RecordNumber number);
    void endTable(RecordNumber number);
    void beginBlock(RecordNumber number);
    void endBlock(RecordNumber number);
    void member(RecordNumber number, Known known);
    [[nodiscard]] ContainerNumber containerOf(RecordNumber number, RecordEntry& entry);
    void noteForm(std::uint16_t type);
    ContainerNumber addContainer(ContainerKind kind, std::string name, RecordNumber head);

    DxfIndex& m_index;
    Skeleton& m_skeleton;
    std::vector<Known> m_known;  // by type
    Noted m_noted;
    std::string m_name;  // first group 2 of a record whose name is wanted
    InSection m_in = InSection::Outside;
    ContainerNumber m_container = kNoContainer;  // open table or block
    ContainerNumber m_sectionContainer = kNoContainer;
    std::uint64_t m_paperOwner = 0;  // handle of the active layout's BLOCK_RECORD
    bool m_ended = false;
    bool m_entity = false;  // the record being read is one for `endEntity`
};

template <typename Value>
inline void Structure::group(int code, const Value& value) {
    const auto text = [&value] { return static_cast<std::string_view>(value); };
    switch (code) {
        case kNameCode:
            if (!m_noted.wantsName || m_noted.named) break;
            m_name = text();
            m_noted.named = true;
            break;
        case kHandleCode:
            if (wantsHandle()) handle(parseHandle(trimmed(text())));
            break;
        case kDimensionStyleHandleCode:
            m_noted.handle = parseHandle(trimmed(text()));
            break;
        case kLayerCode:
            if (wantsLayer()) layer(m_index.layerTexts.number(text()));
            break;
        case kSpaceCode:
            if (!m_noted.extended) m_noted.paper = trimmed(text()) == "1";
            break;
        case kMarkerCode:
            m_noted.marker = true;
            break;
        case kBracketCode:
            m_noted.inBrackets = text().starts_with("{");
            break;
        case kOwnerCode:
            if (wantsOwner()) owner(parseHandle(trimmed(text())));
            break;
        case kApplicationCode:
            m_noted.extended = true;
            if (equalsNoCaseAscii(trimmed(text()), kAttributeApplication))
                m_noted.attributed = true;
            break;
        default:
            break;
    }
}

}  // namespace mor::host
