#include "platform/entity_calls.h"

#include "host/documents/document.h"
#include "host/faults.h"
#include "host/lisp/lisp_value.h"
#include "host/text/numbers.h"

namespace mor::host {

namespace {

/// A handle as text; 0 when it is none.
std::uint64_t handleOfText(std::wstring_view text) {
    std::string ascii;
    for (const wchar_t c : text) {
        if (c > 0x7E || ascii.size() > 32) return 0;
        ascii += static_cast<char>(c);
    }
    return parseHandle(ascii);
}

/// Entities of block definitions cannot be erased one by one.
bool isErasable(const Drawing& drawing, RecordNumber number) {
    const RecordEntry& entry = drawing.entry(number);
    return !entry.has(kEdge | kSubEntity) && entry.container != kNoContainer &&
           drawing.isSpace(entry.container);
}

}  // namespace

std::wstring handleText(EntityName name) {
    std::uint64_t handle = 0;
    if (const Located found = locate(name)) {
        handle = found.drawing->handleOf(found.number);
    } else if (AcApDocument* document = currentDocument()) {
        // A handle that no record has, kept under a reserved name; a drawing knows only its own.
        const Mount* mount = document->references->find(name.second());
        if (mount == nullptr)
            handle = document->drawing->handleForName(name);
        else if (mount->drawing)
            handle =
                mount->drawing->handleForName({name.first(), mount->drawing->nameOf(1).second()});
    }
    const std::string text = handleText(handle);
    return {text.begin(), text.end()};
}

std::optional<EntityName> nameOfHandle(std::wstring_view handle) {
    Drawing* drawing = currentDrawing();
    if (drawing == nullptr) return std::nullopt;
    const RecordNumber number = drawing->handles().find(handleOfText(handle));
    return number == 0 ? std::nullopt : std::optional(drawing->nameOf(number));
}

std::optional<EntityName> keptNameOfHandle(std::wstring_view handle) {
    Drawing* drawing = currentDrawing();
    const std::uint64_t number = handleOfText(handle);
    if (drawing == nullptr || number == 0) return std::nullopt;
    return drawing->nameForHandle(number);
}

std::optional<EntityName> findHandle(const AcApDocument* document, std::wstring_view handle) {
    Drawing& drawing = drawingOf(document);
    const RecordNumber number = drawing.handles().find(handleOfText(handle));
    return number == 0 ? std::nullopt : std::optional(drawing.nameOf(number));
}

std::optional<EntityName> findHandleBeside(const AcApDocument* document, EntityName beside,
                                           std::wstring_view handle) {
    const Located found = locate(*document, beside);
    if (!found) return std::nullopt;
    const RecordNumber number = found.drawing->handles().find(handleOfText(handle));
    return number == 0 ? std::nullopt : std::optional(found.nameOf(number));
}

}  // namespace mor::host

using mor::host::RecordNumber;

int acdbEntLast(ads_name result) {
    const auto* drawing = mor::host::currentDrawing();
    if (drawing == nullptr || mor::host::faults::shouldFail("acdbEntLast")) return RTERROR;
    const RecordNumber number = drawing->lastEntity();
    if (number == 0) return RTERROR;
    drawing->nameOf(number).copyTo(result);
    return RTNORM;
}

int acdbEntNext(const ads_name entity, ads_name result) {
    auto* drawing = mor::host::currentDrawing();
    if (drawing == nullptr || mor::host::faults::shouldFail("acdbEntNext")) return RTERROR;
    mor::host::Located place{drawing, 0, nullptr};
    mor::host::ContainerNumber container = mor::host::kModelSpace;
    if (entity != nullptr) {
        place = mor::host::locate(mor::EntityName(entity));
        if (!place) return RTERROR;
        container = place.drawing->entry(place.number).container;
        if (container == mor::host::kNoContainer) return RTERROR;
    }
    const RecordNumber next = place.drawing->nextMember(container, place.number);
    if (next == 0) return RTERROR;
    place.nameOf(next).copyTo(result);
    return RTNORM;
}

int acdbEntDel(const ads_name entity) {
    auto* drawing = mor::host::currentDrawing();
    if (drawing == nullptr || mor::host::faults::writesRefused() ||
        mor::host::faults::shouldFail("acdbEntDel"))
        return RTERROR;
    const RecordNumber number = drawing->numberOf(mor::EntityName(entity));
    if (number == 0 || !mor::host::isErasable(*drawing, number)) return RTERROR;
    if (mor::host::layerIsLocked(*drawing, number)) return RTERROR;
    drawing->toggleErased(number);
    return RTNORM;
}

int acdbHandEnt(const wchar_t* handle, ads_name result) {
    if (handle == nullptr || mor::host::faults::shouldFail("acdbHandEnt")) return RTERROR;
    const auto name = mor::host::nameOfHandle(handle);
    if (!name) return RTERROR;
    name->copyTo(result);
    return RTNORM;
}
