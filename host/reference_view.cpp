#include "host/document.h"
#include "host/host.h"
#include "platform/runtime.h"

#include <cstddef>
#include <map>
#include <string>

namespace mor::host {

namespace {

using InsertCounts = std::map<std::wstring, std::size_t>;

/// What is to be said of a reference block; `parent` is null for those of the document's own
/// drawing.
ReferenceInfo describe(AcApDocument& document, Mount* parent, ContainerNumber block,
                       const InsertCounts& inserts) {
    Drawing& owner = parent == nullptr ? *document.drawing : *parent->drawing;
    ReferenceInfo info;
    info.block = owner.containerName(block);
    info.name = (parent == nullptr ? L"" : parent->name + L"|") + info.block;
    info.overlay = isOverlayBlock(owner, block);
    info.saved = owner.textOf(owner.container(block).head, 1).value_or(L"");
    if (const auto found = inserts.find(upperCase(info.block)); found != inserts.end())
        info.inserts = found->second;
    for (const Mount* above = parent; above != nullptr; above = above->parent) ++info.depth;
    const Mount* mount = document.references->mount(parent, block);
    if (mount == nullptr) {
        info.status = ReferenceStatus::Orphaned;
        return info;
    }
    info.status = mount->status;
    info.found = mount->path;
    info.tries = mount->tries;
    if (mount->drawing) {
        info.loaded = true;
        info.entities = countEntities(*mount->drawing, kModelSpace);
        info.hasStore = mount->drawing->findBlock(L"MOR_DWGFILES") != kNoContainer;
        if (info.inserts == 0) info.status = ReferenceStatus::Unreferenced;
    }
    return info;
}

void listBelow(AcApDocument& document, Mount* parent, std::vector<ReferenceInfo>& all) {
    Drawing& owner = parent == nullptr ? *document.drawing : *parent->drawing;
    const InsertCounts inserts = countInserts(owner);
    for (ContainerNumber block = 1; block < owner.containers().size(); ++block) {
        if (owner.container(block).kind != ContainerKind::Block || !isReferenceBlock(owner, block))
            continue;
        all.push_back(describe(document, parent, block, inserts));
        if (all.back().loaded) listBelow(document, document.references->mount(parent, block), all);
    }
}

ContainerNumber referenceBlock(AcApDocument* document, std::wstring_view name) {
    const ContainerNumber block = document->drawing->findBlock(name);
    return block != kNoContainer && isReferenceBlock(*document->drawing, block) ? block
                                                                                : kNoContainer;
}

}  // namespace

std::vector<ReferenceInfo> references(AcApDocument* document) {
    std::vector<ReferenceInfo> all;
    listBelow(*document, nullptr, all);
    return all;
}

std::optional<ReferenceInfo> findReference(AcApDocument* document, std::wstring_view name) {
    const References::Target way = document->references->resolve(name);
    Drawing& owner = way.mount == nullptr ? *document->drawing : *way.mount->drawing;
    const ContainerNumber block = owner.findBlock(way.rest);
    if (block == kNoContainer || !isReferenceBlock(owner, block)) return std::nullopt;
    return describe(*document, way.mount, block, countInserts(owner));
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
    const RecordNumber head = drawing.container(block).head;
    drawing.setInteger(head, 70, 0);
    drawing.setText(head, 1, L"");
    return true;
}

}  // namespace mor::host
