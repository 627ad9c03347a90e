#pragma once

#include "host/host.h"
#include "platform/documents.h"

#include <string_view>

namespace mor::tool {

/// Tells the records that the store keeps in a drawing from all others, along a walk over all
/// records in the order of the drawing.
class OwnRecords {
public:
    explicit OwnRecords(const AcApDocument* document) : m_document(document) {}

    /// Whether the record is the store's: a directory, the block that anchors them, their layer, or
    /// the name of their application.
    [[nodiscard]] bool isOwn(const host::RecordInfo& record);

private:
    [[nodiscard]] bool isOwnMain(const host::RecordInfo& record) const;

    const AcApDocument* m_document;
    bool m_lastWasOwn = false;
    bool m_blockIsOwn = false;  ///< the one that is open
};

/// Whether a block or layer is the store's, by its name in its own drawing.
[[nodiscard]] bool isOwnBlock(std::wstring_view name);
[[nodiscard]] bool isOwnLayer(std::wstring_view name);

}  // namespace mor::tool
