#pragma once

#include "host/documents/located.h"
#include "host/documents/reference.h"
#include "host/drawing/drawing.h"
#include "platform/database.h"
#include "platform/document_data.h"
#include "platform/documents.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mor::host {

/// A block definition that `acdbEntMake` has opened and not yet closed. Nothing of it is in the
/// drawing.
struct PendingBlock {
    std::wstring name;
    std::int64_t flags = 0;
    double base[3] = {0.0, 0.0, 0.0};
    struct Entity;
    std::vector<Entity> entities;
};

}  // namespace mor::host

/// A document: an open drawing with its per-document data.
class AcApDocument {
public:
    explicit AcApDocument(std::unique_ptr<mor::host::Drawing> drawingOwned);
    ~AcApDocument();
    AcApDocument(const AcApDocument&) = delete;
    AcApDocument& operator=(const AcApDocument&) = delete;

    std::unique_ptr<mor::host::Drawing> drawing;
    std::unique_ptr<mor::host::References> references;
    std::map<std::int64_t, std::unique_ptr<AcDbDatabase>> databases;  ///< by mount, 0 for its own
    CMORMDIDocumentData data;
    std::filesystem::path path;  ///< where it was opened from; empty for a new one
    mor::host::FileState stamp;  ///< of the file as loaded or last saved
    std::size_t locks = 0;
    std::unique_ptr<mor::host::PendingBlock> pending;
    std::vector<std::pair<std::wstring, mor::host::RecordNumber>>
        tablePositions;  ///< of `acdbTblNext`
};

namespace mor::host {

[[nodiscard]] AcApDocument* currentDocument();
/// The current document's drawing; null when there is none.
[[nodiscard]] Drawing* currentDrawing();

/// Whether the document reactors are switched off at this moment.
[[nodiscard]] bool reactorsOff();

/// Whether a change of the record is refused because its layer is locked; only when tests ask for
/// that.
[[nodiscard]] bool layerIsLocked(Drawing& drawing, RecordNumber number);

/// The drawing of a document, for functions that answer tools.
[[nodiscard]] Drawing& drawingOf(const AcApDocument* document);

}  // namespace mor::host
