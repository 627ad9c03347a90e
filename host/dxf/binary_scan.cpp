#include "host/dxf/text_scan.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kReadSize = 1 << 20;
constexpr std::size_t kLongestValue = 64U << 20U;

bool isNoted(int code) {
    switch (code) {
        case kTypeCode:
        case kNameCode:
        case kHandleCode:
        case kLayerCode:
        case kSpaceCode:
        case kMarkerCode:
        case kBracketCode:
        case kDimensionStyleHandleCode:
        case kOwnerCode:
        case kApplicationCode:
            return true;
        default:
            return false;
    }
}

Structure::Wrong take(Structure& structure, int code, std::string_view text, std::uint64_t offset) {
    constexpr const char* kForeign = "no DXF: a drawing begins with group 0 SECTION";
    const bool type = code == kTypeCode;
    const bool mayStart = type ? text == "SECTION" || text == "EOF" : code == kCommentCode;
    if (!structure.started() && !mayStart) return kForeign;
    if (type) return structure.begin(trimmed(text), offset);
    structure.group(code, text);
    return std::nullopt;
}

}  // namespace

std::optional<Stop> scanBinary(DxfIndex& index, Structure& structure) {
    std::string buffer;
    std::uint64_t base = kBinaryMark.size();  // offset of buffer[0]
    std::size_t at = 0;
    bool more = true;
    GroupList kept;
    const auto stop = [&](std::string text) {
        return Stop{std::move(text), 0, base + at, !structure.started()};
    };
    while (!structure.ended()) {
        Tag tag;
        if (index.form.next(buffer, at, tag)) {
            if (!isNoted(tag.code) && structure.started()) continue;
            const std::string text = index.form.group(buffer, tag, kept).shown();
            if (auto wrong = take(structure, tag.code, text, base + tag.begin))
                return stop(std::move(*wrong));
            continue;
        }
        if (!more || buffer.size() - at > kLongestValue) break;
        base += at;
        buffer.erase(0, at);
        at = 0;
        const std::size_t old = buffer.size();
        buffer.resize(old + kReadSize);
        const std::size_t got = index.source->read(base + old, buffer.data() + old, kReadSize);
        buffer.resize(old + got);
        more = got != 0;
    }
    if (!structure.started()) return stop("no DXF: no SECTION in it");
    if (!structure.ended() && at != buffer.size())
        return stop("a group was expected, found bytes that are none");
    const std::uint64_t end = structure.ended() ? index.source->size() : base + at;
    if (auto wrong = structure.finish(end)) return stop(std::move(*wrong));
    return std::nullopt;
}

}  // namespace mor::host
