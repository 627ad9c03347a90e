#include "platform/runtime.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/entity_record.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references.h"

#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

struct LayerState {
    int color = 7;
    std::string linetype;
    bool off = false;
    bool frozen = false;
    bool locked = false;
};

LayerState layerState(const Session& session, mor::EntityName name) {
    const EntityRecord record(session.document(), name);
    const int color = record.integer(62, 7);
    const int flags = record.integer(70);
    return {std::abs(color), record.text(6), color < 0, (flags & 1) != 0, (flags & 4) != 0};
}

/// A layer as it shows in the drawing, and what the drawing and the reference say of it.
struct LayerRow {
    host::SymbolInfo symbol;
    LayerState shown;
    std::optional<LayerState> host;
    std::optional<LayerState> reference;
};

LayerRow rowOf(const Session& session, const host::SymbolInfo& symbol, bool ofReference) {
    const LayerState own = layerState(session, symbol.name);
    if (!ofReference) return {symbol, own, own, {}};
    // Layer 0 and the like have no qualified name.
    if (symbol.symbol == symbol.qualified) return {symbol, own, {}, own};
    LayerRow row{symbol, own, {}, own};
    if (const auto over = host::findSymbol(session.document(), "LAYER", symbol.qualified))
        row.host = layerState(session, *over);
    if (const auto seen = host::resolveSymbol(session.document(), "LAYER", symbol.qualified))
        row.shown = layerState(session, *seen);
    return row;
}

/// The layers of the drawing that is looked at, then those of its references. What it keeps of
/// theirs stands with them.
std::vector<LayerRow> layerRows(const Session& session) {
    std::vector<std::wstring> references = loadedReferences(session);
    references.insert(references.begin(), session.reference());
    std::vector<LayerRow> rows;
    std::map<std::wstring, std::size_t> known;  // by upper-case qualified name
    for (const std::wstring& reference : references)
        for (const host::SymbolInfo& symbol :
             host::symbols(session.document(), reference, "LAYER")) {
            const bool below = reference != session.reference();
            if (below && symbol.symbol == symbol.qualified) continue;
            LayerRow row = rowOf(session, symbol, !reference.empty());
            const auto [at, added] = known.try_emplace(upperCase(symbol.qualified), rows.size());
            if (added)
                rows.push_back(std::move(row));
            else if (below)
                rows[at->second] = std::move(row);
        }
    return rows;
}

std::string switches(const LayerState& state) {
    std::string text;
    const auto add = [&text](bool set, const char* word) {
        if (set) text += (text.empty() ? "" : ",") + std::string(word);
    };
    add(state.off, "off");
    add(state.frozen, "frozen");
    add(state.locked, "locked");
    return text.empty() ? "on" : text;
}

std::string stateText(const std::optional<LayerState>& state) {
    if (!state) return "-";
    return std::to_string(state->color) + " " + state->linetype + " " + switches(*state);
}

Json stateJson(const std::optional<LayerState>& state) {
    if (!state) return nullptr;
    return {{"color", state->color},
            {"linetype", state->linetype},
            {"off", state->off},
            {"frozen", state->frozen},
            {"locked", state->locked}};
}

}  // namespace

int runLayers(Session& session, const Options& options) {
    Json layers = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const LayerRow& row : layerRows(session)) {
        const std::string name = nameWithin(session, row.symbol.qualified);
        Json object{{"name", name}, {"qualified", utf8(row.symbol.qualified)}};
        object.update(stateJson(row.shown));
        object["host"] = stateJson(row.host);
        object["reference"] = stateJson(row.reference);
        layers.push_back(std::move(object));
        rows.push_back({name, std::to_string(row.shown.color), row.shown.linetype,
                        switches(row.shown), stateText(row.host), stateText(row.reference)});
    }
    if (!options.json) {
        printTable({"NAME", ">COLOR", "LINETYPE", "STATE", "HOST", "REFERENCE"}, rows);
        return kDone;
    }
    Json object = jsonHead(options);
    object["layers"] = std::move(layers);
    printJson(object);
    return kDone;
}

}  // namespace mor::tool
