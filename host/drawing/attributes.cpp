#include "host/drawing/attributes.h"

#include "host/dxf/dxf_index.h"
#include "host/lisp/lisp_value.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace mor::host {

namespace {

constexpr std::int64_t kLayoutVersion = 1;
constexpr std::size_t kChunkBytes = 255;
constexpr long kListHeaderCost = 3;
constexpr std::int64_t kNilMark = 0;
constexpr std::int64_t kDotMark = -1;

void appendUnit(std::string& result, unsigned unit) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    result += "\\U+";
    for (int shift = 12; shift >= 0; shift -= 4) result += digits[(unit >> shift) & 15];
}

/// One character in the ASCII form that no reader of DXF takes for anything else.
std::string encodedCharacter(wchar_t c) {
    const auto code = static_cast<unsigned>(c);
    std::string result;
    if (code >= 0x20 && code < 0x7F && c != L'^') {
        result += static_cast<char>(code);
    } else if (code > 0xFFFF) {
        appendUnit(result, 0xD800 + ((code - 0x10000) >> 10));
        appendUnit(result, 0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
        appendUnit(result, code);
    }
    return result;
}

constexpr std::string_view kBlank = "\\U+0020";

/// Cuts text into chunks of at most 255 ASCII bytes, with no blank at either end and no `\U+` or
/// `\M+` of the user's own within one.
class Chunker {
public:
    std::vector<std::string> cut(std::wstring_view text) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool own = text[i] == L'\\' && i + 2 < text.size() && text[i + 2] == L'+' &&
                             (text[i + 1] == L'U' || text[i + 1] == L'M');
            add(encodedCharacter(text[i]));
            if (own) close();
        }
        if (!m_chunk.empty() || m_chunks.empty()) close();
        return std::move(m_chunks);
    }

private:
    void add(const std::string& piece) {
        // A blank leaves room for its own escape: it may turn out to be the last one of the chunk.
        const std::size_t room = piece == " " ? kBlank.size() : piece.size();
        if (m_chunk.size() + room > kChunkBytes) close();
        m_chunk += m_chunk.empty() && piece == " " ? kBlank : std::string_view(piece);
    }
    void close() {
        if (!m_chunk.empty() && m_chunk.back() == ' ')
            m_chunk.replace(m_chunk.size() - 1, 1, kBlank);
        m_chunks.push_back(std::move(m_chunk));
        m_chunk.clear();
    }

    std::vector<std::string> m_chunks;
    std::string m_chunk;
};

std::vector<std::string> chunksOf(std::wstring_view text) { return Chunker().cut(text); }

void appendString(std::string& bytes, const LineStyle& style, std::wstring_view text) {
    const auto chunks = chunksOf(text);
    if (chunks.size() > 1)
        bytes += integerLine(style, 1070, static_cast<std::int64_t>(chunks.size()));
    for (const std::string& chunk : chunks) bytes += line(style, 1000, chunk);
}

long stringCost(std::wstring_view text) {
    const auto chunks = chunksOf(text);
    long cost = chunks.size() > 1 ? 3 : 0;
    for (const std::string& chunk : chunks) cost += 2 + static_cast<long>(chunk.size());
    return cost;
}

void appendToken(std::string& bytes, const LineStyle& style, const LispToken& token,
                 HandleResolver& handles) {
    switch (token.kind()) {
        case LispKind::Nil:
            bytes += integerLine(style, 1070, kNilMark);
            break;
        case LispKind::Integer:
            bytes += integerLine(style, 1071, token.asInteger());
            break;
        case LispKind::Real:
            bytes += realLine(style, 1040, token.asReal());
            break;
        case LispKind::String:
            appendString(bytes, style, token.asString());
            break;
        case LispKind::EntityName: {
            const std::string handle = handleToText(handles.handleForName(token.asEntityName()));
            bytes += line(style, 1005, handle.empty() ? "0" : handle);
            break;
        }
        case LispKind::Open:
            bytes += line(style, 1002, "{");
            break;
        case LispKind::Close:
            bytes += line(style, 1002, "}");
            break;
        case LispKind::Dot:
            bytes += integerLine(style, 1070, kDotMark);
            break;
    }
}

long tokenCost(const LispToken& token) {
    switch (token.kind()) {
        case LispKind::Nil:
        case LispKind::Dot:
            return 3;
        case LispKind::Integer:
            return 5;
        case LispKind::Real:
        case LispKind::EntityName:
            return 9;
        case LispKind::String:
            return stringCost(token.asString());
        case LispKind::Open:
        case LispKind::Close:
            return 2;
    }
    return 0;
}

/// Reads the groups of one list.
class Decoder {
public:
    Decoder(const TagList& record, ExtendedRange range, const TextCoding& coding,
            HandleResolver& handles)
        : m_record(record),
          m_at(range.begin + 1),
          m_end(range.end),
          m_coding(coding),
          m_handles(handles) {}

    void run(AttributeList& list) {
        if (const auto version = takeInteger(1070); version != kLayoutVersion) {
            list.damage = version ? "unknown layout version " + std::to_string(*version)
                                  : "the layout version is missing";
            return;
        }
        std::set<std::wstring> names;
        while (skipComments()) {
            Attribute attribute;
            if (!takeString(attribute.name) || !takeValue(attribute.value)) {
                list.damage = "the list of attributes breaks off or is mixed up behind " +
                              std::to_string(list.items.size()) + " attributes";
                break;
            }
            if (!names.insert(attribute.name).second) {
                list.damage = "two attributes of the name \"" + toUtf8(attribute.name) + "\"";
                break;
            }
            if (!CMORAdsLisp::NilP(attribute.value)) list.items.push_back(std::move(attribute));
        }
        if (!list.damage.empty()) list.items.clear();
    }

private:
    bool skipComments() {
        while (m_at < m_end && m_record.tags()[m_at].code == 999) ++m_at;
        return m_at < m_end;
    }
    [[nodiscard]] const Tag& tag() const { return m_record.tags()[m_at]; }
    std::optional<std::int64_t> takeInteger(int code) {
        if (!skipComments() || tag().code != code) return std::nullopt;
        const auto value = parseInteger(m_record.value(tag()));
        if (value) ++m_at;
        return value;
    }
    bool takeString(std::wstring& text) {
        if (!skipComments()) return false;
        std::int64_t chunks = 1;
        if (tag().code == 1070) {
            const auto count = takeInteger(1070);
            if (!count || *count < 2) return false;
            chunks = *count;
        }
        text.clear();
        for (; chunks > 0; --chunks) {
            if (!skipComments() || tag().code != 1000) return false;
            text += m_coding.decode(m_record.value(tag()));
            ++m_at;
        }
        joinSurrogates(text);  // of which one half may stand in the next chunk
        return true;
    }
    bool takeValue(CMORAdsLispVar& value) {
        LispBuilder builder;
        do {
            if (!skipComments() || !takeToken(builder)) return false;
        } while (!builder.complete());
        value = builder.take();
        return true;
    }
    bool takeToken(LispBuilder& builder) {
        const Tag& here = tag();
        const std::string_view bare = m_record.bare(here);
        switch (here.code) {
            case 1000: {
                std::wstring text;
                return takeString(text) && builder.add(LispToken::string(std::move(text)));
            }
            case 1002:
                ++m_at;
                return (bare == "{" && builder.add(LispToken::open())) ||
                       (bare == "}" && builder.add(LispToken::close()));
            case 1005:
                ++m_at;
                return builder.add(
                    LispToken::entityName(m_handles.nameForHandle(parseHandle(bare))));
            case 1040: {
                const auto real = parseReal(bare);
                ++m_at;
                return real && builder.add(LispToken::real(*real));
            }
            case 1070:
                return takeMark(builder, parseInteger(bare));
            case 1071: {
                const auto integer = parseInteger(bare);
                ++m_at;
                return integer && *integer >= INT32_MIN && *integer <= INT32_MAX &&
                       builder.add(LispToken::integer(static_cast<std::int32_t>(*integer)));
            }
            default:
                return false;
        }
    }
    /// 1070 stands for nil, for the dot, or for the number of chunks of a long text.
    bool takeMark(LispBuilder& builder, std::optional<std::int64_t> mark) {
        if (!mark) return false;
        if (*mark > 1) {
            std::wstring text;
            return takeString(text) && builder.add(LispToken::string(std::move(text)));
        }
        ++m_at;
        if (*mark == kNilMark) return builder.add(LispToken::nil());
        return *mark == kDotMark && builder.add(LispToken::dot());
    }

    const TagList& m_record;
    std::size_t m_at;
    std::size_t m_end;
    const TextCoding& m_coding;
    HandleResolver& m_handles;
};

long foreignBytes(const TagList& record, const std::vector<ExtendedRange>& own) {
    long bytes = 0;
    const auto& tags = record.tags();
    for (std::size_t i = record.extendedBegin(); i < tags.size(); ++i) {
        const bool ours = std::ranges::any_of(
            own, [i](const ExtendedRange& range) { return i >= range.begin && i < range.end; });
        if (!ours) bytes += extendedCost(tags[i].code, record.value(tags[i]).size());
    }
    return bytes;
}

}  // namespace

const Attribute* AttributeIndex::find(const std::vector<Attribute>& items, std::wstring_view name) {
    if (m_positions.empty())
        for (std::size_t i = 0; i < items.size(); ++i) m_positions.emplace(items[i].name, i);
    const auto found = m_positions.find(name);
    return found == m_positions.end() ? nullptr : &items[found->second];
}

const Attribute* AttributeList::find(std::wstring_view name) const {
    constexpr std::size_t kShort = 16;
    if (items.size() > kShort) return m_index.find(items, name);
    const auto found = std::ranges::find(items, name, &Attribute::name);
    return found == items.end() ? nullptr : &*found;
}

long AttributeList::own() const {
    long bytes = items.empty() ? 0 : kListHeaderCost;
    for (const Attribute& attribute : items) bytes += attributeCost(attribute);
    return bytes;
}

AttributeList decodeAttributes(const TagList& record, const TextCoding& coding,
                               HandleResolver& handles) {
    AttributeList list;
    const auto ranges = extendedRanges(record, kAttributeApplication);
    list.foreign = foreignBytes(record, ranges);
    if (ranges.size() > 1)
        list.damage = "two lists of attributes on one record";
    else if (ranges.size() == 1)
        Decoder(record, ranges.front(), coding, handles).run(list);
    return list;
}

std::string encodeAttributes(const std::vector<Attribute>& items, const LineStyle& style,
                             HandleResolver& handles) {
    if (items.empty()) return {};
    std::string bytes = line(style, 1001, kAttributeApplication);
    bytes += integerLine(style, 1070, kLayoutVersion);
    for (const Attribute& attribute : items) {
        appendString(bytes, style, attribute.name);
        for (const LispToken& token : tokensOf(attribute.value))
            appendToken(bytes, style, token, handles);
    }
    return bytes;
}

long attributeCost(const Attribute& attribute) {
    long cost = stringCost(attribute.name);
    for (const LispToken& token : tokensOf(attribute.value)) cost += tokenCost(token);
    return cost;
}

bool sameAttributes(const std::vector<Attribute>& a, const std::vector<Attribute>& b) {
    return std::ranges::equal(a, b, [](const Attribute& x, const Attribute& y) {
        return x.name == y.name && sameValue(x.value, y.value);
    });
}

bool isStorable(const CMORAdsLispVar& value) {
    return std::ranges::none_of(tokensOf(value), [](const LispToken& token) {
        return token.is(LispKind::Real) && !std::isfinite(token.asReal());
    });
}

}  // namespace mor::host
