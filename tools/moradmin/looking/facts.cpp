#include "tools/moradmin/looking/facts.h"

#include "dwgfs/names.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/looking/foreign.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::array<const char*, 21> kUnits = {nullptr,
                                                "inches",
                                                "feet",
                                                "miles",
                                                "millimetres",
                                                "centimetres",
                                                "metres",
                                                "kilometres",
                                                "microinches",
                                                "mils",
                                                "yards",
                                                "angstroms",
                                                "nanometres",
                                                "microns",
                                                "decimetres",
                                                "decametres",
                                                "hectometres",
                                                "gigametres",
                                                "astronomical units",
                                                "light years",
                                                "parsecs"};
constexpr std::array<const char*, 7> kFactKeys = {
    "units", "extents", "entities", "layouts", "references", "applications", "dictionaries"};
constexpr double kNoExtents = 1e19;  // empty drawings have 1e20 there

/// A point of the header; null when it has none, or one that stands for nothing.
Json pointOf(const std::vector<HeaderVariable>& header, const char* name) {
    const auto found = std::ranges::find(header, name, &HeaderVariable::name);
    if (found == header.end()) return nullptr;
    Json point = Json::array();
    for (const host::RecordGroup& group : found->groups) {
        const auto value = readReal(group.value);
        if (!value || std::fabs(*value) > kNoExtents) return nullptr;
        point.push_back(*value);
    }
    return point;
}

Json unitsOf(const std::vector<HeaderVariable>& header) {
    const auto found = std::ranges::find(header, "$INSUNITS", &HeaderVariable::name);
    if (found == header.end() || found->groups.empty()) return nullptr;
    const auto number = readInteger(found->groups.front().value).value_or(0);
    const bool known = number > 0 && number < static_cast<std::int64_t>(kUnits.size());
    return known ? Json(kUnits[static_cast<std::size_t>(number)]) : Json(nullptr);
}

/// The name of a layout: group 1 of its own part, behind that of its plot settings.
std::string layoutName(const std::vector<host::RecordGroup>& groups) {
    bool own = false;
    for (const host::RecordGroup& group : groups) {
        if (group.code == 100) own = group.value == "AcDbLayout";
        if (own && group.code == 1) return group.value;
    }
    return {};
}

std::string listed(const Json& names) {
    std::string text;
    for (const Json& name : names) text += (text.empty() ? "" : ", ") + name.get<std::string>();
    return text;
}

std::string counted(const Json& counts) {
    std::string text;
    for (const auto& [name, count] : counts.items())
        text += (text.empty() ? "" : ", ") + std::to_string(count.get<std::size_t>()) + " " + name;
    return text;
}

std::string coordinates(const Json& point) {
    std::string text;
    for (const Json& value : point)
        text += (text.empty() ? "" : " ") + realText(value.get<double>());
    return text;
}

}  // namespace

void addNoFacts(Json& object) {
    for (const char* key : kFactKeys) object[key] = nullptr;
}

void addDrawingFacts(Json& object, AcApDocument* document) {
    std::map<std::string, std::size_t> types = host::entityTypes(document);
    host::forEachInsert(document, kFileSystemBlock, [&types](const host::RecordInfo& record) {
        if (--types[record.type] == 0) types.erase(record.type);
    });
    std::map<std::string, std::size_t> applications;
    Json layouts = Json::array();
    OwnRecords own(document);
    const auto look = [&](const host::RecordInfo& record) {
        if (own.isOwn(record) || record.erased) return;
        if (record.type != "LAYOUT" && !record.extended) return;
        for (const std::string& name : host::recordApplications(document, record.name))
            ++applications[name];
        if (record.type == "LAYOUT")
            layouts.push_back(layoutName(host::recordGroups(document, record.name)));
    };
    host::forEachRecordOf(document, {"LAYOUT", "BLOCK", "ENDBLK"}, look, host::AndThose::Extended);
    const std::vector<HeaderVariable> header = headerVariables(document);
    const Json least = pointOf(header, "$EXTMIN");
    const Json most = pointOf(header, "$EXTMAX");
    object["units"] = unitsOf(header);
    object["extents"] = least.is_null() || most.is_null() ? Json(nullptr) : Json{least, most};
    object["entities"] = Json(types);
    object["layouts"] = std::move(layouts);
    object["references"] = Json::array();
    host::forEachBlock(document, L"", [&](const host::BlockInfo& block) {
        if (block.reference)
            object["references"].push_back(
                {{"name", utf8(block.symbol.symbol)}, {"saved", textOrNull(utf8(block.path))}});
    });
    object["applications"] = Json(applications);
    object["dictionaries"] = Json::array();
    if (const mor::EntityName root = rootDictionary(document); !root.isNone())
        for (const DictionaryEntry& entry : dictionaryEntries(document, root))
            object["dictionaries"].push_back(entry.name);
}

void printFacts(std::ostream& out, const Json& facts) {
    const auto line = [&out](const char* name, const std::string& text) {
        if (!text.empty()) out << name << oneLine(text) << "\n";
    };
    if (facts["units"].is_string()) line("units     ", facts["units"].get<std::string>());
    if (!facts["extents"].is_null())
        line("extents   ",
             coordinates(facts["extents"][0]) + " to " + coordinates(facts["extents"][1]));
    line("entities  ", counted(facts["entities"]));
    line("layouts   ", listed(facts["layouts"]));
    std::string references;
    for (const Json& reference : facts["references"])
        references +=
            (references.empty() ? "" : ", ") + reference["name"].get<std::string>() +
            (reference["saved"].is_null() ? ""
                                          : " (" + reference["saved"].get<std::string>() + ")");
    line("refers to ", references);
    line("xdata     ", counted(facts["applications"]));
    line("dicts     ", listed(facts["dictionaries"]));
}

}  // namespace mor::tool
