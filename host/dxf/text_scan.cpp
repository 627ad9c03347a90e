#include "host/dxf/text_scan.h"

#include "host/dxf/block_masks.h"
#include "host/dxf/text_pieces.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kLongestLine = 64U << 20U;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutReturn(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

/// Four bytes as a number.
constexpr std::uint32_t packed(const char* bytes) {
    std::uint32_t all = 0;
    for (unsigned i = 0; i < sizeof all; ++i)
        all |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    return all;
}

/// The code of a plain line whose last digit stands before `end`; four bytes before it are
/// readable.
int plainCode(const char* end) {
    // The most frequent ones as most programs write them: one step, whatever came before.
    std::uint32_t shape = 0;
    std::memcpy(&shape, end - sizeof shape, sizeof shape);
    if (shape == packed("\n100")) return kMarkerCode;
    if (shape == packed("\n  8")) return kLayerCode;
    if (shape == packed("\n330")) return kOwnerCode;
    if (shape == packed("\n  5")) return kHandleCode;
    if (shape == packed("\n  0")) return kTypeCode;
    int code = end[-1] - '0';
    if (end[-2] < '0') return code;
    code += 10 * (end[-2] - '0');
    if (end[-3] < '0') return code;
    code += 100 * (end[-3] - '0');
    return end[-4] < '0' ? code : code + 1000 * (end[-4] - '0');
}

/// The first line feed; there is one, and 8 bytes behind it are readable.
const char* findFeed(const char* text) {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t ones = 0x0101010101010101U;
    for (;; text += sizeof ones) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text, sizeof bytes);
        bytes ^= ones * '\n';
        const std::uint64_t found = (bytes - ones) & ~bytes & (ones << 7U);
        if (found != 0) return text + std::countr_zero(found) / 8;
    }
}

/// A text that knows where it ends once that is asked.
class LazyLine {
public:
    explicit LazyLine(const char* begin) : m_begin(begin) {}
    operator std::string_view() const {  // NOLINT(google-explicit-constructor)
        return withoutReturn({m_begin, static_cast<std::size_t>(findFeed(m_begin) - m_begin)});
    }

private:
    const char* m_begin;
};

/// What short lines meant that were seen last: most come again.
template <typename Meaning, std::size_t kLines>
class LineMemory {
public:
    template <typename Find>
    Meaning of(const char* begin, const Find& find) {
        std::uint64_t head = 0;
        std::memcpy(&head, begin, sizeof head);
        Known& known = m_known[kLines == 1 ? 0 : (head * kSpread >> 32U) % kLines];
        if (head == known.head) return known.meaning;
        const std::string_view line = LazyLine(begin);
        const Meaning meaning = find(line);
        // With its line end: what stands behind that makes no other line of it.
        if (static_cast<std::size_t>(findFeed(begin) - begin) < sizeof head)
            known = {head, meaning};
        return meaning;
    }

private:
    static constexpr std::uint64_t kSpread = 0x9E37'79B9'7F4A'7C15U;
    struct Known {
        std::uint64_t head = 0x0A0A'0A0A'0A0A'0A0AU;  // an empty line, which means nothing
        Meaning meaning{};
    };
    std::array<Known, kLines> m_known{};
};

std::uint64_t handleOf(std::string_view line) { return parseHandle(trimmed(line)); }

/// The handle on a line that ends with a line feed.
std::uint64_t handleFrom(const char* line) {
    std::uint64_t value = 0;
    for (const char* at = line; at - line < 16; ++at) {
        const unsigned digit = static_cast<unsigned char>(*at) - unsigned{'0'};
        const unsigned letter = (static_cast<unsigned char>(*at) | 0x20U) - unsigned{'a'};
        if (digit > 9 && letter > 5) {
            if (*at == '\n' || (*at == '\r' && at[1] == '\n')) return value;
            break;
        }
        value = value << 4U | (digit <= 9 ? digit : letter + 10);
    }
    return handleOf(LazyLine(line));
}

class TextScan {
public:
    TextScan(DxfIndex& index, Structure& structure, Scan scan)
        : m_index(index),
          m_structure(structure),
          m_plain(scan == Scan::Vectorised && !index.form.anyLineEnd),
          m_pieces(*index.source, m_plain ? TextPieces::Ahead::Yes : TextPieces::Ahead::No,
                   index.form.lineEnd == "\r\n") {}

    std::optional<Stop> run();

private:
    /// A line of the text: where it ends, and where the next one begins.
    struct Line {
        std::size_t end = 0;
        std::size_t next = 0;
    };

    [[nodiscard]] std::optional<Stop> checkStart();
    void advance();
    [[nodiscard]] std::optional<Line> lineFrom(std::size_t at) const;
    std::optional<Stop> takePairs();
    std::optional<Stop> takePlainPairs();
    std::optional<Stop> takePlainCodes(const PlainCodes& codes);
    void takePlain(int code, const char* value);
    std::optional<Stop> takeRest();
    std::optional<Stop> take(int code, std::string_view value);
    [[nodiscard]] std::uint64_t lineNumber() const;
    [[nodiscard]] Stop stop(std::string text) {
        m_pieces.settle();  // the file is read again
        return {std::move(text), lineNumber(), offset(), false};
    }
    [[nodiscard]] Stop noCode(std::string_view found);
    [[nodiscard]] const char* data() const { return m_piece->buffer.data(); }
    [[nodiscard]] std::size_t end() const { return m_piece->end; }
    /// Of the first line that is not taken, in the file.
    [[nodiscard]] std::uint64_t offset() const { return m_piece->read - (end() - m_at); }
    [[nodiscard]] std::string_view rest() const { return {data() + m_at, end() - m_at}; }

    DxfIndex& m_index;
    Structure& m_structure;
    bool m_plain;  // codes may have their usual form
    TextPieces m_pieces;
    TextPiece* m_piece = nullptr;
    std::size_t m_at = 0;  // of the first line that is not taken, in the piece
    LineMemory<std::uint64_t, 1> m_owners;
    LineMemory<std::uint16_t, 16> m_types;
    LineMemory<std::uint16_t, 128> m_layers;
    PlainCodes m_codes;  // of a piece that was not looked through ahead, or not to its end
};

Stop TextScan::noCode(std::string_view found) {
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

/// Of the first line that is not taken, or behind the last one. Counted anew: only damaged files
/// are asked.
std::uint64_t TextScan::lineNumber() const {
    std::uint64_t lines = m_index.endsWithoutLineEnd ? 2 : 1;
    char before = '\0';
    for (std::uint64_t at = 0; at < offset();) {
        const std::string bytes =
            m_index.source->read(at, std::min<std::uint64_t>(1U << 20U, offset() - at));
        if (bytes.empty()) break;
        for (const char c : bytes) {
            const bool ends = c == '\n' || (c == '\r' && m_index.form.anyLineEnd);
            const bool both = c == '\n' && before == '\r' && m_index.form.anyLineEnd;
            if (ends && !both) ++lines;
            before = c;
        }
        at += bytes.size();
    }
    return lines;
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

void TextScan::advance() {
    m_piece = &m_pieces.next(m_at);
    m_at = m_piece->begin;
}

/// The line that begins there; none as long as its end may lie behind the text.
std::optional<TextScan::Line> TextScan::lineFrom(std::size_t at) const {
    const std::string_view text(data(), end());
    if (at >= end()) return std::nullopt;
    if (!m_index.form.anyLineEnd) {
        const std::size_t end = text.find('\n', at);
        return end == std::string_view::npos ? std::nullopt : std::optional<Line>({end, end + 1});
    }
    const std::size_t end = text.find_first_of("\r\n", at);
    if (end == std::string_view::npos) return std::nullopt;
    // A carriage return is no line end yet when a line feed may follow.
    if (end + 1 == text.size() && text[end] == '\r' && !m_piece->last) return std::nullopt;
    const bool both = text[end] == '\r' && text.substr(end + 1, 1) == "\n";
    return Line{end, end + (both ? 2 : 1)};
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
    while (!m_structure.ended()) {
        if (m_plain && m_structure.started()) {
            if (auto stopped = takePlainPairs()) return stopped;
            if (m_structure.ended()) break;
        }
        const auto line = lineFrom(m_at);
        const auto value = line ? lineFrom(line->next) : std::nullopt;
        if (!value) break;
        const std::string_view shown = withoutReturn({data() + m_at, line->end - m_at});
        const auto code = parseCode(shown);
        if (!code) return noCode(shown);
        if (auto stopped =
                take(*code, withoutReturn({data() + line->next, value->end - line->next})))
            return stopped;
        m_at = value->next;
    }
    return std::nullopt;
}

/// The same as long as codes have their usual form.
std::optional<Stop> TextScan::takePlainPairs() {
    if (m_piece->codes.begin == m_at) return takePlainCodes(m_piece->codes);
    const std::size_t feed = rest().rfind('\n');
    if (feed == std::string_view::npos) return std::nullopt;
    findPlainCodes(data(), m_at, m_at + feed + 1, m_index.form.lineEnd == "\r\n", m_codes);
    return takePlainCodes(m_codes);
}

/// Any group but one that begins a record.
inline void TextScan::takePlain(int code, const char* value) {
    switch (code) {
        case kOwnerCode:
            if (m_structure.wantsOwner()) m_structure.owner(m_owners.of(value, handleOf));
            break;
        case kHandleCode:
            if (m_structure.wantsHandle()) m_structure.handle(handleFrom(value));
            break;
        case kLayerCode:
            if (m_structure.wantsLayer())
                m_structure.layer(m_layers.of(value, [this](std::string_view shown) {
                    return m_index.layerTexts.number(shown);
                }));
            break;
        default:
            m_structure.group(code, LazyLine(value));
    }
}

std::optional<Stop> TextScan::takePlainCodes(const PlainCodes& codes) {
    const char* const text = data();
    const std::uint64_t base = m_piece->read - end();
    const std::size_t toValue = m_index.form.lineEnd.size();
    std::size_t block = codes.begin;
    for (std::size_t i = 0; block < codes.end; ++i, block += kBlock) {
        for (std::uint64_t bits = codes.masks[i]; bits != 0; bits &= bits - 1) {
            const std::size_t place = block + static_cast<std::size_t>(std::countr_zero(bits));
            if (place >= codes.end) break;
            const char* const value = text + place + toValue;
            const int code = plainCode(text + place);
            if (code != kTypeCode) {
                takePlain(code, value);
                continue;
            }
            std::size_t line = place - 1;
            while (text[line - 1] != '\n') --line;
            const std::uint16_t type = m_types.of(value, [this](std::string_view shown) {
                return m_structure.typeNumber(trimmed(shown));
            });
            if (auto wrong = m_structure.begin(type, base + line)) {
                m_at = line;
                return stop(std::move(*wrong));
            }
            if (!m_structure.ended()) continue;
            m_at = static_cast<std::size_t>(findFeed(value) - text) + 1;
            return std::nullopt;
        }
    }
    m_at = codes.end;
    return std::nullopt;
}

/// Takes what stands behind the last pair of whole lines of the file.
std::optional<Stop> TextScan::takeRest() {
    const auto whole = lineFrom(m_at);
    const std::size_t codeEnd = whole ? whole->end : end();
    const std::size_t value = whole ? whole->next : end();
    const std::string_view line = withoutReturn({data() + m_at, codeEnd - m_at});
    const bool valueMissing = value >= end();
    if (trimmed(line).empty() && valueMissing) return std::nullopt;  // blanks at the very end
    const auto code = parseCode(line);
    if (!code) return noCode(line);
    if (valueMissing) return stop("the file ends after a group code, without its value");
    if (auto stopped = take(*code, withoutReturn({data() + value, end() - value}))) return stopped;
    m_at = end();
    m_index.endsWithoutLineEnd = true;
    return std::nullopt;
}

std::optional<Stop> TextScan::run() {
    m_piece = &m_pieces.next(0);
    m_at = m_piece->begin;
    if (auto stopped = checkStart()) return stopped;
    while (true) {
        if (auto stopped = takePairs()) return stopped;
        if (m_structure.ended()) break;
        if (m_piece->last) {
            if (auto stopped = takeRest()) return stopped;
            break;
        }
        if (rest().size() > kLongestLine) return stop("a line of more than 64 MiB");
        m_structure.expect(offset(), m_index.source->size());
        advance();
    }
    if (!m_structure.started()) return Stop{"no DXF text: no SECTION in it", 1, 0, true};
    const std::uint64_t end = m_structure.ended() ? m_index.source->size() : offset();
    if (auto wrong = m_structure.finish(end)) return stop(std::move(*wrong));
    return std::nullopt;
}

/// Whether only blanks, line ends, zeros and the ^Z of old systems stand from there on.
bool endsAt(const Source& source, std::uint64_t offset) {
    constexpr std::size_t kReadSize = std::size_t{1} << 16U;
    std::vector<char> buffer(kReadSize);
    while (offset < source.size()) {
        const std::size_t got = source.read(offset, buffer.data(), buffer.size());
        const std::string_view text(buffer.data(), got);
        if (got == 0 ||
            text.find_first_not_of(std::string_view(" \t\r\n\x1A\0", 6)) != std::string_view::npos)
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
