#pragma once

#include "host/documents.h"
#include "host/dwg/bits.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mor::host {

using Point2 = std::array<double, 2>;
using Point3 = std::array<double, 3>;

/// A colour as records have it.
struct DwgColour {
    std::int32_t number = 0;       ///< 0 by block, 256 by layer
    std::int64_t trueColour = -1;  ///< red, green, blue; -1 for none
    std::string name;
    std::string book;
};

/// The fields of one object or section, taken in the order in which they are stored. Numbers,
/// texts and handles lie in streams of their own where the release has them so. Behind the end of
/// a stream every field is empty, and `failed` says so.
class Fields {
public:
    /// The data of an object or section: they begin at bit `begin`, the handles at `handles`, and
    /// all ends at `end`. The bytes outlive the fields.
    Fields(Release release, std::string_view bytes, std::uint64_t begin, std::uint64_t handles,
           std::uint64_t end);
    /// The same where handles stand among the data.
    Fields(Release release, std::string_view bytes, std::uint64_t begin, std::uint64_t end);

    [[nodiscard]] Release release() const { return m_release; }
    [[nodiscard]] bool since(Release release) const { return m_release >= release; }
    [[nodiscard]] bool upTo(Release release) const { return m_release <= release; }
    [[nodiscard]] bool failed() const {
        return m_data.failed() || m_strings.failed() || m_handles.failed();
    }
    void fail() { m_data.fail(); }
    /// Whether every bit is used up, but for what fills the last byte.
    [[nodiscard]] bool isUsedUp() const {
        return !failed() && m_data.remaining() == 0 && m_strings.remaining() == 0 &&
               m_handles.remaining() < 8;
    }
    [[nodiscard]] BitReader& data() { return m_data; }
    [[nodiscard]] BitReader& handles() { return m_inline ? m_data : m_handles; }

    bool bit() { return m_data.bit(); }
    std::uint8_t byte() { return m_data.byte(); }
    std::int16_t bitShort() { return m_data.bitShort(); }
    std::int32_t bitLong() { return m_data.bitLong(); }
    double real() { return m_data.real(); }
    double bitReal() { return m_data.bitReal(); }
    /// A count of elements that take at least so many bits of data each; 0 when they cannot follow.
    std::uint32_t count(std::uint64_t bitsEach = 1);
    /// The same for handles.
    std::uint32_t handleCount();
    Point2 point2();  ///< plain reals
    Point2 bitPoint2();
    Point3 bitPoint3();
    double thickness();
    Point3 normal();
    std::string text();  ///< as the file has it; UTF-8 from R2007 on
    DwgColour colour();
    HandleReference handle() { return handles().handle(); }
    /// The handle that is meant, read in the object `own`.
    std::uint64_t handleIn(std::uint64_t own) { return handle().from(own); }

    /// Those of a section: from R2007 on its length in bits stands first, strings lie before it.
    [[nodiscard]] static Fields ofSection(Release release, std::string_view data);

private:
    void findStrings(std::string_view bytes, std::uint64_t begin, std::uint64_t end);

    Release m_release;
    BitReader m_data;
    BitReader m_strings;
    BitReader m_handles;
    bool m_inline = false;
};

/// A text of UTF-16 units, lowest byte first, as UTF-8; a lone surrogate as `\U+XXXX`.
[[nodiscard]] std::string utf8Of(std::string_view units);

}  // namespace mor::host
