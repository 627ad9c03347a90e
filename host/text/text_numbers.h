#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
    [[nodiscard]] std::uint16_t number(std::string_view text) {  ///< adds it when new
        const std::uint64_t head = headOf(text);
        const Recent& recent = m_recent[placeOf(head, text.size())];
        return recent.head == head && recent.size == text.size() && text.size() <= sizeof head
                   ? recent.number
                   : lookUp(text);
    }
    [[nodiscard]] std::uint16_t find(std::string_view text) const;
    /// Empty for kNone and kTooMany. It stays where it is until another text is added.
    [[nodiscard]] const std::string& text(std::uint16_t number) const {
        return m_texts[number < m_texts.size() ? number : 0];
    }
    [[nodiscard]] std::size_t count() const { return m_texts.size(); }

private:
    struct Recent {
        std::uint64_t head = 0;
        std::size_t size = 0;
        std::uint16_t number = 0;
    };
    /// The first eight bytes.
    [[nodiscard]] static std::uint64_t headOf(std::string_view text) {
        const std::size_t size = text.size();
        if (size >= sizeof(std::uint64_t)) return load<std::uint64_t>(text.data());
        // In two pieces that may overlap: a copy of so many bytes is a loop.
        if (size >= sizeof(std::uint32_t)) return joined<std::uint32_t>(text.data(), size);
        if (size >= sizeof(std::uint16_t)) return joined<std::uint16_t>(text.data(), size);
        return size == 0 ? 0 : static_cast<unsigned char>(text.front());
    }
    template <typename Number>
    [[nodiscard]] static std::uint64_t load(const char* bytes) {
        Number number = 0;
        std::memcpy(&number, bytes, sizeof number);
        return number;
    }
    template <typename Number>
    [[nodiscard]] static std::uint64_t joined(const char* bytes, std::size_t size) {
        const std::size_t second = size - sizeof(Number);
        return load<Number>(bytes) | load<Number>(bytes + second) << (8 * second);
    }
    [[nodiscard]] static std::size_t placeOf(std::uint64_t head, std::size_t size) {
        return (head * 0x9E3779B97F4A7C15U + size) >> 56U;
    }
    [[nodiscard]] std::uint16_t lookUp(std::string_view text);

    std::vector<std::string> m_texts;
    std::unordered_map<std::string, std::uint16_t> m_numbers;
    std::array<Recent, 256> m_recent{};  ///< short texts, by what they begin with
};

}  // namespace mor::host
