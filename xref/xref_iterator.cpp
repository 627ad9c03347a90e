#include "xref/xref_iterator.h"

MOR_Letter_XRefSpaceIterator::MOR_Letter_XRefSpaceIterator() = default;

MOR_Letter_XRefSpaceIterator::~MOR_Letter_XRefSpaceIterator() = default;

void MOR_Letter_XRefSpaceIterator::add(const std::set<mor::EntityName>& entities) {
    m_entities.insert(entities.begin(), entities.end());
}

void MOR_Letter_XRefSpaceIterator::reset() { m_restart = true; }

ads_name* MOR_Letter_XRefSpaceIterator::next() {
    if (m_entities.empty()) return nullptr;
    if (m_restart) m_position = m_entities.begin();
    m_restart = false;
    if (m_position == m_entities.end()) return nullptr;
    m_position->copyTo(m_current);
    ++m_position;
    return &m_current;
}
