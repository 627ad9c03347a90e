#include "host/documents/symbols.h"

#include "host/documents/document.h"
#include "host/documents/reference.h"
#include "host/host.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

constexpr std::string_view kActivePaper = "*Paper_Space";

/// Tables whose symbols a drawing knows under the names of its references. Those of applications
/// are the same in every drawing; views and the like stay each drawing's own.
bool isQualified(std::string_view table) {
    static constexpr std::string_view tables[] = {"LAYER", "LTYPE", "STYLE", "DIMSTYLE"};
    return std::ranges::find(tables, table) != std::end(tables);
}

}  // namespace

std::array<double, 3> recordedBase(Drawing& drawing, ContainerNumber block) {
    return drawing.groupsOf(drawing.container(block).head).pointOf(10, {});
}

std::size_t countEntities(const Drawing& drawing, ContainerNumber container) {
    std::size_t count = 0;
    for (RecordNumber at = drawing.nextMember(container, 0); at != 0;
         at = drawing.nextMember(container, at))
        if (!drawing.entry(at).has(kSubEntity)) ++count;
    return count;
}

FoundBlock resolveBlock(AcApDocument& document, std::wstring_view name) {
    if (name.find(L'|') != std::wstring_view::npos) {
        const References::Target target = document.references->resolve(name);
        if (target.mount != nullptr) {
            Drawing& drawing = *target.mount->drawing;
            const ContainerNumber block = drawing.names().findBlock(target.rest);
            if (block == kNoContainer || drawing.container(block).layout) return {};
            return {target.mount, block};
        }
    }
    return {nullptr, document.drawing->names().findBlock(name)};
}

BlockEntities entitiesOf(AcApDocument& document, Mount* owner, ContainerNumber block) {
    Drawing& drawing = owner == nullptr ? *document.drawing : *owner->drawing;
    if (Mount* reference = document.references->mount(owner, block))
        return {reference->drawing.get(), reference, kModelSpace};
    const Container& container = drawing.container(block);
    if (!container.layout)
        return {isReferenceBlock(drawing, block) ? nullptr : &drawing, owner, block};
    // The block of a space may be empty and its entities stand in the space itself.
    const bool active = container.name.size() == kActivePaper.size();
    return {&drawing, owner, !container.paper ? kModelSpace : active ? kPaperSpace : block};
}

Located firstEntityOf(AcApDocument& document, Mount* owner, ContainerNumber block) {
    const BlockEntities found = entitiesOf(document, owner, block);
    if (found.drawing == nullptr) return {};
    const RecordNumber first = found.drawing->nextMember(found.container, 0);
    return {found.drawing, first, found.mount};
}

std::array<double, 3> baseOf(AcApDocument& document, Mount* owner, ContainerNumber block) {
    Drawing& drawing = owner == nullptr ? *document.drawing : *owner->drawing;
    const Mount* reference = document.references->mount(owner, block);
    if (reference != nullptr && reference->drawing)
        if (const auto own = reference->drawing->insertionBase()) return *own;
    return recordedBase(drawing, block);
}

bool holdsAttributeDefinitions(Drawing& drawing, ContainerNumber block) {
    if ((drawing.integerOf(drawing.container(block).head, kFlagsCode).value_or(0) &
         kBlockWithAttributes) != 0)
        return true;
    const std::uint16_t definition = drawing.typeNumber("ATTDEF");
    RecordNumber at = drawing.nextMember(block, 0);
    while (at != 0 && drawing.entry(at).type != definition) at = drawing.nextMember(block, at);
    return at != 0;
}

bool isAnonymousBlock(Drawing& drawing, ContainerNumber block) {
    if ((drawing.integerOf(drawing.container(block).head, kFlagsCode).value_or(0) &
         kAnonymousBlock) != 0)
        return true;
    const std::string_view name = drawing.container(block).name;
    return name.size() > 2 && name[0] == '*' && isAlpha(static_cast<unsigned char>(name[1])) &&
           name.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

Located resolveSymbol(AcApDocument& document, std::string_view table, std::wstring_view name) {
    if (const RecordNumber own = document.drawing->names().findSymbol(table, name))
        return {document.drawing.get(), own, nullptr};
    if (name.find(L'|') == std::wstring_view::npos || !isQualified(table)) return {};
    const References::Target target = document.references->resolve(name);
    if (target.mount == nullptr || isCommonSymbol(table, target.rest)) return {};
    // A referring drawing's own record wins over that of the drawing it refers to, like the
    // document's.
    Located over;
    for (const Mount* mount = target.mount->parent; mount != nullptr; mount = mount->parent) {
        const std::wstring_view rest = name.substr(mount->name.size() + 1);
        if (const RecordNumber outer = mount->drawing->names().findSymbol(table, rest))
            over = {mount->drawing.get(), outer, mount};
    }
    if (over) return over;
    Drawing& drawing = *target.mount->drawing;
    return {&drawing, drawing.names().findSymbol(table, target.rest), target.mount};
}

}  // namespace mor::host
