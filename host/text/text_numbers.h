#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// Numbers for texts that many records repeat: types, layers. The empty text has number 0.
class TextNumbers {
public:
    static constexpr std::uint16_t kNone = 0xFFFF;     ///< there is no such text
    static constexpr std::uint16_t kTooMany = 0xFFFE;  ///< one beyond the 65 534th

    TextNumbers();
    [[nodiscard]] std::uint16_t number(std::string_view text);  ///< adds it when new
    [[nodiscard]] std::uint16_t find(std::string_view text) const;
    /// Empty for kNone and kTooMany. It stays where it is until another text is added.
    [[nodiscard]] const std::string& text(std::uint16_t number) const {
        return m_texts[number < m_texts.size() ? number : 0];
    }
    [[nodiscard]] std::size_t count() const { return m_texts.size(); }

private:
    std::vector<std::string> m_texts;
    std::unordered_map<std::string, std::uint16_t> m_numbers;
    std::array<std::uint16_t, 256> m_recent{};  ///< by a few bytes of the text
};

}  // namespace mor::host
