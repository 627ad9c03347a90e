#include "host/dxf/dxf_header.h"

#include "host/handles.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace mor::host {

namespace {

/// The number of the line that begins at `offset` of the source.
std::uint64_t lineAt(const Source& source, std::uint64_t offset) {
    const std::string before = source.read(0, offset);
    return 1 + static_cast<std::uint64_t>(std::ranges::count(before, '\n'));
}

constexpr std::pair<int, Release> kFirstNumbers[] = {
    {1032, Release::R2018}, {1027, Release::R2013}, {1024, Release::R2010}, {1021, Release::R2007},
    {1018, Release::R2004}, {1015, Release::R2000}, {1014, Release::R14},   {1012, Release::R13},
    {1009, Release::R12},   {1006, Release::R10},   {1004, Release::R9},    {1003, Release::R2_6},
    {1001, Release::R2_5}};

Result<Release> releaseOf(const std::string& version, const std::string& file, std::uint64_t line) {
    const bool known = version.starts_with("AC10") && version.size() == 6;
    const auto number = known ? parseInteger(std::string_view(version).substr(2)) : std::nullopt;
    if (number && *number <= 1032)
        for (const auto& [first, release] : kFirstNumbers)
            if (*number >= first) return release;
    return Error{ErrorKind::Unreadable, file, line,
                 "$ACADVER is " + version.substr(0, 40) +
                     (number && *number > 1032 ? ", newer than R2018 (AC1032)"
                                               : ", not a release that is read") +
                     "; save the drawing as one of R2.5 (AC1002) to R2018 (AC1032)"};
}

void readSetting(std::string_view variable, const Group& group, DrawingSettings& settings) {
    if (variable == "$LTSCALE" && group.code() == 40)
        settings.lineTypeScale = group.real().value_or(settings.lineTypeScale);
    else if (variable == "$PDSIZE" && group.code() == 40)
        settings.pointSize = group.real().value_or(settings.pointSize);
    else if (variable == "$PDMODE" && group.code() == kFlagsCode)
        settings.pointMode = static_cast<int>(group.integer().value_or(settings.pointMode));
    else if (variable == "$FILLMODE" && group.code() == kFlagsCode)
        settings.filled = group.integer().value_or(1) != 0;
    else if (variable == "$INSUNITS" && group.code() == kFlagsCode)
        settings.insertionUnits = static_cast<int>(group.integer().value_or(0));
}

}  // namespace

std::string versionOf(Release release) {
    const auto* found = std::ranges::find(kFirstNumbers, release, &std::pair<int, Release>::second);
    return "AC" + std::to_string(found->first);
}

std::optional<Error> readHeader(const DxfIndex& index, Skeleton& skeleton,
                                const std::string& file) {
    const Section* header = index.section("HEADER");
    if (header == nullptr) return std::nullopt;
    const std::string bytes = index.bytesOf(header->head);
    std::string_view variable;
    std::uint64_t versionAt = 0;
    GroupList kept;
    Tag tag;
    for (std::size_t at = 0; index.form.next(bytes, at, tag);) {
        const Group group = index.form.group(bytes, tag, kept);
        const int code = group.code();
        if (code == 9)
            variable = group.bare();
        else if (code == 1 && variable == "$ACADVER") {
            skeleton.version = group.bare();
            versionAt = index.places[header->head] + tag.valueBegin;
        } else if (code == 3 && variable == "$DWGCODEPAGE")
            skeleton.codePage = group.bare();
        else if (variable == "$INSBASE" && (code == 10 || code == 20 || code == 30)) {
            if (!skeleton.insertionBase) skeleton.insertionBase.emplace();
            (*skeleton.insertionBase)[static_cast<std::size_t>(code / 10 - 1)] =
                group.real().value_or(0.0);
        } else if (code == kHandleCode && variable == "$HANDSEED")
            skeleton.seed = group.handle();
        else
            readSetting(variable, group, skeleton.settings);
    }
    if (skeleton.version.empty()) return std::nullopt;
    const std::uint64_t line = index.form.isText() ? lineAt(*index.source, versionAt) : 0;
    const auto release = releaseOf(skeleton.version, file, line);
    if (!release) return release.error();
    skeleton.release = release.value();
    return std::nullopt;
}

std::string withSeed(const TagList& header, const DxfForm& form, Release release,
                     std::uint64_t seed) {
    std::string_view variable;
    std::optional<std::size_t> seedAt;
    std::optional<std::size_t> handlingAt;
    for (std::size_t i = 0; i < header.tags().size(); ++i) {
        const Group& group = header.groups()[i];
        if (group.code() == 9)
            variable = group.bare();
        else if (variable == "$HANDSEED" && group.code() == kHandleCode && !seedAt)
            seedAt = i;
        else if (variable == "$HANDLING" && group.code() == kFlagsCode && !handlingAt)
            handlingAt = i;
    }
    const std::string handle = handleText(seed);
    const Group on(kFlagsCode, std::int64_t{1});
    const bool old = release < Release::R2000;
    std::string bytes;
    for (std::size_t i = 0; i < header.tags().size(); ++i) {
        const Tag& tag = header.tags()[i];
        if (seedAt == i)
            bytes += form.exchanged(header.bytes(), tag, Group(kHandleCode, handle));
        else if (old && handlingAt == i && header.groups()[i].integer() == 0)
            bytes += form.exchanged(header.bytes(), tag, on);
        else
            bytes.append(header.bytes(), tag.begin, tag.end - tag.begin);
    }
    bytes.append(header.bytes(), header.tags().empty() ? 0 : header.tags().back().end);
    if (old && !handlingAt) bytes += form.bytes(9, "$HANDLING") + form.bytes(on);
    if (!seedAt) bytes += form.bytes(9, "$HANDSEED") + form.bytes(kHandleCode, handle);
    return bytes;
}

}  // namespace mor::host
