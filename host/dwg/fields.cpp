#include "host/dwg/fields.h"

#include "host/dwg/palette.h"
#include "host/text/escapes.h"

#include <algorithm>

namespace mor::host {

namespace {

/// Kinds of colours, in the top byte of their value.
enum ColourKind : std::uint32_t {
    kByLayer = 0xC0,
    kByBlock = 0xC1,
    kTrueColour = 0xC2,
    kNumber = 0xC3
};

constexpr std::uint32_t kRgb = 0xFFFFFF;

void appendUtf8(std::string& text, std::uint32_t c) {
    const auto add = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        add(c);
    } else if (c < 0x800) {
        add(0xC0U | c >> 6U);
        add(0x80U | (c & 0x3FU));
    } else if (c < 0x10000) {
        add(0xE0U | c >> 12U);
        add(0x80U | (c >> 6U & 0x3FU));
        add(0x80U | (c & 0x3FU));
    } else {
        add(0xF0U | c >> 18U);
        add(0x80U | (c >> 12U & 0x3FU));
        add(0x80U | (c >> 6U & 0x3FU));
        add(0x80U | (c & 0x3FU));
    }
}

}  // namespace

std::string utf8Of(std::string_view units) {
    std::string text;
    const auto unitAt = [units](std::size_t i) {
        return std::uint32_t{static_cast<unsigned char>(units[i])} |
               std::uint32_t{static_cast<unsigned char>(units[i + 1])} << 8U;
    };
    for (std::size_t i = 0; i + 1 < units.size(); i += 2) {
        const std::uint32_t unit = unitAt(i);
        const bool high = unit >= 0xD800 && unit < 0xDC00;
        const std::uint32_t next = high && i + 3 < units.size() ? unitAt(i + 2) : 0;
        if (next >= 0xDC00 && next < 0xE000) {
            appendUtf8(text, 0x10000 + ((unit - 0xD800) << 10U) + (next - 0xDC00));
            i += 2;
        } else if (unit >= 0xD800 && unit < 0xE000) {
            appendUnicodeEscape(text, static_cast<wchar_t>(unit));
        } else {
            appendUtf8(text, unit);
        }
    }
    return text;
}

Fields::Fields(Release release, std::string_view bytes, std::uint64_t begin, std::uint64_t handles,
               std::uint64_t end)
    : m_release(release), m_data(bytes, begin, handles), m_handles(bytes, handles, end) {
    if (since(Release::R2007)) findStrings(bytes, begin, handles);
}

Fields::Fields(Release release, std::string_view bytes, std::uint64_t begin, std::uint64_t end)
    : m_release(release), m_data(bytes, begin, end), m_inline(true) {}

Fields Fields::ofSection(Release release, std::string_view data) {
    const std::uint64_t end = data.size() * 8;
    if (release < Release::R2007) return {release, data, 0, end};
    const std::uint64_t bits = BitReader(data, 0, end).longWord();
    Fields fields(release, data, 0, std::min(bits, end), end);
    static_cast<void>(fields.data().longWord());
    return fields;
}

/// The last bit before `end` says whether there are strings; their length stands before it.
void Fields::findStrings(std::string_view bytes, std::uint64_t begin, std::uint64_t end) {
    if (m_data.failed() || end <= begin) return m_data.fail();
    std::uint64_t at = end - 1;
    if (BitReader(bytes, at, end).bit()) {
        if (at < begin + 16) return m_data.fail();
        std::uint64_t length = BitReader(bytes, at - 16, at).word();
        at -= 16;
        if ((length & 0x8000U) != 0) {
            if (at < begin + 16) return m_data.fail();
            const std::uint64_t high = BitReader(bytes, at - 16, at).word();
            length = (length & 0x7FFFU) | high << 15U;
            at -= 16;
        }
        if (length > at - begin) return m_data.fail();
        m_strings = BitReader(bytes, at - length, at);
        at -= length;
    }
    m_data = BitReader(bytes, begin, at);
}

std::uint32_t Fields::count(std::uint64_t bitsEach) {
    const std::int32_t count = bitLong();
    if (count < 0 || !m_data.holds(static_cast<std::uint64_t>(count), bitsEach)) {
        fail();
        return 0;
    }
    return static_cast<std::uint32_t>(count);
}

std::uint32_t Fields::handleCount() {
    const std::int32_t count = bitLong();
    if (count < 0 || !handles().holds(static_cast<std::uint64_t>(count), 8)) {
        fail();
        return 0;
    }
    return static_cast<std::uint32_t>(count);
}

Point2 Fields::point2() {
    const double x = real();
    return {x, real()};
}

Point2 Fields::bitPoint2() {
    const double x = bitReal();
    return {x, bitReal()};
}

Point3 Fields::bitPoint3() {
    const double x = bitReal();
    const double y = bitReal();
    return {x, y, bitReal()};
}

double Fields::thickness() {
    if (since(Release::R2000) && bit()) return 0.0;
    return bitReal();
}

Point3 Fields::normal() {
    if (since(Release::R2000) && bit()) return {0.0, 0.0, 1.0};
    return bitPoint3();
}

std::string Fields::text() {
    if (since(Release::R2007)) {
        const auto units = static_cast<std::uint16_t>(m_strings.bitShort());
        return utf8Of(m_strings.bytes(std::uint64_t{units} * 2));
    }
    const auto count = static_cast<std::uint16_t>(m_data.bitShort());
    std::string text = m_data.bytes(count);
    if (text.ends_with('\0')) text.pop_back();
    return text;
}

DwgColour Fields::colour() {
    DwgColour colour;
    colour.number = bitShort();
    if (!since(Release::R2004)) return colour;
    const auto value = static_cast<std::uint32_t>(bitLong());
    const std::uint8_t flags = byte();
    if ((flags & 1U) != 0) colour.name = text();
    if ((flags & 2U) != 0) colour.book = text();
    switch (value >> 24U) {
        case kByLayer:
            colour.number = 256;
            break;
        case kByBlock:
            colour.number = 0;
            break;
        case kTrueColour:
            colour.trueColour = value & kRgb;
            colour.number = nearestColourNumber(colour.trueColour);
            break;
        case kNumber:
            colour.number = static_cast<std::int32_t>(value & 0xFFU);
            break;
        default:
            break;
    }
    return colour;
}

}  // namespace mor::host
