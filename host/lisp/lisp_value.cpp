#include "host/lisp/lisp_value.h"

#include "host/host.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <utility>

namespace mor {

LispKind LispToken::kind() const noexcept {
    if (const auto* mark = std::get_if<LispKind>(&m_content)) return *mark;
    if (std::holds_alternative<std::int32_t>(m_content)) return LispKind::Integer;
    if (std::holds_alternative<double>(m_content)) return LispKind::Real;
    return std::holds_alternative<Text>(m_content) ? LispKind::String : LispKind::EntityName;
}

bool operator==(const LispToken& a, const LispToken& b) {
    if (a.kind() != b.kind()) return false;
    if (a.is(LispKind::Real))
        return std::bit_cast<std::uint64_t>(a.asReal()) == std::bit_cast<std::uint64_t>(b.asReal());
    if (a.is(LispKind::String)) return a.asString() == b.asString();
    return a.m_content == b.m_content;
}

std::span<const LispToken> LispTokens::element(std::size_t index) const {
    const Range range = elements()[index];
    return std::span{m_items}.subspan(range.begin, range.size);
}

void LispTokens::append(std::span<const LispToken> elementTokens) {
    m_items.pop_back();
    m_items.insert(m_items.end(), elementTokens.begin(), elementTokens.end());
    m_items.push_back(LispToken::close());
    m_elements.clear();
}

const std::vector<LispTokens::Range>& LispTokens::elements() const {
    if (!m_elements.empty() || !isList()) return m_elements;
    std::size_t depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 1; i + 1 < m_items.size(); ++i) {
        const LispKind kind = m_items[i].kind();
        if (kind == LispKind::Close) --depth;
        if (depth == 0 && kind != LispKind::Close) begin = i;
        if (kind == LispKind::Open) ++depth;
        if (depth == 0 && kind != LispKind::Dot) m_elements.push_back({begin, i + 1 - begin});
    }
    return m_elements;
}

CMORAdsLispVar LispAccess::make(std::vector<LispToken> tokens) {
    CMORAdsLispVar result;
    if (!tokens.front().is(LispKind::Nil))
        result.m_tokens = std::make_shared<LispTokens>(std::move(tokens));
    return result;
}

LispTokens& LispAccess::change(CMORAdsLispVar& value) {
    if (value.m_tokens.use_count() > 1)
        value.m_tokens = std::make_shared<LispTokens>(std::as_const(*value.m_tokens));
    return *value.m_tokens;
}

bool LispBuilder::add(LispToken token) {
    switch (token.kind()) {
        case LispKind::Close:
            return addClose();
        case LispKind::Dot:
            return addDot();
        case LispKind::Open:
            if (!mayBegin()) return false;
            addOpen();
            return true;
        default:
            if (!mayBegin()) return false;
            addAtom(std::move(token));
            return true;
    }
}

CMORAdsLispVar LispBuilder::take() {
    m_started = false;
    return LispAccess::make(std::exchange(m_tokens, {}));
}

bool LispBuilder::mayBegin() const noexcept {
    return m_frames.empty() ? !m_started : m_frames.back().stage != Stage::AfterTail;
}

void LispBuilder::addOpen() {
    m_started = true;
    const bool spliced = !m_frames.empty() && m_frames.back().stage == Stage::AfterDot;
    if (!m_frames.empty()) m_frames.back().empty = false;
    if (!spliced) m_tokens.push_back(LispToken::open());
    m_frames.push_back({Stage::Elements, spliced, true});
}

void LispBuilder::addAtom(LispToken token) {
    m_started = true;
    const bool tail = !m_frames.empty() && m_frames.back().stage == Stage::AfterDot;
    if (!m_frames.empty()) m_frames.back().empty = false;
    if (tail) m_frames.back().stage = Stage::AfterTail;
    if (tail && token.is(LispKind::Nil)) return;
    if (tail) m_tokens.push_back(LispToken::dot());
    m_tokens.push_back(std::move(token));
}

bool LispBuilder::addClose() {
    if (m_frames.empty() || m_frames.back().stage == Stage::AfterDot) return false;
    const Frame frame = m_frames.back();
    m_frames.pop_back();
    if (frame.spliced)
        m_frames.back().stage = Stage::AfterTail;
    else if (frame.empty)
        m_tokens.back() = LispToken::nil();
    else
        m_tokens.push_back(LispToken::close());
    return true;
}

bool LispBuilder::addDot() {
    if (m_frames.empty() || m_frames.back().stage != Stage::Elements || m_frames.back().empty)
        return false;
    m_frames.back().stage = Stage::AfterDot;
    return true;
}

namespace {

CMORAdsLispVar makeAtom(LispToken token) {
    std::vector<LispToken> tokens;
    tokens.push_back(std::move(token));
    return LispAccess::make(std::move(tokens));
}

bool isProperList(const CMORAdsLispVar& value) {
    const LispTokens* tokens = LispAccess::tokens(value);
    return tokens != nullptr && tokens->isList() && !tokens->isDotted();
}

const LispToken* atomOf(const CMORAdsLispVar& value, LispKind kind) {
    const LispTokens* tokens = LispAccess::tokens(value);
    if (tokens == nullptr || !tokens->items().front().is(kind)) return nullptr;
    return &tokens->items().front();
}

}  // namespace
}  // namespace mor

CMORAdsLispVar::CMORAdsLispVar(const wchar_t* text) {
    if (text != nullptr) *this = mor::host::makeString(text);
}

CMORAdsLispVar::CMORAdsLispVar(const CMORConsProxy& cons) : m_tokens(cons.value().m_tokens) {}

CMORAdsLispVar::CMORAdsLispVar(const ads_name name)
    : CMORAdsLispVar(mor::makeAtom(mor::LispToken::entityName(mor::EntityName{name}))) {}

CMORAdsLispVar& CMORAdsLispVar::Append(const CMORAdsLispVar& list) {
    // When it is this very value, the change below copies.
    const CMORAdsLispVar added = list;  // NOLINT(performance-unnecessary-copy-initialization)
    if (!mor::isProperList(added)) return *this;
    if (m_tokens == nullptr) {
        *this = added;
    } else if (mor::isProperList(*this)) {
        mor::LispAccess::change(*this).append(mor::LispAccess::tokens(added)->inside());
    }
    return *this;
}

namespace mor::host {

std::span<const LispToken> tokensOf(const CMORAdsLispVar& value) {
    static const std::array<LispToken, 1> s_nil{LispToken::nil()};
    const LispTokens* tokens = LispAccess::tokens(value);
    return tokens == nullptr ? std::span<const LispToken>{s_nil} : std::span{tokens->items()};
}

CMORAdsLispVar makeInteger(std::int32_t value) { return makeAtom(LispToken::integer(value)); }
CMORAdsLispVar makeReal(double value) { return makeAtom(LispToken::real(value)); }
CMORAdsLispVar makeString(std::wstring_view text) {
    return makeAtom(LispToken::string(std::wstring{text}));
}

CMORAdsLispVar makeList(const std::vector<CMORAdsLispVar>& items, const CMORAdsLispVar& tail) {
    if (items.empty()) return {};
    std::vector<LispToken> tokens{LispToken::open()};
    for (const CMORAdsLispVar& item : items)
        std::ranges::copy(tokensOf(item), std::back_inserter(tokens));
    const LispTokens* rest = LispAccess::tokens(tail);
    if (rest != nullptr && !rest->isList()) tokens.push_back(LispToken::dot());
    if (rest != nullptr)
        std::ranges::copy(rest->isList() ? rest->inside() : tokensOf(tail),
                          std::back_inserter(tokens));
    tokens.push_back(LispToken::close());
    return LispAccess::make(std::move(tokens));
}

ValueKind kindOf(const CMORAdsLispVar& value) {
    const LispTokens* tokens = LispAccess::tokens(value);
    if (tokens == nullptr) return ValueKind::Nil;
    switch (tokens->items().front().kind()) {
        case LispKind::Integer:
            return ValueKind::Integer;
        case LispKind::Real:
            return ValueKind::Real;
        case LispKind::String:
            return ValueKind::String;
        case LispKind::EntityName:
            return ValueKind::EntityName;
        default:
            return tokens->isDotted() ? ValueKind::DottedList : ValueKind::List;
    }
}

std::int32_t integerOf(const CMORAdsLispVar& value) {
    const LispToken* atom = atomOf(value, LispKind::Integer);
    return atom == nullptr ? 0 : atom->asInteger();
}

double realOf(const CMORAdsLispVar& value) {
    const LispToken* atom = atomOf(value, LispKind::Real);
    return atom == nullptr ? 0.0 : atom->asReal();
}

std::wstring stringOf(const CMORAdsLispVar& value) {
    const LispToken* atom = atomOf(value, LispKind::String);
    return atom == nullptr ? std::wstring{} : atom->asString();
}

EntityName entityNameOf(const CMORAdsLispVar& value) {
    const LispToken* atom = atomOf(value, LispKind::EntityName);
    return atom == nullptr ? EntityName{} : atom->asEntityName();
}

std::vector<CMORAdsLispVar> elementsOf(const CMORAdsLispVar& value) {
    std::vector<CMORAdsLispVar> result;
    const LispTokens* tokens = LispAccess::tokens(value);
    if (tokens == nullptr) return result;
    for (std::size_t i = 0; i < tokens->elementCount(); ++i)
        result.push_back(LispAccess::make(tokens->element(i)));
    return result;
}

bool sameValue(const CMORAdsLispVar& a, const CMORAdsLispVar& b) {
    const LispTokens* left = LispAccess::tokens(a);
    const LispTokens* right = LispAccess::tokens(b);
    if (left == nullptr || right == nullptr) return left == right;
    return left == right || left->items() == right->items();
}

}  // namespace mor::host
