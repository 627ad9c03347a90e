#include "platform/runtime.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/entity_record.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references.h"

#include <cstdlib>
#include <optional>
#include <set>
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

LayerRow referenceLayer(const Session& session, const host::SymbolInfo& symbol) {
    LayerRow row{symbol, {}, {}, layerState(session, symbol.name)};
    if (const auto own = host::findSymbol(session.document(), "LAYER", symbol.qualified);
        own && symbol.symbol != symbol.qualified)
        row.host = layerState(session, *own);
    const auto seen = host::resolveSymbol(session.document(), "LAYER", symbol.qualified);
    row.shown = layerState(
        session, symbol.symbol == symbol.qualified ? symbol.name : seen.value_or(symbol.name));
    return row;
}

std::vector<LayerRow> layerRows(const Session& session) {
    std::vector<LayerRow> rows;
    if (!session.reference().empty()) {
        for (const host::SymbolInfo& symbol :
             host::symbols(session.document(), session.reference(), "LAYER"))
            rows.push_back(referenceLayer(session, symbol));
        return rows;
    }
    std::vector<LayerRow> dependent;
    std::set<std::wstring> overridden;
    for (const std::wstring& reference : loadedReferences(session))
        for (const host::SymbolInfo& symbol :
             host::symbols(session.document(), reference, "LAYER")) {
            // Layer 0 of a reference is the drawing's own.
            if (symbol.symbol == symbol.qualified) continue;
            dependent.push_back(referenceLayer(session, symbol));
            overridden.insert(upperCase(symbol.qualified));
        }
    for (const host::SymbolInfo& symbol : host::symbols(session.document(), L"", "LAYER")) {
        if (overridden.contains(upperCase(symbol.symbol))) continue;
        const LayerState state = layerState(session, symbol.name);
        rows.push_back({symbol, state, state, {}});
    }
    rows.insert(rows.end(), dependent.begin(), dependent.end());
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
    const bool inside = !session.reference().empty();
    Json layers = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const LayerRow& row : layerRows(session)) {
        const std::string name = utf8(inside ? row.symbol.symbol : row.symbol.qualified);
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
