#pragma once

#include "host/drawing/change.h"
#include "host/text/text_coding.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::host {

struct Attribute {
    std::wstring name;
    CMORAdsLispVar value;
};

/// Positions by name, for long lists; made when one is first searched. A copy begins without.
class AttributeIndex {
public:
    AttributeIndex() = default;
    AttributeIndex(const AttributeIndex& /*other*/) {}
    AttributeIndex& operator=(const AttributeIndex& /*other*/) {
        m_positions.clear();
        return *this;
    }
    AttributeIndex(AttributeIndex&& /*other*/) noexcept {}
    AttributeIndex& operator=(AttributeIndex&& /*other*/) noexcept {
        m_positions.clear();
        return *this;
    }
    ~AttributeIndex() = default;
    /// `items` are those of the searches before, unchanged.
    [[nodiscard]] const Attribute* find(const std::vector<Attribute>& items,
                                        std::wstring_view name);

private:
    std::unordered_map<std::wstring_view, std::size_t> m_positions;
};

/// Named attributes in the order in which they were first set.
struct AttributeList {
    std::vector<Attribute> items;
    long foreign = 0;  ///< bytes used by other applications
    std::string
        damage;  ///< why the list cannot be read; then there are no items and nothing may be set

    /// The items of a list that is searched must not be changed any more.
    [[nodiscard]] const Attribute* find(std::wstring_view name) const;
    [[nodiscard]] long own()
        const;  ///< bytes of the list in its canonical form, 0 when it is empty
    [[nodiscard]] long used() const { return foreign + own(); }

private:
    mutable AttributeIndex m_index;
};

/// Turns handles into entity names and back; the drawing's business.
class HandleResolver {
public:
    virtual ~HandleResolver() = default;
    /// Of a handle that no record has, a name that stands for it; none for 0.
    [[nodiscard]] virtual EntityName nameForHandle(std::uint64_t handle) const = 0;
    /// 0 for a record without a handle and for names of other drawings.
    [[nodiscard]] virtual std::uint64_t handleForName(EntityName name) const = 0;
};

/// Decodes the attributes of a record. What we write is ASCII; `coding` is that of the file, in
/// which programs that decode escapes write the same texts.
[[nodiscard]] AttributeList decodeAttributes(const GroupList& record, const TextCoding& coding,
                                             const HandleResolver& handles);
/// The list as extended data, its 1001 first; empty for no items.
[[nodiscard]] std::vector<NewGroup> encodeAttributes(const std::vector<Attribute>& items,
                                                     const HandleResolver& handles);
/// Bytes that one attribute takes, name and value.
[[nodiscard]] long attributeCost(const Attribute& attribute);
/// Whether both hold the same names with the same values in the same order.
[[nodiscard]] bool sameAttributes(const std::vector<Attribute>& a, const std::vector<Attribute>& b);
/// Infinite reals and not-a-number have no DXF form.
[[nodiscard]] bool isStorable(const CMORAdsLispVar& value);

}  // namespace mor::host
