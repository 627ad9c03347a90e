#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The first bytes of files up to R2000: where the sections are.
namespace mor::host {

inline constexpr std::size_t kLocatorsAt = 0x15 + 4;
inline constexpr std::size_t kMostLocators = 16;

struct FlatLocator {
    std::uint64_t address = 0;
    std::uint64_t size = 0;
};

struct FlatLocators {
    std::size_t count = 0;
    std::array<std::uint8_t, kMostLocators> numbers{};  ///< in the order in which they stand
    std::array<FlatLocator, kMostLocators> at{};        ///< by number
};

/// Answers what is wrong, empty when all is well.
[[nodiscard]] std::string readLocators(std::string_view file, FlatLocators& locators);
/// Begins the second header, which says again what the first one and the header variables say.
inline constexpr std::string_view kSecondMark(
    "\xD4\x7B\x21\xCE\x28\x93\x9F\xBF\x53\x24\x40\x09\x12\x3C\xAA\x01", 16);

/// The second header, from its mark on, cut into its fields. Positions count in bits from behind
/// the mark.
struct SecondHeader {
    struct Field {
        std::uint8_t number = 0;
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        bool none = false;  ///< a locator of 0, 0
    };
    std::string_view body;         ///< between both marks
    std::uint64_t fixedBegin = 0;  ///< behind its own address
    std::vector<Field> locators;
    std::uint64_t handlesBegin = 0;
    std::vector<Field> handles;
    std::size_t sumAt = 0;  ///< in bytes
};
/// Nothing when it breaks off or its sum is wrong.
[[nodiscard]] std::optional<SecondHeader> readSecondHeader(std::string_view bytes);

/// What the sum of the first bytes is combined with; 0 where that is not known.
[[nodiscard]] std::uint16_t locatorMask(std::size_t count);

}  // namespace mor::host
