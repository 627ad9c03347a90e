#include "host/dxf/patch.h"

#include "host/text/ascii.h"
#include "host/text/numbers.h"

#include <cstddef>
#include <variant>

namespace mor::host {

namespace {

std::string valueText(const GroupValue& value, std::size_t width) {
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return padLeft(std::to_string(*integer), width);
    if (const auto* real = std::get_if<double>(&value)) return realText(*real);
    return std::get<std::string>(value);
}

}  // namespace

std::string patched(std::string_view bytes, const RecordChange& change, const LineStyle& lines) {
    // The last record of a file without EOF may lack its last line end.
    const TagList record(std::string(bytes).append(lineEndFor(bytes, lines)));
    const auto& tags = record.tags();
    const auto beginOf = [&](std::size_t tag) -> std::size_t {
        return tag < tags.size() ? tags[tag].begin : record.bytes().size();
    };
    std::string result;
    std::size_t at = 0;
    for (const Splice& splice : splicesFor(record.groups(), change)) {
        if (splice.isNewValue()) {
            const Tag& tag = tags[splice.begin];
            result.append(record.bytes(), at, tag.valueBegin - at);
            result +=
                valueText(splice.groups.front().value, std::size_t{tag.valueEnd} - tag.valueBegin);
            at = tag.valueEnd;
            continue;
        }
        result.append(record.bytes(), at, beginOf(splice.begin) - at);
        GroupList added;
        for (const NewGroup& group : splice.groups) added.add(group);
        result += recordLines(lines, added);
        at = splice.end > splice.begin ? tags[splice.end - 1].end : beginOf(splice.begin);
    }
    result.append(record.bytes(), at);
    return result;
}

std::string withInteger(const TagList& record, const Tag& tag, std::int64_t value) {
    const std::size_t width = std::size_t{tag.valueEnd} - tag.valueBegin;
    std::string bytes = record.bytes();
    return bytes.replace(tag.valueBegin, width, padLeft(std::to_string(value), width));
}

}  // namespace mor::host
