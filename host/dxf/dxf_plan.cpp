#include "host/dxf/dxf_plan.h"

#include "host/dxf/dxf_make.h"

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

/// The value of a group exchanged for another integer, in the width it had.
std::string withInteger(const TagList& record, const Tag& tag, std::int64_t value) {
    std::string digits = std::to_string(value);
    const std::size_t width = tag.valueEnd - tag.valueBegin;
    if (digits.size() < width) digits.insert(0, width - digits.size(), ' ');
    std::string bytes = record.bytes();
    return bytes.replace(tag.valueBegin, tag.valueEnd - tag.valueBegin, digits);
}

class Planner {
public:
    explicit Planner(Drawing& drawing) : m_drawing(drawing), m_lines(drawing.lines()) {}

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
    [[nodiscard]] std::string renderAll(const std::vector<RecordNumber>& numbers);
    void collectRecords();
    void collectTables();
    void addTable(const Container& table, std::map<std::size_t, std::string>& missing);
    void raiseCount(const Container& table, std::size_t made);
    void collectBlocks();
    void collectEntities();
    void collectHeader();
    [[nodiscard]] std::string changedHeader(const TagList& header, const std::string& seed);
    void insertSection(std::string_view name, const std::string& content);
    [[nodiscard]] RecordNumber placeOfSection(std::string_view name) const;
    void assemble();
    void copy(RecordNumber first, RecordNumber last);
    void write(std::string bytes);
    void writeLoose(std::string_view bytes);
    PlanPiece& pieceOfBytes();
    void closeLastLine();

    Drawing& m_drawing;
    const LineStyle& m_lines;
    std::map<RecordNumber, std::string> m_replaced;  ///< by record of the file; empty: left out
    std::map<RecordNumber, std::map<std::size_t, std::string>>
        m_before;  ///< by record, then by rank
    SavePlan m_plan;
};

/// What tells a record apart for people: the path of a directory, the name of a symbol or block.
std::string describe(Drawing& drawing, RecordNumber number) {
    const std::string& type = drawing.typeOf(number);
    if (const Attribute* path = drawing.attributesOf(number)->find(L"$INFO"))
        return toUtf8(stringOf(path->value));
    static const std::set<std::string_view> named = {"LAYER", "APPID",        "BLOCK", "LTYPE",
                                                     "STYLE", "BLOCK_RECORD", "INSERT"};
    if (!named.contains(type)) return {};
    return toUtf8(drawing.textOf(number, 2).value_or(L""));
}

void Planner::note(SavedEdit::Kind kind, RecordNumber number) {
    m_plan.edits.push_back({kind, m_drawing.typeOf(number),
                            handleToText(m_drawing.handleOf(number)), describe(m_drawing, number)});
}

std::string Planner::renderAll(const std::vector<RecordNumber>& numbers) {
    std::string bytes;
    for (const RecordNumber number : numbers) {
        const RecordEntry& entry = m_drawing.entry(number);
        if (entry.has(kErased | kGone)) continue;
        note(entry.has(kMade) ? SavedEdit::Kind::Made : SavedEdit::Kind::Changed, number);
        bytes += m_drawing.render(number);
    }
    return bytes;
}

void Planner::collectRecords() {
    for (RecordNumber number = 1; number <= m_drawing.lastFileRecord(); ++number) {
        const RecordEntry& entry = m_drawing.entry(number);
        if (entry.has(kErased | kGone | kMovedOut)) {
            m_replaced[number];
            if (!entry.has(kMovedOut)) note(SavedEdit::Kind::Erased, number);
        } else if (m_drawing.changed(number)) {
            m_replaced[number] = m_drawing.render(number);
            note(SavedEdit::Kind::Changed, number);
        }
    }
}

void Planner::raiseCount(const Container& table, std::size_t made) {
    if (table.head == 0 || made == 0) return;
    const TagList head = m_drawing.current(table.head);
    const Tag* count = head.find(70);
    std::int64_t members = 0;
    for (RecordNumber at = table.first; at <= table.last; ++at)
        members += m_drawing.entry(at).has(kEdge) ? 0 : 1;
    if (count == nullptr || parseInteger(head.value(*count)) != members)
        return;  // never exact: left alone
    m_replaced[table.head] = withInteger(head, *count, members + static_cast<std::int64_t>(made));
    m_plan.edits.push_back(
        {SavedEdit::Kind::Changed, "TABLE", handleToText(table.owner), table.name});
}

void Planner::addTable(const Container& table, std::map<std::size_t, std::string>& missing) {
    std::string bytes =
        makeTableHead(m_drawing.tableStyle("TABLE"), table.name, table.owner, table.added.size());
    m_plan.edits.push_back({SavedEdit::Kind::Made, "TABLE", handleToText(table.owner), table.name});
    bytes += renderAll(table.added) + line(m_lines, 0, "ENDTAB");
    missing[rankOf(kTableOrder, table.name)] += bytes;
}

void Planner::collectTables() {
    std::map<std::size_t, std::string> missing;
    for (const Container& table : m_drawing.containers()) {
        if (table.kind != ContainerKind::Table || table.added.empty()) continue;
        if (table.end == 0) {
            addTable(table, missing);
            continue;
        }
        raiseCount(table, table.added.size());
        m_before[table.end][0] += renderAll(table.added);
    }
    const Section* tables = m_drawing.index().section("TABLES");
    std::string all;
    for (const auto& [rank, bytes] : missing) {
        all += bytes;
        if (tables == nullptr) continue;
        RecordNumber place = tables->end;
        for (const Container& table : m_drawing.containers())
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
    for (const Container& block : m_drawing.containers()) {
        if (block.kind != ContainerKind::Block || block.head == 0) continue;
        if (m_drawing.isMade(block.head)) {
            note(SavedEdit::Kind::Made, block.head);
            fresh +=
                m_drawing.render(block.head) + renderAll(block.added) + m_drawing.render(block.end);
        } else if (!block.added.empty()) {
            m_before[block.end][0] += renderAll(block.added);
        }
    }
    if (fresh.empty()) return;
    if (const Section* blocks = m_drawing.index().section("BLOCKS"))
        m_before[blocks->end][0] += fresh;
    else
        insertSection("BLOCKS", fresh);
}

void Planner::collectEntities() {
    std::vector<RecordNumber> added = m_drawing.container(kModelSpace).added;
    const auto& paper = m_drawing.container(kPaperSpace).added;
    added.insert(added.end(), paper.begin(), paper.end());
    const std::string bytes = renderAll(added);
    if (bytes.empty()) return;
    if (const RecordNumber end = m_drawing.container(kModelSpace).end)
        m_before[end][0] += bytes;
    else
        insertSection("ENTITIES", bytes);
}

std::string Planner::changedHeader(const TagList& header, const std::string& seed) {
    std::string bytes = header.bytes();
    std::string_view variable;
    std::optional<Tag> seedTag;
    std::optional<Tag> handling;
    for (const Tag& tag : header.tags()) {
        if (tag.code == 9)
            variable = header.bare(tag);
        else if (variable == "$HANDSEED" && tag.code == 5 && !seedTag)
            seedTag = tag;
        else if (variable == "$HANDLING" && tag.code == 70 && !handling)
            handling = tag;
    }
    std::string added;
    const bool old = m_drawing.release() < Release::R2000;
    if (old && !handling) added += line(m_lines, 9, "$HANDLING") + integerLine(m_lines, 70, 1);
    if (!seedTag) added += line(m_lines, 9, "$HANDSEED") + line(m_lines, 5, seed);
    // From the back, so that places stay true.
    bytes += added;
    const auto setSeed = [&] {
        if (seedTag)
            bytes.replace(seedTag->valueBegin, seedTag->valueEnd - seedTag->valueBegin, seed);
    };
    const auto setHandling = [&] {
        if (!old || !handling || parseInteger(header.value(*handling)) != 0) return;
        const std::size_t width = handling->valueEnd - handling->valueBegin;
        bytes.replace(handling->valueBegin, width, std::string(width - 1, ' ') + "1");
    };
    const bool seedLast = seedTag && handling && seedTag->begin > handling->begin;
    if (seedLast) setSeed();
    setHandling();
    if (!seedLast) setSeed();
    return bytes;
}

void Planner::collectHeader() {
    if (!m_drawing.gaveHandles() || (m_replaced.empty() && m_before.empty())) return;
    const std::string seed = handleToText(m_drawing.nextHandle());
    const Section* header = m_drawing.index().section("HEADER");
    if (header != nullptr) {
        const TagList record = m_drawing.original(header->head);
        const std::string bytes = changedHeader(record, seed);
        if (bytes == record.bytes()) return;
        m_replaced[header->head] = bytes;
        m_plan.edits.insert(m_plan.edits.begin(),
                            {SavedEdit::Kind::Changed, "HEADER", "", "$HANDSEED"});
        return;
    }
    insertSection("HEADER", changedHeader(TagList(), seed));
    m_plan.edits.insert(m_plan.edits.begin(), {SavedEdit::Kind::Made, "HEADER", "", "$HANDSEED"});
}

RecordNumber Planner::placeOfSection(std::string_view name) const {
    const std::size_t rank = rankOf(kSectionOrder, name);
    for (const Section& section : m_drawing.index().sections) {
        const std::size_t other = rankOf(kSectionOrder, section.name);
        if (other > rank && other < kSectionOrder.size()) return section.head;
    }
    const RecordNumber last = m_drawing.lastFileRecord();
    return m_drawing.typeOf(last) == "EOF" ? last : last + 1;
}

void Planner::insertSection(std::string_view name, const std::string& content) {
    m_before[placeOfSection(name)][rankOf(kSectionOrder, name)] +=
        line(m_lines, 0, "SECTION") + line(m_lines, 2, name) + content + line(m_lines, 0, "ENDSEC");
}

void Planner::copy(RecordNumber first, RecordNumber last) {
    if (first > last) return;
    PlanPiece piece;
    piece.first = first;
    piece.last = last;
    piece.from = m_drawing.entry(first).place;
    piece.size = m_drawing.endOf(last) - piece.from;
    m_plan.size += piece.size;
    m_plan.pieces.push_back(std::move(piece));
}

PlanPiece& Planner::pieceOfBytes() {
    if (m_plan.pieces.empty() || m_plan.pieces.back().first != 0) m_plan.pieces.emplace_back();
    return m_plan.pieces.back();
}

/// Writes records.
void Planner::write(std::string bytes) {
    if (bytes.empty()) return;
    PlanPiece& piece = pieceOfBytes();
    m_plan.size += bytes.size();
    const TagList records(std::move(bytes));
    for (const Tag& tag : records.tags())
        if (tag.code == 0) piece.starts.push_back(piece.bytes.size() + tag.begin);
    piece.bytes += records.bytes();
}

/// Writes what belongs to no record: a byte order mark and comments before the first one, the end
/// of a last line, blanks behind it.
void Planner::writeLoose(std::string_view bytes) {
    if (bytes.empty()) return;
    pieceOfBytes().bytes += bytes;
    m_plan.size += bytes.size();
}

void Planner::closeLastLine() {
    const DxfIndex& index = m_drawing.index();
    // A record that is written anew is closed.
    if (!index.endsWithoutLineEnd || m_replaced.contains(m_drawing.lastFileRecord())) return;
    writeLoose(lineEndFor(index.source->read(index.end - 1, 1), m_lines));
}

void Planner::assemble() {
    const RecordNumber last = m_drawing.lastFileRecord();
    const Source& source = *m_drawing.index().source;
    writeLoose(source.read(0, m_drawing.entry(1).place));
    std::set<RecordNumber> stops;
    for (const auto& [number, bytes] : m_replaced) stops.insert(number);
    for (const auto& [number, bytes] : m_before) stops.insert(number);
    RecordNumber next = 1;
    for (const RecordNumber stop : stops) {
        copy(next, stop - 1);
        next = stop;
        if (const auto before = m_before.find(stop); before != m_before.end()) {
            if (stop > last) closeLastLine();
            for (auto& [rank, bytes] : before->second) write(std::move(bytes));
        }
        if (const auto replaced = m_replaced.find(stop); replaced != m_replaced.end()) {
            write(std::move(replaced->second));
            next = stop + 1;
        }
    }
    copy(next, last);
    const std::uint64_t end = m_drawing.index().end;
    writeLoose(source.read(end, source.size() - end));
}

/// Compares written bytes and the records in them; `number` is the next record of the written file.
std::string compareBytes(const PlanPiece& piece, std::uint64_t at, const DxfIndex& written,
                         RecordNumber& number) {
    if (written.source->read(at, piece.bytes.size()) != piece.bytes) return "written bytes differ";
    for (const std::size_t start : piece.starts) {
        if (number > written.lastRecord() || written.records[number].place != at + start)
            return "a written record is not where it was put";
        ++number;
    }
    return {};
}

}  // namespace

SavePlan planSave(Drawing& drawing) { return Planner(drawing).run(); }

std::string comparePlan(const SavePlan& plan, const Drawing& drawing, const DxfIndex& written) {
    if (written.source->size() != plan.size) return "the size differs";
    std::uint64_t at = 0;
    RecordNumber number = 1;
    for (const PlanPiece& piece : plan.pieces) {
        if (piece.first == 0) {
            if (std::string text = compareBytes(piece, at, written, number); !text.empty())
                return text;
            at += piece.bytes.size();
            continue;
        }
        for (RecordNumber old = piece.first; old <= piece.last; ++old, ++number) {
            if (number > written.lastRecord()) return "records are missing";
            const RecordEntry& entry = written.records[number];
            if (entry.place != at + (drawing.entry(old).place - piece.from))
                return "a copied record moved";
            if (written.types.name(entry.type) != drawing.typeOf(old) ||
                entry.handle != drawing.handleOf(old))
                return "a copied record changed";
        }
        at += piece.size;
    }
    return number == written.lastRecord() + 1 ? std::string() : "there are records too many";
}

}  // namespace mor::host
