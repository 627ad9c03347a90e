#include "host/dwg/dwg_edits.h"

#include "host/dwg/common_data.h"
#include "host/dwg/encode.h"
#include "host/dwg/record_groups.h"
#include "host/dwg/record_names.h"
#include "host/handles.h"
#include "host/records.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace mor::host {

namespace {

constexpr unsigned kSoftOwner = 2;
constexpr unsigned kHardOwner = 3;
constexpr unsigned kSoftPointer = 4;
constexpr unsigned kHardPointer = 5;
constexpr std::uint16_t kLayerType = 51;

using Handles = std::vector<std::uint64_t>;

class Planner {
public:
    Planner(const DwgFile& file, const EditSet& edits)
        : m_file(file), m_edits(edits), m_names(file, edits), m_encoder(file, m_names) {}

    ObjectChanges run();

private:
    /// How the members of a block change.
    struct Members {
        Handles before;
        Handles after;
    };
    void refuse(const std::string& why) {
        if (m_changes.refused.empty()) m_changes.refused = why;
    }
    void note(SavedEdit::Kind kind, RecordNumber number);
    [[nodiscard]] bool isFile(RecordNumber number) const {
        return number <= m_edits.lastFileRecord;
    }
    [[nodiscard]] std::uint64_t handleOf(RecordNumber number) const {
        return m_edits.records[number].handle;
    }
    [[nodiscard]] static bool isOut(const RecordEntry& entry) { return entry.has(kErased | kGone); }
    [[nodiscard]] ObjectFrame frameOf(std::uint64_t handle);
    [[nodiscard]] std::uint64_t headerOf(ContainerNumber number) const;
    void splice(std::uint64_t handle, BitSplice splice) {
        m_splices[handle].push_back(std::move(splice));
    }

    void collectErased();
    void collectChanged();
    void changeGroups(RecordNumber number, const RecordChange& change);
    void changeLayerFlags(std::uint64_t handle, std::int64_t flags);
    void changeLayerOf(std::uint64_t handle, std::string_view layer);
    void changeBlock(RecordNumber number, const RecordChange& change);
    void changeAttributes(std::uint64_t handle, const std::vector<NewGroup>& attributes);
    [[nodiscard]] Members membersOf(ContainerNumber number) const;
    void collectMembers();
    void collectMoved();
    void changeChain(const Members& members);
    void changeHeader(std::uint64_t header, const Members& members);
    void changeInserts();
    void changeInsertList(std::uint64_t header, const Handles& gone, const Handles& made);
    void changeControls();
    void changeControl(const Container& table);
    void encodeMade();
    [[nodiscard]] NewBlock newBlock(std::uint64_t header);
    void applySplices();

    const DwgFile& m_file;
    const EditSet& m_edits;
    RecordNames m_names;
    ObjectEncoder m_encoder;
    ObjectChanges m_changes;
    std::map<std::uint64_t, std::vector<BitSplice>> m_splices;  ///< by handle
    std::map<std::uint64_t, Members> m_members;                 ///< by block's record
    std::map<std::uint64_t, std::pair<std::uint64_t, std::uint64_t>> m_links;  ///< of made entities
    std::map<std::uint64_t, Handles> m_insertsMade;  ///< by block's record
    std::map<std::uint64_t, Handles> m_insertsGone;
};

void Planner::note(SavedEdit::Kind kind, RecordNumber number) {
    m_changes.edits.push_back({kind, number, m_edits.typeOf(number), handleOf(number), {}});
}

ObjectFrame Planner::frameOf(std::uint64_t handle) {
    const auto frame = m_file.frameOf(handle);
    if (!frame) refuse("the object " + handleText(handle) + " cannot be read");
    return frame.value_or(ObjectFrame());
}

std::uint64_t Planner::headerOf(ContainerNumber number) const {
    if (number == kModelSpace) return m_file.header().modelSpace;
    if (number == kPaperSpace) return m_file.header().paperSpace;
    return m_edits.containers[number].owner;
}

// ---- records of the file ------------------------------------------------------------------------

void Planner::collectErased() {
    for (RecordNumber number = 1; number <= m_edits.lastFileRecord; ++number) {
        const RecordEntry& entry = m_edits.records[number];
        if (!isOut(entry)) continue;
        m_changes.erased.push_back(entry.handle);
        note(SavedEdit::Kind::Erased, number);
        if (m_edits.typeOf(number) != "INSERT") continue;
        const ObjectFrame frame = frameOf(entry.handle);
        const GroupList record = decodeRecord(m_file, frame).groups;
        const Group* name = record.find(kNameCode);
        if (name != nullptr)
            m_insertsGone[m_names.find("BLOCK_RECORD", name->text())].push_back(entry.handle);
    }
}

void Planner::collectChanged() {
    for (const auto& [number, change] : m_edits.changed) {
        if (isOut(m_edits.records[number])) continue;
        note(SavedEdit::Kind::Changed, number);
        if (m_edits.records[number].has(kOpaque) && !change.groups.empty())
            refuse("the data of a " + m_edits.typeOf(number) + " are not decoded in a DWG");
        changeGroups(number, change);
        if (change.attributes) changeAttributes(handleOf(number), *change.attributes);
    }
}

void Planner::changeGroups(RecordNumber number, const RecordChange& change) {
    const std::string& type = m_edits.typeOf(number);
    if (type == "BLOCK") return changeBlock(number, change);
    for (const auto& [code, value] : change.groups) {
        const auto* integer = std::get_if<std::int64_t>(&value);
        const auto* text = std::get_if<std::string>(&value);
        const bool moved = m_edits.records[number].has(kMovedOut);
        if (code == kFlagsCode && type == "LAYER" && integer != nullptr)
            changeLayerFlags(handleOf(number), *integer);
        else if (code == kLayerCode && text != nullptr)
            changeLayerOf(handleOf(number), *text);
        else if (!(moved && (code == kSpaceCode || code == kOwnerCode)))
            refuse("a change of group " + std::to_string(code) + " of a " + type +
                   " is not written to DWG; save the drawing as DXF");
    }
}

void Planner::changeLayerFlags(std::uint64_t handle, std::int64_t flags) {
    const ObjectFrame frame = frameOf(handle);
    if (frame.type != kLayerType) return refuse("the layer " + handleText(handle) + " is damaged");
    Fields fields = frame.fields(m_file.release());
    static_cast<void>(readObjectData(fields, frame));
    GroupList unused;
    GroupWriter nowhere(unused);
    RecordReader record{m_file, fields, nowhere, handle, 0, frame.type};
    static_cast<void>(readTableStart(record));
    BitSplice change;
    change.begin = fields.data().position();
    std::int64_t bits = static_cast<std::uint16_t>(fields.bitShort());
    change.end = fields.data().position();
    constexpr std::int64_t kOwned = 1 | 4 | 8;
    bits &= ~kOwned;
    if ((flags & kFrozenLayer) != 0) bits |= 1;
    if ((flags & 2) != 0) bits |= 4;
    if ((flags & kLockedLayer) != 0) bits |= 8;
    change.bits.bitShort(bits);
    splice(handle, std::move(change));
}

void Planner::changeLayerOf(std::uint64_t handle, std::string_view layer) {
    const ObjectFrame frame = frameOf(handle);
    const std::uint64_t wanted = m_names.find("LAYER", layer);
    if (!frame.entity || wanted == 0)
        return refuse("the layer of " + handleText(handle) + " is not in the drawing");
    Fields fields = frame.fields(m_file.release());
    const EntityData data = readEntityData(fields, handle);
    BitSplice change{data.layerPlace.begin, data.layerPlace.end, {}, true};
    change.bits.handle(kHardPointer, wanted);
    splice(handle, std::move(change));
}

/// Flags and base point of a block lie in its record.
void Planner::changeBlock(RecordNumber number, const RecordChange& change) {
    const std::uint64_t header = m_edits.containers[m_edits.records[number].container].owner;
    const auto read = blockMembersOf(m_file, header, BlockParts::Places);
    if (!read) return refuse("the record of the block " + handleText(header) + " is damaged");
    BlockMembers block = *read;
    bool base = false;
    for (const auto& [code, value] : change.groups) {
        const auto* integer = std::get_if<std::int64_t>(&value);
        const auto* real = std::get_if<double>(&value);
        if (code == kFlagsCode && integer != nullptr &&
            ((*integer ^ block.flags) & kAnyReferenceBlock) == 0) {
            BitSplice kind{block.kindPlace[0], block.kindPlace[1], {}, false};
            kind.bits.bit((*integer & kAnonymousBlock) != 0);
            kind.bits.bit((*integer & kBlockWithAttributes) != 0);
            splice(header, std::move(kind));
        } else if ((code == 10 || code == 20 || code == 30) && real != nullptr) {
            block.base[static_cast<std::size_t>(code / 10 - 1)] = *real;
            base = true;
        } else {
            refuse("a change of group " + std::to_string(code) +
                   " of a BLOCK is not written to DWG; save the drawing as DXF");
        }
    }
    if (!base) return;
    BitSplice point{block.basePlace[0], block.basePlace[1], {}, false};
    for (const double value : block.base) point.bits.bitReal(value);
    splice(header, std::move(point));
}

/// The lists of other applications stay as they are, to the bit.
void Planner::changeAttributes(std::uint64_t handle, const std::vector<NewGroup>& attributes) {
    const ObjectFrame frame = frameOf(handle);
    BitReader bits(frame.bytes, frame.extendedBegin, frame.extendedEnd);
    BitSplice change{frame.extendedBegin, frame.extendedEnd, {}, false};
    BitWriter fresh;
    if (!attributes.empty()) fresh = m_encoder.extendedData(attributes);
    bool placed = false;
    while (true) {
        const std::uint64_t begin = bits.position();
        const auto length = static_cast<std::uint16_t>(bits.bitShort());
        if (length == 0) break;
        const std::uint64_t application = bits.handle().from(handle);
        bits.skip(std::uint64_t{length} * 8);
        if (!equalsNoCaseAscii(m_file.nameOf(application), kAttributeApplication)) {
            change.bits.copy(frame.bytes, begin, bits.position());
        } else if (!placed) {
            change.bits.append(fresh);
            placed = true;
        }
    }
    if (!placed) change.bits.append(fresh);
    change.bits.bitShort(0);
    splice(handle, std::move(change));
}

// ---- members of blocks --------------------------------------------------------------------------

Planner::Members Planner::membersOf(ContainerNumber number) const {
    const Container& container = m_edits.containers[number];
    Members members;
    const auto isMain = [](const RecordEntry& entry) {
        return !entry.has(kSubEntity) && !entry.has(kEdge);
    };
    for (RecordNumber at = container.first; at <= container.last; ++at) {
        const RecordEntry& entry = m_edits.records[at];
        if (!isMain(entry) || !isFile(at)) continue;
        if (entry.container != number && !entry.has(kMovedOut)) continue;
        members.before.push_back(entry.handle);
        if (!isOut(entry) && !entry.has(kMovedOut)) members.after.push_back(entry.handle);
    }
    for (const RecordNumber at : container.added)
        if (!isOut(m_edits.records[at]) && isMain(m_edits.records[at]))
            members.after.push_back(handleOf(at));
    return members;
}

void Planner::collectMembers() {
    for (ContainerNumber number = 1; number < m_edits.containers.size(); ++number) {
        const ContainerKind kind = m_edits.containers[number].kind;
        if (kind != ContainerKind::Block && kind != ContainerKind::Space) continue;
        Members members = membersOf(number);
        if (members.before == members.after) continue;
        const std::uint64_t header = headerOf(number);
        if (header == 0) return refuse("a block without a record is not written to DWG");
        if (m_file.release() < Release::R2004) changeChain(members);
        if (m_file.map().find(header) != nullptr) changeHeader(header, members);
        m_members[header] = std::move(members);
    }
}

/// Entities that come to stand in model space say so.
void Planner::collectMoved() {
    for (RecordNumber number = 1; number <= m_edits.lastFileRecord; ++number) {
        const RecordEntry& entry = m_edits.records[number];
        if (!entry.has(kMovedOut) || isOut(entry) || entry.has(kSubEntity)) continue;
        const ObjectFrame frame = frameOf(entry.handle);
        Fields fields = frame.fields(m_file.release());
        const EntityData data = readEntityData(fields, entry.handle);
        BitSplice mode{data.modePlace.begin, data.modePlace.end, {}, false};
        mode.bits.bits(2, 2);
        splice(entry.handle, std::move(mode));
        splice(entry.handle, {data.ownerPlace.begin, data.ownerPlace.end, {}, true});
    }
}

/// Up to R2000 every entity names its neighbours.
void Planner::changeChain(const Members& members) {
    const auto neighbours = [](const Handles& list, std::size_t i) {
        return std::pair(i == 0 ? 0 : list[i - 1], i + 1 == list.size() ? 0 : list[i + 1]);
    };
    std::map<std::uint64_t, std::pair<std::uint64_t, std::uint64_t>> old;
    for (std::size_t i = 0; i < members.before.size(); ++i)
        old[members.before[i]] = neighbours(members.before, i);
    for (std::size_t i = 0; i < members.after.size(); ++i) {
        const std::uint64_t handle = members.after[i];
        const auto wanted = neighbours(members.after, i);
        if (m_file.map().find(handle) == nullptr) {
            m_links[handle] = wanted;
            continue;
        }
        const auto known = old.find(handle);
        if (known != old.end() && known->second == wanted) continue;
        const ObjectFrame frame = frameOf(handle);
        Fields fields = frame.fields(m_file.release());
        const EntityData data = readEntityData(fields, handle);
        BitSplice stored{data.noLinksPlace.begin, data.noLinksPlace.end, {}, false};
        stored.bits.bit(false);
        splice(handle, std::move(stored));
        BitSplice links{data.linksPlace.begin, data.linksPlace.end, {}, true};
        links.bits.handle(kSoftPointer, wanted.first);
        links.bits.handle(kSoftPointer, wanted.second);
        splice(handle, std::move(links));
    }
}

void Planner::changeHeader(std::uint64_t header, const Members& members) {
    const auto read = blockMembersOf(m_file, header, BlockParts::Places);
    if (!read) return refuse("the record of the block " + handleText(header) + " is damaged");
    const BlockMembers& block = *read;
    if (block.memberPlaces.empty())
        return refuse("the block " + handleText(header) + " has no list");
    if (block.chain) {
        BitSplice ends{block.memberPlaces.front(), block.memberPlaces.back(), {}, true};
        ends.bits.handle(kSoftPointer, members.after.empty() ? 0 : members.after.front());
        ends.bits.handle(kSoftPointer, members.after.empty() ? 0 : members.after.back());
        return splice(header, std::move(ends));
    }
    const std::set<std::uint64_t> before(members.before.begin(), members.before.end());
    const std::set<std::uint64_t> after(members.after.begin(), members.after.end());
    auto count = static_cast<std::int64_t>(block.members.size());
    for (std::size_t i = 0; i < block.members.size(); ++i) {
        if (!before.contains(block.members[i]) || after.contains(block.members[i])) continue;
        splice(header, {block.memberPlaces[i], block.memberPlaces[i + 1], {}, true});
        --count;
    }
    BitSplice fresh{block.memberPlaces.back(), block.memberPlaces.back(), {}, true};
    for (const std::uint64_t handle : members.after)
        if (!before.contains(handle)) {
            fresh.bits.handle(kHardOwner, handle);
            ++count;
        }
    splice(header, std::move(fresh));
    BitSplice number{block.countPlace[0], block.countPlace[1], {}, false};
    number.bits.bitLong(count);
    splice(header, std::move(number));
}

// ---- lists of inserts ---------------------------------------------------------------------------

void Planner::changeInserts() {
    for (const auto& [number, record] : m_edits.made) {
        if (m_edits.typeOf(number) != "INSERT") continue;
        const Group* name = record.find(kNameCode);
        const std::uint64_t header =
            name == nullptr ? 0 : m_names.find("BLOCK_RECORD", name->text());
        if (header == 0) return refuse("an insert of a block that the drawing does not hold");
        m_insertsMade[header].push_back(handleOf(number));
    }
    std::set<std::uint64_t> headers;
    for (const auto& [header, handles] : m_insertsMade) headers.insert(header);
    for (const auto& [header, handles] : m_insertsGone) headers.insert(header);
    for (const std::uint64_t header : headers)
        if (m_file.map().find(header) != nullptr)
            changeInsertList(header, m_insertsGone[header], m_insertsMade[header]);
}

void Planner::changeInsertList(std::uint64_t header, const Handles& gone, const Handles& made) {
    const auto read = blockMembersOf(m_file, header, BlockParts::Places);
    if (!read) return refuse("the record of the block " + handleText(header) + " is damaged");
    const BlockMembers& block = *read;
    if (block.insertPlaces.empty())
        return refuse("the block " + handleText(header) + " has no list");
    std::uint64_t marks = block.inserts.size();
    for (std::size_t i = 0; i < block.inserts.size(); ++i) {
        if (std::ranges::find(gone, block.inserts[i]) == gone.end()) continue;
        splice(header, {block.insertPlaces[i], block.insertPlaces[i + 1], {}, true});
        --marks;
    }
    BitSplice fresh{block.insertPlaces.back(), block.insertPlaces.back(), {}, true};
    for (const std::uint64_t insert : made) fresh.bits.handle(kSoftPointer, insert);
    splice(header, std::move(fresh));
    BitSplice count{block.insertMarksPlace[0], block.insertMarksPlace[1], {}, false};
    for (marks += made.size(); marks > 0; --marks) count.bits.byte(1);
    splice(header, std::move(count));
}

// ---- tables and new records ---------------------------------------------------------------------

void Planner::changeControls() {
    for (const auto& [number, head] : m_edits.tableHeads)
        if (m_edits.containers[number].head == 0)
            return refuse("a table that the drawing lacks is not written to DWG");
    for (const Container& table : m_edits.containers)
        if (table.kind == ContainerKind::Table) changeControl(table);
}

/// The list of a table's records, where some come or go.
void Planner::changeControl(const Container& table) {
    std::set<std::uint64_t> gone;
    for (RecordNumber at = table.first; at != 0 && at <= table.last; ++at)
        if (isFile(at) && isOut(m_edits.records[at])) gone.insert(handleOf(at));
    if (table.added.empty() && gone.empty()) return;
    const ObjectFrame frame = frameOf(table.owner);
    Fields fields = frame.fields(m_file.release());
    static_cast<void>(readObjectData(fields, frame));
    BitSplice count{fields.data().position(), 0, {}, false};
    const std::uint32_t entries = fields.handleCount();
    count.end = fields.data().position();
    std::int64_t left = entries;
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::uint64_t begin = fields.handles().position();
        if (!gone.contains(fields.handleIn(table.owner))) continue;
        splice(table.owner, {begin, fields.handles().position(), {}, true});
        --left;
    }
    if (fields.failed()) return refuse("the table of " + table.name + " is damaged");
    BitSplice fresh{fields.handles().position(), fields.handles().position(), {}, true};
    for (const RecordNumber at : table.added) {
        if (isOut(m_edits.records[at])) continue;
        fresh.bits.handle(kSoftOwner, handleOf(at));
        ++left;
    }
    count.bits.bitLong(left);
    splice(table.owner, std::move(count));
    splice(table.owner, std::move(fresh));
    m_changes.edits.push_back({SavedEdit::Kind::Changed, 0, "TABLE", table.owner, table.name});
}

NewBlock Planner::newBlock(std::uint64_t header) {
    NewBlock block;
    for (const Container& container : m_edits.containers) {
        if (container.kind != ContainerKind::Block || container.owner != header) continue;
        block.block = handleOf(container.head);
        block.end = container.end == 0 ? 0 : handleOf(container.end);
        if (const auto head = m_edits.made.find(container.head); head != m_edits.made.end()) {
            block.flags = head->second.integerOf(kFlagsCode, 0);
            block.base = head->second.pointOf(10, {});
        }
    }
    block.members = m_members[header].after;
    block.inserts = m_insertsMade[header];
    return block;
}

void Planner::encodeMade() {
    for (const auto& [number, record] : m_edits.made) {
        const std::string& type = m_edits.typeOf(number);
        if (!ObjectEncoder::knows(type))
            return refuse("a " + type + " cannot be made in a DWG; save the drawing as DXF");
        note(SavedEdit::Kind::Made, number);
        const RecordEntry& entry = m_edits.records[number];
        ObjectPlace place{entry.handle, 0, 0, 0};
        place.owner = headerOf(entry.container);
        if (const auto links = m_links.find(entry.handle); links != m_links.end())
            std::tie(place.previous, place.next) = links->second;
        const NewBlock block = type == "BLOCK_RECORD" ? newBlock(entry.handle) : NewBlock();
        m_changes.written[entry.handle] = m_encoder.encode(record, place, block);
    }
}

void Planner::applySplices() {
    for (auto& [handle, splices] : m_splices) {
        const ObjectFrame frame = frameOf(handle);
        if (!m_changes.refused.empty()) return;
        const std::uint64_t end = decodeRecord(m_file, frame).handlesEnd;
        m_changes.written[handle] = spliced(frame, m_file.release(), std::move(splices), end);
    }
}

ObjectChanges Planner::run() {
    collectErased();
    collectChanged();
    collectMembers();
    collectMoved();
    changeInserts();
    changeControls();
    encodeMade();
    if (m_changes.refused.empty()) applySplices();
    for (const std::uint64_t handle : m_changes.erased) m_changes.written.erase(handle);
    m_changes.seed = m_edits.seed;
    if (m_changes.any() && m_edits.seed > m_file.header().seed)
        m_changes.edits.insert(m_changes.edits.begin(),
                               {SavedEdit::Kind::Changed, 0, "HEADER", 0, "$HANDSEED"});
    return std::move(m_changes);
}

}  // namespace

ObjectChanges objectChanges(const DwgFile& file, const EditSet& edits) {
    return Planner(file, edits).run();
}

}  // namespace mor::host
