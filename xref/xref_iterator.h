#pragma once

#include "platform/entity_name.h"
#include "space/letter_iterator.h"

#include <cstddef>
#include <vector>

/// Steps through entities of an external reference, in the order of their names. Holds a copy of
/// the names, so it outlives the reference's letter, though what they name may be gone.
class MOR_Letter_XRefSpaceIterator : public CMORCadLetterSpaceIterator {
public:
    MOR_Letter_XRefSpaceIterator();
    ~MOR_Letter_XRefSpaceIterator() override;

    /// Adds names, in any order; `reset` before the next `next`.
    void add(const std::vector<mor::EntityName>& entities);

    void reset() override;
    [[nodiscard]] ads_name* next() override;

private:
    std::vector<mor::EntityName> m_entities;  // in order, each once, from the first `next` on
    std::size_t m_position = 0;
    bool m_restart = true;
    ads_name m_current{};
};
