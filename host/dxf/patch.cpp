#include "host/dxf/patch.h"

#include <cstddef>
#include <utility>

namespace mor::host {

std::string patched(std::string bytes, const RecordChange& change, const DxfForm& form) {
    // The last record of a file without EOF may lack its last line end.
    bytes += form.missingLineEnd(bytes);
    const TagList record(std::move(bytes), form);
    std::string result;
    std::size_t at = 0;
    for (const Splice& splice : splicesFor(record.groups(), change)) {
        result.append(record.bytes(), at, record.beginOf(splice.begin) - at);
        GroupList added;
        for (const NewGroup& group : splice.groups) added.add(group);
        if (splice.isNewValue())
            result += form.exchanged(record.bytes(), record.tags()[splice.begin], added[0]);
        else
            result += form.bytes(added);
        at = record.beginOf(splice.end);
    }
    result.append(record.bytes(), at);
    return result;
}

}  // namespace mor::host
