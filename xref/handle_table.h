#pragma once

#include "platform/entity_name.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace mor {

/// Entity names by handle, an ordered map whose keys are compared without regard to case. It is
/// filled once and asked often, and may hold a million handles: short ones are numbers, in a row.
class HandleTable {
public:
    /// Keeps the handle in upper case, without leading zeros. One that is there already keeps its
    /// first entity.
    void add(std::wstring_view handle, const EntityName& entity);
    /// Puts in order what was added; to be called before `find`. Quick when most handles were added
    /// in their order, as drawings have them.
    void order();
    /// None when the handle is unknown. Case and leading zeros do not matter, as in the drawing
    /// itself.
    [[nodiscard]] EntityName find(std::wstring_view handle) const;

private:
    struct Entry {
        std::uint64_t key = 0;  // the bytes of the handle, the first one the highest
        EntityName entity;
    };
    /// The handle in the form in which it is kept; 0, and the text, when it is too long for a key.
    static std::uint64_t keyOf(std::wstring_view handle, std::string& text);

    std::vector<Entry> m_entries;
    std::map<std::string, EntityName> m_long;
};

}  // namespace mor
