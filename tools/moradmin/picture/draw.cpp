#include "tools/moradmin/picture/draw.h"

#include "platform/runtime.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>
#include <utility>

namespace mor::tool {

namespace {

/// Whether a file begins like a drawing, as text, binary or in the other format.
bool beginsLikeDrawing(const std::filesystem::path& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return false;
    std::ifstream file(path, std::ios::binary);
    std::string line;
    std::getline(file, line);
    if (line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    const auto code = readReal(line.substr(0, line.find('\r')));
    return line.starts_with("AC10") || line.starts_with("AutoCAD") || code == 0.0 || code == 999.0;
}

/// A picture must not take the place of a drawing, this or another one, under whatever name.
void refuseDrawings(const std::string& output) {
    const std::filesystem::path path = output;
    const auto named = [&path](std::wstring_view extension) {
        return equalNoCase(wide(path.extension().string()), extension);
    };
    if (named(L".dxf") || named(L".dwg") || beginsLikeDrawing(path))
        throw Failure(kUsage, output + " is a drawing; name another file for the picture, as -o " +
                                  path.stem().string() + ".svg");
}

void write(std::ostream& out, Drawn& drawn) {
    const Scene& scene = drawn.painter.scene();
    switch (drawn.wish.form) {
        case Form::Svg:
            return writeSvg(out, scene, drawn.painter.fonts(), drawn.canvas);
        case Form::Png:
            return writePng(out, scene, drawn.painter.fonts(), drawn.canvas);
        case Form::Pdf:
            return writePdf(out, scene, drawn.painter.fonts(), drawn.canvas);
    }
}

/// A regular file is replaced when the whole picture is written; devices and pipes are written to.
void writeTo(const std::string& output, Drawn& drawn) {
    std::error_code code;
    const bool straight =
        std::filesystem::exists(output, code) && !std::filesystem::is_regular_file(output, code);
    const std::string written = straight ? output : output + ".part";
    std::ofstream file(written, std::ios::binary | std::ios::trunc);
    write(file, drawn);
    file.close();
    bool done = file.good();
    if (done && !straight) {
        std::filesystem::rename(written, output, code);
        done = !code;
    }
    if (done) return;
    if (!straight) std::filesystem::remove(written, code);
    throw Failure(
        kUnwritable,
        output + ": the picture cannot be written; is there such a folder, and room in it?");
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
    for (const auto* reasons : {&painter.leftOut(), &painter.hidden()})
        for (const auto& [why, count] : *reasons)
            tell("not drawn: " + std::to_string(count) + " " + why);
    for (const auto& [path, missing] : painter.missing())
        tell("missing reference, drawn as a box: " + path + " (" + missing.why + ")");
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
            tell("font " + font + ": " + substitute + " stands for it");
}

int runDraw(Session& session, const Options& given) {
    Options options = given;
    if (options.output == "-") options.output.clear();
    if (options.json && options.output.empty())
        throw Failure(kUsage, "draw --json wants -o FILE: the picture itself is no JSON");
    if (!options.output.empty()) refuseDrawings(options.output);
    if (!session.placedIn().empty())
        printNote(session.message("the insert stands in the block " + session.placedIn() +
                                  ": it is drawn in the coordinates of that block"));
    Drawn drawn(session, options);
    const Scene& scene = drawn.painter.scene();
    if (options.output.empty())
        write(std::cout, drawn);
    else
        writeTo(options.output, drawn);
    tellLeftOut(session, options, drawn);
    const bool nothing = scene.strokes() == 0;
    const bool outside = !nothing && scene.extent().within(drawn.canvas.area).empty;
    if (nothing) printNote(session.message("there is nothing to draw: the picture is empty"));
    if (outside)
        printNote(session.message("the picture is empty: nothing lies within the --window"));
    if (options.json) printSummary(options, drawn);
    return nothing || outside ? kNo : kDone;
}

}  // namespace mor::tool
