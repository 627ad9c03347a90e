#include "tools/moradmin/picture/output_file.h"

#include "platform/runtime.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/running/private_files.h"

#include <filesystem>
#include <fstream>
#include <optional>
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

}  // namespace

void refuseDrawings(const std::string& output) {
    const std::filesystem::path path = output;
    const auto named = [&path](std::wstring_view extension) {
        return equalNoCase(wide(path.extension().string()), extension);
    };
    if (named(L".dxf") || named(L".dwg") || beginsLikeDrawing(path))
        throw Failure(kUsage, output + " is a drawing; name another file for the picture, as -o " +
                                  path.stem().string() + ".svg");
}

void writeTo(const std::string& output, const std::function<void(std::ostream&)>& write) {
    std::error_code code;
    const bool straight =
        std::filesystem::exists(output, code) && !std::filesystem::is_regular_file(output, code);
    const std::string written = straight ? output : output + ".part";
    std::optional<UnfinishedFile> unfinished;
    if (!straight) unfinished.emplace(written);
    std::ofstream file(written, std::ios::binary | std::ios::trunc);
    write(file);
    file.close();
    bool done = file.good();
    if (done && !straight) {
        std::filesystem::rename(written, output, code);
        done = !code;
    }
    if (done) return;
    if (!straight) std::filesystem::remove(written, code);
    throw Failure(kUnwritable,
                  output + ": it cannot be written; is there such a folder, and room in it?");
}

}  // namespace mor::tool
