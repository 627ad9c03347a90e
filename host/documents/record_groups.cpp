#include "host/documents/document.h"
#include "host/documents/located.h"
#include "host/host.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <cstring>
#include <deque>
#include <forward_list>

namespace mor::host {

namespace {

/// The high bits of those of eight bytes that are no plain ones. A borrow from a byte below may set
/// others too, behind one that is set rightly.
std::uint64_t oddOf(std::uint64_t bytes) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    const auto below = [](std::uint64_t word, std::uint64_t least) { return word - kOnes * least; };
    const auto equals = [&](std::uint64_t byte) { return below(bytes ^ (kOnes * byte), 1); };
    const std::uint64_t all = kOnes * 0x80;
    return (bytes | (bytes + kOnes) | below(bytes, ' ') | equals('\\') | equals('^')) & all;
}

template <typename Number>
Number load(const char* bytes) {
    Number number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

/// Whether bytes mean the same in every encoding: letters and digits, nothing that begins a code.
bool isPlain(std::string_view bytes) {
    const char* const begin = bytes.data();
    const std::size_t size = bytes.size();
    // What is left behind the last whole word is looked at with some bytes before it once more.
    if (size >= sizeof(std::uint64_t)) {
        std::uint64_t odd = oddOf(load<std::uint64_t>(begin + size - sizeof(std::uint64_t)));
        for (std::size_t at = 0; at + sizeof(std::uint64_t) < size; at += sizeof(std::uint64_t))
            odd |= oddOf(load<std::uint64_t>(begin + at));
        return odd == 0;
    }
    if (size >= sizeof(std::uint32_t)) {
        const std::uint64_t last = load<std::uint32_t>(begin + size - sizeof(std::uint32_t));
        return oddOf(last << 32U | load<std::uint32_t>(begin)) == 0;
    }
    std::uint64_t word = 0x2020202020202020;  // blanks are plain
    for (const char c : bytes) word = word << 8U | static_cast<unsigned char>(c);
    return oddOf(word) == 0;
}

/// Whether blanks stand around a value.
bool isPadded(std::string_view bytes) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    return !bytes.empty() && (isBlank(bytes.front()) || isBlank(bytes.back()));
}

/// Whether a value stands for itself: a text of which nothing has to be decoded. `value` is then
/// the text, of values that are no texts without the blanks around it.
bool isPlain(const Group& group, std::string_view& value) {
    if (!group.isText()) return false;
    value = group.text();
    if (isPadded(value) && codeKind(group.code()) != CodeKind::Text) value = group.bare();
    return isPlain(value);
}

/// Word by word: a whole view would be read back before its parts have reached memory.
void addView(std::vector<GroupView>& views, int code, std::string_view value) {
    GroupView& view = views.emplace_back();
    view.code = code;
    view.value = value;
}

}  // namespace

struct GroupReader::Kept {
    GroupList groups;
    std::forward_list<std::string> decoded;
    std::vector<GroupView> views;
};

GroupReader::GroupReader() = default;
GroupReader::~GroupReader() = default;
GroupReader::GroupReader(GroupReader&& other) noexcept = default;
GroupReader& GroupReader::operator=(GroupReader&& other) noexcept = default;

std::span<const GroupView> GroupReader::read(const AcApDocument* document, EntityName name) {
    if (!m_kept) m_kept = std::make_unique<Kept>();
    std::vector<GroupView>& views = m_kept->views;
    views.clear();
    m_kept->decoded.clear();
    const Located found = locate(*document, name);
    if (!found) return views;
    Drawing& drawing = *found.drawing;
    drawing.readGroups(found.number, m_kept->groups);
    views.reserve(m_kept->groups.size());
    for (const Group& group : m_kept->groups) {
        std::string_view plain;
        if (isPlain(group, plain)) {
            addView(views, group.code(), plain);
            continue;
        }
        const bool padded =
            group.isText() && isPadded(group.text()) && codeKind(group.code()) != CodeKind::Text;
        const std::wstring value =
            padded ? drawing.text().decode(group.bare()) : drawing.decoded(group);
        addView(views, group.code(), m_kept->decoded.emplace_front(toUtf8(value)));
    }
    return views;
}

struct RecordRun::Kept {
    struct Record {
        std::size_t begin = 0;
        std::size_t size = 0;  ///< 0: it has to be read otherwise
    };
    std::deque<std::string> texts;
    std::vector<GroupView> views;
    std::vector<Record> records;
};

RecordRun::RecordRun() : m_kept(std::make_unique<Kept>()) {}
RecordRun::~RecordRun() = default;

void RecordRun::read(const AcApDocument* document, std::span<const EntityName> names) {
    const Drawing& drawing = *document->drawing;
    m_kept->texts.clear();
    m_kept->views.clear();
    m_kept->records.assign(names.size(), {});
    std::vector<RecordNumber> numbers;
    std::vector<std::size_t> places;  // of them among the names
    for (std::size_t i = 0; i < names.size(); ++i) {
        const RecordNumber number = drawing.numberOf(names[i]);
        if (number == 0 || !drawing.isAsInFile(number)) continue;
        numbers.push_back(number);
        places.push_back(i);
    }
    auto place = places.begin();
    drawing.codec().readBeside(numbers, m_kept->texts, [&](const GroupList& groups) {
        std::vector<GroupView>& views = m_kept->views;
        const std::size_t begin = views.size();
        for (const Group& group : groups) {
            std::string_view plain;
            if (isPlain(group, plain)) addView(views, group.code(), plain);
        }
        const bool whole = views.size() - begin == groups.size();
        if (!whole) views.resize(begin);
        m_kept->records[*place++] = {begin, views.size() - begin};
    });
}

std::optional<std::span<const GroupView>> RecordRun::groups(std::size_t number) const {
    const Kept::Record& record = m_kept->records[number];
    if (record.size == 0) return std::nullopt;
    return std::span<const GroupView>(m_kept->views).subspan(record.begin, record.size);
}

std::vector<RecordGroup> recordGroups(const AcApDocument* document, EntityName name) {
    std::vector<RecordGroup> groups;
    GroupReader reader;
    const std::span<const GroupView> views = reader.read(document, name);
    groups.reserve(views.size());
    for (const GroupView& view : views) groups.push_back({view.code, std::string(view.value)});
    return groups;
}

}  // namespace mor::host
