#include "host/dxf/text_scan.h"

#include "host/dxf/line_feeds.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kReadSize = 1 << 20;
constexpr std::size_t kLongestLine = 64U << 20U;
/// Readable bytes before and behind the text of a piece.
constexpr std::size_t kMargin = 64;
/// Room in front of a stretch for what the one before it could not take.
constexpr std::size_t kFront = std::size_t{64} * 1024;
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

/// A stretch of the file with its line ends. What the stretch before could not take stands in front
/// of it.
struct Piece {
    std::vector<char> buffer;
    std::size_t front = 0;             // where in the buffer the stretch begins
    std::size_t begin = 0;             // where the text does: what was not taken, then the stretch
    std::size_t end = 0;               // where both end
    bool last = false;                 // nothing follows
    std::vector<std::uint32_t> ends;   // of the lines, in the buffer; [0] is room for one in front
    std::vector<std::uint32_t> nexts;  // where the next lines begin; where any line end counts
};

class TextScan {
public:
    TextScan(DxfIndex& index, Structure& structure, Scan scan)
        : m_index(index), m_structure(structure), m_fast(scan == Scan::Vectorised) {}

    std::optional<Stop> run();

private:
    [[nodiscard]] std::optional<Stop> checkStart();
    [[nodiscard]] Piece read(Piece piece, std::uint64_t from, std::size_t most) const;
    void advance();
    void findAnyLines();
    std::optional<Stop> takePairs();
    std::optional<Stop> takePlainPairs();
    std::optional<Stop> takeRest();
    std::optional<Stop> take(int code, std::string_view value);
    [[nodiscard]] Stop stop(std::string text) const {
        return {std::move(text), m_line + m_taken, offset(), false};
    }
    [[nodiscard]] Stop noCode(std::string_view found) const;
    [[nodiscard]] const char* data() const { return m_piece.buffer.data(); }
    /// Of the first line that is not taken, in the file.
    [[nodiscard]] std::uint64_t offset() const { return m_base + m_at - m_piece.front; }
    [[nodiscard]] std::string_view rest() const { return {data() + m_at, m_piece.end - m_at}; }
    [[nodiscard]] std::size_t nextOf(std::size_t line) const {
        return m_index.form.anyLineEnd ? m_piece.nexts[line] : std::size_t{m_piece.ends[line]} + 1;
    }

    DxfIndex& m_index;
    Structure& m_structure;
    bool m_fast;
    Piece m_piece;
    Piece m_spare;              // a buffer to read into
    std::uint64_t m_base = 0;   // where the stretch of the piece begins in the file
    std::size_t m_at = 0;       // of the first line that is not taken, in the buffer
    std::size_t m_next = 1;     // the same, as an index of `ends`
    std::uint64_t m_line = 1;   // number of the first line of the text
    std::size_t m_taken = 0;    // lines since then
    std::size_t m_carried = 0;  // bytes that the piece has from the one before
};

Stop TextScan::noCode(std::string_view found) const {
    if (m_structure.started()) {
        Stop wrong =
            stop("a group code was expected, found \"" + std::string(found.substr(0, 40)) + "\"");
        wrong.noCode = true;
        return wrong;
    }
    Stop foreign = stop("no DXF text: a drawing begins with group 0 SECTION");
    foreign.foreign = true;
    return foreign;
}

std::optional<Stop> TextScan::checkStart() {
    const auto refuse = [](std::string text) { return Stop{std::move(text), 1, 0, true}; };
    if (rest().empty()) return refuse("the file is empty, not a drawing");
    // Only in the first line: behind EOF anything may stand, zeros of a disk block too.
    if (rest().substr(0, rest().find_first_of("\r\n")).find('\0') != std::string_view::npos)
        return refuse("binary data, not DXF text");
    if (rest().starts_with(kByteOrderMark)) m_at += kByteOrderMark.size();
    return std::nullopt;
}

/// Reads the stretch from `from` on into the piece, `most` bytes at most.
Piece TextScan::read(Piece piece, std::uint64_t from, std::size_t most) const {
    const std::uint64_t size = m_index.source->size();
    const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(most, size - from));
    piece.front = piece.begin = kFront;
    piece.buffer.resize(std::max(piece.buffer.size(), kFront + want + kMargin));
    const std::size_t got = m_index.source->read(from, piece.buffer.data() + kFront, want);
    piece.end = kFront + got;
    piece.last = got == 0 || from + got >= size;
    piece.ends.assign(1, 0);
    if (m_index.form.anyLineEnd) return piece;
    const std::string_view text(piece.buffer.data() + kFront, got);
    if (m_fast) {
        appendLineFeeds(text, static_cast<std::uint32_t>(kFront), piece.ends);
    } else {
        for (std::size_t at = text.find('\n'); at != std::string_view::npos;
             at = text.find('\n', at + 1))
            piece.ends.push_back(static_cast<std::uint32_t>(kFront + at));
    }
    return piece;
}

/// Goes on to the piece in `m_spare`: what was not taken moves in front of it.
void TextScan::advance() {
    const std::string_view left = rest();
    m_carried = left.size();
    Piece& next = m_spare;
    if (left.size() + kMargin > next.front) {  // a long line
        const std::size_t more = left.size() + kMargin - next.front;
        next.buffer.insert(next.buffer.begin(), more, ' ');
        next.front += more;
        next.end += more;
        for (std::size_t i = 1; i < next.ends.size(); ++i)
            next.ends[i] += static_cast<std::uint32_t>(more);
    }
    next.begin = next.front - left.size();
    if (!left.empty()) std::memcpy(next.buffer.data() + next.begin, left.data(), left.size());
    // At most one whole line is left: a code without its value.
    const bool line = m_next < m_piece.ends.size();
    const auto moved = [&](std::size_t place) {
        return static_cast<std::uint32_t>(next.begin + place - m_at);
    };
    if (line) next.ends[0] = moved(m_piece.ends[m_next]);
    next.nexts.assign(1, line && m_index.form.anyLineEnd ? moved(m_piece.nexts[m_next]) : 0);
    m_base += m_piece.end - m_piece.front;
    std::swap(m_piece, m_spare);
    m_at = m_piece.begin;
    m_next = line ? 0 : 1;
    m_line += m_taken;
    m_taken = 0;
    if (m_index.form.anyLineEnd) findAnyLines();
}

/// Finds line ends of either kind in the stretch; one that may go on behind it is none yet.
void TextScan::findAnyLines() {
    const std::string_view text(data(), m_piece.end);
    const std::size_t known = m_next == 0 ? m_piece.nexts[0] : m_piece.begin;
    // A carriage return in front of the stretch was no line end as long as nothing stood behind it.
    const bool half = m_piece.front > known && text[m_piece.front - 1] == '\r';
    for (std::size_t at = text.find_first_of("\r\n", m_piece.front - (half ? 1 : 0));
         at != std::string_view::npos; at = text.find_first_of("\r\n", at)) {
        if (at + 1 == text.size() && text[at] == '\r' && !m_piece.last) break;
        m_piece.ends.push_back(static_cast<std::uint32_t>(at));
        at += text[at] == '\r' && text.substr(at + 1, 1) == "\n" ? 2 : 1;
        m_piece.nexts.push_back(static_cast<std::uint32_t>(at));
    }
}

std::optional<Stop> TextScan::take(int code, std::string_view value) {
    if (code != kTypeCode) {
        if (!m_structure.started() && code != kCommentCode) return noCode({});
        m_structure.group(code, value);
        return std::nullopt;
    }
    const std::string_view type = trimmed(value);
    if (!m_structure.started() && type != "SECTION" && type != "EOF") return noCode({});
    if (auto wrong = m_structure.begin(type, offset())) return stop(std::move(*wrong));
    return std::nullopt;
}

/// Takes the pairs of whole lines that the text has.
std::optional<Stop> TextScan::takePairs() {
    const bool plain = m_fast && !m_index.form.anyLineEnd;
    while (!m_structure.ended()) {
        if (plain && m_structure.started())
            if (auto stopped = takePlainPairs()) return stopped;
        if (m_next + 1 >= m_piece.ends.size() || m_structure.ended()) break;
        const std::string_view line = withoutReturn({data() + m_at, m_piece.ends[m_next] - m_at});
        const std::size_t value = nextOf(m_next);
        const int code = exactCode(line);
        if (code == kNoCode) return noCode(line);
        const std::string_view shown =
            withoutReturn({data() + value, m_piece.ends[m_next + 1] - value});
        if (auto stopped = take(code, shown)) return stopped;
        m_at = nextOf(m_next + 1);
        m_next += 2;
        m_taken += 2;
    }
    return std::nullopt;
}

/// The same as long as code lines have their usual form.
std::optional<Stop> TextScan::takePlainPairs() {
    const char* const text = data();
    const std::uint32_t* const ends = m_piece.ends.data();
    const std::size_t count = m_piece.ends.size();
    const std::uint64_t base = m_base - m_piece.front;
    std::size_t at = m_at;
    std::size_t next = m_next;
    Structure::Wrong wrong;
    for (; next + 1 < count && !m_structure.ended(); next += 2) {
        const char* const feed = text + ends[next];
        const int code = fastCode(text + at, feed);
        if (code != kUnnoted) {
            if (code == kNoCode) break;
            const char* const valueEnd = text + ends[next + 1];
            const std::string_view value =
                withoutReturn({feed + 1, static_cast<std::size_t>(valueEnd - feed - 1)});
            if (code != kTypeCode)
                m_structure.group(code, value);
            else if ((wrong = m_structure.begin(trimmed(value), base + at)))
                break;
        }
        at = std::size_t{ends[next + 1]} + 1;
    }
    m_taken += next - m_next;
    m_at = at;
    m_next = next;
    return wrong ? std::optional(stop(std::move(*wrong))) : std::nullopt;
}

/// Takes what stands behind the last pair of whole lines of the file.
std::optional<Stop> TextScan::takeRest() {
    const bool whole = m_next < m_piece.ends.size();
    const std::size_t codeEnd = whole ? m_piece.ends[m_next] : m_piece.end;
    const std::size_t value = whole ? nextOf(m_next) : m_piece.end;
    const std::string_view line = withoutReturn({data() + m_at, codeEnd - m_at});
    const bool valueMissing = value >= m_piece.end;
    if (trimmed(line).empty() && valueMissing) return std::nullopt;  // blanks at the very end
    const int code = exactCode(line);
    if (code == kNoCode) return noCode(line);
    if (valueMissing) return stop("the file ends after a group code, without its value");
    const std::string_view shown = withoutReturn({data() + value, m_piece.end - value});
    if (auto stopped = take(code, shown)) return stopped;
    m_at = m_piece.end;
    m_taken += 2;
    m_index.endsWithoutLineEnd = true;
    return std::nullopt;
}

std::optional<Stop> TextScan::run() {
    m_spare = read({}, 0, kReadSize);
    advance();
    if (auto stopped = checkStart()) return stopped;
    for (bool first = true;; first = false) {
        // The next stretch is read, and its lines found, while this one is looked through.
        std::future<Piece> next;
        if (!m_piece.last)
            next = std::async(
                std::launch::async,
                [this, spare = std::move(m_spare), from = m_base + m_piece.end - m_piece.front,
                 // Of a long line more and more: it is copied from piece to piece.
                 most = std::max(kReadSize, m_carried)]() mutable {
                    return read(std::move(spare), from, most);
                });
        if (auto stopped = takePairs()) return stopped;
        if (m_structure.ended()) break;
        if (m_piece.last) {
            if (auto stopped = takeRest()) return stopped;
            break;
        }
        if (rest().size() > kLongestLine) return stop("a line of more than 64 MiB");
        if (first) {
            // Of what was read, not of what was taken: the rest may be one long line.
            const std::size_t expected =
                m_index.places.size() *
                (m_index.source->size() / (m_piece.end - m_piece.front) + 1);
            m_structure.expect(expected + expected / 8);
        }
        m_spare = next.get();
        advance();
    }
    if (!m_structure.started()) return Stop{"no DXF text: no SECTION in it", 1, 0, true};
    const std::uint64_t end = m_structure.ended() ? m_index.source->size() : offset();
    if (auto wrong = m_structure.finish(end)) return stop(std::move(*wrong));
    return std::nullopt;
}

/// Whether only blanks, line ends, zeros and the ^Z of old systems stand from there on.
bool endsAt(const Source& source, std::uint64_t offset) {
    std::vector<char> buffer(kReadSize);
    while (offset < source.size()) {
        const std::size_t got = source.read(offset, buffer.data(), buffer.size());
        const std::string_view text(buffer.data(), got);
        if (got == 0 || text.find_first_not_of(std::string_view(" \t\r\n\x1A\0", 6)) != text.npos)
            return false;
        offset += got;
    }
    return true;
}

}  // namespace

std::optional<Stop> scanText(DxfIndex& index, Structure& structure, Scan scan) {
    auto stopped = TextScan(index, structure, scan).run();
    if (!stopped || !stopped->noCode || !endsAt(*index.source, stopped->offset)) return stopped;
    // The file goes on behind its last record, with nothing to read.
    const auto wrong = structure.finish(stopped->offset);
    if (!wrong) return std::nullopt;
    stopped->text = *wrong;
    return stopped;
}

}  // namespace mor::host
