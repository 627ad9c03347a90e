#include "platform/table_calls.h"

#include "host/calls/list_builder.h"
#include "host/documents/document.h"
#include "host/documents/symbols.h"
#include "host/faults.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
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

/// The table in which a group of a table record names another symbol; empty for other groups.
std::string_view tableOfGroup(std::wstring_view table, int code) {
    if (code == 6 && table == L"LAYER") return "LTYPE";
    return table == L"DIMSTYLE" && code >= 5 && code <= 7 ? "BLOCK" : "";
}

/// A record as program lists show it; of a referenced drawing under its qualified name.
ResbufList symbolList(const Located& found, std::wstring_view table) {
    const GroupList record = found.drawing->groupsOf(found.number);
    const std::span<const int> codes = shownCodes(table);
    ListBuilder list;
    list.text(0, table);
    bool inGroup = false;
    for (std::size_t i = 0; i < record.extendedBegin(); ++i) {
        const Group& group = record[i];
        const int code = group.code();
        if (code == kBracketCode) inGroup = group.text().starts_with("{");
        if (inGroup || std::ranges::find(codes, code) == codes.end()) continue;
        const std::string_view named = tableOfGroup(table, code);
        const auto text = [&] { return found.drawing->decoded(group); };
        if (found.mount != nullptr && code == kNameCode)
            list.text(code, found.mount->name + L"|" + text());
        else if (found.mount != nullptr && !named.empty())
            list.text(code, found.qualified(named, text()));
        else if (found.mount != nullptr && code == kFlagsCode)
            list.integer(code, group.integer().value_or(0) | kDependentBlock | kResolvedBlock);
        else
            list.group(*found.drawing, record, i);
    }
    return list.take();
}

/// A block as program lists show it. `owner` is null for blocks of the current drawing.
ResbufList blockList(AcApDocument& document, Mount* owner, ContainerNumber block) {
    Drawing& drawing = owner == nullptr ? *document.drawing : *owner->drawing;
    const GroupList record = drawing.groupsOf(drawing.container(block).head);
    std::int64_t value = record.integerOf(kFlagsCode, 0);
    if ((value & kOverlayBlock) != 0) value |= kReferenceBlock;
    const Mount* reference = document.references->mount(owner, block);
    const bool loaded = reference != nullptr && reference->drawing != nullptr;
    if (loaded) value |= kResolvedBlock;
    if (owner != nullptr) value |= kDependentBlock | kResolvedBlock;
    const std::array<double, 3> base = baseOf(document, owner, block);
    ListBuilder list;
    list.text(0, L"BLOCK");
    list.text(2, (owner == nullptr ? L"" : owner->name + L"|") + drawing.containerName(block));
    list.integer(70, value);
    list.point(10, base.data());
    if ((value & kReferenceBlock) != 0)
        if (const Group* path = record.find(1)) list.text(1, drawing.decoded(*path));
    if (const Located first = firstEntityOf(document, owner, block))
        list.name(-2, first.nameOf(first.number));
    return list.take();
}

/// A block of the current drawing, or of one that it refers to under a qualified name.
ResbufList findBlockList(AcApDocument& document, std::wstring_view name) {
    const FoundBlock found = resolveBlock(document, name);
    return found.block == kNoContainer ? ResbufList()
                                       : blockList(document, found.owner, found.block);
}

/// A symbol of the current drawing, else of one that it refers to.
ResbufList findSymbolList(AcApDocument& document, std::wstring_view table, std::wstring_view name) {
    const Located found = resolveSymbol(document, narrow(table), name);
    return found ? symbolList(found, table) : ResbufList();
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

/// What a look-up finds of the next block of the file that it finds at all; moves `position` there.
FoundBlock nextFound(AcApDocument& document, ContainerNumber& position) {
    while (const ContainerNumber block = nextBlock(*document.drawing, position)) {
        position = block;
        const std::wstring own = document.drawing->containerName(block);
        if (own.find(L'|') == std::wstring::npos) return {nullptr, block};
        if (const FoundBlock found = resolveBlock(document, own); found.block != kNoContainer)
            return found;
    }
    return {};
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
    if (name == L"BLOCK") {
        const host::ContainerNumber block = drawing.names().findBlock(symbol);
        if (setNext != 0 && block != host::kNoContainer) host::positionOf(*document, name) = block;
        return host::findBlockList(*document, symbol).release();  // caller owns
    }
    if (host::shownCodes(name).empty()) return nullptr;
    const host::RecordNumber own = drawing.names().findSymbol(mor::narrow(name), symbol);
    if (setNext != 0 && own != 0) host::positionOf(*document, name) = own;
    return host::findSymbolList(*document, name, symbol).release();  // caller owns
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
        const host::FoundBlock found = host::nextFound(*document, position);
        if (found.block == host::kNoContainer) return nullptr;
        return host::blockList(*document, found.owner, found.block).release();  // caller owns
    }
    const host::ContainerNumber container = drawing.names().findTable(mor::narrow(name));
    if (container == host::kNoContainer || host::shownCodes(name).empty()) return nullptr;
    const host::RecordNumber next = drawing.nextMember(container, position);
    if (next == 0) return nullptr;
    position = next;
    return host::symbolList({&drawing, next, nullptr}, name).release();  // caller owns
}
