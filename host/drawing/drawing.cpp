#include "host/drawing/drawing.h"

#include "host/documents/reference.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace mor::host {

namespace {

constexpr std::uint64_t kWindowBytes = 256 * 1024;
/// A reader that skips no more records than this goes on with a walk.
constexpr RecordNumber kWalkStep = 8;

struct HeaderFacts {
    std::string version;
    std::string codePage;
    std::uint64_t seed = 0;
    std::uint64_t versionLine = 0;
    std::optional<std::array<double, 3>> base;
};

/// The number of the line that begins at `offset` of the source.
std::uint64_t lineAt(const DxfIndex& index, std::uint64_t offset) {
    const std::string before = index.source->read(0, offset);
    return 1 + static_cast<std::uint64_t>(std::ranges::count(before, '\n'));
}

HeaderFacts readHeader(const DxfIndex& index) {
    HeaderFacts facts;
    const Section* header = index.section("HEADER");
    if (header == nullptr) return facts;
    const TagList record(index.bytesOf(header->head));
    std::string_view variable;
    for (const Tag& tag : record.tags()) {
        if (tag.code == 9)
            variable = record.bare(tag);
        else if (tag.code == 1 && variable == "$ACADVER") {
            facts.version = record.bare(tag);
            facts.versionLine = lineAt(index, index.records[header->head].place + tag.valueBegin);
        } else if (tag.code == 3 && variable == "$DWGCODEPAGE")
            facts.codePage = record.bare(tag);
        else if (variable == "$INSBASE" && (tag.code == 10 || tag.code == 20 || tag.code == 30)) {
            if (!facts.base) facts.base.emplace();
            (*facts.base)[static_cast<std::size_t>(tag.code / 10 - 1)] =
                parseReal(record.value(tag)).value_or(0.0);
        } else if (tag.code == 5 && variable == "$HANDSEED")
            facts.seed = parseHandle(record.bare(tag));
    }
    return facts;
}

bool startsPadded(const DxfIndex& index) {
    const std::string start = index.source->read(index.records[1].place, 1);
    return start == " ";
}

}  // namespace

std::int64_t nextDrawingNumber() {
    static std::int64_t number = 0;
    return ++number;
}

Result<Release> Drawing::releaseOf(const std::string& version, const std::string& file,
                                   std::uint64_t line) {
    if (version.empty()) return Release::R12;
    const auto refuse = [&](const std::string& text) {
        return Error{ErrorKind::Unreadable, file, line, "$ACADVER is " + version + text};
    };
    if (!version.starts_with("AC10") || version.size() != 6)
        return refuse(", not a release that is read; R12 (AC1009) to R2018 (AC1032) are");
    const auto number = parseInteger(std::string_view(version).substr(2)).value_or(0);
    if (number < 1009) return refuse(", older than R12 (AC1009); save the drawing as R12 or later");
    if (number > 1032)
        return refuse(", newer than R2018 (AC1032); save the drawing as R2018 or earlier");
    static constexpr std::array<std::pair<int, Release>, 9> first = {{{1032, Release::R2018},
                                                                      {1027, Release::R2013},
                                                                      {1024, Release::R2010},
                                                                      {1021, Release::R2007},
                                                                      {1018, Release::R2004},
                                                                      {1015, Release::R2000},
                                                                      {1014, Release::R14},
                                                                      {1012, Release::R13},
                                                                      {1009, Release::R12}}};
    for (const auto& [since, release] : first)
        if (number >= since) return release;
    return Release::R12;
}

Result<std::unique_ptr<Drawing>> Drawing::load(std::shared_ptr<Source> source,
                                               const std::string& file) {
    try {
        auto drawing = loadSource(source, file);
        if (!source->failed()) return drawing;
    } catch (const ReadFailure&) {  // answered like the other one
    }
    return takeReadFailure().value_or(Error{ErrorKind::Unreadable, file, 0, "reading failed"});
}

Result<std::unique_ptr<Drawing>> Drawing::loadSource(std::shared_ptr<Source> source,
                                                     const std::string& file) {
    auto index = indexDxf(std::move(source), file);
    if (!index) return index.error();
    const HeaderFacts facts = readHeader(*index.value());
    const auto release = releaseOf(facts.version, file, facts.versionLine);
    if (!release) return release.error();
    RecordStyle style;
    style.release = release.value();
    style.markers = style.release >= Release::R13;
    style.owners = style.release >= Release::R2000;
    style.lines = {index.value()->crlf, startsPadded(*index.value())};
    std::unique_ptr<Drawing> drawing(
        new Drawing(std::move(index.value()), style, TextCoding(style.release, facts.codePage)));
    drawing->m_version = facts.version;
    drawing->m_codePage = facts.codePage;
    drawing->m_seed = facts.seed;
    drawing->m_base = facts.base;
    const std::uint64_t highest = drawing->m_index->highestHandle;
    drawing->m_nextHandle = std::max<std::uint64_t>({facts.seed, highest + 1, 1});
    if (highest == std::numeric_limits<std::uint64_t>::max()) drawing->m_nextHandle = 0;
    return drawing;
}

Drawing::Drawing(std::unique_ptr<DxfIndex> index, RecordStyle style, TextCoding text)
    : m_number(nextDrawingNumber()),
      m_index(std::move(index)),
      m_style(style),
      m_text(std::move(text)),
      m_records(std::move(m_index->records)),
      m_containers(m_index->containers) {
    m_lastFileRecord = lastRecord();
}

Drawing::~Drawing() = default;

RecordStyle Drawing::styleFor(std::string_view type, const RecordForm& kind) {
    const RecordForm own = m_index->formOf(typeNumber(type));
    const RecordForm& form = own.seen() ? own : kind;
    RecordStyle style = m_style;
    // Of an old release readers may expect none, so one plain record is reason enough.
    style.markers = style.markers || (form.marked && !form.plain);
    style.owners = style.owners || (style.markers && m_index->sawOwners);
    return style;
}

RecordStyle Drawing::tableStyle(std::string_view type) {
    return styleFor(type, m_index->tableForm);
}

RecordStyle Drawing::entityStyle(std::string_view type) {
    return styleFor(type, m_index->entityForm);
}

EntityName Drawing::nameOf(RecordNumber number) const {
    if (number == 0) return {};
    return {static_cast<std::int64_t>(number), m_number};
}

RecordNumber Drawing::numberOf(EntityName name) const {
    if (name.second != m_number || name.first <= 0) return 0;
    if (name.first > static_cast<std::int64_t>(lastRecord())) return 0;
    const auto number = static_cast<RecordNumber>(name.first);
    return m_records[number].has(kGone) ? 0 : number;
}

const std::string& Drawing::typeOf(RecordNumber number) const {
    return m_index->types.name(m_records[number].type);
}

std::string_view Drawing::originalBytes(RecordNumber number) const {
    const RecordEntry& entry = m_records[number];
    if (entry.has(kMade)) return m_made[static_cast<std::size_t>(entry.place)];
    const std::uint64_t end = endOf(number);
    const std::uint64_t size = end - entry.place;
    const auto inWindow = [&] {
        return entry.place >= m_windowAt && end <= m_windowAt + m_window.size();
    };
    if (!inWindow()) {
        // A walk reads ahead; a single look-up reads its record alone.
        const bool walks =
            number > m_lastRead && number - m_lastRead <= kWalkStep && size < kWindowBytes;
        const std::uint64_t ahead = std::min(kWindowBytes, m_index->end - entry.place);
        m_window = m_index->source->read(entry.place, walks ? ahead : size);
        m_windowAt = entry.place;
    }
    m_lastRead = number;
    return std::string_view(m_window).substr(static_cast<std::size_t>(entry.place - m_windowAt),
                                             static_cast<std::size_t>(size));
}

TagList Drawing::original(RecordNumber number) const {
    return TagList(std::string(originalBytes(number)));
}

TagList Drawing::current(RecordNumber number) {
    TagList record = original(number);
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end()) applyEdit(number, edit->second, record);
    return record;
}

std::string Drawing::render(RecordNumber number) { return current(number).bytes(); }

bool Drawing::changed(RecordNumber number) {
    if (!m_edits.contains(number)) return false;
    const std::string now = render(number);
    return now != originalBytes(number);
}

std::optional<std::string_view> Drawing::valueOf(RecordNumber number, int code) {
    if (!m_edits.contains(number)) return findValue(originalBytes(number), code);
    m_edited = current(number);
    const Tag* tag = m_edited.find(code);
    return tag == nullptr ? std::nullopt : std::optional(m_edited.value(*tag));
}

std::optional<std::wstring> Drawing::textOf(RecordNumber number, int code) {
    const auto value = valueOf(number, code);
    return value ? std::optional(m_text.decode(*value)) : std::nullopt;
}

std::optional<std::int64_t> Drawing::integerOf(RecordNumber number, int code) {
    const auto value = valueOf(number, code);
    return value ? parseInteger(*value) : std::nullopt;
}

// ---- handles ------------------------------------------------------------------------------------

void Drawing::buildHandles() {
    if (m_handlesBuilt) return;
    m_handlesBuilt = true;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number)
        if (m_records[number].handle != 0)
            m_fileHandles.emplace_back(m_records[number].handle, number);
    std::ranges::sort(m_fileHandles);
    for (auto at = m_fileHandles.begin(); at != m_fileHandles.end();) {
        const auto next = std::find_if(at, m_fileHandles.end(),
                                       [&](const auto& known) { return known.first != at->first; });
        if (next - at > 1)
            m_doubledHandles.emplace_back(at->first, static_cast<std::size_t>(next - at));
        at = next;
    }
    const auto tail =
        std::ranges::unique(m_fileHandles, {}, &std::pair<std::uint64_t, RecordNumber>::first);
    m_fileHandles.erase(tail.begin(), tail.end());
}

const std::vector<std::pair<std::uint64_t, std::size_t>>& Drawing::doubledHandles() {
    buildHandles();
    return m_doubledHandles;
}

RecordNumber Drawing::findHandle(std::uint64_t handle) {
    if (handle == 0) return 0;
    if (const auto made = m_madeHandles.find(handle); made != m_madeHandles.end())
        return m_records[made->second].has(kGone) ? 0 : made->second;
    buildHandles();
    const auto found = std::ranges::lower_bound(m_fileHandles, handle, {},
                                                &std::pair<std::uint64_t, RecordNumber>::first);
    if (found == m_fileHandles.end() || found->first != handle) return 0;
    return m_records[found->second].has(kGone) ? 0 : found->second;
}

void Drawing::learnKeptHandles() {
    if (m_keptHandles) return;
    std::vector<std::uint64_t> kept;
    for (RecordNumber number = 1; number <= m_lastFileRecord; ++number) {
        if (!m_records[number].has(kAttributed)) continue;
        const std::string_view bytes = originalBytes(number);
        if (bytes.find("1005") == std::string_view::npos) continue;
        const TagList record{std::string(bytes)};
        for (const ExtendedRange& range : extendedRanges(record, kAttributeApplication))
            for (std::size_t i = range.begin; i < range.end; ++i) {
                const Tag& tag = record.tags()[i];
                const std::uint64_t handle = tag.code == 1005 ? parseHandle(record.bare(tag)) : 0;
                if (handle != 0 && handle >= m_nextHandle) kept.push_back(handle);
            }
    }
    std::ranges::sort(kept);
    m_keptHandles = std::move(kept);
}

std::uint64_t Drawing::nextHandle() {
    learnKeptHandles();
    while (m_nextHandle != 0 && (std::ranges::binary_search(*m_keptHandles, m_nextHandle) ||
                                 m_unknownHandles.contains(m_nextHandle)))
        ++m_nextHandle;
    return m_nextHandle;
}

std::uint64_t Drawing::takeHandle() {
    const std::uint64_t handle = nextHandle();
    if (handle == 0) return 0;
    m_gaveHandles = true;
    ++m_nextHandle;
    return handle;
}

std::uint64_t Drawing::giveHandle(RecordNumber number) {
    RecordEntry& entry = m_records[number];
    if (entry.handle != 0) return entry.handle;
    const std::uint64_t handle = takeHandle();
    if (handle == 0) return 0;
    buildHandles();  // of the file alone, before one of its records gets a new one
    entry.handle = handle;
    m_edits[number].handle = handle;
    m_madeHandles[handle] = number;
    return handle;
}

std::uint64_t Drawing::renewHandle(RecordNumber number) {
    if (handleOf(number) == 0) return giveHandle(number);
    const std::uint64_t handle = takeHandle();
    if (handle == 0) return 0;
    buildHandles();
    RecordEntry& entry = m_records[number];
    const std::uint64_t old = entry.handle;
    entry.handle = handle;
    m_edits[number].groups[5] = handleToText(handle);
    m_madeHandles[handle] = number;
    // The old handle now means the next record that carries it.
    std::erase_if(m_fileHandles, [&](const auto& known) { return known.first == old; });
    for (RecordNumber other = 1; other <= m_lastFileRecord; ++other)
        if (m_records[other].handle == old) {
            m_fileHandles.insert(std::ranges::lower_bound(m_fileHandles, std::pair{old, other}),
                                 {old, other});
            break;
        }
    return handle;
}

EntityName Drawing::nameForHandle(std::uint64_t handle) {
    if (handle == 0) return {};
    if (const RecordNumber number = findHandle(handle)) return nameOf(number);
    const auto [known, added] = m_unknownHandles.try_emplace(handle, 0);
    if (added) known->second = -static_cast<std::int64_t>(m_unknownHandles.size());
    return {known->second, m_number};
}

std::uint64_t Drawing::handleForName(EntityName name) {
    if (const RecordNumber number = numberOf(name)) return giveHandle(number);
    for (const auto& [handle, first] : m_unknownHandles)
        if (name == EntityName{first, m_number}) return handle;
    return 0;
}

// ---- containers ---------------------------------------------------------------------------------

RecordNumber Drawing::nextMember(ContainerNumber number, RecordNumber after) const {
    const Container& container = m_containers[number];
    const bool behindFile = after != 0 && m_records[after].has(kMade | kMovedOut);
    if (!behindFile) {
        RecordNumber at = std::max(container.first, after + 1);
        for (; at <= container.last; ++at)
            if (const RecordEntry& entry = m_records[at];
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
        if (!m_records[container.added[at]].has(kEdge | kErased | kGone)) {
            m_walkAt = at;
            return container.added[at];
        }
    return 0;
}

ContainerNumber Drawing::findTable(std::string_view table) const {
    for (ContainerNumber number = 1; number < m_containers.size(); ++number)
        if (m_containers[number].kind == ContainerKind::Table &&
            std::ranges::equal(
                m_containers[number].name, table, {}, [](char c) { return toUpper(c); },
                [](char c) { return toUpper(c); }))
            return number;
    return kNoContainer;
}

const std::unordered_map<std::wstring, RecordNumber>& Drawing::symbols(ContainerNumber table) {
    const auto [known, added] = m_symbols.try_emplace(table);
    if (added)
        for (RecordNumber at = nextMember(table, 0); at != 0; at = nextMember(table, at))
            learnName(table, at);
    return known->second;
}

void Drawing::learnName(ContainerNumber table, RecordNumber number) {
    const auto known = m_symbols.find(table);
    if (known == m_symbols.end()) return;
    if (const auto name = textOf(number, 2)) known->second.try_emplace(upperCase(*name), number);
}

RecordNumber Drawing::findSymbol(std::string_view table, std::wstring_view name) {
    const ContainerNumber number = findTable(table);
    if (number == kNoContainer) return 0;
    const auto& names = symbols(number);
    const auto found = names.find(upperCase(name));
    return found == names.end() ? 0 : found->second;
}

std::wstring Drawing::containerName(ContainerNumber number) const {
    return m_text.decode(m_containers[number].name);
}

ContainerNumber Drawing::findBlock(std::wstring_view name) {
    if (!m_blocks) {
        m_blocks.emplace();
        for (ContainerNumber number = 1; number < m_containers.size(); ++number)
            if (m_containers[number].kind == ContainerKind::Block &&
                !m_containers[number].name.empty())
                m_blocks->try_emplace(upperCase(containerName(number)), number);
    }
    const auto found = m_blocks->find(upperCase(name));
    return found == m_blocks->end() ? kNoContainer : found->second;
}

const std::map<std::wstring, std::size_t>& Drawing::insertCounts() {
    if (m_insertCounts) return *m_insertCounts;
    std::map<std::wstring, std::size_t> counts;
    const std::uint16_t insert = typeNumber("INSERT");
    for (RecordNumber number = 1; number <= lastRecord(); ++number) {
        const RecordEntry& entry = m_records[number];
        if (entry.type != insert || entry.has(kErased | kGone)) continue;
        if (const auto name = textOf(number, 2)) ++counts[upperCase(*name)];
    }
    return m_insertCounts.emplace(std::move(counts));
}

bool Drawing::isSpace(ContainerNumber number) const {
    const Container& container = m_containers[number];
    return container.kind == ContainerKind::Space || container.layout;
}

bool Drawing::isPaper(ContainerNumber number) const { return m_containers[number].paper; }

std::uint64_t Drawing::blockRecordHandle(std::wstring_view block) {
    const RecordNumber number = findSymbol("BLOCK_RECORD", block);
    return number == 0 ? 0 : handleOf(number);
}

RecordNumber Drawing::lastEntity() const {
    for (RecordNumber number = lastRecord(); number != 0; --number) {
        const RecordEntry& entry = m_records[number];
        if (!entry.has(kEdge | kSubEntity | kErased | kGone) && entry.container != kNoContainer &&
            isSpace(entry.container))
            return number;
    }
    return 0;
}

}  // namespace mor::host
