#pragma once

#include "host/drawing/codec.h"
#include "host/dwg/dwg_file.h"
#include "host/dwg/encode.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace mor::host {

/// The records of tables by their names, the file's and those that are made.
class RecordNames final : public NameSource {
public:
    RecordNames(const DwgFile& file, const EditSet& edits);

    [[nodiscard]] std::uint64_t find(std::string_view table, std::string_view name) const override;

private:
    std::map<std::string, std::map<std::string, std::uint64_t>> m_names;  ///< by table, upper case
    std::map<std::string, std::uint64_t> m_first;                         ///< of each table
};

}  // namespace mor::host
