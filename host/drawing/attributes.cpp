#include "host/drawing/attributes.h"

#include "host/handles.h"
#include "host/lisp/lisp_value.h"
#include "host/text/escapes.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

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

/// One character in the ASCII form that no reader of DXF takes for anything else.
std::string encodedCharacter(wchar_t c) {
    if (c >= 0x20 && c < 0x7F && c != L'^') return {static_cast<char>(c)};
    std::string result;
    appendUnicodeEscape(result, c);
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

using Groups = std::vector<NewGroup>;

void appendString(Groups& groups, std::wstring_view text) {
    auto chunks = chunksOf(text);
    if (chunks.size() > 1) groups.push_back({1070, static_cast<std::int64_t>(chunks.size())});
    for (std::string& chunk : chunks) groups.push_back({1000, std::move(chunk)});
}

long stringCost(std::wstring_view text) {
    const auto chunks = chunksOf(text);
    long cost = chunks.size() > 1 ? 3 : 0;
    for (const std::string& chunk : chunks) cost += 2 + static_cast<long>(chunk.size());
    return cost;
}

void appendToken(Groups& groups, const LispToken& token, const HandleResolver& handles) {
    switch (token.kind()) {
        case LispKind::Nil:
            groups.push_back({1070, kNilMark});
            break;
        case LispKind::Integer:
            groups.push_back({1071, std::int64_t{token.asInteger()}});
            break;
        case LispKind::Real:
            groups.push_back({1040, token.asReal()});
            break;
        case LispKind::String:
            appendString(groups, token.asString());
            break;
        case LispKind::EntityName: {
            std::string handle = handleText(handles.handleForName(token.asEntityName()));
            groups.push_back({1005, handle.empty() ? "0" : std::move(handle)});
            break;
        }
        case LispKind::Open:
            groups.push_back({1002, "{"});
            break;
        case LispKind::Close:
            groups.push_back({1002, "}"});
            break;
        case LispKind::Dot:
            groups.push_back({1070, kDotMark});
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
    Decoder(const GroupList& record, ExtendedRange range, const TextCoding& coding,
            const HandleResolver& handles)
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
        while (m_at < m_end && group().code() == kCommentCode) ++m_at;
        return m_at < m_end;
    }
    [[nodiscard]] const Group& group() const { return m_record[m_at]; }
    std::optional<std::int64_t> takeInteger(int code) {
        if (!skipComments() || group().code() != code) return std::nullopt;
        const auto value = group().integer();
        if (value) ++m_at;
        return value;
    }
    bool takeString(std::wstring& text) {
        if (!skipComments()) return false;
        std::int64_t chunks = 1;
        if (group().code() == 1070) {
            const auto count = takeInteger(1070);
            if (!count || *count < 2) return false;
            chunks = *count;
        }
        text.clear();
        for (; chunks > 0; --chunks) {
            if (!skipComments() || group().code() != 1000) return false;
            text += m_coding.decode(group().text());
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
        const Group& here = group();
        switch (here.code()) {
            case 1000: {
                std::wstring text;
                return takeString(text) && builder.add(LispToken::string(std::move(text)));
            }
            case 1002:
                ++m_at;
                return (here.bare() == "{" && builder.add(LispToken::open())) ||
                       (here.bare() == "}" && builder.add(LispToken::close()));
            case 1005:
                ++m_at;
                return builder.add(LispToken::entityName(m_handles.nameForHandle(here.handle())));
            case 1040: {
                const auto real = here.real();
                ++m_at;
                return real && builder.add(LispToken::real(*real));
            }
            case 1070:
                return takeMark(builder, here.integer());
            case 1071: {
                const auto integer = here.integer();
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

    const GroupList& m_record;
    std::size_t m_at;
    std::size_t m_end;
    const TextCoding& m_coding;
    const HandleResolver& m_handles;
};

long foreignBytes(const GroupList& record, const std::vector<ExtendedRange>& own) {
    long bytes = 0;
    for (std::size_t i = record.extendedBegin(); i < record.size(); ++i) {
        const bool ours = std::ranges::any_of(
            own, [i](const ExtendedRange& range) { return i >= range.begin && i < range.end; });
        if (!ours) bytes += extendedCost(record[i].code(), record[i].text().size());
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

AttributeList decodeAttributes(const GroupList& record, const TextCoding& coding,
                               const HandleResolver& handles) {
    AttributeList list;
    const auto ranges = extendedRanges(record, kAttributeApplication);
    list.foreign = foreignBytes(record, ranges);
    if (ranges.size() > 1)
        list.damage = "two lists of attributes on one record";
    else if (ranges.size() == 1)
        Decoder(record, ranges.front(), coding, handles).run(list);
    return list;
}

std::vector<NewGroup> encodeAttributes(const std::vector<Attribute>& items,
                                       const HandleResolver& handles) {
    Groups groups;
    if (items.empty()) return groups;
    groups.push_back({kApplicationCode, std::string(kAttributeApplication)});
    groups.push_back({1070, kLayoutVersion});
    for (const Attribute& attribute : items) {
        appendString(groups, attribute.name);
        for (const LispToken& token : tokensOf(attribute.value))
            appendToken(groups, token, handles);
    }
    return groups;
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
