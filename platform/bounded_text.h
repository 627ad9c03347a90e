#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace mor {

/// Wide text of at most N - 1 characters in a fixed buffer. What does not fit is refused, never
/// cut.
template <std::size_t N>
class BoundedText {
public:
    /// Empty; the rest of the buffer is left as it is, since most of it is never used.
    BoundedText() noexcept { m_buffer[0] = L'\0'; }

    /// Takes the text; false, and unchanged, when it does not fit.
    [[nodiscard]] bool assign(std::wstring_view text) noexcept {
        if (text.size() >= N) return false;
        m_size = text.copy(m_buffer.data(), text.size());
        m_buffer[m_size] = L'\0';
        return true;
    }
    /// Adds the text at the end; false, and unchanged, when it does not fit.
    [[nodiscard]] bool append(std::wstring_view text) noexcept {
        if (m_size + text.size() >= N) return false;
        text.copy(m_buffer.data() + m_size, text.size());
        m_size += text.size();
        m_buffer[m_size] = L'\0';
        return true;
    }
    void truncate(std::size_t size) noexcept {
        if (size >= m_size) return;
        m_size = size;
        m_buffer[m_size] = L'\0';
    }
    [[nodiscard]] const wchar_t* c_str() const noexcept { return m_buffer.data(); }
    [[nodiscard]] wchar_t* data() noexcept { return m_buffer.data(); }
    [[nodiscard]] std::wstring_view view() const noexcept { return {m_buffer.data(), m_size}; }
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

private:
    std::array<wchar_t, N> m_buffer;
    std::size_t m_size = 0;
};

}  // namespace mor
