#pragma once

#include "platform/entity_name.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mor {

/// Entity names by handle, an ordered map whose keys are compared without regard to case. It is
/// filled once and asked often, and may hold a million handles: the texts stand in one piece, the
/// entries in a row.
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
        std::uint32_t begin = 0;  // in m_texts
        std::uint32_t length = 0;
        EntityName entity;
    };
    [[nodiscard]] std::string_view textOf(const Entry& entry) const {
        return std::string_view(m_texts).substr(entry.begin, entry.length);
    }
    /// The handle in the form in which it is kept.
    static void append(std::string& texts, std::wstring_view handle);

    std::string m_texts;  // upper-case, UTF-8
    std::vector<Entry> m_entries;
};

}  // namespace mor
