#include "platform/string_list.h"

CMORStringList::CMORStringList() = default;
CMORStringList::CMORStringList(const CMORStringList& other) = default;
CMORStringList& CMORStringList::operator=(const CMORStringList& other) = default;
CMORStringList::~CMORStringList() = default;

std::size_t CMORStringList::Entries() const { return m_items.size(); }

const wchar_t* CMORStringList::Nth(std::size_t index) const {
    return index < m_items.size() ? m_items[index].c_str() : nullptr;
}

bool CMORStringList::Append(const wchar_t* text) {
    if (text == nullptr) return false;
    m_items.emplace_back(text);
    return true;
}

bool CMORStringList::Prepend(const wchar_t* text) {
    if (text == nullptr) return false;
    m_items.emplace(m_items.begin(), text);
    return true;
}

bool CMORStringList::Reset() {
    m_items.clear();
    return true;
}
