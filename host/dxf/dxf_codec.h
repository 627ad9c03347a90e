#pragma once

#include "host/drawing/codec.h"
#include "host/dxf/dxf_index.h"
#include "host/dxf/form.h"
#include "host/result.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::host {

/// A DXF file, text or binary. Records are read from the file as they are asked for; a walk in the
/// order of the file reads ahead.
class DxfCodec final : public Codec {
public:
    /// `open` are the types of the records that close what is open at the end of a damaged file.
    DxfCodec(DxfIndex index, std::vector<std::string> open)
        : m_index(std::move(index)), m_open(std::move(open)) {}

    [[nodiscard]] const Source& source() const override { return *m_index.source; }
    [[nodiscard]] GroupList read(RecordNumber number) const override;
    void readInto(RecordNumber number, GroupList& list) const override;
    bool readBeside(std::span<const RecordNumber> records, std::deque<std::string>& texts,
                    const std::function<void(const GroupList&)>& take) const override;
    [[nodiscard]] std::optional<Group> find(RecordNumber number, int code) const override;
    [[nodiscard]] std::uint16_t layerNumberOf(RecordNumber number) const override {
        return m_index.layers[number];
    }
    [[nodiscard]] bool mayHoldHandles(RecordNumber number) const override;
    [[nodiscard]] std::vector<std::string> applicationsOf(RecordNumber number) const override;
    [[nodiscard]] std::string oddityOf(RecordNumber number) const override;
    [[nodiscard]] std::string salvaged() const override;
    [[nodiscard]] SavePlan plan(const EditSet& edits) const override;
    [[nodiscard]] std::string compare(const SavePlan& plan, const Source& written) const override;

private:
    static constexpr std::uint64_t kFirstWindow = std::uint64_t{4} * 1024;

    /// Valid until another record is read.
    [[nodiscard]] std::string_view bytesOf(RecordNumber number) const;
    /// Where those of the records end that are best read at once, from the first one on.
    [[nodiscard]] std::uint64_t endOfClose(std::span<const RecordNumber> records) const;

    DxfIndex m_index;
    std::vector<std::string> m_open;
    /// A record that was read, and what a walk has read ahead of it.
    struct Window {
        std::string bytes;
        std::uint64_t at = 0;
        std::uint64_t ahead = kFirstWindow;  ///< bytes that were read ahead last
        RecordNumber last = 0;               ///< the record that was read last

        [[nodiscard]] bool holds(std::uint64_t begin, std::uint64_t end) const {
            return begin >= at && end <= at + bytes.size();
        }
    };
    /// Two: walks look something up elsewhere, as a block's entities, and go on.
    mutable Window m_windows[2];
    mutable std::size_t m_used = 0;  ///< the one used last
    mutable GroupList m_found;       ///< texts of the group found last
};

/// Opens a DXF file. `file` stands in the errors.
/// Refused: what is no DXF, releases that are not known.
Result<Opened> openDxf(const std::shared_ptr<Source>& source, const std::string& file);

/// The text of the smallest valid drawing of that release.
[[nodiscard]] std::string newDrawingText(Release release, std::string_view lineEnd);

}  // namespace mor::host
