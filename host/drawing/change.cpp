#include "host/drawing/change.h"

#include "host/handles.h"
#include "host/text/group_codes.h"

#include <algorithm>

namespace mor::host {

namespace {

/// Where a group stands that the record lacks: the space before the layer, anything else before the
/// extended data.
std::size_t placeFor(const GroupList& record, int code) {
    if (code == kSpaceCode)
        if (const auto layer = record.indexOf(kLayerCode)) return *layer;
    return record.extendedBegin();
}

/// Own lists are replaced where the first one stood.
void spliceAttributes(const GroupList& record, const std::vector<NewGroup>& list,
                      std::vector<Splice>& splices) {
    const auto ranges = extendedRanges(record, kAttributeApplication);
    for (std::size_t i = 0; i < ranges.size(); ++i)
        splices.push_back(
            {ranges[i].begin, ranges[i].end, i == 0 ? list : std::vector<NewGroup>()});
    if (ranges.empty() && !list.empty()) splices.push_back({record.size(), record.size(), list});
}

}  // namespace

std::vector<Splice> splicesFor(const GroupList& record, const RecordChange& change) {
    std::vector<Splice> splices;
    if (change.handle != 0 && record.size() > 0) {
        const bool dimensionStyle = record[0].bare() == "DIMSTYLE";
        const int code = dimensionStyle ? kDimensionStyleHandleCode : kHandleCode;
        splices.push_back({1, 1, {{code, handleText(change.handle)}}});
    }
    for (const auto& [code, value] : change.groups) {
        const auto index = record.indexOf(code);
        if (index && record[*index].equals(value)) continue;
        const std::size_t place = index ? *index : placeFor(record, code);
        splices.push_back({place, index ? place + 1 : place, {{code, value}}});
    }
    if (change.attributes) spliceAttributes(record, *change.attributes, splices);
    std::ranges::stable_sort(splices, {}, &Splice::begin);
    return splices;
}

GroupList spliced(GroupList record, const std::vector<Splice>& splices) {
    std::vector<Group> result;
    result.reserve(record.size() + splices.size());
    std::size_t at = 0;
    for (const Splice& splice : splices) {
        for (; at < splice.begin; ++at) result.push_back(record[at]);
        for (const NewGroup& group : splice.groups) result.push_back(record.keep(group));
        at = splice.end;
    }
    for (; at < record.size(); ++at) result.push_back(record[at]);
    record.assign(std::move(result));
    return record;
}

}  // namespace mor::host
