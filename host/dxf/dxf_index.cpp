#include "host/dxf/dxf_index.h"

#include "host/dxf/code_line.h"
#include "host/text/ascii.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kReadSize = 1 << 20;
constexpr std::size_t kLongestLine = 64u << 20;

/// What is noted of the record being read.
struct Scratch {
    std::uint64_t handle = 0;
    std::uint64_t owner = 0;
    std::string name;  // first group 2
    bool wantsName = false;
    bool named = false;
    bool handleDone = false;
    bool marker = false;      // a group 100 was seen
    bool inGroup = false;     // between 102 { and 102 }
    bool extended = false;    // a group 1001 was seen
    bool attributed = false;  // one of them is ours
    bool paper = false;       // group 67 is 1
};

class Indexer {
public:
    Indexer(std::shared_ptr<Source> source, std::string file) : m_file(std::move(file)) {
        m_index.source = std::move(source);
        m_index.places.resize(1);
        m_skeleton.records.resize(1);
        m_skeleton.containers.resize(3);
        m_skeleton.containers[kModelSpace].kind = ContainerKind::Space;
        m_skeleton.containers[kPaperSpace].kind = ContainerKind::Space;
        m_skeleton.containers[kPaperSpace].paper = true;
        m_types = {number("SECTION"), number("ENDSEC"), number("TABLE"),   number("ENDTAB"),
                   number("BLOCK"),   number("ENDBLK"), number("EOF"),     number("ATTRIB"),
                   number("VERTEX"),  number("SEQEND"), number("DIMSTYLE")};
    }

    std::optional<Error> run();
    [[nodiscard]] Indexed take() { return {std::move(m_index), std::move(m_skeleton)}; }

private:
    enum Known {
        kSection,
        kEndsec,
        kTable,
        kEndtab,
        kBlock,
        kEndblk,
        kEof,
        kAttrib,
        kVertex,
        kSeqend,
        kDimstyle
    };
    enum class InSection { Outside, Header, Tables, Blocks, Entities, Other };

    std::uint16_t number(std::string_view name) { return m_skeleton.types.number(name); }
    [[nodiscard]] bool is(std::uint16_t type, Known known) const { return type == m_types[known]; }
    [[nodiscard]] Error damage(std::uint64_t line, std::string text) const {
        return {ErrorKind::Damaged, m_file, line, std::move(text)};
    }
    /// Nothing of the file is shown: a reference may lead to any file of the machine.
    [[nodiscard]] Error foreign() const {
        return {ErrorKind::Unreadable, m_file, m_line,
                "no DXF text: a drawing begins with group 0 SECTION"};
    }
    std::optional<Error> checkStart(std::string_view bytes) const;
    /// Cuts the bytes of the source from `base` on into pairs and moves `at` behind the last one.
    /// `last`: nothing follows.
    std::optional<Error> scan(std::string_view bytes, std::uint64_t base, bool last,
                              const char*& at);
    std::optional<Error> oddPair(std::string_view rest, std::uint64_t offset, bool last,
                                 const char*& at);
    std::optional<Error> pair(int code, std::string_view value, std::uint64_t offset);
    void group(int code, std::string_view value);
    void beginRecord(std::string_view type, std::uint64_t offset);
    std::optional<Error> endRecord();
    std::optional<Error> endSection(RecordEntry& entry);
    void beginSection(RecordNumber number);
    void beginTable(RecordNumber number);
    void endTable(RecordNumber number);
    void beginBlock(RecordNumber number);
    void endBlock(RecordNumber number);
    void member(RecordNumber number);
    void noteForm(std::uint16_t type);
    ContainerNumber addContainer(ContainerKind kind, std::string name, RecordNumber head);
    std::optional<Error> finish();
    void expectRecords(std::uint64_t size, std::uint64_t seen);

    DxfIndex m_index;
    Skeleton m_skeleton;
    std::string m_file;
    std::array<std::uint16_t, 11> m_types{};
    Scratch m_scratch;
    InSection m_in = InSection::Outside;
    ContainerNumber m_container = kNoContainer;  // open table or block
    ContainerNumber m_sectionContainer = kNoContainer;
    std::uint64_t m_paperOwner = 0;  // handle of the active layout's BLOCK_RECORD
    std::uint64_t m_line = 1;        // of the code line being read
    std::uint64_t m_recordLine = 0;
    bool m_ended = false;
};

std::optional<Error> Indexer::checkStart(std::string_view bytes) const {
    const auto refuse = [&](std::string text) {
        return Error{ErrorKind::Unreadable, m_file, 1, std::move(text)};
    };
    if (bytes.starts_with("AutoCAD Binary DXF"))
        return refuse("binary DXF is not read; save the drawing as DXF text");
    if (bytes.size() >= 6 && bytes.starts_with("AC10") && bytes[4] >= '0' && bytes[4] <= '9')
        return refuse("this is a DWG file (" + std::string(bytes.substr(0, 6)) +
                      "); save the drawing as DXF text");
    if (bytes.empty()) return refuse("the file is empty, not a drawing");
    if (bytes.find('\0') != std::string_view::npos) return refuse("binary data, not DXF text");
    const std::size_t feed = bytes.find('\n');
    if (bytes.find('\r') < feed && (feed == std::string_view::npos || feed > bytes.find('\r') + 1))
        return refuse("line ends are single carriage returns; LF or CR LF is read");
    return std::nullopt;
}

ContainerNumber Indexer::addContainer(ContainerKind kind, std::string name, RecordNumber head) {
    Container container;
    container.kind = kind;
    container.name = std::move(name);
    container.head = head;
    container.first = head + 1;
    container.last = head;
    m_skeleton.containers.push_back(std::move(container));
    return static_cast<ContainerNumber>(m_skeleton.containers.size() - 1);
}

void Indexer::group(int code, std::string_view value) {
    Scratch& record = m_scratch;
    switch (code) {
        case 2:
            if (record.wantsName && !record.named) {
                record.name = value;
                record.named = true;
            }
            break;
        case 5:
            if (record.handleDone || record.marker) break;
            record.handleDone = true;
            record.handle = parseHandle(trimmed(value));
            break;
        case 105:
            record.handle = parseHandle(trimmed(value));
            break;
        case 67:
            if (!record.extended) record.paper = trimmed(value) == "1";
            break;
        case 100:
            record.marker = true;
            break;
        case 102:
            record.inGroup = value.starts_with("{");
            break;
        case 330:
            if (!record.marker && !record.inGroup && record.owner == 0)
                record.owner = parseHandle(trimmed(value));
            break;
        case 1001:
            record.extended = true;
            if (equalsNoCaseAscii(trimmed(value), kAttributeApplication)) record.attributed = true;
            break;
        default:
            break;
    }
}

void Indexer::beginRecord(std::string_view type, std::uint64_t offset) {
    RecordEntry entry;
    entry.type = number(type);
    m_skeleton.records.push_back(entry);
    m_index.places.push_back(offset);
    m_scratch = Scratch{};
    m_scratch.wantsName = is(entry.type, kSection) || is(entry.type, kTable) ||
                          is(entry.type, kBlock) ||
                          (m_in == InSection::Tables && type == "BLOCK_RECORD");
    // A section's 5 is a header variable; in a DIMSTYLE it is a block name.
    m_scratch.handleDone = is(entry.type, kSection) || is(entry.type, kDimstyle);
    m_recordLine = m_line;
    if (is(entry.type, kEof)) m_ended = true;
}

void Indexer::beginSection(RecordNumber number) {
    const std::string name(trimmed(m_scratch.name));
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

std::optional<Error> Indexer::endSection(RecordEntry& entry) {
    entry.flags |= kEdge;
    const RecordNumber number = m_index.lastRecord();
    if (m_in == InSection::Outside) return damage(m_recordLine, "ENDSEC without a section");
    if (m_container != kNoContainer)
        return damage(m_recordLine, "the section " + m_index.sections.back().name +
                                        " ends inside a " +
                                        (m_in == InSection::Tables ? "table" : "block"));
    m_index.sections.back().end = number;
    if (m_in == InSection::Entities)
        for (const ContainerNumber space : {kModelSpace, kPaperSpace})
            m_skeleton.containers[space].end = number;
    if (m_sectionContainer != kNoContainer) m_skeleton.containers[m_sectionContainer].end = number;
    m_in = InSection::Outside;
    m_sectionContainer = kNoContainer;
    return std::nullopt;
}

void Indexer::beginTable(RecordNumber number) {
    m_container = addContainer(ContainerKind::Table, std::string(trimmed(m_scratch.name)), number);
    m_skeleton.containers[m_container].owner = m_scratch.handle;
}

void Indexer::endTable(RecordNumber number) {
    if (m_container == kNoContainer) return;
    m_skeleton.containers[m_container].end = number;
    m_container = kNoContainer;
}

void Indexer::beginBlock(RecordNumber number) {
    m_container = addContainer(ContainerKind::Block, m_scratch.name, number);
    Container& block = m_skeleton.containers[m_container];
    block.owner = m_scratch.owner;
    const std::string_view name = block.name;
    const bool model =
        equalsNoCaseAscii(name, "*Model_Space") || equalsNoCaseAscii(name, "$MODEL_SPACE");
    block.paper =
        startsNoCaseAscii(name, "*Paper_Space") || equalsNoCaseAscii(name, "$PAPER_SPACE");
    block.layout = model || block.paper;
    m_skeleton.records[number].container = m_container;
}

void Indexer::endBlock(RecordNumber number) {
    if (m_container == kNoContainer) return;
    m_skeleton.containers[m_container].end = number;
    m_skeleton.records[number].container = m_container;
    m_container = kNoContainer;
}

void Indexer::member(RecordNumber number) {
    RecordEntry& entry = m_skeleton.records[number];
    if (is(entry.type, kAttrib) || is(entry.type, kVertex) || is(entry.type, kSeqend))
        entry.flags |= kSubEntity;
    if (m_in == InSection::Entities) {
        const bool paper =
            m_scratch.paper || (m_scratch.owner != 0 && m_scratch.owner == m_paperOwner);
        entry.container = paper ? kPaperSpace : kModelSpace;
        // Sub-entities stay with their owner, whatever their own groups say.
        if (entry.has(kSubEntity) && !m_skeleton.records[number - 1].has(kEdge))
            entry.container = m_skeleton.records[number - 1].container;
    } else if (m_in == InSection::Tables && m_container == kNoContainer) {
        // A table whose head is missing: its records tell which one it is.
        m_container = addContainer(ContainerKind::Table, m_skeleton.types.name(entry.type), 0);
        m_skeleton.containers[m_container].first = number;
        m_skeleton.containers[m_container].owner = m_scratch.owner;
        entry.container = m_container;
    } else if (m_in == InSection::Tables || m_in == InSection::Blocks) {
        entry.container = m_container;
    } else {
        entry.container = m_sectionContainer;
    }
    if (entry.container == kNoContainer) return;
    m_skeleton.containers[entry.container].last = number;
    if (m_in == InSection::Entities)  // both spaces lie in one range
        m_skeleton.containers[kModelSpace].last = m_skeleton.containers[kPaperSpace].last = number;
    if (m_in == InSection::Tables && m_scratch.wantsName &&
        equalsNoCaseAscii(m_scratch.name, "*Paper_Space"))
        m_paperOwner = m_scratch.handle;
}

void Indexer::noteForm(std::uint16_t type) {
    if (m_in == InSection::Other || m_in == InSection::Outside) return;
    if (type >= m_skeleton.forms.size()) m_skeleton.forms.resize(type + std::size_t{1});
    m_skeleton.forms[type].note(m_scratch.marker);
}

std::optional<Error> Indexer::endRecord() {
    const RecordNumber number = m_index.lastRecord();
    if (number == 0) return std::nullopt;
    RecordEntry& entry = m_skeleton.records[number];
    entry.handle = m_scratch.handle;
    if (m_scratch.attributed) entry.flags |= kAttributed;
    m_skeleton.highestHandle = std::max(m_skeleton.highestHandle, entry.handle);
    noteForm(entry.type);
    if (is(entry.type, kSection)) {
        entry.flags |= kEdge;
        if (m_in != InSection::Outside)
            return damage(m_recordLine, "a section begins inside the section " +
                                            m_index.sections.back().name + ", which has no ENDSEC");
        beginSection(number);
    } else if (is(entry.type, kEndsec)) {
        return endSection(entry);
    } else if (is(entry.type, kEof)) {
        entry.flags |= kEdge;
    } else if (is(entry.type, kTable) && m_in == InSection::Tables) {
        entry.flags |= kEdge;
        if (m_container != kNoContainer)
            return damage(m_recordLine, "a table begins inside another one, which has no ENDTAB");
        beginTable(number);
    } else if (is(entry.type, kEndtab) && m_in == InSection::Tables) {
        entry.flags |= kEdge;
        endTable(number);
    } else if (is(entry.type, kBlock) && m_in == InSection::Blocks) {
        entry.flags |= kEdge;
        if (m_container != kNoContainer)
            return damage(m_recordLine, "a block begins inside another one, which has no ENDBLK");
        beginBlock(number);
    } else if (is(entry.type, kEndblk) && m_in == InSection::Blocks) {
        entry.flags |= kEdge;
        endBlock(number);
    } else {
        if (m_scratch.owner != 0 && m_in != InSection::Other) m_skeleton.sawOwners = true;
        if (m_in == InSection::Tables) m_skeleton.tableForm.note(m_scratch.marker);
        if (m_in == InSection::Blocks || m_in == InSection::Entities)
            m_skeleton.entityForm.note(m_scratch.marker);
        member(number);
    }
    return std::nullopt;
}

std::optional<Error> Indexer::pair(int code, std::string_view value, std::uint64_t offset) {
    if (code != 0) {
        if (m_index.places.size() == 1 && code != 999) return foreign();
        group(code, value);
        return std::nullopt;
    }
    if (auto error = endRecord()) return error;
    const std::string_view type = trimmed(value);
    if (m_index.places.size() == 1 && type != "SECTION" && type != "EOF") return foreign();
    beginRecord(type, offset);
    return std::nullopt;
}

std::optional<Error> Indexer::finish() {
    if (m_ended) m_index.end = m_index.source->size();  // bytes behind EOF are its own
    if (auto error = endRecord()) return error;
    if (m_index.places.size() == 1)
        return Error{ErrorKind::Unreadable, m_file, 1, "no DXF text: no SECTION in it"};
    m_skeleton.sawEof = m_ended;
    if (m_in != InSection::Outside)
        return damage(m_line, "the file ends inside the section " + m_index.sections.back().name);
    return std::nullopt;
}

std::optional<Error> Indexer::scan(std::string_view bytes, std::uint64_t base, bool last,
                                   const char*& at) {
    const char* const end = bytes.data() + bytes.size();
    while (at != end && !m_ended) {
        unsigned code = 0;
        const char* const codeEnd = plainCode(at, end, code);
        const char* const value = codeEnd == nullptr ? end : codeEnd + 1;
        const void* const feed = std::memchr(value, '\n', static_cast<std::size_t>(end - value));
        const std::uint64_t offset = base + static_cast<std::uint64_t>(at - bytes.data());
        if (feed == nullptr) {
            const char* const before = at;
            const std::string_view rest(at, static_cast<std::size_t>(end - at));
            if (auto error = oddPair(rest, offset, last, at)) return error;
            if (at == before) return std::nullopt;
            continue;
        }
        const auto* const valueEnd = static_cast<const char*>(feed);
        if (isNoted(code) || m_index.places.size() == 1) {
            std::string_view text(value, static_cast<std::size_t>(valueEnd - value));
            if (text.ends_with('\r')) text.remove_suffix(1);
            if (auto error = pair(static_cast<int>(code), text, offset)) return error;
        }
        m_line += 2;
        at = valueEnd + 1;
        m_index.endsWithoutLineEnd = false;
    }
    return std::nullopt;
}

/// A pair that is not of the usual form: another way to write the code, the end of the bytes, or
/// damage. Leaves `at` where it is when more bytes are wanted or nothing follows.
std::optional<Error> Indexer::oddPair(std::string_view rest, std::uint64_t offset, bool last,
                                      const char*& at) {
    const std::size_t codeEnd = rest.find('\n');
    const bool valueMissing = codeEnd == std::string_view::npos || codeEnd + 1 == rest.size();
    if (valueMissing && !last) return std::nullopt;
    const std::size_t valueEnd = valueMissing ? rest.size() : rest.find('\n', codeEnd + 1);
    if (valueEnd == std::string_view::npos && !last) return std::nullopt;
    std::string_view codeText = rest.substr(0, codeEnd);
    if (codeText.ends_with('\r')) codeText.remove_suffix(1);
    const auto code = parseCode(codeText.data(), codeText.data() + codeText.size());
    if (!code) {
        if (trimmed(codeText).empty() && valueMissing) return std::nullopt;  // at the very end
        if (m_index.places.size() == 1) return foreign();
        return damage(m_line, "a group code was expected, found \"" +
                                  std::string(codeText.substr(0, 40)) + "\"");
    }
    if (valueMissing) return damage(m_line, "the file ends after a group code, without its value");
    std::string_view text = rest.substr(codeEnd + 1, valueEnd - codeEnd - 1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    if (auto error = pair(*code, text, offset)) return error;
    m_line += 2;
    at += valueEnd == std::string_view::npos ? rest.size() : valueEnd + 1;
    m_index.endsWithoutLineEnd = valueEnd == std::string_view::npos;
    return std::nullopt;
}

std::optional<Error> Indexer::run() {
    const std::uint64_t size = m_index.source->size();
    std::string buffer;
    std::uint64_t base = 0;  // offset of buffer[0]
    std::uint64_t next = 0;  // where to read on
    bool first = true;
    while (!m_ended) {
        const std::size_t old = buffer.size();
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(kReadSize, size - next));
        buffer.resize(old + want);
        buffer.resize(old + m_index.source->read(next, buffer.data() + old, want));
        const std::size_t got = buffer.size() - old;
        next += got;
        const bool last = got == 0 || next >= size;
        const char* at = buffer.data();
        if (first) {
            if (auto error = checkStart(buffer)) return error;
            if (buffer.starts_with("\xEF\xBB\xBF")) at += 3;
            const std::size_t feed = buffer.find('\n');
            m_index.lines.crlf = feed != std::string::npos && feed > 0 && buffer[feed - 1] == '\r';
        }
        if (auto error = scan(buffer, base, last, at)) return error;
        m_index.end = base + static_cast<std::uint64_t>(at - buffer.data());
        if (last) break;
        if (first) expectRecords(size, next);
        first = false;
        const auto used = static_cast<std::size_t>(at - buffer.data());
        if (used == 0 && buffer.size() > kLongestLine)
            return damage(m_line, "a line of more than 64 MiB");
        buffer.erase(0, used);
        base += used;
    }
    return finish();
}

/// Makes room for as many records as the file will have when it goes on as it began.
void Indexer::expectRecords(std::uint64_t size, std::uint64_t seen) {
    const std::uint64_t expected = m_index.places.size() * (size / seen + 1);
    m_index.places.reserve(static_cast<std::size_t>(expected + expected / 8));
    m_skeleton.records.reserve(m_index.places.capacity());
}

}  // namespace

const Section* DxfIndex::section(std::string_view name) const {
    for (const Section& section : sections)
        if (section.name == name) return &section;
    return nullptr;
}

Result<Indexed> indexDxf(std::shared_ptr<Source> source, const std::string& name) {
    Indexer indexer(std::move(source), name);
    if (auto error = indexer.run()) return *error;
    return indexer.take();
}

}  // namespace mor::host
