#include "tools/moradmin/picture/draw.h"

#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/output_file.h"
#include "tools/moradmin/picture/paint_library.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/references.h"

#include <iostream>
#include <string>
#include <utility>

namespace mor::tool {

namespace {

/// A PDF is held as a whole before it is written; about so much for each element.
constexpr std::size_t kPdfBytes = 2400;
constexpr std::size_t kManyForPdf = 200'000;

void write(std::ostream& out, Drawn& drawn) {
    const Scene& scene = drawn.painter.scene();
    switch (drawn.wish.form) {
        case Form::Svg:
            return writeSvg(out, scene, drawn.painter.fonts(), drawn.canvas);
        case Form::Png:
            return paintLibrary().png(out, scene, drawn.painter.fonts(), drawn.canvas);
        case Form::Pdf:
            return paintLibrary().pdf(out, scene, drawn.painter.fonts(), drawn.canvas);
    }
}

void printSummary(const Options& options, const Drawn& drawn) {
    const Painter& painter = drawn.painter;
    std::map<std::string, std::size_t> leftOut = painter.leftOut();
    for (const auto& [why, count] : painter.hidden()) leftOut[why] += count;
    Json object = jsonHead(options);
    object["output"] = options.output;
    object["elements"] = painter.scene().strokes();
    object["leftOut"] = leftOut;
    object["missing"] = Json::object();
    for (const auto& [path, missing] : painter.missing()) object["missing"][path] = missing.count;
    object["hidden"] = painter.hidden();
    object["partly"] = painter.partly();
    object["records"] = painter.scene().records();
    object["layout"] = drawn.layout.name;
    const Extent& extent = painter.scene().extent();
    const Point& shift = painter.scene().shift();
    object["extent"] = nullptr;
    if (!extent.empty)
        object["extent"] = {extent.left + shift[0], extent.bottom + shift[1],
                            extent.right + shift[0], extent.top + shift[1]};
    object["others"] = Json::object();
    for (const Layout& layout : drawn.layouts)
        if (!layout.empty() && !sameName(layout.block, drawn.layout.block))
            object["others"][layout.name] = layout.entities;
    printJson(object);
}

/// What the options say of the space; of a reference there is one only.
std::vector<Layout> spacesOf(const Session& session, const Options& options) {
    if (session.reference().empty()) return layoutsOf(session.document());
    if (!options.picture.layout.empty())
        throw Failure(kUsage,
                      "--layout and --in do not go together: a reference shows its model "
                      "space alone");
    return {};
}

}  // namespace

Drawn::Drawn(Session& session, const Options& options)
    : wish(options),
      layouts(spacesOf(session, options)),
      layout(chosenLayout(layouts, options.picture.layout)),
      palette(wish.background, options.picture.exactColours),
      painter(session, palette,
              {options.layers, !options.noReferences, options.picture.all, layout}) {
    painter.paint();
    const host::DrawingSettings settings = host::documentInfo(session.document()).settings;
    std::optional<Extent> window;
    if (wish.window) window = canvasOf(wish, painter.scene(), layout, settings).area;
    painter.scene().finish({settings.pointMode, settings.pointSize}, window);
    canvas = canvasOf(wish, painter.scene(), layout, settings);
    canvas.title = session.file();
}

void tellLeftOut(const Session& session, const Options& options, Drawn& drawn) {
    const Painter& painter = drawn.painter;
    const auto tell = [&](const std::string& text) { printNote(session.message(text)); };
    const auto tellCounts = [&](const char* what,
                                const std::map<std::string, std::size_t>& counts) {
        for (const auto& [why, count] : counts) tell(what + std::to_string(count) + " " + why);
    };
    tellCounts("not drawn: ", painter.leftOut());
    tellCounts("not drawn: ", painter.hidden());
    tellCounts("drawn in part: ", painter.partly());
    for (const auto& [path, missing] : painter.missing())
        tell("missing reference, drawn as a box: " + path + " (" + missing.why + ")");
    if (!painter.missing().empty()) tell(kWhereReferencesLie);
    if (!drawn.layout.model && options.picture.layout.empty())
        tell("model space is empty; the layout " + drawn.layout.name + " is drawn");
    for (const Layout& layout : drawn.layouts)
        if (!layout.empty() && !sameName(layout.block, drawn.layout.block) &&
            (!layout.model || drawn.layout.viewports == 0))
            tell("not drawn: " +
                 std::string(layout.model ? "model space" : "the layout " + layout.name) +
                 " with " + std::to_string(layout.entities) + " entities and " +
                 std::to_string(layout.viewports) + " viewports (--layout \"" + layout.name +
                 "\")");
    if (options.verbose)
        for (const auto& [font, substitute] : drawn.painter.fonts().substitutes())
            tell(std::string("font ")
                     .append(font)
                     .append(": ")
                     .append(substitute)
                     .append(" stands for it"));
}

int runDraw(Session& session, const Options& options) {
    Options own = options;
    if (own.output == "-") own.output.clear();
    if (own.json && own.output.empty())
        throw Failure(kUsage, "draw --json wants -o FILE: the picture itself is no JSON");
    if (!own.output.empty()) refuseDrawings(own.output);
    if (!session.placedIn().empty())
        printNote(session.message("the insert stands in the block " + session.placedIn() +
                                  ": it is drawn in the coordinates of that block"));
    Drawn drawn(session, own);
    const Scene& scene = drawn.painter.scene();
    if (drawn.wish.form == Form::Pdf && scene.strokes() > kManyForPdf)
        printNote(session.message(
            "a PDF of " + std::to_string(scene.strokes()) + " elements takes about " +
            std::to_string(scene.strokes() * kPdfBytes / 1'000'000) +
            " MB of memory while it is written; as SVG or PNG the picture takes a tenth of it"));
    if (own.output.empty())
        write(std::cout, drawn);
    else
        writeTo(own.output, [&](std::ostream& out) { write(out, drawn); });
    tellLeftOut(session, own, drawn);
    const bool nothing = scene.strokes() == 0;
    const bool outside = !nothing && scene.extent().within(drawn.canvas.area).empty;
    if (nothing) printNote(session.message("there is nothing to draw: the picture is empty"));
    if (outside)
        printNote(session.message("the picture is empty: nothing lies within the --window"));
    if (own.json) printSummary(own, drawn);
    return nothing || outside ? kNo : kDone;
}

}  // namespace mor::tool
