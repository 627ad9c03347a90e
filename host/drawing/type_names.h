#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// Group-0 texts by number; 0 stands for "unknown".
class TypeNames {
public:
    TypeNames();
    static constexpr std::uint16_t kNone = 0xFFFF;

    [[nodiscard]] std::uint16_t number(std::string_view name);      ///< adds it when new
    [[nodiscard]] std::uint16_t find(std::string_view name) const;  ///< kNone: there is none
    [[nodiscard]] const std::string& name(std::uint16_t number) const { return m_names[number]; }
    [[nodiscard]] std::size_t count() const { return m_names.size(); }

private:
    std::vector<std::string> m_names;
    std::unordered_map<std::string, std::uint16_t> m_numbers;
    std::uint16_t m_last = 0;  ///< asked for last: entities of one type often stand together
};

}  // namespace mor::host
