#include "platform/runtime.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/layer_state.h"
#include "tools/moradmin/references/patterns.h"
#include "tools/moradmin/references/references.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

/// A layer as it shows in the drawing, and what the drawing and the reference say of it.
struct LayerRow {
    host::SymbolInfo symbol;
    LayerState shown;
    std::optional<LayerState> host;
    std::optional<LayerState> reference;
};

LayerRow rowOf(const Session& session, const host::SymbolInfo& symbol, bool ofReference) {
    const LayerState own = layerState(session.document(), symbol.name);
    if (!ofReference) return {symbol, own, own, {}};
    // Layer 0 and the like have no qualified name.
    if (symbol.symbol == symbol.qualified) return {symbol, own, {}, own};
    LayerRow row{symbol, own, {}, own};
    if (const auto over = host::findSymbol(session.document(), "LAYER", symbol.qualified))
        row.host = layerState(session.document(), *over);
    if (const auto seen = host::resolveSymbol(session.document(), "LAYER", symbol.qualified))
        row.shown = layerState(session.document(), *seen);
    return row;
}

/// A layer of the listing; what there is to say of it is read when it is printed.
struct Listed {
    mor::EntityName name;
    bool below = false;  ///< of a reference of the drawing that is looked at
};

/// Of layers under one qualified name the first place counts, and what a reference has there: the
/// drawing keeps layers of its references. `seen` holds a number that equal names share, and the
/// place.
void mergeDoubles(const Session& session, std::vector<Listed>& layers,
                  std::vector<std::pair<std::size_t, std::size_t>>& seen) {
    const auto nameOf = [&](std::size_t at) {
        return upperCase(host::symbolInfo(session.document(), "LAYER", layers[at].name).qualified);
    };
    std::ranges::sort(seen);
    for (auto begin = seen.begin(); begin != seen.end();) {
        const auto end = std::find_if(
            begin, seen.end(), [begin](const auto& other) { return other.first != begin->first; });
        std::map<std::wstring, std::size_t> known;
        for (auto at = begin; end - begin > 1 && at != end; ++at) {
            const auto [first, added] = known.try_emplace(nameOf(at->second), at->second);
            if (added) continue;
            Listed& again = layers[at->second];
            if (again.below) layers[first->second] = again;
            again.name = {};
        }
        begin = end;
    }
    std::erase_if(layers, [](const Listed& layer) { return layer.name.isNone(); });
}

/// The layers of the drawing that is looked at, then those of its references. What it keeps of
/// theirs stands with them.
std::vector<Listed> listLayers(const Session& session) {
    std::vector<Listed> layers;
    std::vector<std::pair<std::size_t, std::size_t>> seen;
    const auto list = [&](const std::wstring& reference, bool below) {
        host::forEachSymbol(
            session.document(), reference, "LAYER", [&](const host::SymbolInfo& symbol) {
                if (below && symbol.symbol == symbol.qualified) return;
                seen.emplace_back(std::hash<std::wstring>()(upperCase(symbol.qualified)),
                                  layers.size());
                layers.push_back({symbol.name, below});
            });
    };
    list(session.reference(), false);
    for (const std::wstring& reference : loadedReferences(session)) list(reference, true);
    mergeDoubles(session, layers, seen);
    return layers;
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
    std::vector<Listed> layers = listLayers(session);
    const TextPatterns patterns(options.layers);
    std::size_t own = 0;
    std::erase_if(layers, [&](const Listed& layer) {
        const host::SymbolInfo symbol = host::symbolInfo(session.document(), "LAYER", layer.name);
        const bool hidden = !options.all && isOwnLayer(symbol.symbol);
        own += hidden ? 1 : 0;
        // By the name as it is shown, or as the drawing knows it.
        return hidden || !(patterns.match(nameWithin(session, symbol.qualified)) ||
                           patterns.match(utf8(symbol.qualified)));
    });
    tellOwn(session, options, own, "layers");
    tellMissing(session, options);
    const auto exitOf = [&](std::size_t count) {
        if (count != 0 || options.layers.empty()) return kDone;
        if (!options.quiet)
            printNote(session.message("no layer matches " + options.layers.front() +
                                      hintFor(options.layers.front(), layerNames(session))));
        return kNo;
    };
    const auto rowAt = [&](std::size_t at) {
        const Listed& layer = layers[at];
        return rowOf(session, host::symbolInfo(session.document(), "LAYER", layer.name),
                     layer.below || !session.reference().empty());
    };
    if (!options.json) {
        printTable({"NAME", ">COLOR", "LINETYPE", "STATE", "HOST", "REFERENCE"}, layers.size(),
                   [&](std::size_t at) -> std::vector<std::string> {
                       const LayerRow row = rowAt(at);
                       return {nameWithin(session, row.symbol.qualified),
                               std::to_string(row.shown.color),
                               row.shown.linetype,
                               switches(row.shown),
                               stateText(row.host),
                               stateText(row.reference)};
                   });
        return exitOf(layers.size());
    }
    JsonList list(jsonHead(options), "layers");
    for (std::size_t at = 0; at < layers.size(); ++at) {
        const LayerRow row = rowAt(at);
        Json object{{"name", nameWithin(session, row.symbol.qualified)},
                    {"qualified", utf8(row.symbol.qualified)}};
        object.update(stateJson(row.shown));
        object["host"] = stateJson(row.host);
        object["reference"] = stateJson(row.reference);
        list.add(object);
    }
    list.end();
    return exitOf(layers.size());
}

}  // namespace mor::tool
