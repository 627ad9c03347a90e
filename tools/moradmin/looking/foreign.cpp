#include "tools/moradmin/looking/foreign.h"

#include "tools/moradmin/references/entity_record.h"

#include <algorithm>
#include <span>
#include <string>

namespace mor::tool {

namespace {

constexpr int kNameCode = 9;        // of a header variable
constexpr int kApplication = 1001;  // the beginning of its extended data
constexpr int kEntryName = 3;

bool isEntryHandle(int code) { return code == 350 || code == 360; }

std::vector<host::RecordGroup> pointGroups(std::span<const double> point) {
    std::vector<host::RecordGroup> groups;
    for (const double coordinate : point)
        groups.push_back({static_cast<int>(groups.size() + 1) * 10, realText(coordinate)});
    return groups;
}

/// Those that are decoded of a DWG.
std::vector<HeaderVariable> dwgVariables(const host::DocumentInfo& info) {
    const host::DrawingSettings& settings = info.settings;
    std::vector<HeaderVariable> all = {
        {"$ACADVER", {{1, info.version}}},
        {"$DWGCODEPAGE", {{3, info.codePage}}},
        {"$FILLMODE", {{70, settings.filled ? "1" : "0"}}},
        {"$LTSCALE", {{40, realText(settings.lineTypeScale)}}},
        {"$PDMODE", {{70, std::to_string(settings.pointMode)}}},
        {"$PDSIZE", {{40, realText(settings.pointSize)}}},
        {"$INSUNITS", {{70, std::to_string(settings.insertionUnits)}}},
        {"$HANDSEED", {{5, host::handleText(info.handleSeed)}}},
    };
    if (settings.extents) {
        all.push_back({"$EXTMIN", pointGroups(settings.extents->front())});
        all.push_back({"$EXTMAX", pointGroups(settings.extents->back())});
    }
    if (settings.limits) {
        all.push_back({"$LIMMIN", pointGroups(settings.limits->front())});
        all.push_back({"$LIMMAX", pointGroups(settings.limits->back())});
    }
    return all;
}

}  // namespace

std::vector<HeaderVariable> headerVariables(const AcApDocument* document) {
    if (const host::DocumentInfo info = host::documentInfo(document); info.form == "DWG")
        return dwgVariables(info);
    std::vector<HeaderVariable> all;
    host::forEachRecordOf(document, {"SECTION"}, [&](const host::RecordInfo& record) {
        const std::vector<host::RecordGroup> groups = host::recordGroups(document, record.name);
        if (groups.size() < 2 || groups[1].value != "HEADER") return;
        for (std::size_t i = 2; i < groups.size(); ++i) {
            if (groups[i].code == kNameCode)
                all.push_back({groups[i].value, {}});
            else if (!all.empty())
                all.back().groups.push_back(groups[i]);
        }
    });
    return all;
}

std::string valuesText(const std::vector<host::RecordGroup>& groups) {
    std::string text;
    for (const host::RecordGroup& group : groups) text += (text.empty() ? "" : " ") + group.value;
    return text;
}

Json groupJson(const host::RecordGroup& group) {
    Json value = group.value;
    switch (groupKind(group.code)) {
        case GroupKind::Real:
            if (const auto real = readReal(group.value)) value = *real;
            break;
        case GroupKind::Integer:
            // What is no integer stays the real or the text that it is.
            if (const auto integer = readInteger(group.value))
                value = *integer;
            else if (group.value.find_first_of(".eE") != std::string::npos)
                if (const auto real = readReal(group.value)) value = *real;
            break;
        case GroupKind::Text:
            break;
    }
    return {{"code", group.code}, {"value", std::move(value)}};
}

Json valuesJson(const std::vector<host::RecordGroup>& groups) {
    if (groups.size() == 1) return groupJson(groups.front())["value"];
    Json values = Json::array();
    for (const host::RecordGroup& group : groups) values.push_back(groupJson(group)["value"]);
    return values;
}

std::vector<ExtendedData> extendedData(const std::vector<host::RecordGroup>& groups) {
    std::vector<ExtendedData> all;
    for (const host::RecordGroup& group : groups) {
        if (group.code == kApplication)
            all.push_back({group.value, {}});
        else if (group.code >= 1000 && !all.empty())
            all.back().groups.push_back(group);
    }
    return all;
}

mor::EntityName rootDictionary(const AcApDocument* document) {
    mor::EntityName root;
    host::forEachRecordOf(document, {"DICTIONARY"}, [&root](const host::RecordInfo& record) {
        if (root.isNone() && !record.erased) root = record.name;
    });
    return root;
}

std::vector<DictionaryEntry> dictionaryEntries(const AcApDocument* document,
                                               mor::EntityName dictionary) {
    std::vector<DictionaryEntry> all;
    for (const host::RecordGroup& group : host::recordGroups(document, dictionary)) {
        if (group.code == kEntryName) {
            all.push_back({group.value, "", "", {}});
        } else if (isEntryHandle(group.code) && !all.empty() && all.back().handle.empty()) {
            DictionaryEntry& entry = all.back();
            entry.handle = group.value;
            const auto object = host::findHandle(document, wide(group.value));
            if (!object) continue;
            entry.object = *object;
            if (const auto info = host::recordInfo(document, *object)) entry.type = info->type;
        }
    }
    return all;
}

}  // namespace mor::tool
