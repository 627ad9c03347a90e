#include "host/documents/document.h"
#include "host/documents/symbols.h"
#include "host/host.h"
#include "host/lisp/lisp_value.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

Place placeOf(const Drawing& drawing, RecordNumber number) {
    const RecordEntry& entry = drawing.entry(number);
    if (entry.container == kNoContainer) {
        const std::string& type = drawing.typeOf(number);
        if (type == "CLASS") return Place::Class;
        return entry.has(kEdge) ? Place::Structure : Place::Other;
    }
    const Container& container = drawing.container(entry.container);
    switch (container.kind) {
        case ContainerKind::Space:
            return container.paper ? Place::PaperSpace : Place::ModelSpace;
        case ContainerKind::Table:
            return entry.has(kEdge) ? Place::Structure : Place::Table;
        case ContainerKind::Block:
            if (entry.has(kEdge)) return Place::Structure;
            if (!container.layout) return Place::BlockDefinition;
            return container.paper ? Place::PaperSpace : Place::ModelSpace;
        case ContainerKind::Section:
            if (entry.has(kEdge)) return Place::Structure;
            if (container.name == "CLASSES") return Place::Class;
            return container.name == "OBJECTS" ? Place::Object : Place::Other;
        case ContainerKind::None:
            break;
    }
    return Place::Other;
}

/// Into an info that may be that of another record: a walk makes no texts anew.
void fillInfo(const Located& found, RecordInfo& info) {
    const Drawing& drawing = *found.drawing;
    const RecordNumber number = found.number;
    const RecordEntry& entry = drawing.entry(number);
    info.name = found.nameOf(number);
    info.type = drawing.typeOf(number);
    info.handle = entry.handle;
    info.place = placeOf(drawing, number);
    info.container.clear();
    if (entry.container != kNoContainer) {
        const ContainerKind kind = drawing.container(entry.container).kind;
        if (kind == ContainerKind::Table || kind == ContainerKind::Block)
            info.container = toUtf8(drawing.containerName(entry.container));
    }
    info.erased = entry.has(kErased);
    info.made = entry.has(kMade);
    info.subEntity = entry.has(kSubEntity);
    info.opaque = entry.has(kOpaque);
    info.extended = drawing.mayHaveExtendedData(number);
}

RecordInfo infoOf(const Located& found) {
    RecordInfo info;
    fillInfo(found, info);
    return info;
}

}  // namespace

void forEachRecord(const AcApDocument* document,
                   const std::function<void(const RecordInfo&)>& visit) {
    Drawing& drawing = drawingOf(document);
    RecordInfo info;
    for (RecordNumber number = 1; number <= drawing.lastRecord(); ++number) {
        if (drawing.entry(number).has(kGone)) continue;
        fillInfo({&drawing, number, nullptr}, info);
        visit(info);
    }
}

void forEachRecordOf(const AcApDocument* document, std::initializer_list<std::string_view> types,
                     const std::function<void(const RecordInfo&)>& visit, AndThose also) {
    Drawing& drawing = drawingOf(document);
    std::vector<std::optional<bool>> wanted(std::size_t{TextNumbers::kNone} + 1);  // by type
    RecordNumber main = 0;     // the last record that is no sub-entity
    RecordNumber visited = 0;  // the last one
    for (RecordNumber number = 1; number <= drawing.lastRecord(); ++number) {
        const RecordEntry& entry = drawing.entry(number);
        if (!entry.has(kSubEntity)) main = number;
        std::optional<bool>& known = wanted[entry.type];
        if (!known || entry.type >= TextNumbers::kTooMany)
            known = std::ranges::find(types, drawing.typeOf(number)) != types.end();
        const bool extended = also == AndThose::Extended && drawing.mayHaveExtendedData(number);
        if (entry.has(kGone) || (!*known && !extended)) continue;
        if (extended && main > visited && main < number) visit(infoOf({&drawing, main, nullptr}));
        visit(infoOf({&drawing, number, nullptr}));
        visited = number;
    }
}

std::map<std::string, std::size_t> entityTypes(const AcApDocument* document) {
    const Drawing& drawing = drawingOf(document);
    std::map<std::string, std::size_t> counts;
    std::vector<std::size_t> byNumber;
    for (RecordNumber number = 1; number <= drawing.lastRecord(); ++number) {
        const RecordEntry& entry = drawing.entry(number);
        if (entry.has(kEdge | kSubEntity | kErased | kGone) || entry.container == kNoContainer ||
            !drawing.isSpace(entry.container))
            continue;
        if (entry.type >= TextNumbers::kTooMany) {
            ++counts[drawing.typeOf(number)];
            continue;
        }
        if (entry.type >= byNumber.size()) byNumber.resize(entry.type + std::size_t{1});
        if (byNumber[entry.type]++ == 0) counts[drawing.typeOf(number)] = 0;
    }
    for (auto& [type, count] : counts)
        if (const std::uint16_t number = drawing.typeNumber(type); number < byNumber.size())
            count += byNumber[number];
    return counts;
}

std::optional<RecordInfo> recordInfo(const AcApDocument* document, EntityName name) {
    const Located found = locate(*document, name);
    return found ? std::optional(infoOf(found)) : std::nullopt;
}

std::optional<Place> recordPlace(const AcApDocument* document, EntityName name) {
    const Located found = locate(*document, name);
    return found ? std::optional(placeOf(*found.drawing, found.number)) : std::nullopt;
}

std::optional<EntityFacts> entityFacts(const AcApDocument* document, EntityName name) {
    const Located found = locate(*document, name);
    if (!found) return std::nullopt;
    const Drawing& drawing = *found.drawing;
    const RecordEntry& entry = drawing.entry(found.number);
    if (entry.has(kEdge | kErased)) return std::nullopt;
    EntityFacts facts{drawing.typeOf(found.number), entry.handle, std::nullopt};
    const std::uint16_t layer = drawing.layerNumberOf(found.number);
    if (layer != TextNumbers::kNone) facts.layer = layer;
    return facts;
}

std::vector<std::string> recordApplications(const AcApDocument* document, EntityName name) {
    std::vector<std::string> names;
    if (const Located found = locate(*document, name))
        for (const std::wstring& application : found.drawing->applicationsOf(found.number))
            names.push_back(toUtf8(application));
    return names;
}

std::string undecodedBytes(const AcApDocument* document, EntityName name) {
    const Located found = locate(*document, name);
    if (!found || found.drawing->isMade(found.number)) return {};
    return found.drawing->codec().undecoded(found.number);
}

std::optional<std::string> recordGroup(const AcApDocument* document, EntityName name, int code) {
    const Located found = locate(*document, name);
    if (!found) return std::nullopt;
    const auto text = found.drawing->textOf(found.number, code);
    return text ? std::optional(toUtf8(*text)) : std::nullopt;
}

RecordAttributes recordAttributes(const AcApDocument* document, EntityName name) {
    RecordAttributes result;
    const Located found = locate(*document, name);
    if (!found) return result;
    const auto list = found.drawing->attributesOf(found.number);
    for (const Attribute& attribute : list->items())
        result.items.push_back({attribute.name, attribute.value, attributeCost(attribute)});
    result.used = list->used();
    result.free = kRoomPerRecord - result.used;
    result.damage = list->damage;
    return result;
}

std::optional<EntityName> findSymbol(const AcApDocument* document, std::string_view table,
                                     std::wstring_view name) {
    Drawing& drawing = drawingOf(document);
    const RecordNumber number = drawing.names().findSymbol(table, name);
    return number == 0 ? std::nullopt : std::optional(drawing.nameOf(number));
}

bool purgeSymbol(AcApDocument* document, std::string_view table, std::wstring_view name) {
    Drawing& drawing = *document->drawing;
    std::vector<RecordNumber> records;
    if (table == "BLOCK") {
        const ContainerNumber number = drawing.names().findBlock(name);
        if (number == kNoContainer) return false;
        const Container& block = drawing.container(number);
        records = {block.head, block.end, drawing.names().findSymbol("BLOCK_RECORD", name)};
        for (RecordNumber at = block.first; at <= block.last; ++at) records.push_back(at);
        records.insert(records.end(), block.added.begin(), block.added.end());
    } else {
        records = {drawing.names().findSymbol(table, name)};
    }
    bool found = false;
    for (const RecordNumber number : records) {
        if (number == 0 || drawing.entry(number).has(kErased | kGone)) continue;
        drawing.toggleErased(number);
        found = true;
    }
    return found;
}

std::optional<EntityName> firstEntityOfBlock(const AcApDocument* document,
                                             std::wstring_view block) {
    Drawing& drawing = drawingOf(document);
    const ContainerNumber container = drawing.names().findBlock(block);
    const RecordNumber first = container == kNoContainer ? 0 : drawing.nextMember(container, 0);
    return first == 0 ? std::nullopt : std::optional(drawing.nameOf(first));
}

bool hasBlock(const AcApDocument* document, std::wstring_view block) {
    return drawingOf(document).names().findBlock(block) != kNoContainer;
}

void forEachInsert(const AcApDocument* document, std::wstring_view block,
                   const std::function<void(const RecordInfo&)>& visit) {
    Drawing& drawing = drawingOf(document);
    const std::uint16_t insert = drawing.typeNumber("INSERT");
    const std::wstring wanted = upperCase(block);
    for (RecordNumber number = 1; number <= drawing.lastRecord(); ++number) {
        const RecordEntry& entry = drawing.entry(number);
        if (entry.type != insert || entry.has(kErased | kGone) || !drawing.isSpace(entry.container))
            continue;
        const auto name = drawing.textOf(number, 2);
        if (name && upperCase(*name) == wanted) visit(infoOf({&drawing, number, nullptr}));
    }
}

long attributeBytes(std::wstring_view name, const CMORAdsLispVar& value) {
    return attributeCost({std::wstring(name), value});
}

bool hasFreeHandle(const AcApDocument* document) {
    return drawingOf(document).handles().next() != 0;
}

bool renewHandle(AcApDocument* document, EntityName name) {
    Drawing& drawing = drawingOf(document);
    const RecordNumber number = drawing.numberOf(name);
    return number != 0 && drawing.renewHandle(number) != 0;
}

bool holdsEntityName(const CMORAdsLispVar& value) {
    return std::ranges::any_of(
        tokensOf(value), [](const LispToken& token) { return token.is(LispKind::EntityName); });
}

std::vector<Problem> documentProblems(const AcApDocument* document) {
    Drawing& drawing = drawingOf(document);
    std::vector<Problem> problems;
    if (!drawing.endsWithEof() && !drawing.damage())
        problems.push_back({Problem::Kind::MissingEof, {}, "the file does not end with EOF"});
    for (const auto& [handle, count] : drawing.handles().doubled())
        problems.push_back({Problem::Kind::DoubledHandle, handleText(handle),
                            "the handle " + handleText(handle) + " stands on " +
                                std::to_string(count) + " records"});
    return problems;
}

namespace {

/// A drawing that a path of references leads to; no drawing when there is none.
struct Reached {
    Drawing* drawing = nullptr;
    Mount* mount = nullptr;

    [[nodiscard]] SymbolInfo symbol(std::string_view table, RecordNumber number,
                                    std::wstring text) const {
        const Located found{drawing, number, mount};
        std::wstring qualified = found.qualified(table, text);
        return {found.nameOf(number), std::move(text), std::move(qualified)};
    }
};

Reached reach(AcApDocument& document, std::wstring_view reference) {
    if (reference.empty()) return {document.drawing.get(), nullptr};
    const References::Target target = document.references->resolve(std::wstring(reference) + L"|");
    if (target.mount == nullptr || !target.rest.empty()) return {};
    return {target.mount->drawing.get(), target.mount};
}

}  // namespace

void forEachSymbol(AcApDocument* document, std::wstring_view reference, std::string_view table,
                   const std::function<void(const SymbolInfo&)>& visit) {
    const Reached found = reach(*document, reference);
    if (found.drawing == nullptr) return;
    const ContainerNumber container = found.drawing->names().findTable(table);
    if (container == kNoContainer) return;
    for (RecordNumber at = found.drawing->nextMember(container, 0); at != 0;
         at = found.drawing->nextMember(container, at))
        if (auto text = found.drawing->textOf(at, 2))
            visit(found.symbol(table, at, std::move(*text)));
}

SymbolInfo symbolInfo(const AcApDocument* document, std::string_view table, EntityName name) {
    const Located found = locate(*document, name);
    std::wstring text = found.drawing->textOf(found.number, 2).value_or(L"");
    std::wstring qualified = found.qualified(table, text);
    return {name, std::move(text), std::move(qualified)};
}

std::optional<EntityName> resolveSymbol(AcApDocument* document, std::string_view table,
                                        std::wstring_view qualified) {
    const Located found = resolveSymbol(*document, table, qualified);
    return found ? std::optional(found.nameOf(found.number)) : std::nullopt;
}

bool hasBlock(AcApDocument* document, std::wstring_view reference, std::wstring_view block) {
    const Reached found = reach(*document, reference);
    return found.drawing != nullptr && found.drawing->names().findBlock(block) != kNoContainer;
}

void forEachBlock(AcApDocument* document, std::wstring_view reference,
                  const std::function<void(const BlockInfo&)>& visit) {
    const Reached found = reach(*document, reference);
    if (found.drawing == nullptr) return;
    Drawing& drawing = *found.drawing;
    const std::map<std::wstring, std::size_t>& inserts = drawing.names().insertCounts();
    for (ContainerNumber block = 1; block < drawing.containers().size(); ++block) {
        const Container& container = drawing.container(block);
        if (container.kind != ContainerKind::Block || container.head == 0) continue;
        BlockInfo info;
        info.symbol = found.symbol("BLOCK", container.head, drawing.containerName(block));
        info.flags = drawing.integerOf(container.head, kFlagsCode).value_or(0);
        info.anonymous = isAnonymousBlock(drawing, block);
        info.attributes = holdsAttributeDefinitions(drawing, block);
        info.reference = isReferenceBlock(drawing, block);
        info.layout = container.layout;
        if (info.reference) info.path = drawing.textOf(container.head, 1).value_or(L"");
        info.base = baseOf(*document, found.mount, block);
        info.recordedBase = recordedBase(drawing, block);
        const BlockEntities entities = entitiesOf(*document, found.mount, block);
        if (entities.drawing != nullptr)
            info.entities = countEntities(*entities.drawing, entities.container);
        if (const auto count = inserts.find(upperCase(info.symbol.symbol)); count != inserts.end())
            info.inserts = count->second;
        visit(info);
    }
}

}  // namespace mor::host
