#pragma once

#include "platform/types.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace mor {
class LispTokens;   // how a value is held: the host's business
struct LispAccess;  // through which the host reaches it
}  // namespace mor

class CMORConsProxy;

/// One LISP value: nil, integer (32 bits), real, string, entity name or list. Copied by value; a
/// copy never changes through another. Nesting and length are limited by memory only.
class CMORAdsLispVar {
public:
    CMORAdsLispVar() noexcept = default;        // nil
    CMORAdsLispVar(const wchar_t* text);        // NOLINT: a string; null gives nil
    CMORAdsLispVar(const CMORConsProxy& cons);  // NOLINT: as LISP code reads
    explicit CMORAdsLispVar(const ads_name name);
    CMORAdsLispVar(const CMORAdsLispVar&) noexcept = default;
    CMORAdsLispVar(CMORAdsLispVar&&) noexcept = default;
    CMORAdsLispVar& operator=(const CMORAdsLispVar&) noexcept = default;
    CMORAdsLispVar& operator=(CMORAdsLispVar&&) noexcept = default;
    ~CMORAdsLispVar() = default;

    /// Appends the elements of `list` to this list, in place; nil adds nothing. A value that is no
    /// proper list, on either side, leaves this one unchanged.
    CMORAdsLispVar& Append(const CMORAdsLispVar& list);

private:
    friend struct mor::LispAccess;
    std::shared_ptr<mor::LispTokens>
        m_tokens;  // null: nil; shared between copies, copied before a change
};

/// What `CMORAdsLisp::Cons` and `Reverse` answer, until it is turned into a value.
class CMORConsProxy {
public:
    explicit CMORConsProxy(CMORAdsLispVar value) noexcept : m_value(std::move(value)) {}
    [[nodiscard]] const CMORAdsLispVar& value() const noexcept { return m_value; }

private:
    CMORAdsLispVar m_value;
};
class CMORReverseProxy {
public:
    explicit CMORReverseProxy(CMORAdsLispVar value) noexcept : m_value(std::move(value)) {}
    [[nodiscard]] const CMORAdsLispVar& value() const noexcept { return m_value; }

private:
    CMORAdsLispVar m_value;
};

/// The functions of the LISP value library.
class CMORAdsLisp {
public:
    static const CMORAdsLispVar Nil;

    [[nodiscard]] static bool NilP(const CMORAdsLispVar& value);
    /// nil, a list or a dotted pair.
    [[nodiscard]] static bool ListP(const CMORAdsLispVar& value);
    /// A proper list that is not nil (a dotted pair is none).
    [[nodiscard]] static bool RealListP(const CMORAdsLispVar& value);
    [[nodiscard]] static bool StringP(const CMORAdsLispVar& value);

    /// The number of elements; 0 for nil, for atoms and for dotted pairs.
    [[nodiscard]] static std::size_t Length(const CMORAdsLispVar& list);
    /// The element at `index`, from 0; nil outside the list.
    [[nodiscard]] static CMORAdsLispVar Nth(unsigned index, const CMORAdsLispVar& list);
    [[nodiscard]] static CMORAdsLispVar List(const CMORAdsLispVar& a);
    [[nodiscard]] static CMORAdsLispVar List(const CMORAdsLispVar& a, const CMORAdsLispVar& b);
    /// `a` in front of the list `b`; a dotted pair when `b` is an atom other than nil.
    [[nodiscard]] static CMORConsProxy Cons(const CMORAdsLispVar& a, const CMORAdsLispVar& b);
    /// Both lists in one; nil arguments vanish; nil when an argument is no proper list.
    [[nodiscard]] static CMORAdsLispVar Append(const CMORAdsLispVar& a, const CMORAdsLispVar& b);
    /// nil for a value that is no proper list.
    [[nodiscard]] static CMORReverseProxy Reverse(const CMORAdsLispVar& list);

    static CMORAdsLispVar& SetQ(CMORAdsLispVar& target, const CMORAdsLispVar& value);
    static CMORAdsLispVar& SetQ(CMORAdsLispVar& target, const CMORConsProxy& value);
    static CMORAdsLispVar& SetQ(CMORAdsLispVar& target, const CMORReverseProxy& value);
    /// An integer value, else 0; values beyond 16 bits keep their low 16 bits.
    static short& SetQ(short& target, const CMORAdsLispVar& value);
    /// The text of a string value, valid while the value lives; null for any other value.
    static const wchar_t*& SetQ(const wchar_t*& target, const CMORAdsLispVar& value);
    /// The entity name; {0, 0} for any other value.
    static void SetQ(ads_name target, const CMORAdsLispVar& value);

    /// The value of the system variable whose name is the string `name` (any case); nil when
    /// unknown.
    [[nodiscard]] static CMORAdsLispVar GetVar(const CMORAdsLispVar& name);
    /// Prints the value on the command line as princ does: strings without quotes, reals with six
    /// digits.
    static void PrinC(const CMORAdsLispVar& value);
};
