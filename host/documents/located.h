#pragma once

#include "host/documents/reference.h"
#include "platform/entity_name.h"

#include <string>
#include <string_view>

namespace mor::host {

/// A record of the document's drawing or of one referenced by it.
struct Located {
    Drawing* drawing = nullptr;
    RecordNumber number = 0;
    const Mount* mount = nullptr;  ///< null in the document's own drawing

    explicit operator bool() const { return number != 0; }
    [[nodiscard]] EntityName nameOf(RecordNumber other) const;
    /// The name under which the document knows a symbol of that table of the record's drawing:
    /// layer 0 and the like stay.
    [[nodiscard]] std::wstring qualified(std::string_view table, std::wstring_view symbol) const;
};

/// Symbols that mean the same in every drawing: layer 0; the linetypes Continuous, ByLayer and
/// ByBlock.
[[nodiscard]] bool isCommonSymbol(std::string_view table, std::wstring_view symbol);
/// The record of that name in the current document, in the given one, or in a drawing referenced by
/// it.
[[nodiscard]] Located locate(EntityName name);
[[nodiscard]] Located locate(const AcApDocument& document, EntityName name);
/// To be called before a drawing, a document or a mount ends: what was located is remembered.
void forgetLocated();

}  // namespace mor::host
