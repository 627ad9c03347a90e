#include "host/dxf/dxf_plan.h"

#include "host/dxf/dxf_header.h"
#include "host/dxf/patch.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

constexpr std::array<std::string_view, 8> kSectionOrder = {
    "HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES", "OBJECTS", "THUMBNAILIMAGE", "ACDSDATA"};
constexpr std::array<std::string_view, 9> kTableOrder = {
    "VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE", "BLOCK_RECORD"};

template <typename Order>
std::size_t rankOf(const Order& order, std::string_view name) {
    return static_cast<std::size_t>(std::ranges::find(order, name) - order.begin());
}

class Planner {
public:
    Planner(const DxfIndex& index, const EditSet& edits) : m_index(index), m_edits(edits) {}

    SavePlan run() {
        collectRecords();
        collectTables();
        collectBlocks();
        collectEntities();
        collectHeader();
        assemble();
        return std::move(m_plan);
    }

private:
    void note(SavedEdit::Kind kind, RecordNumber number);
    [[nodiscard]] std::string render(RecordNumber number) const;
    [[nodiscard]] std::string renderAll(const std::vector<RecordNumber>& numbers);
    void collectRecords();
    void collectTables();
    void addTable(ContainerNumber number, std::map<std::size_t, std::string>& missing);
    void raiseCount(const Container& table, std::size_t made);
    void collectBlocks();
    void collectEntities();
    void collectHeader();
    void insertSection(std::string_view name, const std::string& content);
    [[nodiscard]] RecordNumber placeOfSection(std::string_view name) const;
    void assemble();
    void copy(RecordNumber first, RecordNumber last);
    void write(std::string_view bytes);
    void writeLoose(std::string_view bytes);
    PlanPiece& pieceOfBytes(bool records);
    void closeLastLine();

    const DxfIndex& m_index;
    const EditSet& m_edits;
    std::map<RecordNumber, std::string> m_replaced;  ///< by record of the file; empty: left out
    std::map<RecordNumber, std::map<std::size_t, std::string>>
        m_before;  ///< by record, then by rank
    SavePlan m_plan;
};

void Planner::note(SavedEdit::Kind kind, RecordNumber number) {
    m_plan.edits.push_back(
        {kind, number, m_edits.typeOf(number), m_edits.records[number].handle, {}});
}

std::string Planner::render(RecordNumber number) const {
    if (number > m_edits.lastFileRecord) return m_index.form.bytes(m_edits.made.at(number));
    const auto change = m_edits.changed.find(number);
    return patched(m_index.bytesOf(number),
                   change == m_edits.changed.end() ? RecordChange() : change->second, m_index.form);
}

std::string Planner::renderAll(const std::vector<RecordNumber>& numbers) {
    std::string bytes;
    for (const RecordNumber number : numbers) {
        const RecordEntry& entry = m_edits.records[number];
        if (entry.has(kErased | kGone)) continue;
        note(entry.has(kMade) ? SavedEdit::Kind::Made : SavedEdit::Kind::Changed, number);
        bytes += render(number);
    }
    return bytes;
}

void Planner::collectRecords() {
    for (RecordNumber number = 1; number <= m_edits.lastFileRecord; ++number) {
        const RecordEntry& entry = m_edits.records[number];
        if (entry.has(kErased | kGone | kMovedOut)) {
            m_replaced[number];
            if (!entry.has(kMovedOut)) note(SavedEdit::Kind::Erased, number);
        } else if (m_edits.changed.contains(number)) {
            m_replaced[number] = render(number);
            note(SavedEdit::Kind::Changed, number);
        }
    }
}

void Planner::raiseCount(const Container& table, std::size_t made) {
    if (table.head == 0 || made == 0) return;
    const TagList head(
        m_replaced.contains(table.head) ? m_replaced[table.head] : m_index.bytesOf(table.head),
        m_index.form);
    std::int64_t members = 0;
    for (RecordNumber at = table.first; at <= table.last; ++at)
        members += m_edits.records[at].has(kEdge) ? 0 : 1;
    if (head.groups().integerOf(kFlagsCode, -1) != members) return;  // never exact: left alone
    RecordChange count;
    count.groups[kFlagsCode] = members + static_cast<std::int64_t>(made);
    m_replaced[table.head] = patched(head.bytes(), count, m_index.form);
    m_plan.edits.push_back({SavedEdit::Kind::Changed, 0, "TABLE", table.owner, table.name});
}

void Planner::addTable(ContainerNumber number, std::map<std::size_t, std::string>& missing) {
    const Container& table = m_edits.containers[number];
    std::string bytes = m_index.form.bytes(m_edits.tableHeads.at(number));
    m_plan.edits.push_back({SavedEdit::Kind::Made, 0, "TABLE", table.owner, table.name});
    bytes += renderAll(table.added) + m_index.form.bytes(0, "ENDTAB");
    missing[rankOf(kTableOrder, table.name)] += bytes;
}

void Planner::collectTables() {
    std::map<std::size_t, std::string> missing;
    for (ContainerNumber number = 1; number < m_edits.containers.size(); ++number) {
        const Container& table = m_edits.containers[number];
        if (table.kind != ContainerKind::Table || table.added.empty()) continue;
        if (table.end == 0) {
            addTable(number, missing);
            continue;
        }
        raiseCount(table, table.added.size());
        m_before[table.end][0] += renderAll(table.added);
    }
    const Section* tables = m_index.section("TABLES");
    std::string all;
    for (const auto& [rank, bytes] : missing) {
        all += bytes;
        if (tables == nullptr) continue;
        RecordNumber place = tables->end;
        for (const Container& table : m_edits.containers)
            if (table.kind == ContainerKind::Table && table.head != 0 &&
                rankOf(kTableOrder, table.name) > rank &&
                rankOf(kTableOrder, table.name) < kTableOrder.size())
                place = std::min(place, table.head);
        m_before[place][rank + 1] += bytes;
    }
    if (tables == nullptr && !all.empty()) insertSection("TABLES", all);
}

void Planner::collectBlocks() {
    std::string fresh;
    for (const Container& block : m_edits.containers) {
        if (block.kind != ContainerKind::Block || block.head == 0) continue;
        if (block.head > m_edits.lastFileRecord) {
            note(SavedEdit::Kind::Made, block.head);
            fresh += render(block.head) + renderAll(block.added) + render(block.end);
        } else if (!block.added.empty()) {
            m_before[block.end][0] += renderAll(block.added);
        }
    }
    if (fresh.empty()) return;
    if (const Section* blocks = m_index.section("BLOCKS"))
        m_before[blocks->end][0] += fresh;
    else
        insertSection("BLOCKS", fresh);
}

void Planner::collectEntities() {
    std::vector<RecordNumber> added = m_edits.containers.at(kModelSpace).added;
    const auto& paper = m_edits.containers.at(kPaperSpace).added;
    added.insert(added.end(), paper.begin(), paper.end());
    const std::string bytes = renderAll(added);
    if (bytes.empty()) return;
    if (const RecordNumber end = m_edits.containers.at(kModelSpace).end)
        m_before[end][0] += bytes;
    else
        insertSection("ENTITIES", bytes);
}

void Planner::collectHeader() {
    if (m_edits.seed == 0 || (m_replaced.empty() && m_before.empty())) return;
    const Section* header = m_index.section("HEADER");
    const TagList record(header == nullptr ? std::string() : m_index.bytesOf(header->head),
                         m_index.form);
    std::string bytes = withSeed(record, m_index.form, m_edits.release, m_edits.seed);
    if (bytes == record.bytes()) return;
    if (header != nullptr)
        m_replaced[header->head] = std::move(bytes);
    else
        insertSection("HEADER", bytes);
    const auto kind = header != nullptr ? SavedEdit::Kind::Changed : SavedEdit::Kind::Made;
    m_plan.edits.insert(m_plan.edits.begin(), {kind, 0, "HEADER", 0, "$HANDSEED"});
}

RecordNumber Planner::placeOfSection(std::string_view name) const {
    const std::size_t rank = rankOf(kSectionOrder, name);
    for (const Section& section : m_index.sections) {
        const std::size_t other = rankOf(kSectionOrder, section.name);
        if (other > rank && other < kSectionOrder.size()) return section.head;
    }
    const RecordNumber last = m_edits.lastFileRecord;
    return m_edits.typeOf(last) == "EOF" ? last : last + 1;
}

void Planner::insertSection(std::string_view name, const std::string& content) {
    const DxfForm& form = m_index.form;
    m_before[placeOfSection(name)][rankOf(kSectionOrder, name)] +=
        form.bytes(0, "SECTION") + form.bytes(2, name) + content + form.bytes(0, "ENDSEC");
}

void Planner::copy(RecordNumber first, RecordNumber last) {
    if (first > last) return;
    PlanPiece piece;
    piece.copy = true;
    piece.from = m_index.places[first];
    piece.size = m_index.endOf(last) - piece.from;
    m_plan.size += piece.size;
    m_plan.pieces.push_back(std::move(piece));
}

/// A piece of bytes that are records, or of those that are not.
PlanPiece& Planner::pieceOfBytes(bool records) {
    if (m_plan.pieces.empty() || m_plan.pieces.back().copy ||
        (m_plan.pieces.back().records != 0) != records)
        m_plan.pieces.emplace_back();
    return m_plan.pieces.back();
}

/// Writes records.
void Planner::write(std::string_view bytes) {
    if (bytes.empty()) return;
    PlanPiece& piece = pieceOfBytes(true);
    m_plan.size += bytes.size();
    Tag tag;
    for (std::size_t at = 0; m_index.form.next(bytes, at, tag);)
        if (tag.code == kTypeCode) ++piece.records;
    piece.bytes += bytes;
}

/// Writes what belongs to no record: a byte order mark and comments before the first one, the end
/// of a last line, blanks behind it.
void Planner::writeLoose(std::string_view bytes) {
    if (bytes.empty()) return;
    pieceOfBytes(false).bytes += bytes;
    m_plan.size += bytes.size();
}

void Planner::closeLastLine() {
    // A record that is written anew is closed.
    if (!m_index.endsWithoutLineEnd || m_replaced.contains(m_edits.lastFileRecord)) return;
    writeLoose(m_index.form.missingLineEnd(m_index.source->read(m_index.end - 1, 1)));
}

void Planner::assemble() {
    const RecordNumber last = m_edits.lastFileRecord;
    const Source& source = *m_index.source;
    writeLoose(source.read(0, m_index.places[1]));
    std::set<RecordNumber> stops;
    for (const auto& [number, bytes] : m_replaced) stops.insert(number);
    for (const auto& [number, bytes] : m_before) stops.insert(number);
    RecordNumber next = 1;
    for (const RecordNumber stop : stops) {
        copy(next, stop - 1);
        next = stop;
        if (const auto before = m_before.find(stop); before != m_before.end()) {
            if (stop > last) closeLastLine();
            for (const auto& [rank, bytes] : before->second) write(bytes);
        }
        if (const auto replaced = m_replaced.find(stop); replaced != m_replaced.end()) {
            write(replaced->second);
            next = stop + 1;
        }
    }
    copy(next, last);
    const std::uint64_t end = m_index.end;
    writeLoose(source.read(end, source.size() - end));
}

}  // namespace

SavePlan planSave(const DxfIndex& index, const EditSet& edits) {
    return Planner(index, edits).run();
}

}  // namespace mor::host
