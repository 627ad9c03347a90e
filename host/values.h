#pragma once

#include "host/result.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// LISP values as tools and tests make, take apart, print and read them.
namespace mor::host {

[[nodiscard]] CMORAdsLispVar makeInteger(std::int32_t value);
[[nodiscard]] CMORAdsLispVar makeReal(double value);
[[nodiscard]] CMORAdsLispVar makeString(std::wstring_view text);
/// nil for no items. `tail`, when given and no list, makes the list dotted.
[[nodiscard]] CMORAdsLispVar makeList(const std::vector<CMORAdsLispVar>& items,
                                      const CMORAdsLispVar& tail = {});

enum class ValueKind { Nil, Integer, Real, String, EntityName, List, DottedList };
[[nodiscard]] ValueKind kindOf(const CMORAdsLispVar& value);
[[nodiscard]] std::int32_t integerOf(const CMORAdsLispVar& value);  ///< 0 for other kinds
[[nodiscard]] double realOf(const CMORAdsLispVar& value);           ///< 0.0 for other kinds
[[nodiscard]] std::wstring stringOf(const CMORAdsLispVar& value);   ///< empty for other kinds
[[nodiscard]] mor::EntityName entityNameOf(const CMORAdsLispVar& value);
/// The elements of a list, the tail of a dotted one last; empty for other kinds.
[[nodiscard]] std::vector<CMORAdsLispVar> elementsOf(const CMORAdsLispVar& value);
/// Equal in type, structure and bits.
[[nodiscard]] bool sameValue(const CMORAdsLispVar& a, const CMORAdsLispVar& b);

/// LISP text that reads back to the same value, UTF-8: 42, 1.0, "a\"b", (1 (2 "x") . 3), nil,
/// (handent "1A2F").
[[nodiscard]] std::string lispText(const CMORAdsLispVar& value);
/// Whether a handle that no record has is an error, or kept as a name to which nothing connects.
enum class UnknownHandles { Refuse, Keep };
/// Reads one value; `(handent "1A2F")` looks up the current document. Errors name the column and
/// what would work.
Result<CMORAdsLispVar> readLisp(std::string_view text,
                                UnknownHandles unknown = UnknownHandles::Refuse);
/// What reading an attribute of that value as a text gives: at most 2047 characters; of a value
/// that is no text, what `princ` prints.
[[nodiscard]] std::wstring attributeText(const CMORAdsLispVar& value);
/// Whether an entity name stands anywhere in the value.
[[nodiscard]] bool holdsEntityName(const CMORAdsLispVar& value);

[[nodiscard]] std::string toUtf8(std::wstring_view text);
/// Empty when the bytes are no UTF-8.
[[nodiscard]] std::optional<std::wstring> fromUtf8(std::string_view bytes);

}  // namespace mor::host
