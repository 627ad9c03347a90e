#include "platform/selection_calls.h"

#include "host/calls/selection_filter.h"
#include "host/documents/document.h"
#include "host/documents/running_counters.h"
#include "host/faults.h"
#include "host/permanent.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kMostSets = 128;

/// Records of one drawing, in the order in which they are given. It may hold them all.
struct SelectionSet {
    std::int64_t drawing = 0;
    std::vector<RecordNumber> records;
};

struct SelectionSets {
    std::map<std::int64_t, SelectionSet> open;
    std::int64_t last = 0;
};

SelectionSets& sets() {
    static Permanent<SelectionSets> state;
    return *state;
}

const SelectionSet* findSet(const ads_name set) {
    if (set[1] != 0) return nullptr;
    const auto found = sets().open.find(set[0]);
    return found == sets().open.end() ? nullptr : &found->second;
}

void noteFilter(const resbuf* filter) {
    auto& noted = runningCounters().lastFilter;
    noted.clear();
    for (; filter != nullptr; filter = filter->rbnext)
        noted.emplace_back(filter->restype, filterText(*filter));
}

}  // namespace

}  // namespace mor::host

namespace host = mor::host;

int acedSSGet(const wchar_t* mode, const void* /*first*/, const void* /*second*/,
              const resbuf* filter, ads_name result) {
    host::Drawing* drawing = host::currentDrawing();
    if (drawing == nullptr || mode == nullptr) return RTERROR;
    const std::wstring_view how = mode;
    if (how != L"X" && how != L"_X" && how != L"x" && how != L"_x") return RTERROR;
    host::noteFilter(filter);
    if (host::faults::shouldFail("acedSSGet") || host::sets().open.size() >= host::kMostSets)
        return RTERROR;
    host::SelectionFilter selection(*drawing, filter);
    if (!selection.isValid()) return RTERROR;
    host::SelectionSet found{drawing->nameOf(1).second(), {}};
    for (host::RecordNumber number = 1; number <= drawing->lastRecord(); ++number)
        if (selection.matches(number)) found.records.push_back(number);
    // Newest first, as selections usually come; nobody may rely on it.
    std::ranges::reverse(found.records);
    if (found.records.empty()) return RTERROR;
    const std::int64_t set = ++host::sets().last;
    host::sets().open.emplace(set, std::move(found));
    ++host::runningCounters().selectionSetsOpen;
    result[0] = set;
    result[1] = 0;
    return RTNORM;
}

int acedSSLength(const ads_name set, std::int32_t* count) {
    const auto* found = host::findSet(set);
    if (found == nullptr || host::faults::shouldFail("acedSSLength")) return RTERROR;
    *count = static_cast<std::int32_t>(found->records.size());
    return RTNORM;
}

int acedSSName(const ads_name set, std::int32_t index, ads_name result) {
    const auto* found = host::findSet(set);
    if (found == nullptr || host::faults::shouldFail("acedSSName")) return RTERROR;
    if (index < 0 || static_cast<std::size_t>(index) >= found->records.size()) return RTERROR;
    const host::RecordNumber number = found->records[static_cast<std::size_t>(index)];
    mor::EntityName(static_cast<std::int64_t>(number), found->drawing).copyTo(result);
    return RTNORM;
}

int acedSSFree(const ads_name set) {
    if (host::findSet(set) == nullptr) return RTERROR;
    host::sets().open.erase(set[0]);
    --host::runningCounters().selectionSetsOpen;
    return RTNORM;
}
