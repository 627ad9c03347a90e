#include "host/dxf/text_scan.h"

#include "host/dxf/line_feeds.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kReadSize = 1 << 20;
constexpr std::size_t kLongestLine = 64U << 20U;
/// Readable bytes before and behind the text of a piece.
constexpr std::size_t kMargin = 64;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr int kNoCode = -1'000'000;
constexpr int kUnnoted = 1'000'000;  // a code, but none of those that are noted

/// Four characters as they lie in memory.
constexpr std::uint32_t word(std::string_view text) {
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < 4; ++i)
        result |= std::uint32_t{static_cast<unsigned char>(text[i])} << (8 * i);
    return result;
}

/// The code of a line of at most four characters, right-aligned in `text` behind blanks; kUnnoted
/// for those of which nothing is noted, kNoCode where they are not blanks and digits.
int notedCode(std::uint32_t text) {
    switch (text) {
        case word("   0"):
            return 0;
        case word("   2"):
            return 2;
        case word("   5"):
            return 5;
        case word("   8"):
            return 8;
        case word("  67"):
            return 67;
        case word(" 100"):
            return 100;
        case word(" 102"):
            return 102;
        case word(" 105"):
            return 105;
        case word(" 330"):
            return 330;
        case word("1001"):
            return 1001;
        default:
            break;
    }
    // Bytes that are no digits have their high bit set here; they may only be blanks in front.
    const std::uint32_t distance = text ^ 0x30303030U;
    const std::uint32_t others = (distance + 0x76767676U) & 0x80808080U;
    unsigned blanks = 0;
    switch (others) {
        case 0:
            break;
        case 0x80U:
            blanks = 1;
            break;
        case 0x8080U:
            blanks = 2;
            break;
        case 0x808080U:
            blanks = 3;
            break;
        default:
            return kNoCode;
    }
    const std::uint32_t front = (std::uint32_t{1} << (8 * blanks)) - 1;
    if ((distance & 0x80808080U) != 0 || (text & front) != (0x20202020U & front)) return kNoCode;
    // With zeros in front it may be one of those above.
    return (text >> (8 * blanks) & 0xFFU) == '0' ? kNoCode : kUnnoted;
}

/// The code of the line that ends at `end`; the four bytes before it are readable.
int fastCode(const char* begin, const char* end) {
    if (end != begin && end[-1] == '\r') --end;
    const auto size = static_cast<std::size_t>(end - begin);
    if (size == 0 || size > 4) return kNoCode;
    std::uint32_t text = 0;
    std::memcpy(&text, end - 4, sizeof text);
    if (size < 4) {
        const unsigned foreign = 8 * (4 - static_cast<unsigned>(size));
        text = (text >> foreign << foreign) | (0x20202020U >> (32 - foreign));
    }
    return notedCode(text);
}

int exactCode(std::string_view line) { return parseCode(line).value_or(kNoCode); }

std::string_view withoutReturn(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

class TextScan {
public:
    TextScan(DxfIndex& index, Structure& structure, Scan scan)
        : m_index(index), m_structure(structure), m_fast(scan == Scan::Vectorised) {}

    std::optional<Stop> run();

private:
    [[nodiscard]] std::optional<Stop> checkStart();
    [[nodiscard]] bool fill();
    void findLines(std::size_t from, bool last);
    std::optional<Stop> takePairs();
    std::optional<Stop> takePlainPairs();
    std::optional<Stop> takeRest();
    std::optional<Stop> take(int code, std::string_view value, std::size_t at, std::size_t line);
    [[nodiscard]] Stop stop(std::string text, std::size_t at, std::size_t line) const {
        return {std::move(text), m_line + line, m_base + at, false};
    }
    [[nodiscard]] Stop noCode(std::string_view found, std::size_t at, std::size_t line) const;
    [[nodiscard]] std::string_view text() const { return {m_buffer.data() + kMargin, m_size}; }

    DxfIndex& m_index;
    Structure& m_structure;
    bool m_fast;
    std::vector<char> m_buffer = std::vector<char>(2 * kMargin);
    std::size_t m_size = 0;              // of the text in the buffer
    std::size_t m_at = 0;                // where the first line that is not taken begins
    std::uint64_t m_base = 0;            // offset of the text in the file
    std::uint64_t m_next = 0;            // where to read on
    std::uint64_t m_line = 1;            // number of the first line of the text
    std::size_t m_lines = 0;             // of the text that are taken
    std::vector<std::uint32_t> m_ends;   // of the lines in the text: their line feeds
    std::vector<std::uint32_t> m_nexts;  // where the next ones begin; where any line end counts
};

Stop TextScan::noCode(std::string_view found, std::size_t at, std::size_t line) const {
    if (!m_structure.started())
        return {"no DXF text: a drawing begins with group 0 SECTION", m_line + line, m_base + at,
                true};
    return stop("a group code was expected, found \"" + std::string(found.substr(0, 40)) + "\"", at,
                line);
}

std::optional<Stop> TextScan::checkStart() {
    const auto refuse = [](std::string text) { return Stop{std::move(text), 1, 0, true}; };
    const std::string_view bytes = text();
    if (bytes.empty()) return refuse("the file is empty, not a drawing");
    if (bytes.find('\0') != std::string_view::npos) return refuse("binary data, not DXF text");
    if (bytes.starts_with(kByteOrderMark)) m_at = kByteOrderMark.size();
    return std::nullopt;
}

/// Moves what is not taken to the front and reads more behind it; false when nothing follows.
bool TextScan::fill() {
    const std::size_t rest = m_size - m_at;
    std::memmove(m_buffer.data() + kMargin, m_buffer.data() + kMargin + m_at, rest);
    m_base += m_at;
    m_line += m_lines;
    m_lines = 0;
    m_at = 0;
    const std::uint64_t left = m_index.source->size() - m_next;
    const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(kReadSize, left));
    if (m_buffer.size() < rest + want + 2 * kMargin)
        m_buffer.resize(std::max(2 * rest, kReadSize) + want + 2 * kMargin);
    const std::size_t got = m_index.source->read(m_next, m_buffer.data() + kMargin + rest, want);
    m_next += got;
    m_size = rest + got;
    findLines(0, got == 0 || m_next >= m_index.source->size());
    return got != 0 && m_next < m_index.source->size();
}

/// Finds the ends of the lines; one whose end may go on behind the text is none yet.
void TextScan::findLines(std::size_t from, bool last) {
    m_ends.clear();
    m_nexts.clear();
    const std::string_view bytes = text();
    if (!m_index.form.anyLineEnd) {
        if (m_fast)
            appendLineFeeds(bytes.substr(from), static_cast<std::uint32_t>(from), m_ends);
        else
            for (std::size_t at = bytes.find('\n', from); at != std::string_view::npos;
                 at = bytes.find('\n', at + 1))
                m_ends.push_back(static_cast<std::uint32_t>(at));
        return;
    }
    for (std::size_t at = bytes.find_first_of("\r\n", from); at != std::string_view::npos;
         at = bytes.find_first_of("\r\n", at)) {
        if (at + 1 == bytes.size() && bytes[at] == '\r' && !last) break;
        m_ends.push_back(static_cast<std::uint32_t>(at));
        at += bytes[at] == '\r' && bytes.substr(at + 1, 1) == "\n" ? 2 : 1;
        m_nexts.push_back(static_cast<std::uint32_t>(at));
    }
}

std::optional<Stop> TextScan::take(int code, std::string_view value, std::size_t at,
                                   std::size_t line) {
    if (code != kTypeCode) {
        if (!m_structure.started() && code != kCommentCode) return noCode({}, at, line);
        m_structure.group(code, value);
        return std::nullopt;
    }
    const std::string_view type = trimmed(value);
    if (!m_structure.started() && type != "SECTION" && type != "EOF") return noCode({}, at, line);
    if (auto wrong = m_structure.begin(type, m_base + at)) return stop(std::move(*wrong), at, line);
    return std::nullopt;
}

/// Takes the pairs of whole lines that the text has.
std::optional<Stop> TextScan::takePairs() {
    const char* const data = text().data();
    const bool any = m_index.form.anyLineEnd;
    while (!m_structure.ended()) {
        if (m_fast && !any && m_structure.started())
            if (auto stopped = takePlainPairs()) return stopped;
        if (m_lines + 1 >= m_ends.size() || m_structure.ended()) break;
        const std::size_t codeEnd = m_ends[m_lines];
        const std::size_t value = any ? m_nexts[m_lines] : codeEnd + 1;
        const std::size_t valueEnd = m_ends[m_lines + 1];
        const std::string_view line = withoutReturn({data + m_at, codeEnd - m_at});
        const int code = exactCode(line);
        if (code == kNoCode) return noCode(line, m_at, m_lines);
        const std::string_view shown = withoutReturn({data + value, valueEnd - value});
        if (auto stopped = take(code, shown, m_at, m_lines)) return stopped;
        m_at = any ? m_nexts[m_lines + 1] : valueEnd + 1;
        m_lines += 2;
    }
    return std::nullopt;
}

/// The same as long as code lines have their usual form.
std::optional<Stop> TextScan::takePlainPairs() {
    const char* const data = text().data();
    const std::uint32_t* const ends = m_ends.data();
    const std::size_t count = m_ends.size();
    std::size_t at = m_at;
    std::size_t lines = m_lines;
    Structure::Wrong wrong;
    for (; lines + 1 < count && !m_structure.ended(); lines += 2) {
        const char* const feed = data + ends[lines];
        const int code = fastCode(data + at, feed);
        if (code != kUnnoted) {
            if (code == kNoCode) break;
            const char* const valueEnd = data + ends[lines + 1];
            const std::string_view value =
                withoutReturn({feed + 1, static_cast<std::size_t>(valueEnd - feed - 1)});
            if (code != kTypeCode)
                m_structure.group(code, value);
            else if ((wrong = m_structure.begin(trimmed(value), m_base + at)))
                break;
        }
        at = std::size_t{ends[lines + 1]} + 1;
    }
    m_at = at;
    m_lines = lines;
    return wrong ? std::optional(stop(std::move(*wrong), at, lines)) : std::nullopt;
}

/// Takes what stands behind the last pair of whole lines of the file.
std::optional<Stop> TextScan::takeRest() {
    const std::string_view rest = text().substr(m_at);
    const bool any = m_index.form.anyLineEnd;
    const bool whole = m_lines < m_ends.size();
    const std::size_t codeEnd = whole ? m_ends[m_lines] - m_at : rest.size();
    const std::size_t value = !whole ? rest.size() : any ? m_nexts[m_lines] - m_at : codeEnd + 1;
    const std::string_view line = withoutReturn(rest.substr(0, codeEnd));
    const bool valueMissing = value >= rest.size();
    if (trimmed(line).empty() && valueMissing) return std::nullopt;  // blanks at the very end
    const int code = exactCode(line);
    if (code == kNoCode) return noCode(line, m_at, m_lines);
    if (valueMissing)
        return stop("the file ends after a group code, without its value", m_at, m_lines);
    if (auto stopped = take(code, withoutReturn(rest.substr(value)), m_at, m_lines)) return stopped;
    m_at = m_size;
    m_lines += 2;
    m_index.endsWithoutLineEnd = true;
    return std::nullopt;
}

std::optional<Stop> TextScan::run() {
    bool first = true;
    for (bool more = true; more && !m_structure.ended(); first = false) {
        more = fill();
        if (first)
            if (auto stopped = checkStart()) return stopped;
        if (auto stopped = takePairs()) return stopped;
        if (!more && !m_structure.ended())
            if (auto stopped = takeRest()) return stopped;
        if (m_size - m_at > kLongestLine) return stop("a line of more than 64 MiB", m_at, m_lines);
        if (first) {
            const std::size_t expected =
                m_index.places.size() *
                (m_index.source->size() / std::max<std::size_t>(m_at, 1) + 1);
            m_structure.expect(expected + expected / 8);
        }
    }
    if (!m_structure.started()) return Stop{"no DXF text: no SECTION in it", 1, 0, true};
    const std::uint64_t end = m_structure.ended() ? m_index.source->size() : m_base + m_at;
    if (auto wrong = m_structure.finish(end)) return stop(std::move(*wrong), m_at, m_lines);
    return std::nullopt;
}

}  // namespace

std::optional<Stop> scanText(DxfIndex& index, Structure& structure, Scan scan) {
    return TextScan(index, structure, scan).run();
}

}  // namespace mor::host
