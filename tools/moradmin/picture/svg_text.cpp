#include "tools/moradmin/picture/svg_text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mor::tool {

SvgText& SvgText::escaped(std::string_view text) {
    m_escaped.clear();
    addXmlText(m_escaped, text);
    return *this << m_escaped;
}

void SvgText::attribute(std::string_view name, std::string_view value) {
    *this << ' ' << name << "=\"";
    escaped(value) << '"';
}

void SvgText::attribute(std::string_view name, double value) {
    *this << ' ' << name << "=\"" << value << '"';
}

void SvgText::handle(std::uint64_t handle) {
    std::array<char, 16> digits{};
    char* begin = digits.end();
    for (; handle != 0; handle >>= 4U) *--begin = "0123456789ABCDEF"[handle & 15U];
    *this << std::string_view(begin, static_cast<std::size_t>(digits.end() - begin));
}

void SvgText::grow(std::size_t bytes) {
    constexpr std::size_t kLeast = std::size_t{64} << 10U;
    const std::size_t room = std::max({kLeast, 2 * m_room, m_size + bytes});
    auto text = std::make_unique_for_overwrite<char[]>(room);
    if (m_size > 0) std::memcpy(text.get(), m_text.get(), m_size);
    m_text = std::move(text);
    m_room = room;
}

}  // namespace mor::tool
