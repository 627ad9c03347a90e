#include "xref/xref_iterator.h"

#include <algorithm>

MOR_Letter_XRefSpaceIterator::MOR_Letter_XRefSpaceIterator() = default;

MOR_Letter_XRefSpaceIterator::~MOR_Letter_XRefSpaceIterator() = default;

void MOR_Letter_XRefSpaceIterator::add(const std::vector<mor::EntityName>& entities) {
    m_entities.insert(m_entities.end(), entities.begin(), entities.end());
}

void MOR_Letter_XRefSpaceIterator::reset() { m_restart = true; }

ads_name* MOR_Letter_XRefSpaceIterator::next() {
    if (m_entities.empty()) return nullptr;
    if (m_restart) {
        // Layers were added one behind the other.
        if (!std::ranges::is_sorted(m_entities)) std::ranges::sort(m_entities);
        m_entities.erase(std::unique(m_entities.begin(), m_entities.end()), m_entities.end());
        m_position = 0;
        m_restart = false;
    }
    if (m_position == m_entities.size()) return nullptr;
    m_entities[m_position++].copyTo(m_current);
    return &m_current;
}
