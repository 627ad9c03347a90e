#pragma once

#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace mor {

enum class LispKind { Nil, Integer, Real, String, EntityName, Open, Close, Dot };

/// One token of a value. A text is shared between copies and never changed.
class LispToken {
public:
    [[nodiscard]] static LispToken nil() { return LispToken{LispKind::Nil}; }
    [[nodiscard]] static LispToken open() { return LispToken{LispKind::Open}; }
    [[nodiscard]] static LispToken close() { return LispToken{LispKind::Close}; }
    [[nodiscard]] static LispToken dot() { return LispToken{LispKind::Dot}; }
    [[nodiscard]] static LispToken integer(std::int32_t value) { return LispToken{value}; }
    [[nodiscard]] static LispToken real(double value) { return LispToken{value}; }
    [[nodiscard]] static LispToken string(std::wstring text) {
        return LispToken{std::make_shared<const std::wstring>(std::move(text))};
    }
    [[nodiscard]] static LispToken entityName(EntityName name) { return LispToken{name}; }

    [[nodiscard]] LispKind kind() const noexcept;
    [[nodiscard]] bool is(LispKind wanted) const noexcept { return kind() == wanted; }

    // Only for a token of that kind.
    [[nodiscard]] std::int32_t asInteger() const { return std::get<std::int32_t>(m_content); }
    [[nodiscard]] double asReal() const { return std::get<double>(m_content); }
    [[nodiscard]] const std::wstring& asString() const { return *std::get<Text>(m_content); }
    [[nodiscard]] EntityName asEntityName() const { return std::get<EntityName>(m_content); }

    /// Equal in kind and, reals included, in bits.
    friend bool operator==(const LispToken& a, const LispToken& b);

private:
    using Text = std::shared_ptr<const std::wstring>;
    using Content = std::variant<LispKind, std::int32_t, double, Text, EntityName>;
    explicit LispToken(Content content) : m_content(std::move(content)) {}

    Content m_content;
};

/// A value that is not nil, as its tokens in reading order: one atom, or Open, elements, Close,
/// where the last element of a dotted list stands behind a Dot. Flat, so that no depth of nesting
/// needs a stack. Always normalised: no list is empty (it is Nil), and what follows a Dot is an
/// atom other than Nil.
class LispTokens {
public:
    explicit LispTokens(std::vector<LispToken> items) : m_items(std::move(items)) {}

    [[nodiscard]] const std::vector<LispToken>& items() const noexcept { return m_items; }
    [[nodiscard]] bool isList() const noexcept { return m_items.front().is(LispKind::Open); }
    [[nodiscard]] bool isDotted() const noexcept {
        return m_items.size() >= 5 && m_items[m_items.size() - 3].is(LispKind::Dot);
    }
    /// What stands between Open and Close of a list.
    [[nodiscard]] std::span<const LispToken> inside() const noexcept {
        return std::span{m_items}.subspan(1, m_items.size() - 2);
    }
    /// The number of elements, the tail of a dotted list included; 0 for an atom.
    [[nodiscard]] std::size_t elementCount() const { return elements().size(); }
    /// The tokens of one element; `index` is below `elementCount`.
    [[nodiscard]] std::span<const LispToken> element(std::size_t index) const;
    /// Adds elements at the end of a proper list.
    void append(std::span<const LispToken> elementTokens);

private:
    struct Range {
        std::size_t begin = 0;
        std::size_t size = 0;
    };
    [[nodiscard]] const std::vector<Range>& elements() const;

    std::vector<LispToken> m_items;
    mutable std::vector<Range> m_elements;  // found on first use, empty again after a change
};

/// The host's way into a value.
struct LispAccess {
    /// Null for nil.
    [[nodiscard]] static const LispTokens* tokens(const CMORAdsLispVar& value) noexcept {
        return value.m_tokens.get();
    }
    /// A value from the tokens of exactly one normalised value.
    [[nodiscard]] static CMORAdsLispVar make(std::vector<LispToken> tokens);
    [[nodiscard]] static CMORAdsLispVar make(std::span<const LispToken> tokens) {
        return make(std::vector<LispToken>(tokens.begin(), tokens.end()));
    }
    /// The tokens for a change of this value alone; the value is not nil.
    [[nodiscard]] static LispTokens& change(CMORAdsLispVar& value);
};

/// Puts a value together from tokens in reading order and normalises it: an empty list becomes nil,
/// `(a . nil)` becomes `(a)` and `(a . (b))` becomes `(a b)`.
class LispBuilder {
public:
    /// False where the token cannot stand (a second value, a Dot without a value on both sides, a
    /// Close without an Open); nothing is taken then.
    [[nodiscard]] bool add(LispToken token);
    /// Exactly one whole value has been added.
    [[nodiscard]] bool complete() const noexcept { return m_started && m_frames.empty(); }
    /// How many lists are open.
    [[nodiscard]] std::size_t depth() const noexcept { return m_frames.size(); }
    /// The value, once complete; the builder is empty again.
    [[nodiscard]] CMORAdsLispVar take();

private:
    enum class Stage { Elements, AfterDot, AfterTail };
    struct Frame {
        Stage stage = Stage::Elements;
        bool spliced = false;  // the list is another one's tail: its parentheses and its dot vanish
        bool empty = true;
    };
    [[nodiscard]] bool mayBegin() const noexcept;
    void addOpen();
    void addAtom(LispToken token);
    [[nodiscard]] bool addClose();
    [[nodiscard]] bool addDot();

    std::vector<LispToken> m_tokens;
    std::vector<Frame> m_frames;
    bool m_started = false;
};

namespace host {

/// The tokens of a value; one Nil token for nil. Valid while the value lives unchanged.
[[nodiscard]] std::span<const LispToken> tokensOf(const CMORAdsLispVar& value);

/// The value as `princ` shows it: texts raw, reals with six significant digits.
[[nodiscard]] std::wstring princText(const CMORAdsLispVar& value);

// Defined by the drawings' side.
/// The handle of the record, upper-case hexadecimal; empty when it has none.
[[nodiscard]] std::wstring handleText(EntityName name);
/// The record of the current document with that handle, erased ones included.
[[nodiscard]] std::optional<EntityName> nameOfHandle(std::wstring_view handle);
/// The same, with a reserved name for a handle that no record has; none for bad text.
[[nodiscard]] std::optional<EntityName> keptNameOfHandle(std::wstring_view handle);

}  // namespace host
}  // namespace mor
