#include "host/dxf/dxf_header.h"

#include "host/handles.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

/// The number of the line that begins at `offset` of the source.
std::uint64_t lineAt(const Source& source, std::uint64_t offset) {
    const std::string before = source.read(0, offset);
    return 1 + static_cast<std::uint64_t>(std::ranges::count(before, '\n'));
}

Result<Release> releaseOf(const std::string& version, const std::string& file, std::uint64_t line) {
    const auto refuse = [&](const std::string& text) {
        return Error{ErrorKind::Unreadable, file, line, "$ACADVER is " + version + text};
    };
    if (!version.starts_with("AC10") || version.size() != 6)
        return refuse(", not a release that is read; R12 (AC1009) to R2018 (AC1032) are");
    const auto number = parseInteger(std::string_view(version).substr(2)).value_or(0);
    if (number < 1009) return refuse(", older than R12 (AC1009); save the drawing as R12 or later");
    if (number > 1032)
        return refuse(", newer than R2018 (AC1032); save the drawing as R2018 or earlier");
    static constexpr std::array<std::pair<int, Release>, 9> first = {{{1032, Release::R2018},
                                                                      {1027, Release::R2013},
                                                                      {1024, Release::R2010},
                                                                      {1021, Release::R2007},
                                                                      {1018, Release::R2004},
                                                                      {1015, Release::R2000},
                                                                      {1014, Release::R14},
                                                                      {1012, Release::R13},
                                                                      {1009, Release::R12}}};
    for (const auto& [since, release] : first)
        if (number >= since) return release;
    return Release::R12;
}

}  // namespace

std::optional<Error> readHeader(const DxfIndex& index, Skeleton& skeleton,
                                const std::string& file) {
    const Section* header = index.section("HEADER");
    if (header == nullptr) return std::nullopt;
    const TagList record(index.bytesOf(header->head));
    std::string_view variable;
    std::uint64_t versionAt = 0;
    for (const Tag& tag : record.tags()) {
        if (tag.code == 9)
            variable = record.bare(tag);
        else if (tag.code == 1 && variable == "$ACADVER") {
            skeleton.version = record.bare(tag);
            versionAt = index.places[header->head] + tag.valueBegin;
        } else if (tag.code == 3 && variable == "$DWGCODEPAGE")
            skeleton.codePage = record.bare(tag);
        else if (variable == "$INSBASE" && (tag.code == 10 || tag.code == 20 || tag.code == 30)) {
            if (!skeleton.insertionBase) skeleton.insertionBase.emplace();
            (*skeleton.insertionBase)[static_cast<std::size_t>(tag.code / 10 - 1)] =
                parseReal(record.value(tag)).value_or(0.0);
        } else if (tag.code == 5 && variable == "$HANDSEED")
            skeleton.seed = parseHandle(record.bare(tag));
    }
    if (skeleton.version.empty()) return std::nullopt;
    const auto release = releaseOf(skeleton.version, file, lineAt(*index.source, versionAt));
    if (!release) return release.error();
    skeleton.release = release.value();
    return std::nullopt;
}

std::string withSeed(const TagList& header, const LineStyle& lines, Release release,
                     std::uint64_t seed) {
    std::string bytes = header.bytes();
    std::string_view variable;
    std::optional<Tag> seedTag;
    std::optional<Tag> handling;
    for (const Tag& tag : header.tags()) {
        if (tag.code == 9)
            variable = header.bare(tag);
        else if (variable == "$HANDSEED" && tag.code == 5 && !seedTag)
            seedTag = tag;
        else if (variable == "$HANDLING" && tag.code == 70 && !handling)
            handling = tag;
    }
    const bool old = release < Release::R2000;
    if (old && !handling) bytes += line(lines, 9, "$HANDLING") + integerLine(lines, 70, 1);
    if (!seedTag) bytes += line(lines, 9, "$HANDSEED") + line(lines, 5, handleText(seed));
    const bool off = old && handling && parseInteger(header.value(*handling)) == 0;
    const auto setSeed = [&] {
        if (seedTag)
            bytes.replace(seedTag->valueBegin, seedTag->valueEnd - seedTag->valueBegin,
                          handleText(seed));
    };
    const auto setHandling = [&] {
        if (off) bytes[handling->valueEnd - 1] = '1';
    };
    // From the back, so that places stay true.
    const bool seedLast = seedTag && handling && seedTag->begin > handling->begin;
    if (seedLast) setSeed();
    setHandling();
    if (!seedLast) setSeed();
    return bytes;
}

}  // namespace mor::host
