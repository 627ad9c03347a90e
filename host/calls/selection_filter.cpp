#include "host/calls/selection_filter.h"

#include "host/calls/list_kind.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"
#include "platform/runtime.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace mor::host {

namespace {

/// Relations in their texts; longer ones first where one begins like another.
template <typename Relation>
std::optional<Relation> relationOf(std::wstring_view text) {
    static const std::pair<std::wstring_view, Relation> known[] = {
        {L"*", Relation::Any},        {L"=", Relation::Equal},     {L"!=", Relation::NotEqual},
        {L"/=", Relation::NotEqual},  {L"<>", Relation::NotEqual}, {L"<", Relation::Less},
        {L"<=", Relation::LessEqual}, {L">", Relation::Greater},   {L">=", Relation::GreaterEqual},
        {L"&", Relation::AnyBit},     {L"&=", Relation::AllBits}};
    for (const auto& [word, relation] : known)
        if (word == text) return relation;
    return std::nullopt;
}

/// The number as an integer; what is too large for one has no bits.
std::int64_t bitsOf(double value) {
    constexpr double kBound = 9223372036854775808.0;
    return value >= -kBound && value < kBound ? static_cast<std::int64_t>(value) : 0;
}

bool isIgnored(int code) { return code == -1 || code == 5 || (code >= 1000 && code <= 1071); }

}  // namespace

std::wstring filterText(const resbuf& item) {
    switch (item.restype == RTSTR ? ListKind::Text : listKind(item.restype)) {
        case ListKind::Text:
            return item.resval.rstring == nullptr ? L"" : item.resval.rstring;
        case ListKind::Short:
            return std::to_wstring(item.resval.rint);
        case ListKind::Long:
            return std::to_wstring(item.resval.rlong);
        case ListKind::Real: {
            const std::string text = realText(item.resval.rreal);
            return {text.begin(), text.end()};
        }
        case ListKind::Point:
        case ListKind::Name:
        case ListKind::None:
        case ListKind::Unknown:
            break;
    }
    return {};
}

SelectionFilter::SelectionFilter(Drawing& drawing, const resbuf* filter) : m_drawing(drawing) {
    m_nodes.emplace_back();
    m_valid = parse(filter);
    m_layersAlone = std::ranges::all_of(m_nodes, [](const Node& node) {
        return node.kind <= Kind::Not || node.kind == Kind::Always ||
               (node.kind == Kind::Text && node.code == kLayerCode);
    });
}

bool SelectionFilter::parse(const resbuf* filter) {
    std::vector<std::size_t> open = {0};
    std::array<Relation, 3> equal{Relation::Equal, Relation::Equal, Relation::Equal};
    std::array<Relation, 3> relation = equal;
    bool pending = false;
    for (const resbuf* item = filter; item != nullptr; item = item->rbnext) {
        if (item->restype != -4) {
            addTest(*item, relation);
            const Kind kind = m_nodes.back().kind;
            const bool compared = kind == Kind::Number || kind == Kind::Point ||
                                  kind == Kind::Space || kind == Kind::Always;
            if (pending && !compared) return false;
            relation = equal;
            pending = false;
            continue;
        }
        if (pending) return false;
        const std::wstring word = upperCase(filterText(*item));
        if (word.size() > 2 && (word.front() == L'<' || word.back() == L'>') && isAlpha(word[1])) {
            if (!openOrClose(word, open)) return false;
            continue;
        }
        const auto relations = relationsOf(word);
        if (!relations) return false;
        relation = *relations;
        pending = true;
    }
    m_nodes.front().end = m_nodes.size();
    return open.size() == 1 && !pending;
}

/// Relations with commas between them, for up to three coordinates; what is left out may be
/// anything.
std::optional<std::array<SelectionFilter::Relation, 3>> SelectionFilter::relationsOf(
    std::wstring_view word) {
    std::array<Relation, 3> all{Relation::Any, Relation::Any, Relation::Any};
    std::size_t begin = 0;
    for (Relation& relation : all) {
        const std::size_t comma = word.find(L',', begin);
        const auto one = relationOf<Relation>(word.substr(begin, comma - begin));
        if (!one) return std::nullopt;
        relation = *one;
        if (comma == std::wstring_view::npos) return all;
        begin = comma + 1;
    }
    return std::nullopt;  // a fourth one
}

bool SelectionFilter::openOrClose(std::wstring_view word, std::vector<std::size_t>& open) {
    static const std::pair<std::wstring_view, Kind> names[] = {
        {L"AND", Kind::All}, {L"OR", Kind::Any}, {L"XOR", Kind::Xor}, {L"NOT", Kind::Not}};
    for (const auto& [name, kind] : names) {
        if (word == L"<" + std::wstring(name)) {
            m_nodes.emplace_back();
            m_nodes.back().kind = kind;
            open.push_back(m_nodes.size() - 1);
            return true;
        }
        if (word != std::wstring(name) + L">") continue;
        if (open.size() == 1 || m_nodes[open.back()].kind != kind) return false;
        const std::size_t at = open.back();
        m_nodes[at].end = m_nodes.size();
        open.pop_back();
        std::size_t operands = 0;
        for (std::size_t child = at + 1; child < m_nodes.size(); child = m_nodes[child].end)
            ++operands;
        if (kind == Kind::Xor) return operands == 2;
        if (kind == Kind::Not) return operands == 1;
        return operands >= 1;
    }
    return false;
}

void SelectionFilter::addTest(const resbuf& item, const std::array<Relation, 3>& relation) {
    if (item.restype == kApplicationCode && m_nodes.back().kind == Kind::Application) {
        m_nodes.back().pattern.emplace(filterText(item), WildcardCase::Ignored);
        return;
    }
    Node node;
    node.code = item.restype == RTDXF0 ? 0 : item.restype;
    node.relation = relation;
    node.end = m_nodes.size() + 1;
    const ListKind kind = item.restype == RTSTR ? ListKind::Text : listKind(item.restype);
    node.kind = Kind::Always;
    if (isIgnored(node.code)) {
        m_nodes.push_back(std::move(node));
        return;
    }
    if (node.code == -3) {
        node.kind = Kind::Application;
        node.pattern.emplace(L"*");
    } else if (kind == ListKind::Text) {
        node.kind = Kind::Text;
        node.pattern.emplace(filterText(item), WildcardCase::Ignored);
    } else if (kind == ListKind::Point) {
        node.kind = Kind::Point;
        std::copy_n(item.resval.rpoint, 3, node.number.begin());
    } else if (kind == ListKind::Short || kind == ListKind::Long || kind == ListKind::Real) {
        node.kind = node.code == 67 ? Kind::Space : Kind::Number;
        node.number[0] = kind == ListKind::Real    ? item.resval.rreal
                         : kind == ListKind::Short ? item.resval.rint
                                                   : item.resval.rlong;
    } else if (kind == ListKind::Name) {
        node.kind = Kind::Name;
        const RecordNumber named = m_drawing.numberOf(EntityName(item.resval.rlname));
        if (named != 0) node.handle = m_drawing.handleOf(named);
    }
    m_nodes.push_back(std::move(node));
}

bool SelectionFilter::holds(Relation relation, double value, double wanted) {
    switch (relation) {
        case Relation::Any:
            return true;
        case Relation::Equal:
            return value == wanted;
        case Relation::NotEqual:
            return value != wanted;
        case Relation::Less:
            return value < wanted;
        case Relation::LessEqual:
            return value <= wanted;
        case Relation::Greater:
            return value > wanted;
        case Relation::GreaterEqual:
            return value >= wanted;
        case Relation::AnyBit:
            return (bitsOf(value) & bitsOf(wanted)) != 0;
        case Relation::AllBits:
            return (bitsOf(value) & bitsOf(wanted)) == bitsOf(wanted);
    }
    return false;
}

const GroupList& SelectionFilter::record(RecordNumber number) {
    if (m_recordOf != number) {
        m_record = m_drawing.groupsOf(number);
        m_recordOf = number;
    }
    return m_record;
}

bool SelectionFilter::testText(Node& node, std::string_view text) {
    const auto [known, added] = node.answers.try_emplace(std::string(text), false);
    if (added) known->second = node.pattern->matches(m_drawing.text().decode(text));
    return known->second;
}

/// Every entity lies on a layer, whether its record names one or not.
bool SelectionFilter::testLayer(Node& node, RecordNumber number) {
    const auto answer = [&] {
        const auto value = m_drawing.groupOf(number, kLayerCode);
        return testText(node, value ? value->text() : "0");
    };
    const std::uint16_t layer = m_drawing.layerNumberOf(number);
    if (layer >= TextNumbers::kTooMany) return answer();
    if (layer >= node.byLayer.size()) node.byLayer.resize(layer + std::size_t{1});
    std::optional<bool>& known = node.byLayer[layer];
    if (!known) known = answer();
    return *known;
}

bool SelectionFilter::testNumbers(const Node& node, RecordNumber number) {
    const GroupList& groups = record(number);
    if (groups.find(node.code) == nullptr) return false;
    const std::size_t coordinates = node.kind == Kind::Point ? 3 : 1;
    for (std::size_t i = 0; i < coordinates; ++i) {
        const Group* part = groups.find(node.code + 10 * static_cast<int>(i));
        const auto value = part == nullptr ? std::optional(0.0) : part->real();
        if (!value || !holds(node.relation[i], *value, node.number[i])) return false;
    }
    return true;
}

/// A record has a marker for each class that its groups belong to.
bool SelectionFilter::testMarkers(Node& node, RecordNumber number) {
    const GroupList& groups = record(number);
    for (std::size_t i = 0; i < groups.extendedBegin(); ++i)
        if (groups[i].code() == kMarkerCode && testText(node, groups[i].bare())) return true;
    return false;
}

bool SelectionFilter::test(Node& node, RecordNumber number) {
    switch (node.kind) {
        case Kind::Text: {
            if (node.code == 0) return testText(node, m_drawing.typeOf(number));
            if (node.code == kMarkerCode) return testMarkers(node, number);
            if (node.code == kLayerCode) return testLayer(node, number);
            const auto value = m_drawing.groupOf(number, node.code);
            return value && testText(node, value->text());
        }
        case Kind::Number:
        case Kind::Point:
            return testNumbers(node, number);
        case Kind::Name: {
            const auto value = m_drawing.groupOf(number, node.code);
            return value && node.handle != 0 && value->handle() == node.handle;
        }
        case Kind::Space:
            return holds(node.relation[0],
                         m_drawing.isPaper(m_drawing.entry(number).container) ? 1.0 : 0.0,
                         node.number[0]);
        case Kind::Application: {
            const GroupList& groups = record(number);
            for (std::size_t i = groups.extendedBegin(); i < groups.size(); ++i)
                if (groups[i].code() == kApplicationCode && testText(node, groups[i].bare()))
                    return true;
            return false;
        }
        default:
            return true;
    }
}

bool SelectionFilter::evaluate(std::size_t& at, RecordNumber number) {
    Node& node = m_nodes[at];
    if (node.kind > Kind::Not) {
        ++at;
        return test(node, number);
    }
    const std::size_t end = node.end;
    bool all = true;
    std::size_t held = 0;
    for (++at; at < end;) {
        const bool answer = evaluate(at, number);
        all = all && answer;
        held += answer ? 1 : 0;
        if ((node.kind == Kind::All && !answer) || (node.kind == Kind::Any && answer)) at = end;
    }
    switch (node.kind) {
        case Kind::All:
            return all;
        case Kind::Any:
            return held > 0;
        case Kind::Xor:
            return held == 1;
        default:
            return held == 0;
    }
}

/// The same for all records of one layer.
bool SelectionFilter::matchesLayer(RecordNumber number) {
    std::size_t at = 0;
    const std::uint16_t layer = m_drawing.layerNumberOf(number);
    if (layer >= TextNumbers::kTooMany) return evaluate(at, number);
    if (layer >= m_byLayer.size()) m_byLayer.resize(layer + std::size_t{1});
    std::optional<bool>& known = m_byLayer[layer];
    if (!known) known = evaluate(at, number);
    return *known;
}

bool SelectionFilter::matches(RecordNumber number) {
    const RecordEntry& entry = m_drawing.entry(number);
    if (entry.has(kEdge | kSubEntity | kErased | kGone) || entry.container == kNoContainer)
        return false;
    if (!m_drawing.isSpace(entry.container)) return false;
    if (m_layersAlone) return matchesLayer(number);
    // The type alone settles most: it needs no record.
    for (std::size_t at = 1; at < m_nodes.size(); at = m_nodes[at].end)
        if (m_nodes[at].kind == Kind::Text && m_nodes[at].code == 0 && !test(m_nodes[at], number))
            return false;
    std::size_t at = 0;
    return evaluate(at, number);
}

}  // namespace mor::host
