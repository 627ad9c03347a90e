#include "tools/moradmin/commands.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/number_text.h"
#include "tools/moradmin/picture/views.h"

#include <cmath>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

constexpr double kInch = 25.4;

/// How large the paper is in the unit in which it is measured.
std::string paperText(const Layout& layout) {
    if (layout.model || !(layout.width > 0.0) || !(layout.height > 0.0)) return "-";
    const double unit = layout.unit == "in" ? kInch : 1.0;
    const auto rounded = [unit](double length) {
        return numberText(std::round(length / unit * 100.0) / 100.0);
    };
    return rounded(layout.width) + " x " + rounded(layout.height) + " " + layout.unit;
}

}  // namespace

int runLayouts(Session& session, const Options& options) {
    const std::vector<Layout> layouts = layoutsOf(session.document());
    if (!options.json) {
        printTable({"NAME", "PAPER", ">VIEWPORTS", ">ENTITIES", "BLOCK"}, layouts.size(),
                   [&](std::size_t at) -> std::vector<std::string> {
                       const Layout& layout = layouts[at];
                       return {layout.name, paperText(layout), std::to_string(layout.viewports),
                               std::to_string(layout.entities), layout.block};
                   });
        return kDone;
    }
    JsonList list(jsonHead(options), "layouts");
    for (const Layout& layout : layouts) {
        Json object{{"name", layout.name}, {"block", layout.block}, {"model", layout.model}};
        object["paper"] = nullptr;
        if (!layout.model && layout.width > 0.0 && layout.height > 0.0)
            object["paper"] = {layout.width, layout.height};
        object["viewports"] = layout.viewports;
        object["entities"] = layout.entities;
        list.add(object);
    }
    list.end();
    return kDone;
}

}  // namespace mor::tool
