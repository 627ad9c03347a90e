#include "host/text/text_numbers.h"

namespace mor::host {

TextNumbers::TextNumbers() {
    m_texts.emplace_back();
    m_numbers.emplace(std::string(), std::uint16_t{0});
}

std::uint16_t TextNumbers::lookUp(std::string_view text) {
    const auto found = m_numbers.find(std::string(text));
    std::uint16_t number = found == m_numbers.end() ? kTooMany : found->second;
    if (found == m_numbers.end() && m_texts.size() < kTooMany) {
        number = static_cast<std::uint16_t>(m_texts.size());
        m_texts.emplace_back(text);
        m_numbers.emplace(text, number);
    }
    const std::uint64_t head = headOf(text);
    m_recent[placeOf(head, text.size())] = {head, text.size(), number};
    return number;
}

std::uint16_t TextNumbers::find(std::string_view text) const {
    const auto found = m_numbers.find(std::string(text));
    return found == m_numbers.end() ? kNone : found->second;
}

}  // namespace mor::host
