#pragma once

#include "platform/types.h"

#include <compare>

namespace mor {

/// An entity name by value: compares both words, as signed numbers, the first word first. It stands
/// wherever an operation takes an `ads_name` to read.
class EntityName {
public:
    EntityName() = default;
    EntityName(std::int64_t first, std::int64_t second) : m_words{first, second} {}
    explicit EntityName(const ads_name name) : m_words{name[0], name[1]} {}

    // NOLINTNEXTLINE(google-explicit-constructor): an ads_name is an array, which is what it gives
    operator const std::int64_t*() const noexcept { return m_words; }
    explicit operator bool() const = delete;  // it would be that of the pointer

    [[nodiscard]] std::int64_t first() const noexcept { return m_words[0]; }
    [[nodiscard]] std::int64_t second() const noexcept { return m_words[1]; }
    void copyTo(ads_name result) const noexcept {
        result[0] = m_words[0];
        result[1] = m_words[1];
    }
    /// {0, 0} names nothing.
    [[nodiscard]] bool isNone() const noexcept { return m_words[0] == 0 && m_words[1] == 0; }

    friend auto operator<=>(const EntityName&, const EntityName&) = default;
    friend bool operator==(const EntityName&, const EntityName&) = default;
    // Without it the library's own comparison would compare the pointers.
    friend bool operator<(const EntityName& a, const EntityName& b) { return (a <=> b) < 0; }

private:
    ads_name m_words = {};
};

}  // namespace mor
