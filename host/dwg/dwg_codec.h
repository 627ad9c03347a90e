#pragma once

#include "host/drawing/codec.h"
#include "host/dwg/dwg_edits.h"
#include "host/dwg/dwg_file.h"
#include "host/dwg/dwg_index.h"
#include "host/dwg/record_groups.h"
#include "host/result.h"

#include <memory>
#include <string>
#include <vector>

namespace mor::host {

/// A DWG file, R13 to R2018. Its sections are unpacked when it is opened; objects are decoded when
/// they are asked for.
class DwgCodec final : public Codec {
public:
    /// `paper` by record: whether it stands in paper space.
    DwgCodec(std::unique_ptr<DwgFile> file, DwgIndex index, std::vector<bool> paper)
        : m_file(std::move(file)), m_index(std::move(index)), m_paper(std::move(paper)) {}

    [[nodiscard]] const Source& source() const override { return m_file->source(); }
    [[nodiscard]] GroupList read(RecordNumber number) const override;
    [[nodiscard]] std::optional<Group> find(RecordNumber number, int code) const override;
    [[nodiscard]] std::uint16_t layerNumberOf(RecordNumber number) const override;
    [[nodiscard]] bool mayHoldHandles(RecordNumber /*number*/) const override { return true; }
    [[nodiscard]] std::vector<std::string> applicationsOf(RecordNumber number) const override;
    [[nodiscard]] std::string undecoded(RecordNumber number) const override;
    [[nodiscard]] std::string oddityOf(RecordNumber number) const override;
    [[nodiscard]] std::string salvaged() const override;
    [[nodiscard]] SavePlan plan(const EditSet& edits) const override;
    [[nodiscard]] std::string compare(const SavePlan& plan, const Source& written) const override;

private:
    [[nodiscard]] ObjectFrame frameOf(RecordNumber number) const;
    [[nodiscard]] DecodedRecord decoded(RecordNumber number) const;
    [[nodiscard]] std::string objectFault(const DwgFile& written, std::uint64_t handle,
                                          std::string_view bytes) const;
    [[nodiscard]] std::string differences(DwgFile& written) const;
    /// The handle of an entity's layer; 0 for other records.
    [[nodiscard]] std::uint64_t layerOf(const ObjectFrame& frame) const;

    std::unique_ptr<DwgFile> m_file;
    DwgIndex m_index;
    std::vector<bool> m_paper;
    mutable TextNumbers m_layerTexts;
    mutable std::unordered_map<std::uint64_t, std::uint16_t> m_layerNumbers;  ///< by handle
    mutable ObjectChanges m_changes;                                          ///< of the last plan
    mutable GroupList m_found;  ///< texts of the group found last
    mutable RecordNumber m_foundNumber = 0;
};

/// Opens a DWG file. `file` stands in the errors.
/// Refused: releases that are not read, protected drawings, damage outside of the objects.
Result<Opened> openDwg(const std::shared_ptr<Source>& source, const std::string& file);

}  // namespace mor::host
