#include "platform/table_calls.h"

#include "host/document.h"
#include "host/faults.h"
#include "host/list_builder.h"
#include "platform/runtime.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

/// Groups that program lists show, in the format of the oldest release.
std::span<const int> shownCodes(std::wstring_view table) {
    static const std::vector<std::pair<std::wstring_view, std::vector<int>>> shown = {
        {L"LAYER", {2, 70, 62, 6}},
        {L"LTYPE", {2, 70, 3, 72, 73, 40, 49}},
        {L"VIEW", {2, 70, 40, 10, 41, 11, 12, 42, 43, 44, 50, 71}},
        {L"STYLE", {2, 70, 40, 41, 50, 71, 42, 3, 4}},
        {L"UCS", {2, 70, 10, 11, 12}},
        {L"DIMSTYLE", {2,  70, 3,   4,   5,   6,   7,   40,  41,  42,  43,  44,  45, 46,
                       47, 48, 140, 141, 142, 143, 144, 145, 146, 147, 71,  72,  73, 74,
                       75, 76, 77,  78,  170, 171, 172, 173, 174, 175, 176, 177, 178}},
        {L"VPORT", {2,  70, 10, 11, 12, 13, 14, 15, 16, 17, 40, 41, 42,
                    43, 44, 50, 51, 71, 72, 73, 74, 75, 76, 77, 78}},
        {L"APPID", {2, 70}}};
    const auto found =
        std::ranges::find(shown, table, &std::pair<std::wstring_view, std::vector<int>>::first);
    return found == shown.end() ? std::span<const int>() : std::span<const int>(found->second);
}

ResbufList symbolList(Drawing& drawing, std::wstring_view table, RecordNumber number) {
    const TagList record = drawing.current(number);
    const std::span<const int> codes = shownCodes(table);
    ListBuilder list;
    list.text(0, table);
    bool inGroup = false;
    for (std::size_t i = 0; i < record.extendedBegin(); ++i) {
        const Tag& tag = record.tags()[i];
        if (tag.code == 102) inGroup = record.value(tag).starts_with("{");
        if (!inGroup && std::ranges::find(codes, tag.code) != codes.end())
            list.group(drawing, record, i);
    }
    return list.take();
}

/// Model space's own block names the entities of the space.
ContainerNumber entitiesOf(const Drawing& drawing, ContainerNumber block) {
    const Container& container = drawing.container(block);
    if (!container.layout) return block;
    if (!container.paper) return kModelSpace;
    const bool active = container.name.size() == std::string_view("*Paper_Space").size();
    return active ? kPaperSpace : block;
}

ResbufList blockList(Drawing& drawing, ContainerNumber block) {
    const TagList record = drawing.current(drawing.container(block).head);
    ListBuilder list;
    list.text(0, L"BLOCK");
    list.text(2, drawing.containerName(block));
    const Tag* flags = record.find(70);
    const std::int64_t value =
        flags == nullptr ? 0 : parseInteger(record.value(*flags)).value_or(0);
    list.integer(70, value);
    double base[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < 3; ++i)
        if (const Tag* tag = record.find(10 * (i + 1)))
            base[i] = parseReal(record.value(*tag)).value_or(0.0);
    list.point(10, base);
    if ((value & 4) != 0)
        if (const Tag* path = record.find(1))
            list.text(1, drawing.text().decode(record.value(*path)));
    const RecordNumber first = drawing.nextMember(entitiesOf(drawing, block), 0);
    if (first != 0) list.name(-2, drawing.nameOf(first));
    return list.take();
}

/// Where the walk over the table stands: a record, or a container for "BLOCK".
RecordNumber& positionOf(AcApDocument& document, std::wstring_view table) {
    for (auto& [name, record] : document.tablePositions)
        if (name == table) return record;
    return document.tablePositions.emplace_back(table, 0).second;
}

/// The container after `after` that is a block of the user's.
ContainerNumber nextBlock(const Drawing& drawing, ContainerNumber after) {
    for (ContainerNumber number = after + 1; number < drawing.containers().size(); ++number) {
        const Container& container = drawing.container(number);
        if (container.kind == ContainerKind::Block && !container.layout && container.end != 0)
            return number;
    }
    return kNoContainer;
}

}  // namespace

}  // namespace mor::host

namespace host = mor::host;

resbuf* acdbTblSearch(const wchar_t* table, const wchar_t* symbol, int setNext) {
    AcApDocument* document = host::currentDocument();
    if (document == nullptr || table == nullptr || symbol == nullptr ||
        host::faults::shouldFail("acdbTblSearch"))
        return nullptr;
    host::Drawing& drawing = *document->drawing;
    const std::wstring name = mor::upperCase(table);
    host::RecordNumber& position = host::positionOf(*document, name);
    if (name == L"BLOCK") {
        const host::ContainerNumber block = drawing.findBlock(symbol);
        if (block == host::kNoContainer) return nullptr;
        if (setNext != 0) position = block;
        return host::blockList(drawing, block).release();  // caller owns
    }
    if (host::shownCodes(name).empty()) return nullptr;
    const host::RecordNumber number = drawing.findSymbol(mor::narrow(name), symbol);
    if (number == 0) return nullptr;
    if (setNext != 0) position = number;
    return host::symbolList(drawing, name, number).release();  // caller owns
}

resbuf* acdbTblNext(const wchar_t* table, int rewind) {
    AcApDocument* document = host::currentDocument();
    if (document == nullptr || table == nullptr || host::faults::shouldFail("acdbTblNext"))
        return nullptr;
    host::Drawing& drawing = *document->drawing;
    const std::wstring name = mor::upperCase(table);
    host::RecordNumber& position = host::positionOf(*document, name);
    if (rewind != 0) position = 0;
    if (name == L"BLOCK") {
        const host::ContainerNumber block = host::nextBlock(drawing, position);
        if (block == host::kNoContainer) return nullptr;
        position = block;
        return host::blockList(drawing, block).release();  // caller owns
    }
    const host::ContainerNumber container = drawing.findTable(mor::narrow(name));
    if (container == host::kNoContainer || host::shownCodes(name).empty()) return nullptr;
    const host::RecordNumber next = drawing.nextMember(container, position);
    if (next == 0) return nullptr;
    position = next;
    return host::symbolList(drawing, name, next).release();  // caller owns
}
