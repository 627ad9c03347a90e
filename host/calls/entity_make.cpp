#include "host/calls/entity_make.h"

#include "host/calls/list_kind.h"
#include "host/documents/reference.h"
#include "host/drawing/additions.h"
#include "host/faults.h"
#include "host/text/group_codes.h"
#include "platform/entity_calls.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

using Entity = PendingBlock::Entity;

/// The groups of a list as the record will hold them: points in three groups, texts encoded.
struct ParsedList {
    std::string type;
    Entity entity;
    std::wstring name;  // group 2
    std::int64_t flags = 0;
    double base[3] = {0.0, 0.0, 0.0};
    bool good = true;
};

void takeGroup(const Drawing& drawing, const resbuf& item, ParsedList& list) {
    const int code = item.restype;
    switch (listKind(code)) {
        case ListKind::Text: {
            const std::wstring text = item.resval.rstring == nullptr ? L"" : item.resval.rstring;
            if (code == 2) list.name = text;
            if (code == 8)
                list.entity.layer = text;
            else if (code != 5 && code != 100)
                list.entity.groups.push_back({code, drawing.text().encode(text)});
            break;
        }
        case ListKind::Real:
            list.entity.groups.push_back({code, item.resval.rreal});
            break;
        case ListKind::Point:
            for (int i = 0; i < 3; ++i) {
                if (code == 10) list.base[i] = item.resval.rpoint[i];
                list.entity.groups.push_back({code + 10 * i, item.resval.rpoint[i]});
            }
            break;
        case ListKind::Short:
            if (code == 67)
                list.entity.paper = item.resval.rint == 1;
            else if (code != 66)
                list.entity.groups.push_back({code, std::int64_t{item.resval.rint}});
            if (code == 70) list.flags = item.resval.rint;
            break;
        case ListKind::Long:
            list.entity.groups.push_back({code, std::int64_t{item.resval.rlong}});
            break;
        case ListKind::Name:
        case ListKind::None:
            break;  // names and handles are the drawing's to give
        case ListKind::Unknown:
            list.good = false;
            break;
    }
}

/// The type stands in the first or the second element.
ParsedList parse(const Drawing& drawing, const resbuf* list) {
    ParsedList result;
    int position = 0;
    for (const resbuf* item = list; item != nullptr; item = item->rbnext, ++position) {
        if (item->restype == 0 || item->restype == RTDXF0) {
            if (position > 1 || item->resval.rstring == nullptr)
                result.good = false;
            else
                result.type = narrow(upperCase(item->resval.rstring));
        } else {
            takeGroup(drawing, *item, result);
        }
    }
    if (result.type.empty()) result.good = false;
    result.entity.type = result.type;
    if (result.entity.layer.empty()) result.entity.layer = L"0";
    return result;
}

/// What the drawing must know before the entity may stand in it.
bool fits(Drawing& drawing, const ParsedList& list, std::wstring_view ownBlock) {
    if (!list.good || !canMakeEntity(list.type)) return false;
    if (list.type == "ATTDEF" && list.name.empty()) return false;
    if (list.type == "INSERT") {
        if (list.name.empty() || drawing.names().findBlock(list.name) == kNoContainer) return false;
        if (equalNoCase(list.name, ownBlock)) return false;  // a block that holds itself
    }
    return true;
}

RecordNumber addEntity(Drawing& drawing, ContainerNumber container, const Entity& entity) {
    if (drawing.names().findSymbol("LAYER", entity.layer) == 0 && entity.layer != L"0")
        addLayer(drawing, entity.layer);
    NewRecord record{entity.type, drawing.takeHandle(), 0, entity.groups};
    if (record.handle == 0) return 0;
    if (container == kModelSpace)
        record.owner = drawing.blockRecordHandle(L"*Model_Space");
    else if (container == kPaperSpace)
        record.owner = drawing.blockRecordHandle(L"*Paper_Space");
    else
        record.owner = drawing.container(container).owner;
    const std::string layer = drawing.text().encode(entity.layer);
    const RecordStyle style = drawing.entityStyle(entity.type);
    return drawing.add(container, makeEntity(style, record, layer, container == kPaperSpace),
                       record.handle);
}

int openBlock(AcApDocument& document, const ParsedList& list) {
    Drawing& drawing = *document.drawing;
    document.pending.reset();  // one definition at a time
    if (!list.good || list.name.empty() ||
        (list.flags & (kAnyReferenceBlock | kDependentBlock)) != 0)
        return RTREJ;
    if (list.name.find(L'|') != std::wstring::npos) return RTREJ;
    const ContainerNumber known = drawing.names().findBlock(list.name);
    if (known != kNoContainer && (drawing.isSpace(known) || isReferenceBlock(drawing, known)))
        return RTREJ;
    document.pending = std::make_unique<PendingBlock>();
    document.pending->name = list.name;
    document.pending->flags = list.flags;
    std::copy(std::begin(list.base), std::end(list.base), document.pending->base);
    return RTNORM;
}

int closeBlock(AcApDocument& document) {
    if (!document.pending) return RTREJ;
    const std::unique_ptr<PendingBlock> block = std::move(document.pending);
    Drawing& drawing = *document.drawing;
    // Handles must not run out in the middle of the definition.
    if (drawing.handles().next() == 0) return RTREJ;
    ContainerNumber container = drawing.names().findBlock(block->name);
    if (container == kNoContainer)
        container = addBlock(drawing, block->name, block->flags, block->base);
    else
        redefineBlock(drawing, container, block->flags, block->base);
    for (const Entity& entity : block->entities) addEntity(drawing, container, entity);
    endBlock(drawing, container);
    return RTKWORD;
}

int makeEntityOrBlock(AcApDocument& document, const resbuf* list) {
    Drawing& drawing = *document.drawing;
    if (list == nullptr) {
        const bool cancelled = document.pending != nullptr;
        document.pending.reset();
        return cancelled ? RTNORM : RTERROR;
    }
    const ParsedList parsed = parse(drawing, list);
    if (parsed.type == "BLOCK") return openBlock(document, parsed);
    if (parsed.type == "ENDBLK") return closeBlock(document);
    const std::wstring_view ownBlock =
        document.pending ? std::wstring_view(document.pending->name) : L"";
    if (!fits(drawing, parsed, ownBlock)) {
        document.pending.reset();
        return RTREJ;
    }
    if (document.pending) {
        document.pending->entities.push_back(parsed.entity);
        return RTNORM;
    }
    return addEntity(drawing, parsed.entity.paper ? kPaperSpace : kModelSpace, parsed.entity) != 0
               ? RTNORM
               : RTREJ;
}

}  // namespace

}  // namespace mor::host

int acdbEntMake(const resbuf* list) {
    using namespace mor::host;
    AcApDocument* document = currentDocument();
    if (document == nullptr) return RTERROR;
    if (faults::entitiesRefused() || faults::writesRefused() || faults::shouldFail("acdbEntMake")) {
        document->pending.reset();
        return RTREJ;
    }
    return makeEntityOrBlock(*document, list);
}
