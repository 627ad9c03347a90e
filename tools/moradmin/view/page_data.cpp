#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/damage/check.h"
#include "tools/moradmin/references/references.h"
#include "tools/moradmin/shown_text.h"
#include "tools/moradmin/view/page.h"

#include <algorithm>
#include <filesystem>
#include <string>

namespace mor::tool {

namespace {

/// What is longer is not shown to its end.
constexpr std::size_t kLongestValue = 20000;

Json factsOf(const Session& session, const Drawn& drawn) {
    const host::DocumentInfo info = host::documentInfo(session.document());
    Json facts = {host::releaseName(info.release) + ", " + info.form,
                  std::to_string(info.bytes) + " bytes", std::to_string(info.records) + " records"};
    if (!drawn.layout.name.empty()) facts.push_back("layout " + drawn.layout.name);
    return facts;
}

Json referencesOf(const Session& session) {
    Json all = Json::array();
    for (const host::ReferenceInfo& reference : host::references(session.document()))
        all.push_back({{"name", utf8(reference.name)},
                       {"kind", reference.overlay ? "overlay" : "attach"},
                       {"status", statusName(reference.status)},
                       {"saved", utf8(reference.saved)},
                       {"found", reference.found.string()},
                       {"inserts", reference.inserts},
                       {"entities", reference.entities}});
    return all;
}

std::string shortened(std::string text) {
    if (text.size() <= kLongestValue) return text;
    std::size_t end = kLongestValue;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    const std::string more = std::to_string(text.size() - end);
    text.resize(end);
    return text + " ... and " + more + " bytes more";
}

Json directoryJson(const StoredDirectory& directory) {
    Json object{{"path", utf8(directory.path)},
                {"used", directory.attributes.used},
                {"free", directory.attributes.free},
                {"files", Json::array()}};
    for (const host::RecordAttribute& item : directory.attributes.items)
        if (isFileName(item.name))
            object["files"].push_back({{"name", utf8(item.name)},
                                       {"type", typeName(item.value)},
                                       {"bytes", item.bytes},
                                       {"value", shortened(host::lispText(item.value))}});
    return object;
}

const char* stateText(StoreState::Kind kind) {
    switch (kind) {
        case StoreState::Kind::None:
            return "none in this drawing";
        case StoreState::Kind::Empty:
            return "made and emptied again";
        case StoreState::Kind::Sound:
            return "sound";
        case StoreState::Kind::Broken:
            return "damaged";
    }
    return "none in this drawing";
}

Json storeJson(const StoreState& state) {
    Json object{{"state", stateText(state.kind)}, {"directories", Json::array()}};
    for (std::size_t i = 0; i < state.reachable; ++i)
        object["directories"].push_back(directoryJson(state.directories[i]));
    return object;
}

Json findingsOf(const StoreState& state) {
    Json all = Json::array();
    for (const Finding& finding : state.findings) all.push_back(findingJson(finding));
    return all;
}

Json notDrawn(const Painter& painter) {
    Json rows = Json::array();
    for (const auto* reasons : {&painter.leftOut(), &painter.hidden()})
        for (const auto& [why, count] : *reasons) rows.push_back({std::to_string(count), why});
    for (const auto& [path, missing] : painter.missing())
        rows.push_back({std::to_string(missing.count),
                        "missing reference " + path + " (" + missing.why + ")"});
    return rows;
}

}  // namespace

Json pageData(Session& session, Drawn& drawn) {
    const Scene& scene = drawn.painter.scene();
    const StoreState& state = session.state();
    return {{"name", std::filesystem::path(session.file()).filename().string()},
            {"facts", factsOf(session, drawn)},
            {"shift", {scene.shift()[0], scene.shift()[1]}},
            {"references", referencesOf(session)},
            {"store", storeJson(state)},
            {"findings", findingsOf(state)},
            {"notDrawn", notDrawn(drawn.painter)},
            {"details", recordDetails(session, scene)}};
}

}  // namespace mor::tool
