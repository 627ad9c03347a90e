#include "host/documents/open_drawing.h"

#include "host/dwg/dwg_codec.h"
#include "host/dxf/dxf_codec.h"

#include <utility>

namespace mor::host {

namespace {

/// Every form of drawing that is read; the only place that knows more than one.
Result<Opened> openCodec(const std::shared_ptr<Source>& source, const std::string& file) {
    constexpr std::uint64_t kVersionBytes = 6;
    return looksLikeDwg(source->read(0, kVersionBytes)) ? openDwg(source, file)
                                                        : openDxf(source, file);
}

}  // namespace

Result<std::unique_ptr<Drawing>> openDrawing(const std::shared_ptr<Source>& source,
                                             const std::string& file) {
    try {
        auto opened = openCodec(source, file);
        if (!source->failed()) {
            if (!opened) return opened.error();
            return std::make_unique<Drawing>(std::move(opened.value()));
        }
    } catch (const ReadFailure&) {  // answered like the other one
    }
    return takeReadFailure().value_or(Error{ErrorKind::Unreadable, file, 0, "reading failed"});
}

std::unique_ptr<Drawing> makeDrawing(Release release, std::string_view lineEnd) {
    auto opened = openDxf(makeBufferSource(newDrawingText(release, lineEnd)), "new drawing");
    return std::make_unique<Drawing>(std::move(opened.value()));
}

}  // namespace mor::host
