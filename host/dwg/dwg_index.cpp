#include "host/dwg/dwg_index.h"

#include "host/dwg/common_data.h"
#include "host/dwg/object_notes.h"
#include "host/dwg/record_groups.h"
#include "host/handles.h"
#include "host/records.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

namespace mor::host {

namespace {

constexpr std::string_view kModelName = "*Model_Space";
constexpr std::string_view kPaperName = "*Paper_Space";
/// How many orphans are looked at for one gap in a list.
constexpr std::size_t kMostOrphans = 128;

/// Numbers every object once and puts it where it belongs.
class Indexer {
public:
    Indexer(DwgFile& file, DwgIndex& index) : m_file(file), m_index(index) {}

    std::string run();
    Skeleton take() { return std::move(m_skeleton); }

private:
    /// A type of records.
    struct TypeFacts {
        std::uint16_t number = TextNumbers::kNone;  ///< of its name in DXF
        bool decoded = false;
    };
    /// What all objects of a type have in common.
    [[nodiscard]] const TypeFacts& factsOf(std::uint16_t type);
    void readObjects();
    void fillFacts();
    ContainerNumber addContainer(ContainerKind kind, std::string name);
    /// 0 when there is no such object, or it has its number already.
    RecordNumber add(std::uint64_t handle, ContainerNumber container, std::uint16_t flags = 0);
    RecordNumber addObject(std::size_t at, ContainerNumber container, std::uint16_t flags);
    [[nodiscard]] std::optional<std::size_t> placeOf(std::uint64_t handle);
    void addMember(std::uint64_t handle, ContainerNumber container);
    void addTable(std::uint64_t control);
    /// The entries of a control object as DXF orders them; 0 for erased ones.
    [[nodiscard]] std::vector<std::uint64_t> slotsOf(std::uint64_t control);
    [[nodiscard]] std::vector<std::uint64_t> listed(std::vector<std::uint64_t> ends, bool chain);
    [[nodiscard]] std::optional<std::uint64_t> nextOf(std::size_t place) const;
    void findOrphans();
    [[nodiscard]] std::uint64_t behindOf(std::uint64_t missing, std::uint64_t named,
                                         std::uint64_t whole);
    /// Whether the object is an entity and not damaged.
    [[nodiscard]] bool isWhole(std::size_t place) const {
        return (m_notes.objects[place].flags & (kEntity | kDamaged)) == kEntity;
    }
    /// Whether it stands in no list yet.
    [[nodiscard]] bool isFree(std::size_t place) const {
        return !m_numbered[place] && m_walked[place] != m_walk;
    }
    void addBlock(std::uint64_t header);
    void addSpace(ContainerNumber space, std::uint64_t header);
    void nameBlocks();
    void addRest();

    DwgFile& m_file;
    DwgIndex& m_index;
    Skeleton m_skeleton;
    std::vector<std::uint64_t> m_blocks;              ///< headers in the order of DXF
    std::map<std::uint64_t, BlockMembers> m_members;  ///< by header
    ObjectNotes m_notes;
    std::vector<bool> m_numbered;         ///< by place in the map
    std::vector<std::uint32_t> m_walked;  ///< the same way: in which walk it was met last
    std::uint32_t m_walk = 0;
    /// Entities behind one that is damaged or missing, by its handle; once they are asked for.
    std::optional<std::map<std::uint64_t, std::uint64_t>> m_orphans;
    std::size_t m_last = 0;          ///< the place in the map that was looked for last
    std::vector<TypeFacts> m_facts;  ///< by type
};

std::string Indexer::run() {
    readObjects();
    fillFacts();
    const DwgHeader& header = m_file.header();
    m_skeleton.records.reserve(m_notes.objects.size() + 1);
    m_index.objects.reserve(m_notes.objects.size() + 1);
    m_skeleton.records.resize(1);
    m_skeleton.containers.resize(3);
    m_index.objects.resize(1);
    m_skeleton.containers[kModelSpace].kind = ContainerKind::Space;
    m_skeleton.containers[kPaperSpace].kind = ContainerKind::Space;
    m_skeleton.containers[kPaperSpace].paper = true;
    if (!m_file.frameOf(header.blocks)) return "its table of blocks cannot be read";
    if (!m_file.frameOf(header.modelSpace)) return "its model space cannot be read";
    for (const std::uint64_t control :
         {header.viewports, header.lineTypes, header.layers, header.styles, header.views,
          header.coordinateSystems, header.applications, header.dimensionStyles, header.blocks})
        addTable(control);
    for (const std::uint64_t block : m_blocks) addBlock(block);
    addSpace(kModelSpace, header.modelSpace);
    addSpace(kPaperSpace, header.paperSpace);
    addRest();
    return {};
}

const Indexer::TypeFacts& Indexer::factsOf(std::uint16_t type) {
    if (type >= m_facts.size()) m_facts.resize(type + std::size_t{1});
    TypeFacts& facts = m_facts[type];
    if (facts.number == TextNumbers::kNone)
        facts = {m_skeleton.types.number(dxfTypeOf(m_file, type)), isDecoded(m_file, type)};
    return facts;
}

/// Tests every object, tells which ones are damaged, and numbers the types; finds the blocks.
void Indexer::readObjects() {
    m_notes = noteObjects(m_file, [this] { nameBlocks(); });
    m_skeleton.deadBytes = m_notes.deadBytes;
    for (const ObjectNotes::Wrong& wrong : m_notes.wrong) {
        const MapEntry& entry = m_file.map().entries()[wrong.object];
        m_file.damage().note("object " + handleText(entry.handle) + ": " + wrong.why, entry.place);
    }
    m_numbered.resize(m_notes.objects.size());
    for (const ObjectNote& note : m_notes.objects) static_cast<void>(factsOf(note.type));
}

void Indexer::fillFacts() {
    const DwgStart& start = m_file.start();
    m_skeleton.release = start.release;
    m_skeleton.version = start.version;
    m_skeleton.codePage = codePageName(start.codePage);
    m_skeleton.seed = m_file.header().seed;
    m_skeleton.insertionBase = m_file.header().insertionBase;
    m_skeleton.settings = m_file.header().settings;
    m_skeleton.settings.insertionUnits = m_file.header().insertionUnits;
    m_skeleton.sawOwners = true;
    m_skeleton.sawEof = true;
    m_skeleton.carets = false;
    const auto& entries = m_file.map().entries();
    m_skeleton.highestHandle = entries.empty() ? 0 : entries.back().handle;
}

ContainerNumber Indexer::addContainer(ContainerKind kind, std::string name) {
    Container container;
    container.kind = kind;
    container.name = std::move(name);
    container.first = m_skeleton.lastRecord() + 1;
    container.last = m_skeleton.lastRecord();
    m_skeleton.containers.push_back(std::move(container));
    return static_cast<ContainerNumber>(m_skeleton.containers.size() - 1);
}

/// Mostly the handle that is looked for follows the one before.
std::optional<std::size_t> Indexer::placeOf(std::uint64_t handle) {
    const auto& entries = m_file.map().entries();
    if (m_last + 1 < entries.size() && entries[m_last + 1].handle == handle) return ++m_last;
    const MapEntry* found = handle == 0 ? nullptr : m_file.map().find(handle);
    if (found == nullptr) return std::nullopt;
    m_last = static_cast<std::size_t>(found - entries.data());
    return m_last;
}

RecordNumber Indexer::add(std::uint64_t handle, ContainerNumber container, std::uint16_t flags) {
    const std::optional<std::size_t> at = placeOf(handle);
    return at ? addObject(*at, container, flags) : 0;
}

RecordNumber Indexer::addObject(std::size_t at, ContainerNumber container, std::uint16_t flags) {
    if (m_numbered[at]) return 0;
    m_numbered[at] = true;
    const ObjectNote note = m_notes.objects[at];
    const TypeFacts& facts = m_facts[note.type];
    RecordEntry entry;
    entry.handle = m_file.map().entries()[at].handle;
    entry.container = container;
    entry.type = facts.number;
    entry.flags = flags;
    if (!facts.decoded || (note.flags & kDamaged) != 0) entry.flags |= kOpaque;
    if ((note.flags & kExtending) != 0) {
        entry.flags |= kExtended;
        const ObjectFrame frame = m_file.frame(m_file.map().entries()[at].place);
        if (hasExtendedData(m_file, frame, kAttributeApplication)) entry.flags |= kAttributed;
    }
    m_skeleton.records.push_back(entry);
    m_index.objects.push_back(static_cast<std::uint32_t>(at));
    const RecordNumber number = m_skeleton.lastRecord();
    if ((flags & kEdge) == 0 && container != kNoContainer)
        m_skeleton.containers[container].last = number;
    return number;
}

/// An entity, and behind it those that belong to it.
void Indexer::addMember(std::uint64_t handle, ContainerNumber container) {
    const RecordNumber number = add(handle, container);
    if (number == 0) return;
    const std::uint32_t at = m_index.objects[number];
    if ((m_notes.objects[at].flags & (kOwning | kDamaged)) != kOwning) return;
    const ObjectFrame frame = m_file.frame(m_file.map().entries()[at].place);
    DecodedRecord decoded = decodeRecord(m_file, frame);
    for (const std::uint64_t owned : listed(std::move(decoded.owned.handles), decoded.owned.chain))
        add(owned, container, kSubEntity);
    add(decoded.owned.end, container, kSubEntity);
}

/// The members that a list has, or a chain between its first and last.
std::vector<std::uint64_t> Indexer::listed(std::vector<std::uint64_t> ends, bool chain) {
    if (!chain || ends.size() != 2) return ends;
    std::vector<std::uint64_t> members;
    m_walked.resize(m_notes.objects.size());
    ++m_walk;
    std::uint64_t whole = 0;  // the last one that is not damaged
    for (std::uint64_t at = ends[0]; at != 0;) {
        const std::optional<std::size_t> place = placeOf(at);
        // No entity stands in two lists or twice in one.
        const bool twice = place && !isFree(*place);
        const std::optional<std::uint64_t> next = twice || !place ? std::nullopt : nextOf(*place);
        if (next) {
            m_walked[*place] = m_walk;
            members.push_back(at);
        }
        if (next && at == ends[1]) break;
        if (next && isWhole(*place)) {
            whole = at;
            at = *next;
            continue;
        }
        const std::uint64_t behind =
            twice || at == ends[1] ? 0 : behindOf(at, next.value_or(0), whole);
        const char* const what =
            behind == 0 ? "a list of entities breaks off before " : "a list of entities lacks ";
        if (!next) m_file.damage().note(what + handleText(at), 0);
        at = behind;
    }
    return members;
}

/// The entity behind it in its chain, 0 for none; nothing when it is no entity or cannot be read.
std::optional<std::uint64_t> Indexer::nextOf(std::size_t place) const {
    const unsigned flags = m_notes.objects[place].flags;
    if ((flags & kEntity) == 0) return std::nullopt;
    if (isWhole(place) && !m_notes.next.empty()) return m_notes.next[place];
    // What is damaged may still have its links.
    const auto frame = m_file.frameOf(m_file.map().entries()[place].handle);
    return frame ? std::optional(neighboursOf(*frame, m_file.release()).next) : std::nullopt;
}

void Indexer::findOrphans() {
    m_orphans.emplace();
    for (std::size_t i = 0; i < m_notes.objects.size(); ++i) {
        if (!isWhole(i)) continue;
        const MapEntry& entry = m_file.map().entries()[i];
        const ObjectFrame frame = m_file.frame(entry.place);
        const std::uint64_t previous = neighboursOf(frame, m_file.release()).previous;
        const std::optional<std::size_t> before = previous == 0 ? i : placeOf(previous);
        if (!before || !isWhole(*before)) m_orphans->try_emplace(previous, entry.handle);
    }
}

/// Where a list goes on behind an entity that is damaged or missing: at the one that names it, else
/// at the one that it names, else at the first orphan behind it that has the owner of `whole`. 0
/// when there is none.
std::uint64_t Indexer::behindOf(std::uint64_t missing, std::uint64_t named, std::uint64_t whole) {
    if (!m_orphans) findOrphans();
    auto orphan = m_orphans->lower_bound(missing);
    if (orphan != m_orphans->end() && orphan->first == missing) return orphan->second;
    // One that is not damaged would have said so itself.
    const std::optional<std::size_t> place = placeOf(named);
    if (place && isFree(*place) && !isWhole(*place) && nextOf(*place)) return named;
    const auto ownerAt = [this](std::uint64_t handle) -> std::uint64_t {
        const auto frame = m_file.frameOf(handle);
        if (!frame || !frame->entity) return 0;
        Fields fields = frame->fields(m_file.release());
        return ownerOf(readEntityData(fields, handle), m_file);
    };
    const std::uint64_t owner = ownerAt(whole);
    const auto follows = [&](std::uint64_t handle) {
        const std::optional<std::size_t> at = placeOf(handle);
        return at && isFree(*at) && ownerAt(handle) == owner;
    };
    for (std::size_t looked = 0; owner != 0 && looked < kMostOrphans; ++looked, ++orphan) {
        if (orphan == m_orphans->end()) break;
        if (follows(orphan->second)) return orphan->second;
    }
    return 0;
}

std::vector<std::uint64_t> Indexer::slotsOf(std::uint64_t control) {
    const auto frame = m_file.frameOf(control);
    if (!frame || tableOfControl(frame->type).empty()) return {};
    Fields fields = frame->fields(m_file.release());
    static_cast<void>(readObjectData(fields, *frame));
    GroupList unused;
    GroupWriter nowhere(unused);
    RecordReader record{m_file, fields, nowhere, control, 0, frame->type};
    std::vector<std::uint64_t> slots = readControl(record);
    // Model space and the active layout come first, as do the two fixed line types.
    const bool fixed = frame->type == kDwgBlockControl || frame->type == kDwgLineTypeControl;
    if (fixed && slots.size() >= 2) std::rotate(slots.begin(), slots.end() - 2, slots.end());
    return slots;
}

void Indexer::addTable(std::uint64_t control) {
    const auto frame = m_file.frameOf(control);
    if (!frame) return;
    const ContainerNumber table = addContainer(ContainerKind::Table, tableOfControl(frame->type));
    const RecordNumber head = add(control, kNoContainer, kEdge);
    Container& container = m_skeleton.containers[table];
    container.head = head;
    container.owner = control;
    container.first = head + 1;
    container.last = head;
    for (const std::uint64_t slot : slotsOf(control)) add(slot, table);
}

/// Anonymous blocks and layouts have the names of their kinds alone. In DXF the number of their
/// place in the table stands behind, erased records counted.
void Indexer::nameBlocks() {
    constexpr std::size_t kSpaces = 2;
    constexpr std::size_t kKindLength = 2;
    const std::vector<std::uint64_t> entries = slotsOf(m_file.header().blocks);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::uint64_t header = entries[i];
        if (header == 0) continue;
        m_blocks.push_back(header);
        BlockMembers block =
            blockMembersOf(m_file, header, BlockParts::Lists).value_or(BlockMembers());
        block.preview.clear();
        const bool kind = (block.name.size() == kKindLength && block.name[0] == '*') ||
                          equalsNoCaseAscii(block.name, kPaperName);
        if (kind && i >= kSpaces) m_file.setName(header, block.name + std::to_string(i - kSpaces));
        m_members.emplace(header, std::move(block));
    }
}

void Indexer::addBlock(std::uint64_t header) {
    BlockMembers& block = m_members[header];
    const RecordNumber head = add(block.block, kNoContainer, kEdge);
    if (head == 0) return;
    const ContainerNumber number = addContainer(ContainerKind::Block, m_file.nameOf(header));
    Container& container = m_skeleton.containers[number];
    container.head = head;
    container.owner = header;
    container.paper = startsNoCaseAscii(container.name, kPaperName);
    container.layout = container.paper || equalsNoCaseAscii(container.name, kModelName);
    m_skeleton.records[head].container = number;
    const bool space = header == m_file.header().modelSpace || header == m_file.header().paperSpace;
    if (!space)
        for (const std::uint64_t member : listed(std::move(block.members), block.chain))
            addMember(member, number);
    if (const RecordNumber end = add(block.end, kNoContainer, kEdge); end != 0) {
        m_skeleton.containers[number].end = end;
        m_skeleton.records[end].container = number;
    }
}

void Indexer::addSpace(ContainerNumber space, std::uint64_t header) {
    m_skeleton.containers[space].first = m_skeleton.lastRecord() + 1;
    m_skeleton.containers[space].last = m_skeleton.lastRecord();
    const auto found = m_members.find(header);
    if (found == m_members.end()) return;
    for (const std::uint64_t member : listed(std::move(found->second.members), found->second.chain))
        addMember(member, space);
}

/// Objects, and what no list leads to.
void Indexer::addRest() {
    const ContainerNumber objects = addContainer(ContainerKind::Section, "OBJECTS");
    add(m_file.header().dictionary, objects);
    for (std::size_t i = 0; i < m_notes.objects.size(); ++i)
        if (!m_numbered[i])
            addObject(i, (m_notes.objects[i].flags & kEntity) != 0 ? kNoContainer : objects, 0);
}

}  // namespace

Result<Skeleton> indexDwg(DwgFile& file, const std::string& name, DwgIndex& index) {
    Indexer indexer(file, index);
    if (const std::string wrong = indexer.run(); !wrong.empty())
        return Error{ErrorKind::Damaged, name, 0, "the DWG file is damaged: " + wrong};
    Skeleton skeleton = indexer.take();
    if (const DamageNotes& damage = file.damage(); damage.count != 0) {
        skeleton.damage = Damage{damage.first, 0, damage.offset, damage.count};
    }
    return skeleton;
}

std::string codePageName(unsigned number) {
    static constexpr std::array<const char*, 45> names = {
        "ANSI_1252", "ascii",     "iso8859-1", "iso8859-2", "iso8859-3", "iso8859-4", "iso8859-5",
        "iso8859-6", "iso8859-7", "iso8859-8", "iso8859-9", "dos437",    "dos850",    "dos852",
        "dos855",    "dos857",    "dos860",    "dos861",    "dos863",    "dos864",    "dos865",
        "dos869",    "dos932",    "mac-roman", "big5",      "ksc5601",   "johab",     "dos866",
        "ANSI_1250", "ANSI_1251", "ANSI_1252", "gb2312",    "ANSI_1253", "ANSI_1254", "ANSI_1255",
        "ANSI_1256", "ANSI_1257", "ANSI_874",  "ANSI_932",  "ANSI_936",  "ANSI_949",  "ANSI_950",
        "ANSI_1361", "ANSI_1252", "ANSI_1258"};
    return number < names.size() ? names[number] : "ANSI_1252";
}

}  // namespace mor::host
