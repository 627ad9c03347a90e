#pragma once

#include "host/dxf_record.h"
#include "host/dxf_text.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

/// The application under which named attributes lie in the extended data.
inline constexpr std::string_view kAttributeApplication = "MOR_ATTRIBUTES";

struct Attribute {
    std::wstring name;
    CMORAdsLispVar value;
};

/// Named attributes in the order in which they were first set.
struct AttributeList {
    std::vector<Attribute> items;
    long foreign = 0;  ///< bytes used by other applications
    std::string
        damage;  ///< why the list cannot be read; then there are no items and nothing may be set

    [[nodiscard]] const Attribute* find(std::wstring_view name) const;
    [[nodiscard]] long own()
        const;  ///< bytes of the list in its canonical form, 0 when it is empty
    [[nodiscard]] long used() const { return foreign + own(); }
};

/// Turns handles into entity names and back; the drawing's business.
class HandleResolver {
public:
    virtual ~HandleResolver() = default;
    [[nodiscard]] virtual EntityName nameForHandle(std::uint64_t handle) = 0;
    [[nodiscard]] virtual std::uint64_t handleForName(EntityName name) = 0;
};

/// Decodes the attributes of a record. What we write is ASCII; `coding` is that of the file, in
/// which programs that decode escapes write the same texts.
[[nodiscard]] AttributeList decodeAttributes(const TagList& record, const TextCoding& coding,
                                             HandleResolver& handles);
/// The list as extended data, its 1001 first; empty for no items.
[[nodiscard]] std::string encodeAttributes(const std::vector<Attribute>& items,
                                           const LineStyle& style, HandleResolver& handles);
/// Bytes that one attribute takes, name and value.
[[nodiscard]] long attributeCost(const Attribute& attribute);
/// Whether both hold the same names with the same values in the same order.
[[nodiscard]] bool sameAttributes(const std::vector<Attribute>& a, const std::vector<Attribute>& b);
/// Infinite reals and not-a-number have no DXF form.
[[nodiscard]] bool isStorable(const CMORAdsLispVar& value);

}  // namespace mor::host
