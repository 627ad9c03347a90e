#pragma once

#include "platform/types.h"

#include <compare>

namespace mor {

/// An entity name by value: compares both words, as signed numbers, the first word first.
struct EntityName {
    std::int64_t first = 0;
    std::int64_t second = 0;

    EntityName() = default;
    EntityName(std::int64_t firstWord, std::int64_t secondWord)
        : first(firstWord), second(secondWord) {}
    explicit EntityName(const ads_name name) : first(name[0]), second(name[1]) {}

    void copyTo(ads_name result) const noexcept {
        result[0] = first;
        result[1] = second;
    }
    /// {0, 0} names nothing.
    [[nodiscard]] bool isNone() const noexcept { return first == 0 && second == 0; }

    friend auto operator<=>(const EntityName&, const EntityName&) = default;
};

}  // namespace mor
