#pragma once

#include "platform/entity_name.h"

#include <algorithm>
#include <vector>

namespace mor {

/// An ordered set of entity names, kept in a row: a walk through a drawing adds them in their
/// order.
class EntitySet {
public:
    void add(const EntityName& name) {
        if (m_names.empty() || m_names.back() < name) {
            m_names.push_back(name);
            return;
        }
        const auto place = std::ranges::lower_bound(m_names, name);
        if (*place != name) m_names.insert(place, name);
    }
    [[nodiscard]] const std::vector<EntityName>& names() const { return m_names; }

private:
    std::vector<EntityName> m_names;
};

}  // namespace mor
