#include "host/documents/located.h"

#include "host/documents/document.h"
#include "platform/runtime.h"

#include <algorithm>

namespace mor::host {

bool isCommonSymbol(std::string_view table, std::wstring_view symbol) {
    if (symbol.empty() || table == "LAYER") return symbol.empty() || symbol == L"0";
    static constexpr std::wstring_view linetypes[] = {L"Continuous", L"ByLayer", L"ByBlock"};
    return table == "LTYPE" && std::ranges::any_of(linetypes, [symbol](std::wstring_view common) {
               return equalNoCase(symbol, common);
           });
}

EntityName Located::nameOf(RecordNumber other) const {
    const EntityName own = drawing->nameOf(other);
    return mount == nullptr || other == 0 ? own : EntityName{own.first(), mount->number};
}

std::wstring Located::qualified(std::string_view table, std::wstring_view symbol) const {
    if (mount == nullptr || isCommonSymbol(table, symbol)) return std::wstring(symbol);
    std::wstring name;
    name.reserve(mount->name.size() + 1 + symbol.size());
    return name.append(mount->name).append(1, L'|').append(symbol);
}

namespace {

/// What was located last: a walk asks several times about one record.
struct LastLocated {
    const AcApDocument* document = nullptr;
    EntityName name;
    Located found;
};

LastLocated& lastLocated() {
    static LastLocated s_last;
    return s_last;
}

Located locateAnew(const AcApDocument& document, EntityName name) {
    if (const RecordNumber own = document.drawing->numberOf(name))
        return {document.drawing.get(), own, nullptr};
    const Mount* mount = document.references->find(name.second());
    if (mount == nullptr || !mount->drawing) return {};
    const EntityName inside{name.first(), mount->drawing->nameOf(1).second()};
    const RecordNumber number = mount->drawing->numberOf(inside);
    return number == 0 ? Located{} : Located{mount->drawing.get(), number, mount};
}

}  // namespace

void forgetLocated() { lastLocated() = {}; }

Located locate(const AcApDocument& document, EntityName name) {
    if (name.isNone()) return {};
    LastLocated& last = lastLocated();
    if (last.document != &document || last.name != name) {
        const Located found = locateAnew(document, name);
        if (!found) return found;
        last = {&document, name, found};
    }
    return last.found.drawing->entry(last.found.number).has(kGone) ? Located{} : last.found;
}

Located locate(EntityName name) {
    const AcApDocument* document = currentDocument();
    return document == nullptr ? Located{} : locate(*document, name);
}

}  // namespace mor::host
