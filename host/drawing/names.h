#pragma once

#include "host/drawing/record.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::host {

class Drawing;

/// Tables, symbols and blocks of one drawing by name, without regard to case. Each part is learnt
/// when it is first asked for.
class Names {
public:
    explicit Names(const Drawing& drawing) : m_drawing(drawing) {}

    [[nodiscard]] ContainerNumber findTable(std::string_view table) const;  ///< 0: there is none
    [[nodiscard]] RecordNumber findSymbol(std::string_view table, std::wstring_view name) const;
    [[nodiscard]] ContainerNumber findBlock(std::wstring_view name) const;
    /// How often each block is inserted by live records, definitions included; by upper-case name.
    /// Counted once, and again after a change.
    [[nodiscard]] const std::map<std::wstring, std::size_t>& insertCounts() const;

    // What the drawing tells of its changes.
    void addSymbol(ContainerNumber table, RecordNumber number);
    void addBlock(std::wstring_view name, ContainerNumber block);
    void insertsChanged() { m_insertCounts.reset(); }

private:
    using Symbols = std::unordered_map<std::wstring, RecordNumber>;
    void learn(Symbols& symbols, RecordNumber number) const;

    /// The symbol that was asked for last; table 0: none.
    struct Last {
        ContainerNumber table = kNoContainer;
        std::wstring name;
        RecordNumber number = 0;
    };

    const Drawing& m_drawing;
    mutable Last m_last;
    mutable std::vector<ContainerNumber> m_tables;  ///< among the containers below the next one
    mutable ContainerNumber m_tablesBelow = 1;
    mutable std::map<ContainerNumber, Symbols> m_symbols;  ///< by table
    mutable std::optional<std::unordered_map<std::wstring, ContainerNumber>> m_blocks;
    mutable std::optional<std::map<std::wstring, std::size_t>> m_insertCounts;
};

}  // namespace mor::host
