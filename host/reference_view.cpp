#include "host/document.h"
#include "host/host.h"
#include "platform/runtime.h"

#include <map>
#include <utility>

namespace mor::host {

namespace {

class Lister {
public:
    explicit Lister(AcApDocument& document) : m_document(document) {}

    std::vector<ReferenceInfo> run() {
        list(nullptr, *m_document.drawing, 0);
        return std::move(m_result);
    }

private:
    void list(Mount* parent, Drawing& owner, std::size_t depth) {
        std::map<std::wstring, std::size_t> inserts = countInserts(owner);
        for (ContainerNumber block = 1; block < owner.containers().size(); ++block) {
            if (owner.container(block).kind != ContainerKind::Block ||
                !isReferenceBlock(owner, block))
                continue;
            ReferenceInfo info;
            info.block = owner.containerName(block);
            info.name = (parent == nullptr ? L"" : parent->name + L"|") + info.block;
            info.overlay = isOverlayBlock(owner, block);
            info.saved = owner.textOf(owner.container(block).head, 1).value_or(L"");
            info.inserts = inserts[upperCase(info.block)];
            info.depth = depth;
            describe(info, m_document.references->mount(parent, block));
        }
    }
    void describe(ReferenceInfo info, Mount* mount) {
        if (mount == nullptr) {
            info.status = ReferenceStatus::Orphaned;
            m_result.push_back(std::move(info));
            return;
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
        const std::size_t depth = info.depth;
        m_result.push_back(std::move(info));
        if (mount->drawing) list(mount, *mount->drawing, depth + 1);
    }

    AcApDocument& m_document;
    std::vector<ReferenceInfo> m_result;
};

ContainerNumber referenceBlock(AcApDocument* document, std::wstring_view name) {
    const ContainerNumber block = document->drawing->findBlock(name);
    return block != kNoContainer && isReferenceBlock(*document->drawing, block) ? block
                                                                                : kNoContainer;
}

}  // namespace

std::vector<ReferenceInfo> references(AcApDocument* document) { return Lister(*document).run(); }

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
