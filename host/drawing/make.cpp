#include "host/drawing/make.h"

#include "host/handles.h"
#include "host/text/group_codes.h"

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

void addCodes(GroupList& record, const std::vector<NewGroup>& groups, std::span<const int> codes) {
    for (const int code : codes)
        for (const NewGroup& group : groups)
            if (group.code == code) record.add(group);
}

/// A group whose text outlives every list.
void addConstant(GroupList& record, int code, std::string_view text) {
    record.add(Group(code, text));
}

void addText(GroupList& record, int code, std::string_view text) {
    record.add(Group(code, record.keep(std::string(text))));
}

void addMarker(GroupList& record, const RecordStyle& style, std::string_view marker) {
    if (style.markers) addText(record, kMarkerCode, marker);
}

GroupList beginRecord(const RecordStyle& style, const NewRecord& wanted) {
    GroupList record;
    addText(record, kTypeCode, wanted.type);
    if (wanted.handle != 0) addText(record, kHandleCode, handleText(wanted.handle));
    if (style.owners && wanted.owner != 0) addText(record, kOwnerCode, handleText(wanted.owner));
    return record;
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
void addFlag280(GroupList& record, const RecordStyle& style, Release since) {
    if (style.release >= since) record.add(Group(280, std::int64_t{0}));
}

}  // namespace

GroupList makeTableRecord(const RecordStyle& style, const NewRecord& wanted,
                          std::string_view subclass) {
    GroupList record = beginRecord(style, wanted);
    addMarker(record, style, "AcDbSymbolTableRecord");
    addMarker(record, style, subclass);
    for (const NewGroup& group : wanted.groups) record.add(group);
    return record;
}

GroupList makeTableHead(const RecordStyle& style, std::string_view table, std::uint64_t handle,
                        std::size_t count) {
    GroupList record;
    addConstant(record, kTypeCode, "TABLE");
    addText(record, kNameCode, table);
    if (handle != 0) addText(record, kHandleCode, handleText(handle));
    if (style.owners && handle != 0) addConstant(record, kOwnerCode, "0");
    addMarker(record, style, "AcDbSymbolTable");
    record.add(Group(kFlagsCode, static_cast<std::int64_t>(count)));
    return record;
}

bool canMakeEntity(std::string_view type) { return layoutOf(type) != nullptr; }

GroupList makeEntity(const RecordStyle& style, const NewRecord& wanted, const std::string& layer,
                     bool paper) {
    const std::vector<NewGroup> groups = withDefaults(wanted.type, wanted.groups);
    GroupList record = beginRecord(style, wanted);
    addMarker(record, style, "AcDbEntity");
    if (paper) record.add(Group(kSpaceCode, std::int64_t{1}));
    addText(record, kLayerCode, layer);
    addCodes(record, groups, kCommonCodes);
    for (const Subclass& subclass : layoutOf(wanted.type)->subclasses) {
        addMarker(record, style, subclass.marker);
        const bool definition = subclass.marker == "AcDbAttributeDefinition";
        if (definition) addFlag280(record, style, Release::R2010);
        addCodes(record, groups, subclass.codes);
        if (definition) addFlag280(record, style, Release::R2007);
    }
    return record;
}

GroupList makeBlockBegin(const RecordStyle& style, const NewRecord& wanted, const std::string& name,
                         std::int64_t flags, const double* base) {
    GroupList record = beginRecord(style, wanted);
    addMarker(record, style, "AcDbEntity");
    addConstant(record, kLayerCode, "0");
    addMarker(record, style, "AcDbBlockBegin");
    addText(record, kNameCode, name);
    record.add(Group(kFlagsCode, flags));
    for (int i = 0; i < 3; ++i) record.add(Group(10 * (i + 1), base[i]));
    addText(record, 3, name);
    addConstant(record, 1, "");
    return record;
}

GroupList makeBlockEnd(const RecordStyle& style, const NewRecord& wanted) {
    GroupList record = beginRecord(style, wanted);
    addMarker(record, style, "AcDbEntity");
    addConstant(record, kLayerCode, "0");
    addMarker(record, style, "AcDbBlockEnd");
    return record;
}

}  // namespace mor::host
