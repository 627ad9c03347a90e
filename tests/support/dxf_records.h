#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Cuts DXF text into records without the help of the program that is tested.
namespace mor::test {

[[nodiscard]] inline std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

/// Hexadecimal text as a number; 0 when it is none.
[[nodiscard]] inline std::uint64_t handleNumber(std::string_view text) {
    text = withoutBlanks(text);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return error == std::errc{} && end == text.data() + text.size() ? number : 0;
}

struct DxfTag {
    int code = 0;
    std::string value;  ///< without the line end
    std::string bytes;  ///< both lines as they stand in the file
};

/// From one group 0 up to the next one.
struct DxfRecord {
    std::string bytes;
    std::vector<DxfTag> tags;
    std::string section;    ///< in which it stands or which it opens; empty outside
    std::string container;  ///< the table or block definition in which it stands or which it opens

    [[nodiscard]] std::string type() const { return std::string(withoutBlanks(tags[0].value)); }
    [[nodiscard]] bool is(std::string_view name) const { return type() == name; }
    /// Opens or closes a table, block definition or section.
    [[nodiscard]] bool isEdge() const {
        static constexpr std::string_view edges[] = {"SECTION", "ENDSEC", "TABLE", "ENDTAB",
                                                     "BLOCK",   "ENDBLK", "EOF"};
        return std::ranges::find(edges, type()) != std::end(edges);
    }
    /// The first group of that code before the extended data.
    [[nodiscard]] std::optional<std::string> first(int code) const {
        for (const DxfTag& tag : tags) {
            if (tag.code == 1001) break;
            if (tag.code == code) return std::string(withoutBlanks(tag.value));
        }
        return std::nullopt;
    }
    [[nodiscard]] std::uint64_t handle() const {
        const bool dimension = is("DIMSTYLE");
        for (const DxfTag& tag : tags) {
            if (tag.code == 100 || tag.code == 1001 || is("SECTION")) break;
            if (tag.code == (dimension ? 105 : 5)) return handleNumber(tag.value);
        }
        return 0;
    }
    /// The 330 before the first marker that stands in no group of its own.
    [[nodiscard]] std::uint64_t owner() const {
        bool inGroup = false;
        for (const DxfTag& tag : tags) {
            if (tag.code == 100 || tag.code == 1001) break;
            if (tag.code == 102) inGroup = tag.value.starts_with("{");
            if (tag.code == 330 && !inGroup) return handleNumber(tag.value);
        }
        return 0;
    }
    /// "0 LAYER|2 WALLS|70 0": its groups without padding and comments.
    [[nodiscard]] std::string text() const {
        std::string all;
        for (const DxfTag& tag : tags) {
            if (tag.code == 999) continue;
            if (!all.empty()) all += '|';
            all += std::to_string(tag.code) + " " + std::string(withoutBlanks(tag.value));
        }
        return all;
    }
};

struct DxfFile {
    std::string head;  ///< what stands before the first record
    std::vector<DxfRecord> records;
    /// Why the text is no whole drawing; empty when it is one.
    std::string broken;

    [[nodiscard]] const DxfRecord* section(std::string_view name) const {
        for (const DxfRecord& record : records)
            if (record.is("SECTION") && record.section == name) return &record;
        return nullptr;
    }
    [[nodiscard]] const DxfRecord* table(std::string_view name) const {
        for (const DxfRecord& record : records)
            if (record.is("TABLE") && record.section == "TABLES" && record.container == name)
                return &record;
        return nullptr;
    }
    /// The first record of that type with that name in group 2.
    [[nodiscard]] const DxfRecord* named(std::string_view type, std::string_view name) const {
        for (const DxfRecord& record : records)
            if (record.is(type) && record.first(2) == name) return &record;
        return nullptr;
    }
    /// How many records stand in a table.
    [[nodiscard]] long countIn(std::string_view name) const {
        return static_cast<long>(std::ranges::count_if(records, [&](const DxfRecord& record) {
            return record.section == "TABLES" && record.container == name && !record.isEdge();
        }));
    }
    /// The value behind a header variable; empty when there is none.
    [[nodiscard]] std::string variable(std::string_view name) const {
        const DxfRecord* header = section("HEADER");
        if (header == nullptr) return {};
        for (std::size_t i = 0; i + 1 < header->tags.size(); ++i)
            if (header->tags[i].code == 9 && withoutBlanks(header->tags[i].value) == name)
                return std::string(withoutBlanks(header->tags[i + 1].value));
        return {};
    }
};

namespace detail {

/// Takes the next line with its end off `rest`.
inline std::string_view takeLine(std::string_view& rest) {
    const std::size_t feed = rest.find('\n');
    const std::string_view line = rest.substr(0, feed == rest.npos ? feed : feed + 1);
    rest.remove_prefix(line.size());
    return line;
}

inline std::string_view withoutEnd(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

/// Notes in which section, table or block each record stands.
inline void placeRecords(DxfFile& file) {
    std::string section;
    std::string container;
    for (DxfRecord& record : file.records) {
        if (record.is("SECTION")) {
            if (!section.empty()) file.broken = "a section within the section " + section;
            section = record.first(2).value_or("?");
        }
        const bool opens = (section == "TABLES" && record.is("TABLE")) ||
                           (section == "BLOCKS" && record.is("BLOCK"));
        if (opens) container = record.first(2).value_or("");
        record.section = section;
        record.container = container;
        if (record.is("ENDTAB") || record.is("ENDBLK")) container.clear();
        if (record.is("ENDSEC")) section.clear();
    }
    if (!section.empty()) file.broken = "it ends inside the section " + section;
}

}  // namespace detail

[[nodiscard]] inline DxfFile splitDxf(std::string_view bytes) {
    DxfFile file;
    std::string_view rest = bytes;
    bool ended = false;
    while (!rest.empty() && !ended) {
        const std::string_view codeLine = detail::takeLine(rest);
        const std::string_view digits = withoutBlanks(detail::withoutEnd(codeLine));
        if (digits.empty() && rest.empty()) break;
        int code = -1;
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), code);
        if (error != std::errc{} || end != digits.data() + digits.size() ||
            codeLine.back() != '\n') {
            file.broken = "no group code: \"" + std::string(digits.substr(0, 40)) + "\"";
            break;
        }
        const std::string_view valueLine = detail::takeLine(rest);
        DxfTag tag{code, std::string(detail::withoutEnd(valueLine)),
                   std::string(codeLine) + std::string(valueLine)};
        if (code == 0) file.records.emplace_back();
        if (file.records.empty()) {
            file.head += tag.bytes;
            continue;
        }
        ended = code == 0 && withoutBlanks(tag.value) == "EOF";
        file.records.back().bytes += tag.bytes;
        file.records.back().tags.push_back(std::move(tag));
    }
    if (!file.records.empty()) file.records.back().bytes += rest;  // bytes behind the end
    if (file.records.empty() && file.broken.empty()) file.broken = "there is no record";
    if (file.broken.empty()) detail::placeRecords(file);
    return file;
}

}  // namespace mor::test
