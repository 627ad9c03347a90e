#include "platform/runtime.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/painter.h"
#include "tools/moradmin/references/entity_record.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>

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

/// A regular file is replaced when the whole picture is written; devices and pipes are written to.
void writeTo(const std::string& output, const Picture& picture, const std::string& title) {
    std::error_code code;
    const bool straight =
        std::filesystem::exists(output, code) && !std::filesystem::is_regular_file(output, code);
    const std::string written = straight ? output : output + ".part";
    std::ofstream file(written, std::ios::binary | std::ios::trunc);
    picture.write(file, title);
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

void printSummary(const Options& options, const Painter& painter) {
    Json object = jsonHead(options);
    object["output"] = options.output;
    object["elements"] = painter.picture().elements();
    object["leftOut"] = painter.leftOut();
    object["missing"] = Json::object();
    for (const auto& [path, missing] : painter.missing()) object["missing"][path] = missing.count;
    printJson(object);
}

}  // namespace

int runDraw(Session& session, const Options& options) {
    if (options.json && options.output.empty())
        throw Failure(kUsage, "draw --json wants -o FILE: the picture itself is no JSON");
    if (!options.output.empty()) refuseDrawings(options.output);
    if (!session.placedIn().empty())
        printNote(session.message("the insert stands in the block " + session.placedIn() +
                                  ": it is drawn in the coordinates of that block"));
    Painter painter(session, {options.layers, !options.noReferences});
    painter.paint();
    if (options.output.empty())
        painter.picture().write(std::cout, session.file());
    else
        writeTo(options.output, painter.picture(), session.file());
    for (const auto& [why, count] : painter.leftOut())
        printNote(session.message("not drawn: " + std::to_string(count) + " " + why));
    for (const auto& [path, missing] : painter.missing())
        printNote(session.message("missing reference, drawn as a box: " + path + " (" +
                                  missing.why + ")"));
    if (painter.picture().elements() == 0) printNote(session.message("there is nothing to draw"));
    if (options.json) printSummary(options, painter);
    return kDone;
}

}  // namespace mor::tool
