#include "host/dxf/structure.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kStretch = 20'000;  // more records than are read at a time

}  // namespace

Structure::Structure(Indexed& result) : m_index(result.index), m_skeleton(result.skeleton) {
    m_index.places.resize(1);
    m_index.layers.resize(1);
    m_skeleton.records.resize(1);
    m_skeleton.containers.resize(3);
    m_skeleton.containers[kModelSpace].kind = ContainerKind::Space;
    m_skeleton.containers[kPaperSpace].kind = ContainerKind::Space;
    m_skeleton.containers[kPaperSpace].paper = true;
    know("SECTION", Known::Section);
    know("ENDSEC", Known::EndSection);
    know("TABLE", Known::Table);
    know("ENDTAB", Known::EndTable);
    know("BLOCK", Known::Block);
    know("ENDBLK", Known::EndBlock);
    know("EOF", Known::Eof);
    know("ATTRIB", Known::SubEntity);
    know("VERTEX", Known::SubEntity);
    know("SEQEND", Known::SubEntity);
    know("DIMSTYLE", Known::DimensionStyle);
    know("BLOCK_RECORD", Known::BlockRecord);
}

void Structure::know(std::string_view type, Known known) {
    const std::uint16_t number = m_skeleton.types.number(type);
    if (m_known.size() <= number) m_known.resize(number + std::size_t{1});
    m_known[number] = known;
}

ContainerNumber Structure::addContainer(ContainerKind kind, std::string name, RecordNumber head) {
    Container container;
    container.kind = kind;
    container.name = std::move(name);
    container.head = head;
    container.first = head + 1;
    container.last = head;
    m_skeleton.containers.push_back(std::move(container));
    return static_cast<ContainerNumber>(m_skeleton.containers.size() - 1);
}

Structure::Wrong Structure::begin(std::string_view type, std::uint64_t offset) {
    return begin(typeNumber(type), offset);
}

Structure::Wrong Structure::begin(std::uint16_t type, std::uint64_t offset) {
    if (m_entity)
        endEntity();
    else if (started())
        if (auto wrong = endRecord()) return wrong;
    RecordEntry entry;
    entry.type = type;
    m_skeleton.records.push_back(entry);
    m_index.places.push_back(offset);
    m_index.layers.push_back(TextNumbers::kNone);
    m_noted.forget();
    const Known kind = known(entry.type);
    m_noted.wantsName = kind == Known::Section || kind == Known::Table || kind == Known::Block ||
                        (kind == Known::BlockRecord && m_in == InSection::Tables);
    if (m_noted.wantsName) m_name.clear();
    // A section's 5 is a header variable; in a DIMSTYLE it is a block name.
    m_noted.handleDone = kind == Known::Section || kind == Known::DimensionStyle;
    m_ended = kind == Known::Eof;
    m_entity = kind == Known::None && m_in == InSection::Entities;
    return std::nullopt;
}

/// What `endRecord` does for an entity of the entities' section that is nobody's sub-entity: nearly
/// all records are.
void Structure::endEntity() {
    const RecordNumber number = m_index.lastRecord();
    RecordEntry& entry = m_skeleton.records.back();
    entry.handle = m_noted.handle;
    entry.container = spaceOf(m_noted);
    entry.flags |= flagsOf(m_noted);
    m_index.layers.back() = m_noted.layer;
    m_skeleton.highestHandle = std::max(m_skeleton.highestHandle, entry.handle);
    if (m_noted.owner != 0) m_skeleton.sawOwners = true;
    noteForm(entry.type);
    m_skeleton.entityForm.note(m_noted.marker);
    m_skeleton.containers[kModelSpace].last = m_skeleton.containers[kPaperSpace].last = number;
}

void Structure::beginSection(RecordNumber number) {
    const std::string name(trimmed(m_name));
    m_index.sections.push_back({name, number, 0});
    m_sectionContainer = kNoContainer;
    if (name == "HEADER")
        m_in = InSection::Header;
    else if (name == "TABLES")
        m_in = InSection::Tables;
    else if (name == "BLOCKS")
        m_in = InSection::Blocks;
    else if (name == "ENTITIES")
        m_in = InSection::Entities;
    else
        m_in = InSection::Other;
    if (m_in == InSection::Entities) {
        for (const ContainerNumber space : {kModelSpace, kPaperSpace}) {
            Container& container = m_skeleton.containers[space];
            if (container.head != 0) continue;
            container.head = number;
            container.first = number + 1;
        }
    } else if (m_in == InSection::Other) {
        m_sectionContainer = addContainer(ContainerKind::Section, name, number);
    }
}

Structure::Wrong Structure::endSection(RecordEntry& entry) {
    entry.flags |= kEdge;
    const RecordNumber number = m_index.lastRecord();
    if (m_in == InSection::Outside) return "ENDSEC without a section";
    if (m_container != kNoContainer)
        return "the section " + m_index.sections.back().name + " ends inside a " +
               (m_in == InSection::Tables ? "table" : "block");
    m_index.sections.back().end = number;
    if (m_in == InSection::Entities)
        for (const ContainerNumber space : {kModelSpace, kPaperSpace})
            m_skeleton.containers[space].end = number;
    if (m_sectionContainer != kNoContainer) m_skeleton.containers[m_sectionContainer].end = number;
    m_in = InSection::Outside;
    m_sectionContainer = kNoContainer;
    return std::nullopt;
}

void Structure::beginTable(RecordNumber number) {
    m_container = addContainer(ContainerKind::Table, std::string(trimmed(m_name)), number);
    m_skeleton.containers[m_container].owner = m_noted.handle;
}

void Structure::endTable(RecordNumber number) {
    if (m_container == kNoContainer) return;
    m_skeleton.containers[m_container].end = number;
    m_container = kNoContainer;
}

void Structure::beginBlock(RecordNumber number) {
    m_container = addContainer(ContainerKind::Block, m_name, number);
    Container& block = m_skeleton.containers[m_container];
    block.owner = m_noted.owner;
    const std::string_view name = block.name;
    const bool model =
        equalsNoCaseAscii(name, "*Model_Space") || equalsNoCaseAscii(name, "$MODEL_SPACE");
    block.paper =
        startsNoCaseAscii(name, "*Paper_Space") || equalsNoCaseAscii(name, "$PAPER_SPACE");
    block.layout = model || block.paper;
    m_skeleton.records[number].container = m_container;
}

void Structure::endBlock(RecordNumber number) {
    if (m_container == kNoContainer) return;
    m_skeleton.containers[m_container].end = number;
    m_skeleton.records[number].container = m_container;
    m_container = kNoContainer;
}

ContainerNumber Structure::containerOf(RecordNumber number, RecordEntry& entry) {
    switch (m_in) {
        case InSection::Entities: {
            // Sub-entities stay with their owner, whatever their own groups say.
            if (entry.has(kSubEntity) && !m_skeleton.records[number - 1].has(kEdge))
                return m_skeleton.records[number - 1].container;
            return spaceOf(m_noted);
        }
        case InSection::Tables:
            if (m_container == kNoContainer) {
                // A table whose head is missing: its records tell which one it is.
                m_container =
                    addContainer(ContainerKind::Table, m_skeleton.types.text(entry.type), 0);
                m_skeleton.containers[m_container].first = number;
                m_skeleton.containers[m_container].owner = m_noted.owner;
            }
            return m_container;
        case InSection::Blocks:
            return m_container;
        default:
            return m_sectionContainer;
    }
}

void Structure::member(RecordNumber number, Known known) {
    RecordEntry& entry = m_skeleton.records[number];
    if (known == Known::SubEntity) entry.flags |= kSubEntity;
    entry.container = containerOf(number, entry);
    if (entry.container == kNoContainer) return;
    m_skeleton.containers[entry.container].last = number;
    if (m_in == InSection::Entities)  // both spaces lie in one range
        m_skeleton.containers[kModelSpace].last = m_skeleton.containers[kPaperSpace].last = number;
    if (m_in == InSection::Tables && m_noted.wantsName && equalsNoCaseAscii(m_name, "*Paper_Space"))
        m_paperOwner = m_noted.handle;
}

void Structure::noteForm(std::uint16_t type) {
    if (m_in == InSection::Other || m_in == InSection::Outside) return;
    if (type >= TextNumbers::kTooMany) return;
    if (type >= m_skeleton.forms.size()) m_skeleton.forms.resize(type + std::size_t{1});
    m_skeleton.forms[type].note(m_noted.marker);
}

Structure::Wrong Structure::endRecord() {
    const RecordNumber number = m_index.lastRecord();
    RecordEntry& entry = m_skeleton.records[number];
    entry.handle = m_noted.handle;
    m_index.layers[number] = m_noted.layer;
    entry.flags |= flagsOf(m_noted);
    m_skeleton.highestHandle = std::max(m_skeleton.highestHandle, entry.handle);
    noteForm(entry.type);
    const Known kind = known(entry.type);
    if (kind == Known::EndSection) return endSection(entry);
    if (kind == Known::Section || kind == Known::Eof || isContainerEdge(kind)) {
        entry.flags |= kEdge;
        return kind == Known::Eof ? Wrong() : endEdge(number, kind);
    }
    const bool inTables = m_in == InSection::Tables;
    if (m_noted.owner != 0 && m_in != InSection::Other) m_skeleton.sawOwners = true;
    if (inTables) m_skeleton.tableForm.note(m_noted.marker);
    if (m_in == InSection::Blocks || m_in == InSection::Entities)
        m_skeleton.entityForm.note(m_noted.marker);
    member(number, kind);
    return std::nullopt;
}

/// Whether the record opens or closes a table or block here.
bool Structure::isContainerEdge(Known kind) const {
    switch (kind) {
        case Known::Table:
        case Known::EndTable:
            return m_in == InSection::Tables;
        case Known::Block:
        case Known::EndBlock:
            return m_in == InSection::Blocks;
        default:
            return false;
    }
}

/// A record that opens a section, or opens or closes a table or block.
Structure::Wrong Structure::endEdge(RecordNumber number, Known kind) {
    if (kind == Known::Section) {
        if (m_in != InSection::Outside)
            return "a section begins inside the section " + m_index.sections.back().name +
                   ", which has no ENDSEC";
        beginSection(number);
        return std::nullopt;
    }
    if (kind == Known::EndTable) endTable(number);
    if (kind == Known::EndBlock) endBlock(number);
    if (kind != Known::Table && kind != Known::Block) return std::nullopt;
    const bool table = kind == Known::Table;
    if (m_container != kNoContainer)
        return table ? "a table begins inside another one, which has no ENDTAB"
                     : "a block begins inside another one, which has no ENDBLK";
    table ? beginTable(number) : beginBlock(number);
    return std::nullopt;
}

void Structure::expect(std::uint64_t read, std::uint64_t all) {
    const std::size_t now = m_index.places.size();
    const std::size_t room = m_index.places.capacity();
    if (room - now >= kStretch || read == 0) return;
    const auto times = static_cast<double>(all) / static_cast<double>(read);
    const auto expected = static_cast<std::size_t>(static_cast<double>(now) * times * 1.1);
    // Where more come than were expected, room grows by a half at least: all is moved each time.
    const std::size_t records = std::max(expected, now + now / 2) + kStretch;
    m_index.places.reserve(records);
    m_index.layers.reserve(records);
    m_skeleton.records.reserve(records);
}

Structure::Wrong Structure::finish(std::uint64_t offset) {
    m_index.end = offset;
    if (auto wrong = endRecord()) return wrong;
    m_skeleton.sawEof = m_ended;
    if (m_in != InSection::Outside)
        return "the file ends inside the section " + m_index.sections.back().name;
    return std::nullopt;
}

void Structure::giveUp() {
    m_index.end = m_index.places.back();
    m_index.endsWithoutLineEnd = false;
    m_index.places.pop_back();
    m_index.layers.pop_back();
    m_skeleton.records.pop_back();
    m_skeleton.sawEof = false;
    // What the record began, ended or was a member of no longer has it.
    const RecordNumber last = m_index.lastRecord();
    auto& containers = m_skeleton.containers;
    const auto beginOf = [](const Container& container) {
        return container.head != 0 ? container.head : container.first;
    };
    while (containers.size() > kPaperSpace + 1 && beginOf(containers.back()) > last)
        containers.pop_back();
    for (Container& container : containers) {
        if (container.head > last)
            container = {container.kind, {}, 0, 0, 0, 0, 0, {}, container.paper, {}};
        container.last = std::min(container.last, last);
        if (container.end > last) container.end = 0;
    }
    if (!m_index.sections.empty() && m_index.sections.back().head > last)
        m_index.sections.pop_back();
    if (!m_index.sections.empty() && m_index.sections.back().end > last)
        m_index.sections.back().end = 0;
}

}  // namespace mor::host
