#pragma once

#include "tools/moradmin/picture/number_text.h"
#include "tools/moradmin/shown_text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace mor::tool {

/// Text of a picture that grows piece by piece and is used again.
class SvgText {
public:
    [[nodiscard]] std::string_view text() const { return {m_text.get(), m_size}; }
    void clear() { m_size = 0; }

    SvgText& operator<<(std::string_view text) {
        std::memcpy(room(text.size()), text.data(), text.size());
        m_size += text.size();
        return *this;
    }
    SvgText& operator<<(char c) {
        *room(1) = c;
        ++m_size;
        return *this;
    }
    SvgText& operator<<(double number) {
        char* const begin = room(kLongestNumber);
        m_size += static_cast<std::size_t>(putNumber(begin, number) - begin);
        return *this;
    }
    SvgText& escaped(std::string_view text);
    void attribute(std::string_view name, std::string_view value);
    void attribute(std::string_view name, double value);
    /// As drawings write handles; nothing for 0.
    void handle(std::uint64_t handle);

private:
    /// So many bytes behind the text.
    [[nodiscard]] char* room(std::size_t bytes) {
        if (m_room - m_size < bytes) grow(bytes);
        return m_text.get() + m_size;
    }
    void grow(std::size_t bytes);

    std::string m_escaped;
    std::unique_ptr<char[]> m_text;
    std::size_t m_size = 0;
    std::size_t m_room = 0;
};

}  // namespace mor::tool
