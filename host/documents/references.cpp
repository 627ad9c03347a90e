#include "host/documents/document.h"
#include "host/documents/symbols.h"
#include "host/host.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

/// A drawing that refers to others, as the document reaches it: `mount` is null for its own.
struct Referring {
    AcApDocument& document;
    Mount* mount = nullptr;
    Drawing& drawing = mount == nullptr ? *document.drawing : *mount->drawing;

    [[nodiscard]] bool isBlock(ContainerNumber number) const {
        return drawing.container(number).kind == ContainerKind::Block;
    }
    /// What its own record of a reference says.
    [[nodiscard]] ReferenceInfo recorded(ContainerNumber block) const {
        ReferenceInfo info;
        info.block = drawing.containerName(block);
        info.name = (mount == nullptr ? L"" : mount->name + L"|") + info.block;
        info.overlay = isOverlayBlock(drawing, block);
        info.saved = drawing.textOf(drawing.container(block).head, 1).value_or(L"");
        const auto& inserts = drawing.names().insertCounts();
        if (const auto found = inserts.find(upperCase(info.block)); found != inserts.end())
            info.inserts = found->second;
        for (const Mount* at = mount; at != nullptr; at = at->parent) ++info.depth;
        return info;
    }
    [[nodiscard]] ReferenceInfo reference(ContainerNumber block) const {
        ReferenceInfo info = recorded(block);
        const Mount* found = document.references->mount(mount, block);
        if (found == nullptr) {
            info.status = ReferenceStatus::Orphaned;
            info.tries.push_back({"", "an overlay below a reference is not followed"});
            return info;
        }
        info.status = found->status;
        info.found = found->path;
        info.tries = found->tries;
        if (!found->drawing) return info;
        info.loaded = true;
        info.entities = countEntities(*found->drawing, kModelSpace);
        if (info.inserts == 0) info.status = ReferenceStatus::Unreferenced;
        return info;
    }
    /// A reference of a reference that is not loaded.
    [[nodiscard]] ReferenceInfo orphan(ContainerNumber block) const {
        ReferenceInfo info = recorded(block);
        const std::size_t bar = info.block.find(L'|');
        info.status = ReferenceStatus::Orphaned;
        info.tries.push_back(
            {"", "it belongs to " + toUtf8(info.block.substr(0, bar)) + ", which is not loaded"});
        info.block.erase(0, bar + 1);
        ++info.depth;
        return info;
    }
};

bool isBelow(std::wstring_view name, std::wstring_view reference) {
    return name.size() > reference.size() && name[reference.size()] == L'|' &&
           equalNoCase(name.substr(0, reference.size()), reference);
}

/// Block and name of what the drawing keeps of its references' references.
using KeptReferences = std::vector<std::pair<ContainerNumber, std::wstring>>;

KeptReferences keptReferences(Drawing& drawing) {
    KeptReferences kept;
    for (ContainerNumber block = 1; block < drawing.containers().size(); ++block)
        if (drawing.container(block).kind == ContainerKind::Block &&
            isKeptReferenceBlock(drawing, block))
            kept.emplace_back(block, drawing.containerName(block));
    return kept;
}

void listBelow(const Referring& from, std::vector<ReferenceInfo>& all) {
    const KeptReferences kept = keptReferences(from.drawing);
    for (ContainerNumber block = 1; block < from.drawing.containers().size(); ++block) {
        if (!from.isBlock(block) || !isReferenceBlock(from.drawing, block)) continue;
        all.push_back(from.reference(block));
        if (all.back().loaded) {
            listBelow({from.document, from.document.references->mount(from.mount, block)}, all);
            continue;
        }
        const std::wstring name = from.drawing.containerName(block);
        for (const auto& [keptBlock, keptName] : kept)
            if (isBelow(keptName, name)) all.push_back(from.orphan(keptBlock));
    }
}

ContainerNumber referenceBlock(AcApDocument* document, std::wstring_view name) {
    const ContainerNumber block = document->drawing->names().findBlock(name);
    return block != kNoContainer && isReferenceBlock(*document->drawing, block) ? block
                                                                                : kNoContainer;
}

}  // namespace

std::vector<ReferenceInfo> references(AcApDocument* document) {
    std::vector<ReferenceInfo> all;
    listBelow({*document}, all);
    return all;
}

std::optional<ReferenceInfo> findReference(AcApDocument* document, std::wstring_view name) {
    const References::Target way = document->references->resolve(name);
    const Referring from{*document, way.mount};
    const ContainerNumber block = from.drawing.names().findBlock(way.rest);
    if (block == kNoContainer) return std::nullopt;
    if (isReferenceBlock(from.drawing, block)) return from.reference(block);
    return isKeptReferenceBlock(from.drawing, block) ? std::optional(from.orphan(block))
                                                     : std::nullopt;
}

bool isReference(AcApDocument* document, std::wstring_view block) {
    return referenceBlock(document, block) != kNoContainer;
}

bool reloadReference(AcApDocument* document, std::wstring_view name) {
    const ContainerNumber block = referenceBlock(document, name);
    if (block == kNoContainer) return false;
    document->references->drop(block);
    return true;
}

bool detachReference(AcApDocument* document, std::wstring_view name) {
    const ContainerNumber block = referenceBlock(document, name);
    if (block == kNoContainer) return false;
    document->references->drop(block);
    Drawing& drawing = *document->drawing;
    std::vector<ContainerNumber> detached = {block};
    for (const auto& [kept, keptName] : keptReferences(drawing))
        if (isBelow(keptName, drawing.containerName(block))) detached.push_back(kept);
    for (const ContainerNumber number : detached) {
        const RecordNumber head = drawing.container(number).head;
        drawing.setGroup(head, kFlagsCode, std::int64_t{0});
        drawing.setText(head, 1, L"");
    }
    return true;
}

}  // namespace mor::host
