#include "host/dwg/code_words.h"

#include "host/faults.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace mor::host {

namespace {

/// Code words that are looked at together.
constexpr std::size_t kTogether = 64;
/// The fields of 256 elements in which system pages and data pages are coded.
constexpr std::uint8_t kSystemField = 0x69;  // without its highest bit
constexpr std::uint8_t kDataField = 0x1D;

using Row = std::array<std::uint8_t, kTogether>;

/// Each times the root of the field.
void multiply(Row& row, std::uint8_t field) {
    for (std::uint8_t& value : row) {
        const auto carried = static_cast<std::uint8_t>(-(value >> 7U));
        value = static_cast<std::uint8_t>(value + value) ^ (carried & field);
    }
}

/// The values at the power `root` of the field's root of up to 64 code words, read as polynomials
/// whose lowest coefficient is the first byte.
Row valuesAt(std::string_view coded, std::size_t words, std::size_t first, unsigned root,
             std::uint8_t field) {
    Row values{};
    const std::size_t count = std::min(kTogether, words - first);
    for (std::size_t byte = kCodeWordBytes; byte-- > 0;) {
        for (unsigned i = 0; i < root; ++i) multiply(values, field);
        const char* row = coded.data() + byte * words + first;
        for (std::size_t i = 0; i < count; ++i) values[i] ^= static_cast<std::uint8_t>(row[i]);
    }
    return values;
}

}  // namespace

std::string deinterleaved(std::string_view coded, std::size_t words, std::size_t perWord) {
    std::string data;
    if (words == 0 || words > coded.size() / kCodeWordBytes) return data;
    data.resize(words * perWord);
    for (std::size_t word = 0; word < words; ++word)
        for (std::size_t i = 0; i < perWord; ++i)
            data[word * perWord + i] = coded[i * words + word];
    return data;
}

bool parityHolds(std::string_view coded, std::size_t words, std::size_t perWord) {
    if (faults::trustsSums()) return true;
    if (words > coded.size() / kCodeWordBytes) return false;
    const std::uint8_t field = perWord == kSystemData ? kSystemField : kDataField;
    const auto roots = static_cast<unsigned>(kCodeWordBytes - perWord);
    for (std::size_t first = 0; first < words; first += kTogether)
        for (unsigned root = 1; root <= roots; ++root)
            if (valuesAt(coded, words, first, root, field) != Row{}) return false;
    return true;
}

}  // namespace mor::host
