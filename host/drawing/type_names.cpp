#include "host/drawing/type_names.h"

namespace mor::host {

TypeNames::TypeNames() { static_cast<void>(number("")); }

std::uint16_t TypeNames::number(std::string_view name) {
    if (m_names.size() > m_last && m_names[m_last] == name) return m_last;
    const auto found = m_numbers.find(std::string(name));
    if (found != m_numbers.end()) return m_last = found->second;
    if (m_names.size() >= kNone) return 0;
    const auto number = static_cast<std::uint16_t>(m_names.size());
    m_names.emplace_back(name);
    m_numbers.emplace(name, number);
    return number;
}

std::uint16_t TypeNames::find(std::string_view name) const {
    const auto found = m_numbers.find(std::string(name));
    return found == m_numbers.end() ? kNone : found->second;
}

}  // namespace mor::host
