#include "host/drawing/drawing.h"
#include "host/dxf/dxf_make.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mor::host {

namespace {

/// A stretch of bytes to be replaced.
struct Patch {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
};

std::string applyPatches(const std::string& bytes, std::vector<Patch> patches) {
    std::ranges::stable_sort(patches, {}, &Patch::begin);
    std::string result;
    std::size_t at = 0;
    for (const Patch& patch : patches) {
        result.append(bytes, at, patch.begin - at);
        result += patch.text;
        at = patch.end;
    }
    result.append(bytes, at);
    return result;
}

std::string padTo(std::string text, std::size_t width) {
    if (text.size() < width) text.insert(0, width - text.size(), ' ');
    return text;
}

/// Where a group stands that the record lacks: the space before the layer, anything else before the
/// extended data.
std::size_t placeFor(const TagList& record, int code) {
    if (code == 67)
        if (const Tag* layer = record.find(8)) return layer->begin;
    const std::size_t extended = record.extendedBegin();
    return extended < record.tags().size() ? record.tags()[extended].begin : record.bytes().size();
}

void patchInteger(const TagList& record, const LineStyle& lines, int code, std::int64_t value,
                  std::vector<Patch>& patches) {
    const Tag* tag = record.find(code);
    if (tag == nullptr) {
        const std::size_t place = placeFor(record, code);
        patches.push_back({place, place, integerLine(lines, code, value)});
    } else if (parseInteger(record.value(*tag)) != value) {
        const std::size_t width = tag->valueEnd - tag->valueBegin;
        patches.push_back({tag->valueBegin, tag->valueEnd, padTo(std::to_string(value), width)});
    }
}

void patchText(const TagList& record, const LineStyle& lines, int code, const std::string& value,
               std::vector<Patch>& patches) {
    const Tag* tag = record.find(code);
    if (tag == nullptr) {
        const std::size_t place = placeFor(record, code);
        patches.push_back({place, place, line(lines, code, value)});
    } else if (record.value(*tag) != value) {
        patches.push_back({tag->valueBegin, tag->valueEnd, value});
    }
}

/// The record with other attributes: its own lists are replaced where the first one stood.
std::string withAttributes(const TagList& record, std::string encoded) {
    std::vector<Patch> patches;
    for (const ExtendedRange& range : extendedRanges(record, kAttributeApplication))
        patches.push_back({record.tags()[range.begin].begin, record.tags()[range.end - 1].end, {}});
    if (patches.empty()) patches.push_back({record.bytes().size(), record.bytes().size(), {}});
    patches.front().text += encoded;
    return applyPatches(record.bytes(), std::move(patches));
}

}  // namespace

void Drawing::applyEdit(RecordNumber number, const RecordEdit& edit, TagList& loaded) {
    TagList record = loaded;
    // The last record of a file without EOF may lack its last line end.
    if (const std::string_view end = lineEndFor(record.bytes(), m_style.lines); !end.empty())
        record = TagList(record.bytes() + std::string(end));
    std::vector<Patch> patches;
    if (edit.handle != 0 && !record.tags().empty()) {
        const std::size_t place = record.tags().front().end;
        const int code = typeOf(number) == "DIMSTYLE" ? 105 : 5;
        patches.push_back({place, place, line(m_style.lines, code, handleToText(edit.handle))});
    }
    for (const auto& [code, value] : edit.groups) {
        if (const auto* integer = std::get_if<std::int64_t>(&value))
            patchInteger(record, m_style.lines, code, *integer, patches);
        else
            patchText(record, m_style.lines, code, std::get<std::string>(value), patches);
    }
    const bool patched = !patches.empty();
    if (patched) record = TagList(applyPatches(record.bytes(), std::move(patches)));
    const bool sameList =
        !edit.attributes ||
        sameAttributes(decodeAttributes(record, m_text, *this).items, edit.attributes->items);
    if (!sameList)
        record = TagList(
            withAttributes(record, encodeAttributes(edit.attributes->items, m_style.lines, *this)));
    if (patched || !sameList) loaded = std::move(record);
}

void Drawing::setInteger(RecordNumber number, int code, std::int64_t value) {
    m_edits[number].groups[code] = value;
}

void Drawing::setText(RecordNumber number, int code, std::wstring_view value) {
    m_edits[number].groups[code] = m_text.encode(value);
    if (code == 2) m_insertCounts.reset();
}

std::shared_ptr<const AttributeList> Drawing::attributesOf(RecordNumber number) {
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end() && edit->second.attributes) return edit->second.attributes;
    auto& known = m_attributes[number];
    if (!known)
        known = std::make_shared<const AttributeList>(
            decodeAttributes(original(number), m_text, *this));
    return known;
}

void Drawing::setAttributes(RecordNumber number, AttributeList attributes) {
    if (!attributes.items.empty()) registerApplication(kAttributeApplication);
    // Records that values name get handles now: a save only writes.
    static_cast<void>(encodeAttributes(attributes.items, m_style.lines, *this));
    m_edits[number].attributes = std::make_shared<const AttributeList>(std::move(attributes));
}

void Drawing::toggleErased(RecordNumber number) {
    m_insertCounts.reset();
    m_records[number].flags ^= kErased;
    for (RecordNumber at = number + 1; at <= m_lastFileRecord && number < at; ++at) {
        if (!m_records[at].has(kSubEntity)) break;
        m_records[at].flags = static_cast<std::uint16_t>((m_records[at].flags & ~kErased) |
                                                         (m_records[number].flags & kErased));
    }
}

void Drawing::moveToModelSpace(RecordNumber number) {
    const std::uint64_t owner = blockRecordHandle(L"*Model_Space");
    const auto move = [&](RecordNumber at) {
        RecordEntry& entry = m_records[at];
        const TagList record = current(at);
        if (record.find(67) != nullptr) setInteger(at, 67, 0);
        if (owner != 0 && !entry.has(kSubEntity) && record.find(330) != nullptr)
            m_edits[at].groups[330] = handleToText(owner);
        const bool sameRange = entry.container == kPaperSpace && !entry.has(kMade | kMovedOut);
        if (!sameRange) {
            std::erase(m_containers[entry.container].added, at);
            m_containers[kModelSpace].added.push_back(at);
            if (!entry.has(kMade)) entry.flags |= kMovedOut;
        }
        entry.container = kModelSpace;
    };
    move(number);
    if (m_records[number].has(kMade)) return;
    for (RecordNumber at = number + 1; at <= m_lastFileRecord && m_records[at].has(kSubEntity);
         ++at)
        move(at);
}

RecordNumber Drawing::add(ContainerNumber container, std::string_view type, std::string bytes,
                          std::uint64_t handle, std::uint16_t flags) {
    RecordEntry entry;
    entry.place = m_made.size();
    entry.handle = handle;
    entry.container = container;
    entry.type = typeNumber(type);
    entry.flags = static_cast<std::uint16_t>(kMade | flags);
    m_made.push_back(std::move(bytes));
    m_records.push_back(entry);
    const RecordNumber number = lastRecord();
    m_insertCounts.reset();
    if (handle != 0) m_madeHandles[handle] = number;
    if ((flags & kEdge) == 0) m_containers[container].added.push_back(number);
    if (m_containers[container].kind == ContainerKind::Table) learnName(container, number);
    return number;
}

ContainerNumber Drawing::ensureTable(std::string_view table) {
    if (const ContainerNumber known = findTable(table)) return known;
    Container container;
    container.kind = ContainerKind::Table;
    container.name = table;
    container.first = 1;
    container.owner = tableStyle("TABLE").markers ? takeHandle() : 0;
    m_containers.push_back(std::move(container));
    return static_cast<ContainerNumber>(m_containers.size() - 1);
}

RecordNumber Drawing::addLayer(std::wstring_view name) {
    NewRecord record{"LAYER", 0, 0, {}};
    record.groups = {{2, m_text.encode(name)}, {70, std::int64_t{0}}, {62, std::int64_t{7}}};
    const RecordStyle style = tableStyle(record.type);
    std::string linetype = style.markers ? "Continuous" : "CONTINUOUS";
    const RecordNumber zero = findSymbol("LAYER", L"0");
    const TagList model = zero == 0 ? TagList() : current(zero);
    if (const Tag* tag = model.find(6)) linetype = model.value(*tag);
    record.groups.push_back({6, linetype});
    if (style.markers)
        for (const int code : {370, 390, 347, 348}) {
            const Tag* tag = model.find(code);
            if (tag == nullptr) continue;
            if (code == 370)
                record.groups.push_back({code, parseInteger(model.value(*tag)).value_or(-3)});
            else
                record.groups.push_back({code, std::string(model.value(*tag))});
        }
    const ContainerNumber table = ensureTable("LAYER");
    record.handle = style.markers ? takeHandle() : 0;
    record.owner = m_containers[table].owner;
    return add(table, "LAYER", makeTableRecord(style, record, "AcDbLayerTableRecord"),
               record.handle);
}

void Drawing::registerApplication(std::string_view name) {
    const std::wstring wide(name.begin(), name.end());
    if (findSymbol("APPID", wide) != 0) return;
    const bool fresh = findTable("APPID") == kNoContainer;
    const ContainerNumber table = ensureTable("APPID");
    const auto put = [&](std::string_view application) {
        NewRecord record{"APPID", 0, m_containers[table].owner, {}};
        record.groups = {{2, std::string(application)}, {70, std::int64_t{0}}};
        RecordStyle style = tableStyle(record.type);
        record.handle = style.markers ? takeHandle() : 0;
        // Readers take a file without a release for R12 and look for the name without markers.
        if (m_version.empty()) style.markers = false;
        add(table, "APPID", makeTableRecord(style, record, "AcDbRegAppTableRecord"), record.handle);
    };
    // Without it CAD programs refuse a file of R13 or later, or one that looks like that.
    if (fresh && (m_style.markers || m_index->entityForm.marked)) put("ACAD");
    put(name);
}

/// Before R13 block records stand only where the file's own blocks name them, or where it has a
/// table of them and says what release it is.
bool Drawing::wantsBlockRecords() {
    const RecordStyle style = entityStyle("BLOCK");
    if (style.release >= Release::R13) return true;
    if (!style.markers) return false;
    return style.owners || (!m_version.empty() && findTable("BLOCK_RECORD") != kNoContainer);
}

ContainerNumber Drawing::addBlock(std::wstring_view name, std::int64_t flags, const double* base) {
    if (const ContainerNumber known = findBlock(name)) {
        clearBlock(known);
        setInteger(m_containers[known].head, 70, flags);
        for (int i = 0; i < 3; ++i) {
            const int code = 10 * (i + 1);
            const TagList head = current(m_containers[known].head);
            const Tag* tag = head.find(code);
            if (tag == nullptr || parseReal(head.value(*tag)) != base[i])
                m_edits[m_containers[known].head].groups[code] = realText(base[i]);
        }
        return known;
    }
    const std::string encoded = m_text.encode(name);
    std::uint64_t owner = 0;
    if (wantsBlockRecords()) {
        const ContainerNumber table = ensureTable("BLOCK_RECORD");
        NewRecord record{"BLOCK_RECORD", takeHandle(), m_containers[table].owner, {{2, encoded}}};
        if (m_style.release >= Release::R2000) record.groups.push_back({340, std::string("0")});
        if (m_style.release >= Release::R2007)
            record.groups.insert(
                record.groups.end(),
                {{70, std::int64_t{0}}, {280, std::int64_t{1}}, {281, std::int64_t{0}}});
        owner = record.handle;
        add(table, "BLOCK_RECORD",
            makeTableRecord(tableStyle(record.type), record, "AcDbBlockTableRecord"), owner);
    }
    Container container;
    container.kind = ContainerKind::Block;
    container.name = encoded;
    container.first = 1;
    container.owner = owner;
    m_containers.push_back(std::move(container));
    const auto number = static_cast<ContainerNumber>(m_containers.size() - 1);
    const RecordStyle style = entityStyle("BLOCK");
    const NewRecord begin{"BLOCK", style.markers ? takeHandle() : 0, owner, {}};
    m_containers[number].head = add(
        number, "BLOCK", makeBlockBegin(style, begin, encoded, flags, base), begin.handle, kEdge);
    if (m_blocks) m_blocks->try_emplace(upperCase(name), number);
    return number;
}

void Drawing::endBlockDefinition(ContainerNumber block) {
    if (m_containers[block].end != 0) return;
    const NewRecord end{"ENDBLK", takeHandle(), m_containers[block].owner, {}};
    m_containers[block].end =
        add(block, "ENDBLK", makeBlockEnd(entityStyle("ENDBLK"), end), end.handle, kEdge);
}

void Drawing::clearBlock(ContainerNumber block) {
    Container& container = m_containers[block];
    m_insertCounts.reset();
    for (RecordNumber at = container.first; at <= container.last; ++at)
        if (m_records[at].container == block && !m_records[at].has(kEdge))
            m_records[at].flags |= kGone;
    for (const RecordNumber at : container.added) m_records[at].flags |= kGone;
    container.added.clear();
}

}  // namespace mor::host
