#include "host/drawing/drawing.h"

#include "host/handles.h"
#include "host/lisp/lisp_value.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace mor::host {

namespace {

/// The first handle that may be free; 0 when there is none.
std::uint64_t firstFree(const Skeleton& skeleton) {
    const std::uint64_t highest = skeleton.highestHandle;
    if (highest == std::numeric_limits<std::uint64_t>::max()) return 0;
    return std::max<std::uint64_t>({skeleton.seed, highest + 1, 1});
}

}  // namespace

std::int64_t nextDrawingNumber() {
    static std::int64_t s_number = 0;
    return ++s_number;
}

Drawing::Drawing(Opened opened)
    : m_number(nextDrawingNumber()),
      m_codec(std::move(opened.codec)),
      m_skeleton(std::move(opened.skeleton)),
      m_lastFileRecord(m_skeleton.lastRecord()),
      m_text(m_skeleton.release, m_skeleton.codePage,
             m_skeleton.carets ? Carets::Coded : Carets::Plain),
      m_names(*this),
      m_handles(m_skeleton.records, m_lastFileRecord, firstFree(m_skeleton),
                [this](std::uint64_t from) { return keptHandles(from); }) {}

Drawing::~Drawing() = default;

RecordStyle Drawing::styleFor(std::string_view type, const RecordForm& kind) const {
    const RecordForm own = m_skeleton.formOf(typeNumber(type));
    const RecordForm& form = own.seen() ? own : kind;
    RecordStyle style;
    style.release = m_skeleton.release;
    // Of an old release readers may expect none, so one plain record is reason enough.
    style.markers = style.release >= Release::R13 || (form.marked && !form.plain);
    style.owners = style.release >= Release::R2000 || (style.markers && m_skeleton.sawOwners);
    return style;
}

RecordStyle Drawing::tableStyle(std::string_view type) const {
    return styleFor(type, m_skeleton.tableForm);
}

RecordStyle Drawing::entityStyle(std::string_view type) const {
    return styleFor(type, m_skeleton.entityForm);
}

// ---- names and records --------------------------------------------------------------------------

EntityName Drawing::nameOf(RecordNumber number) const {
    if (number == 0) return {};
    return {static_cast<std::int64_t>(number), m_number};
}

RecordNumber Drawing::numberOf(EntityName name) const {
    if (name.second() != m_number || name.first() <= 0) return 0;
    if (name.first() > static_cast<std::int64_t>(lastRecord())) return 0;
    const auto number = static_cast<RecordNumber>(name.first());
    return entry(number).has(kGone) ? 0 : number;
}

const std::string& Drawing::typeOf(RecordNumber number) const {
    return m_skeleton.types.text(entry(number).type);
}

GroupList Drawing::original(RecordNumber number) const {
    return isMade(number) ? m_made[number - m_lastFileRecord - 1].borrowed()
                          : m_codec->read(number);
}

RecordChange Drawing::changeOf(const GroupList& record, const Edit& edit) const {
    RecordChange change{edit.handle, edit.groups, std::nullopt};
    if (edit.attributes &&
        !sameAttributes(decodeAttributes(record, m_text, *this).items(), edit.attributes->items()))
        change.attributes = encodeAttributes(edit.attributes->items(), *this);
    return change;
}

GroupList Drawing::groupsOf(RecordNumber number) const {
    GroupList record = original(number);
    const auto edit = m_edits.find(number);
    if (edit == m_edits.end()) return record;
    const auto splices = splicesFor(record, changeOf(record, edit->second));
    return spliced(std::move(record), splices);
}

void Drawing::readGroups(RecordNumber number, GroupList& list) const {
    if (isAsInFile(number))
        m_codec->readInto(number, list);
    else
        list = groupsOf(number);
}

std::optional<Group> Drawing::groupOf(RecordNumber number, int code) const {
    if (!m_edits.contains(number) && !isMade(number)) return m_codec->find(number, code);
    m_edited = groupsOf(number);
    const Group* group = m_edited.find(code);
    return group == nullptr ? std::nullopt : std::optional(*group);
}

std::uint16_t Drawing::layerNumberOf(RecordNumber number) const {
    if (isMade(number) || m_edits.contains(number)) return TextNumbers::kNone;
    const std::uint16_t layer = m_codec->layerNumberOf(number);
    return layer == TextNumbers::kTooMany ? TextNumbers::kNone : layer;
}

std::vector<std::wstring> Drawing::applicationsOf(RecordNumber number) const {
    std::vector<std::wstring> names;
    if (!m_edits.contains(number) && !isMade(number)) {
        for (const std::string& name : m_codec->applicationsOf(number))
            names.push_back(m_text.decode(name));
        return names;
    }
    for (const Group& group : groupsOf(number))
        if (group.code() == kApplicationCode) names.push_back(decoded(group));
    return names;
}

std::wstring Drawing::decoded(const Group& group) const {
    return group.isText() ? m_text.decode(group.text()) : fromUtf8(group.shown()).value_or(L"");
}

std::optional<std::wstring> Drawing::textOf(RecordNumber number, int code) const {
    const auto group = groupOf(number, code);
    return group ? std::optional(decoded(*group)) : std::nullopt;
}

std::optional<std::int64_t> Drawing::integerOf(RecordNumber number, int code) const {
    // Flags of a layer change with every write into a store, and back: not worth building a record.
    if (const auto edit = m_edits.find(number); edit != m_edits.end())
        if (const auto set = edit->second.groups.find(code); set != edit->second.groups.end())
            if (const auto* integer = std::get_if<std::int64_t>(&set->second)) return *integer;
    const auto group = groupOf(number, code);
    return group ? group->integer() : std::nullopt;
}

std::shared_ptr<const AttributeList> Drawing::attributesOf(RecordNumber number) const {
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end() && edit->second.attributes) return edit->second.attributes;
    return decodedAttributes(number);
}

const AttributeList& Drawing::attributesNow(RecordNumber number) const {
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end() && edit->second.attributes) return *edit->second.attributes;
    return *decodedAttributes(number);
}

const std::shared_ptr<const AttributeList>& Drawing::decodedAttributes(RecordNumber number) const {
    auto& known = m_attributes[number];
    if (!known)
        known = std::make_shared<const AttributeList>(
            decodeAttributes(original(number), m_text, *this));
    return known;
}

// ---- handles ------------------------------------------------------------------------------------

std::vector<std::uint64_t> Drawing::keptHandles(std::uint64_t from) const {
    std::vector<std::uint64_t> kept;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number) {
        if (!entry(number).has(kAttributed) || !m_codec->mayHoldHandles(number)) continue;
        const GroupList record = m_codec->read(number);
        for (const ExtendedRange& range : extendedRanges(record, kAttributeApplication))
            for (std::size_t i = range.begin; i < range.end; ++i) {
                const bool named = codeKind(record[i].code()) == CodeKind::Handle;
                const std::uint64_t handle = named ? record[i].handle() : 0;
                if (handle != 0 && handle >= from) kept.push_back(handle);
            }
    }
    return kept;
}

EntityName Drawing::nameForHandle(std::uint64_t handle) const {
    if (handle == 0) return {};
    if (const RecordNumber number = m_handles.find(handle)) return nameOf(number);
    return {m_handles.reservedFor(handle), m_number};
}

std::uint64_t Drawing::handleForName(EntityName name) const {
    if (const RecordNumber number = numberOf(name)) return handleOf(number);
    return name.second() == m_number ? m_handles.handleOfReserved(name.first()) : 0;
}

std::uint64_t Drawing::giveHandle(RecordNumber number) {
    RecordEntry& entry = m_skeleton.records[number];
    if (entry.handle != 0) return entry.handle;
    const std::uint64_t handle = takeHandle();
    if (handle == 0) return 0;
    m_handles.note(handle, number);
    entry.handle = handle;
    m_edits[number].handle = handle;
    return handle;
}

std::uint64_t Drawing::renewHandle(RecordNumber number) {
    if (handleOf(number) == 0) return giveHandle(number);
    const std::uint64_t handle = takeHandle();
    if (handle == 0) return 0;
    m_handles.exchange(handle, number);
    m_skeleton.records[number].handle = handle;
    m_edits[number].groups[kHandleCode] = handleText(handle);
    return handle;
}

// ---- containers ---------------------------------------------------------------------------------

RecordNumber Drawing::nextMember(ContainerNumber number, RecordNumber after) const {
    const Container& container = this->container(number);
    const bool behindFile = after != 0 && entry(after).has(kMade | kMovedOut);
    if (!behindFile) {
        RecordNumber at = std::max(container.first, after + 1);
        for (; at <= container.last; ++at)
            if (const RecordEntry& entry = this->entry(at);
                entry.container == number && !entry.has(kEdge | kErased | kGone | kMovedOut))
                return at;
    }
    std::size_t at = 0;
    if (behindFile) {
        const auto& added = container.added;
        if (m_walkAt < added.size() && added[m_walkAt] == after)
            at = m_walkAt + 1;
        else
            at = static_cast<std::size_t>(std::ranges::find(added, after) - added.begin()) + 1;
    }
    for (; at < container.added.size(); ++at)
        if (!entry(container.added[at]).has(kEdge | kErased | kGone)) {
            m_walkAt = at;
            return container.added[at];
        }
    return 0;
}

std::wstring Drawing::containerName(ContainerNumber number) const {
    return m_text.decode(container(number).name);
}

bool Drawing::isSpace(ContainerNumber number) const {
    return container(number).kind == ContainerKind::Space || container(number).layout;
}

std::uint64_t Drawing::blockRecordHandle(std::wstring_view block) const {
    const RecordNumber number = m_names.findSymbol("BLOCK_RECORD", block);
    return number == 0 ? 0 : handleOf(number);
}

RecordNumber Drawing::lastEntity() const {
    for (RecordNumber number = lastRecord(); number != 0; --number) {
        const RecordEntry& entry = this->entry(number);
        if (!entry.has(kEdge | kSubEntity | kErased | kGone) && entry.container != kNoContainer &&
            isSpace(entry.container))
            return number;
    }
    return 0;
}

// ---- changes ------------------------------------------------------------------------------------

void Drawing::setGroup(RecordNumber number, int code, GroupValue value) {
    m_edits[number].groups[code] = std::move(value);
    if (code == kNameCode) m_names.insertsChanged();
}

void Drawing::setText(RecordNumber number, int code, std::wstring_view value) {
    setGroup(number, code, m_text.encode(value));
}

void Drawing::setAttributes(RecordNumber number, std::span<const Attribute> changes) {
    for (const Attribute& attribute : changes)
        for (const LispToken& token : tokensOf(attribute.value))
            if (token.is(LispKind::EntityName))
                if (const RecordNumber named = numberOf(token.asEntityName())) giveHandle(named);
    // In its place where nobody else looks at it, and nothing can come between.
    auto list = m_edits[number].attributes;
    if (changes.size() != 1 || list == nullptr || list.use_count() > 2)
        list = std::make_shared<AttributeList>(*attributesOf(number));
    for (const Attribute& attribute : changes) list->set(attribute.name, attribute.value);
    m_edits[number].attributes = std::move(list);
}

void Drawing::toggleErased(RecordNumber number) {
    m_names.insertsChanged();
    auto& records = m_skeleton.records;
    records[number].flags ^= kErased;
    for (RecordNumber at = number + 1; at <= m_lastFileRecord && number < at; ++at) {
        if (!records[at].has(kSubEntity)) break;
        records[at].flags = static_cast<std::uint16_t>((records[at].flags & ~kErased) |
                                                       (records[number].flags & kErased));
    }
}

void Drawing::moveToModelSpace(RecordNumber number) {
    const std::uint64_t owner = blockRecordHandle(L"*Model_Space");
    auto& containers = m_skeleton.containers;
    const auto move = [&](RecordNumber at) {
        RecordEntry& entry = m_skeleton.records[at];
        const GroupList record = groupsOf(at);
        if (record.find(kSpaceCode) != nullptr) setGroup(at, kSpaceCode, std::int64_t{0});
        if (owner != 0 && !entry.has(kSubEntity) && record.find(kOwnerCode) != nullptr)
            setGroup(at, kOwnerCode, handleText(owner));
        const bool sameRange = entry.container == kPaperSpace && !entry.has(kMade | kMovedOut) &&
                               at >= containers[kModelSpace].first &&
                               at <= containers[kModelSpace].last;
        if (!sameRange) {
            std::erase(containers[entry.container].added, at);
            containers[kModelSpace].added.push_back(at);
            if (!entry.has(kMade)) entry.flags |= kMovedOut;
        }
        entry.container = kModelSpace;
    };
    move(number);
    if (isMade(number)) return;
    for (RecordNumber at = number + 1; at <= m_lastFileRecord && entry(at).has(kSubEntity); ++at)
        move(at);
}

RecordNumber Drawing::add(ContainerNumber container, GroupList groups, std::uint64_t handle,
                          std::uint16_t flags) {
    RecordEntry entry;
    entry.handle = handle;
    entry.container = container;
    entry.type = m_skeleton.types.number(groups[0].bare());
    entry.flags = static_cast<std::uint16_t>(kMade | flags);
    m_made.push_back(std::move(groups));
    m_skeleton.records.push_back(entry);
    const RecordNumber number = lastRecord();
    m_names.insertsChanged();
    if (handle != 0) m_handles.note(handle, number);
    Container& target = m_skeleton.containers[container];
    if ((flags & kEdge) == 0)
        target.added.push_back(number);
    else
        (target.head == 0 ? target.head : target.end) = number;
    if (target.kind == ContainerKind::Table) m_names.addSymbol(container, number);
    return number;
}

ContainerNumber Drawing::addTable(std::string_view name, std::uint64_t handle) {
    Container container;
    container.kind = ContainerKind::Table;
    container.name = name;
    container.first = 1;
    container.owner = handle;
    m_skeleton.containers.push_back(std::move(container));
    return static_cast<ContainerNumber>(m_skeleton.containers.size() - 1);
}

ContainerNumber Drawing::addBlock(std::wstring_view name, std::uint64_t blockRecord) {
    Container container;
    container.kind = ContainerKind::Block;
    container.name = m_text.encode(name);
    container.first = 1;
    container.owner = blockRecord;
    m_skeleton.containers.push_back(std::move(container));
    const auto number = static_cast<ContainerNumber>(m_skeleton.containers.size() - 1);
    m_names.addBlock(name, number);
    return number;
}

void Drawing::clearBlock(ContainerNumber block) {
    Container& container = m_skeleton.containers[block];
    m_names.insertsChanged();
    for (RecordNumber at = container.first; at <= container.last; ++at)
        if (entry(at).container == block && !entry(at).has(kEdge))
            m_skeleton.records[at].flags |= kGone;
    for (const RecordNumber at : container.added) m_skeleton.records[at].flags |= kGone;
    container.added.clear();
}

EditSet Drawing::edits() const {
    EditSet set{m_skeleton.records, m_lastFileRecord, containers(), m_skeleton.types, {}, {}, {}};
    set.release = m_skeleton.release;
    if (m_handles.gaveHandles()) set.seed = m_handles.next();
    for (const auto& [number, edit] : m_edits) {
        if (isMade(number)) continue;
        const GroupList record = m_codec->read(number);
        RecordChange change = changeOf(record, edit);
        if (!splicesFor(record, change).empty()) set.changed.emplace(number, std::move(change));
    }
    for (RecordNumber number = m_lastFileRecord + 1; number <= lastRecord(); ++number)
        if (!entry(number).has(kErased | kGone)) set.made.emplace(number, groupsOf(number));
    for (ContainerNumber number = 1; number < containers().size(); ++number) {
        const Container& table = container(number);
        if (table.kind == ContainerKind::Table && table.end == 0 && !table.added.empty())
            set.tableHeads.emplace(number, makeTableHead(tableStyle("TABLE"), table.name,
                                                         table.owner, table.added.size()));
    }
    return set;
}

}  // namespace mor::host
