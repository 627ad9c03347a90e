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
#include <utility>
#include <vector>

namespace mor::host {

struct Attribute {
    std::wstring name;
    CMORAdsLispVar value;
};

/// Positions by name, for long lists; made when one is first searched.
class AttributeIndex {
public:
    /// The position of the name, `items.size()` where there is none. `items` are those of the
    /// searches before, but for what was told.
    [[nodiscard]] std::size_t find(const std::vector<Attribute>& items, std::wstring_view name);
    void added(const std::vector<Attribute>& items);  ///< the last one is new
    void forget() { m_slots.clear(); }

private:
    void put(const std::vector<Attribute>& items, std::size_t position);

    std::vector<std::uint32_t> m_slots;  ///< a position plus 1, at its name's hash or behind it
};

/// Named attributes in the order in which they were first set.
class AttributeList {
public:
    AttributeList() = default;
    explicit AttributeList(std::vector<Attribute> attributes) : m_items(std::move(attributes)) {}

    long foreign = 0;  ///< bytes used by other applications
    std::string
        damage;  ///< why the list cannot be read; then there are no items and nothing may be set

    [[nodiscard]] const std::vector<Attribute>& items() const { return m_items; }
    [[nodiscard]] const Attribute* find(std::wstring_view name) const;
    /// Sets one, at the end when it is new; nil takes it away. When memory is short nothing has
    /// changed.
    void set(std::wstring_view name, const CMORAdsLispVar& value);
    [[nodiscard]] long own()
        const;  ///< bytes of the list in its canonical form, 0 when it is empty
    [[nodiscard]] long used() const { return foreign + own(); }
    /// What would be used once that one is set.
    [[nodiscard]] long usedWith(std::wstring_view name, const CMORAdsLispVar& value) const;

private:
    [[nodiscard]] std::size_t positionOf(std::wstring_view name) const;
    [[nodiscard]] long bytesOfItems() const;

    std::vector<Attribute> m_items;
    mutable AttributeIndex m_index;
    mutable std::optional<long> m_bytes;  ///< of the items, once they were added up
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
