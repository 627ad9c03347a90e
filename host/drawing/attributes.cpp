#include "host/drawing/attributes.h"

#include "host/handles.h"
#include "host/lisp/lisp_value.h"
#include "host/text/escapes.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <functional>
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

/// Whether the text stands in one chunk as it is.
bool isPlain(std::wstring_view text) {
    constexpr std::size_t kSurelyFits = 200;
    if (text.size() > kSurelyFits || text.starts_with(L' ') || text.ends_with(L' ')) return false;
    return std::ranges::all_of(
        text, [](wchar_t c) { return c >= 0x20 && c < 0x7F && c != L'^' && c != L'\\'; });
}

long stringCost(std::wstring_view text) {
    if (isPlain(text)) return 2 + static_cast<long>(text.size());
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

long valueCost(const CMORAdsLispVar& value) {
    long cost = 0;
    for (const LispToken& token : tokensOf(value)) cost += tokenCost(token);
    return cost;
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

    void run(std::vector<Attribute>& items, std::string& damage) {
        if (const auto version = takeInteger(1070); version != kLayoutVersion) {
            damage = version ? "unknown layout version " + std::to_string(*version)
                             : "the layout version is missing";
            return;
        }
        std::set<std::wstring> names;
        while (skipComments()) {
            Attribute attribute;
            if (!takeString(attribute.name) || !takeValue(attribute.value)) {
                damage = "the list of attributes breaks off or is mixed up behind " +
                         std::to_string(items.size()) + " attributes";
                break;
            }
            if (!names.insert(attribute.name).second) {
                damage = "two attributes of the name \"" + toUtf8(attribute.name) + "\"";
                break;
            }
            if (!CMORAdsLisp::NilP(attribute.value)) items.push_back(std::move(attribute));
        }
        if (!damage.empty()) items.clear();
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

void AttributeIndex::put(const std::vector<Attribute>& items, std::size_t position) {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::wstring_view>{}(items[position].name) & mask;
    while (m_slots[slot] != 0) slot = (slot + 1) & mask;
    m_slots[slot] = static_cast<std::uint32_t>(position + 1);
}

void AttributeIndex::added(const std::vector<Attribute>& items) {
    if (2 * items.size() > m_slots.size())
        forget();
    else
        put(items, items.size() - 1);
}

std::size_t AttributeIndex::find(const std::vector<Attribute>& items, std::wstring_view name) {
    if (m_slots.empty()) {
        m_slots.resize(std::bit_ceil(4 * items.size()));
        for (std::size_t i = 0; i < items.size(); ++i) put(items, i);
    }
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::wstring_view>{}(name)&mask;
    for (; m_slots[slot] != 0; slot = (slot + 1) & mask)
        if (items[m_slots[slot] - 1].name == name) return m_slots[slot] - 1;
    return items.size();
}

std::size_t AttributeList::positionOf(std::wstring_view name) const {
    constexpr std::size_t kShort = 8;
    if (m_items.size() > kShort) return m_index.find(m_items, name);
    return static_cast<std::size_t>(std::ranges::find(m_items, name, &Attribute::name) -
                                    m_items.begin());
}

const Attribute* AttributeList::find(std::wstring_view name) const {
    const std::size_t position = positionOf(name);
    return position == m_items.size() ? nullptr : &m_items[position];
}

void AttributeList::set(std::wstring_view name, const CMORAdsLispVar& value) {
    const std::size_t position = positionOf(name);
    const bool known = position < m_items.size();
    const bool removed = CMORAdsLisp::NilP(value);
    if (!known && removed) return;
    const long bytes = bytesOfItems() - (known ? attributeCost(m_items[position]) : 0);
    const long added = removed ? 0 : stringCost(name) + valueCost(value);
    if (removed) {
        m_index.forget();
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(position));
    } else if (known) {
        m_items[position].value = value;
    } else {
        m_items.push_back({std::wstring(name), value});
        m_index.added(m_items);
    }
    m_bytes = bytes + added;
}

long AttributeList::bytesOfItems() const {
    if (!m_bytes) {
        long bytes = 0;
        for (const Attribute& attribute : m_items) bytes += attributeCost(attribute);
        m_bytes = bytes;
    }
    return *m_bytes;
}

long AttributeList::own() const { return m_items.empty() ? 0 : kListHeaderCost + bytesOfItems(); }

long AttributeList::usedWith(std::wstring_view name, const CMORAdsLispVar& value) const {
    const Attribute* known = find(name);
    const bool removed = CMORAdsLisp::NilP(value);
    const std::size_t others = m_items.size() - (known != nullptr ? 1 : 0);
    long bytes = bytesOfItems() - (known != nullptr ? attributeCost(*known) : 0);
    if (!removed) bytes += stringCost(name) + valueCost(value);
    return foreign + bytes + (others > 0 || !removed ? kListHeaderCost : 0);
}

AttributeList decodeAttributes(const GroupList& record, const TextCoding& coding,
                               const HandleResolver& handles) {
    std::vector<Attribute> items;
    std::string damage;
    const auto ranges = extendedRanges(record, kAttributeApplication);
    if (ranges.size() > 1)
        damage = "two lists of attributes on one record";
    else if (ranges.size() == 1)
        Decoder(record, ranges.front(), coding, handles).run(items, damage);
    AttributeList list(std::move(items));
    list.foreign = foreignBytes(record, ranges);
    list.damage = std::move(damage);
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
    return stringCost(attribute.name) + valueCost(attribute.value);
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
