#include "host/dxf/dxf_make.h"

#include "host/drawing/drawing.h"

#include <algorithm>
#include <array>
#include <span>

namespace mor::host {

namespace {

/// One stretch of an entity's groups behind a subclass marker; `codes` in the order of files.
struct Subclass {
    std::string_view marker;
    std::vector<int> codes;
};

struct EntityLayout {
    std::string_view type;
    std::vector<Subclass> subclasses;
};

const std::vector<EntityLayout>& layouts() {
    static const std::vector<EntityLayout> all = {
        {"INSERT",
         {{"AcDbBlockReference",
           {66, 2, 10, 20, 30, 41, 42, 43, 50, 70, 71, 44, 45, 210, 220, 230}}}},
        {"ATTDEF",
         {{"AcDbText", {39, 10, 20, 30, 40, 1, 50, 41, 51, 7, 71, 72, 11, 21, 31, 210, 220, 230}},
          {"AcDbAttributeDefinition", {3, 2, 70, 73, 74}}}},
        {"LINE", {{"AcDbLine", {39, 10, 20, 30, 11, 21, 31, 210, 220, 230}}}},
        {"POINT", {{"AcDbPoint", {10, 20, 30, 39, 210, 220, 230, 50}}}},
        {"CIRCLE", {{"AcDbCircle", {39, 10, 20, 30, 40, 210, 220, 230}}}},
        {"TEXT",
         {{"AcDbText", {39, 10, 20, 30, 40, 1, 50, 41, 51, 7, 71, 72, 11, 21, 31, 210, 220, 230}},
          {"AcDbText", {73}}}}};
    return all;
}

const EntityLayout* layoutOf(std::string_view type) {
    const auto found = std::ranges::find(layouts(), type, &EntityLayout::type);
    return found == layouts().end() ? nullptr : &*found;
}

/// Groups of AcDbEntity besides layer and space.
constexpr std::array<int, 5> kCommonCodes = {6, 62, 48, 60, 370};

void appendCodes(std::string& bytes, const LineStyle& lines, const std::vector<NewGroup>& groups,
                 std::span<const int> codes) {
    for (const int code : codes)
        for (const NewGroup& group : groups)
            if (group.code == code) bytes += groupLine(lines, group);
}

std::string beginRecord(const RecordStyle& style, const NewRecord& record) {
    std::string bytes = line(style.lines, 0, record.type);
    if (record.handle != 0) bytes += line(style.lines, 5, handleToText(record.handle));
    if (style.owners && record.owner != 0)
        bytes += line(style.lines, 330, handleToText(record.owner));
    return bytes;
}

std::string point(const LineStyle& lines, const double* base) {
    std::string bytes;
    for (int i = 0; i < 3; ++i) bytes += realLine(lines, 10 * (i + 1), base[i]);
    return bytes;
}

/// Written even when they are empty or default.
std::vector<NewGroup> withDefaults(std::string_view type, std::vector<NewGroup> groups) {
    const auto need = [&groups](int code, NewGroup group) {
        if (std::ranges::find(groups, code, &NewGroup::code) == groups.end())
            groups.push_back(std::move(group));
    };
    for (const int code : {10, 20, 30}) need(code, {code, 0.0});
    if (type == "LINE")
        for (const int code : {11, 21, 31}) need(code, {code, 0.0});
    if (type == "CIRCLE" || type == "TEXT" || type == "ATTDEF") need(40, {40, 1.0});
    if (type == "TEXT" || type == "ATTDEF") need(1, {1, std::string()});
    if (type == "ATTDEF") {
        need(3, {3, std::string()});
        need(70, {70, std::int64_t{0}});
    }
    return groups;
}

/// The version and lock-position flags that newer releases put into attribute definitions.
std::string flag280(const RecordStyle& style, Release since) {
    return style.release >= since ? integerLine(style.lines, 280, 0) : std::string();
}

}  // namespace

std::string groupLine(const LineStyle& lines, const NewGroup& group) {
    if (const auto* integer = std::get_if<std::int64_t>(&group.value))
        return integerLine(lines, group.code, *integer);
    if (const auto* real = std::get_if<double>(&group.value))
        return realLine(lines, group.code, *real);
    return line(lines, group.code, std::get<std::string>(group.value));
}

std::string makeTableRecord(const RecordStyle& style, const NewRecord& record,
                            std::string_view subclass) {
    std::string bytes = beginRecord(style, record);
    if (style.markers) {
        bytes += line(style.lines, 100, "AcDbSymbolTableRecord");
        bytes += line(style.lines, 100, subclass);
    }
    for (const NewGroup& group : record.groups) bytes += groupLine(style.lines, group);
    return bytes;
}

std::string makeTableHead(const RecordStyle& style, std::string_view table, std::uint64_t handle,
                          std::size_t count) {
    const LineStyle& lines = style.lines;
    std::string bytes = line(lines, 0, "TABLE") + line(lines, 2, table);
    if (handle != 0) bytes += line(lines, 5, handleToText(handle));
    if (style.owners && handle != 0) bytes += line(lines, 330, "0");
    if (style.markers) bytes += line(lines, 100, "AcDbSymbolTable");
    return bytes + integerLine(lines, 70, static_cast<std::int64_t>(count));
}

bool canMakeEntity(std::string_view type) { return layoutOf(type) != nullptr; }

std::string makeEntity(const RecordStyle& style, const NewRecord& record, const std::string& layer,
                       bool paper) {
    const LineStyle& lines = style.lines;
    const std::vector<NewGroup> groups = withDefaults(record.type, record.groups);
    std::string bytes = beginRecord(style, record);
    if (style.markers) bytes += line(lines, 100, "AcDbEntity");
    if (paper) bytes += integerLine(lines, 67, 1);
    bytes += line(lines, 8, layer);
    appendCodes(bytes, lines, groups, kCommonCodes);
    for (const Subclass& subclass : layoutOf(record.type)->subclasses) {
        if (style.markers) bytes += line(lines, 100, subclass.marker);
        const bool definition = subclass.marker == "AcDbAttributeDefinition";
        if (definition) bytes += flag280(style, Release::R2010);
        appendCodes(bytes, lines, groups, subclass.codes);
        if (definition) bytes += flag280(style, Release::R2007);
    }
    return bytes;
}

std::string makeBlockBegin(const RecordStyle& style, const NewRecord& record,
                           const std::string& name, std::int64_t flags, const double* base) {
    const LineStyle& lines = style.lines;
    std::string bytes = beginRecord(style, record);
    if (style.markers) bytes += line(lines, 100, "AcDbEntity");
    bytes += line(lines, 8, "0");
    if (style.markers) bytes += line(lines, 100, "AcDbBlockBegin");
    bytes += line(lines, 2, name) + integerLine(lines, 70, flags) + point(lines, base);
    return bytes + line(lines, 3, name) + line(lines, 1, "");
}

std::string makeBlockEnd(const RecordStyle& style, const NewRecord& record) {
    const LineStyle& lines = style.lines;
    std::string bytes = beginRecord(style, record);
    if (style.markers) bytes += line(lines, 100, "AcDbEntity");
    bytes += line(lines, 8, "0");
    if (style.markers) bytes += line(lines, 100, "AcDbBlockEnd");
    return bytes;
}

}  // namespace mor::host
