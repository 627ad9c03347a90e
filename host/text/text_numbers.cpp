#include "host/text/text_numbers.h"

namespace mor::host {

namespace {

/// Where a text is looked for first; texts of one drawing seldom share a place.
std::size_t placeOf(std::string_view text) {
    if (text.empty()) return 0;
    const auto byte = [&](std::size_t at) {
        return std::size_t{static_cast<unsigned char>(text[at])};
    };
    return (text.size() * 31 + byte(0) * 7 + byte(text.size() / 2) * 13 + byte(text.size() - 1)) &
           255U;
}

}  // namespace

TextNumbers::TextNumbers() {
    m_texts.emplace_back();
    m_numbers.emplace(std::string(), std::uint16_t{0});
}

std::uint16_t TextNumbers::number(std::string_view text) {
    std::uint16_t& recent = m_recent[placeOf(text)];
    if (m_texts[recent] == text) return recent;
    const auto found = m_numbers.find(std::string(text));
    if (found != m_numbers.end()) return recent = found->second;
    if (m_texts.size() >= kTooMany) return kTooMany;
    const auto number = static_cast<std::uint16_t>(m_texts.size());
    m_texts.emplace_back(text);
    m_numbers.emplace(text, number);
    return recent = number;
}

std::uint16_t TextNumbers::find(std::string_view text) const {
    const auto found = m_numbers.find(std::string(text));
    return found == m_numbers.end() ? kNone : found->second;
}

}  // namespace mor::host
