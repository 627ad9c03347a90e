#include "tools/moradmin/picture/views.h"

#include "platform/runtime.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace mor::tool {

namespace {

constexpr double kInch = 25.4;
constexpr const char* kActivePaper = "*Paper_Space";
constexpr const char* kModel = "*Model_Space";
// Flags of a viewport.
constexpr unsigned kPerspective = 1;
constexpr unsigned kOff = 0x20000;
constexpr int kSheetItself = 1;

/// What the record of a layout says, behind its settings for plotting.
void readLayout(const EntityRecord& record, Layout& layout) {
    bool named = false;
    for (const host::GroupView& group : record.groups()) {
        if (group.code == 100) named = group.value == "AcDbLayout";
        if (!named) continue;
        if (group.code == 1) layout.name = group.value;
        if (group.code == 71) layout.order = static_cast<int>(readInteger(group.value).value_or(0));
    }
    layout.unit = record.integer(72) == 0 ? "in" : "mm";
    layout.width = record.real(44);
    layout.height = record.real(45);
    // Margins are those of the sheet as it lies in the printer.
    std::array<double, 4> margins = {record.real(40), record.real(41), record.real(42),
                                     record.real(43)};
    const int quarters = record.integer(73);
    if (quarters % 2 != 0) std::swap(layout.width, layout.height);
    for (int i = 0; i < quarters % 4; ++i)
        std::rotate(margins.begin(), margins.begin() + 1, margins.end());
    layout.left = -margins[0];
    layout.bottom = -margins[1];
    const double paper = record.real(142, 1.0);
    const double units = record.real(143, 1.0);
    if (paper > 0.0 && units > 0.0)
        layout.perUnit = paper / units * (layout.unit == "in" ? kInch : 1.0);
}

void countEntities(const AcApDocument* document, std::vector<Layout>& layouts) {
    std::map<std::string, std::size_t> viewports;
    std::size_t last = 0;
    host::forEachRecord(document, [&](const host::RecordInfo& info) {
        const bool model = info.place == host::Place::ModelSpace;
        if ((!model && info.place != host::Place::PaperSpace) || info.erased || info.subEntity)
            return;
        const std::string block = model ? kModel : layoutBlock(info);
        // Most stand beside one of the same.
        auto found = layouts.begin() + static_cast<std::ptrdiff_t>(last);
        if (last >= layouts.size() || found->block != block)
            found = std::ranges::find_if(
                layouts, [&](const Layout& layout) { return sameName(layout.block, block); });
        last = static_cast<std::size_t>(found - layouts.begin());
        if (found == layouts.end()) {
            layouts.emplace_back();
            found = layouts.end() - 1;
            found->block = block;
            found->name = model ? "Model" : block == kActivePaper ? "Paper space" : block;
            found->model = model;
            found->order = static_cast<int>(layouts.size());
        }
        if (info.type == "VIEWPORT")
            ++viewports[found->block];
        else
            ++found->entities;
    });
    for (Layout& layout : layouts)
        if (const std::size_t count = viewports[layout.block]; count > 0)
            layout.viewports = count - 1;
}

std::uint64_t handleOf(const std::string& text) {
    std::uint64_t handle = 0;
    std::from_chars(text.data(), text.data() + text.size(), handle, 16);
    return handle;
}

/// Where a viewport looks to, from its groups or, in old drawings, its extended data.
struct Aim {
    Point centre{};
    Point target{};
    Point direction{0.0, 0.0, 1.0};
    double height = 0.0;
    double twist = 0.0;  ///< degrees
    std::vector<std::string> frozen;
    bool perspective = false;
};

Aim aimOf(const EntityRecord& viewport) {
    Aim aim;
    aim.centre = viewport.point(12, {});
    aim.target = viewport.point(17, {});
    aim.direction = viewport.point(16, aim.direction);
    aim.height = viewport.real(45);
    aim.twist = viewport.real(51);
    aim.perspective = (static_cast<unsigned>(viewport.integer(90)) & kPerspective) != 0;
    return aim;
}

/// "MVIEW": target, direction, then numbers one after the other, then the frozen layers.
Aim oldAimOf(const std::vector<host::RecordGroup>& data) {
    Aim aim;
    std::vector<double> reals;
    std::vector<Point> points;
    for (const host::RecordGroup& group : data) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == 1010) points.push_back({value, 0.0, 0.0});
        if (group.code == 1020 && !points.empty()) points.back()[1] = value;
        if (group.code == 1030 && !points.empty()) points.back()[2] = value;
        if (group.code == 1040) reals.push_back(value);
        if (group.code == 1003) aim.frozen.push_back(group.value);
    }
    if (points.size() < 2 || reals.size() < 4) return aim;
    aim.target = points[0];
    aim.direction = points[1];
    aim.twist = reals[0];
    aim.height = reals[1];
    aim.centre = {reals[2], reals[3], 0.0};
    return aim;
}

CMORMathTransMatrix matrixOf(const Aim& aim, const Point& centre, double scale) {
    const host::PlaneAxes axes = host::planeAxes(aim.direction);
    const auto [sine, cosine] = host::sineAndCosine(aim.twist);
    const std::array<Point, 3> turned = {cosine * axes[0] - sine * axes[1],
                                         sine * axes[0] + cosine * axes[1], axes[2]};
    CMORMathTransMatrix matrix;
    for (std::size_t row = 0; row < 3; ++row) {
        double moved = 0.0;
        for (std::size_t column = 0; column < 3; ++column) {
            matrix.rows[row][column] = scale * turned[row][column];
            moved += turned[row][column] * aim.target[column];
        }
        const double middle = row < 2 ? aim.centre[row] : 0.0;
        matrix.rows[row][3] = (row < 2 ? centre[row] : 0.0) - scale * (moved + middle);
    }
    return matrix;
}

/// A matrix of a filter: three rows of four.
CMORMathTransMatrix readMatrix(const std::vector<double>& numbers, std::size_t begin) {
    CMORMathTransMatrix matrix;
    for (std::size_t i = 0; i < 12; ++i) matrix.rows[i / 4][i % 4] = numbers[begin + i];
    return matrix;
}

}  // namespace

bool sameName(const std::string& a, const std::string& b) {
    return a == b || equalNoCase(wide(a), wide(b));
}

std::string layoutBlock(const host::RecordInfo& info) {
    return info.container.empty() ? kActivePaper : info.container;
}

Extent Layout::paper() const {
    if (!(width > 0.0) || !(height > 0.0) || !(perUnit > 0.0)) return {};
    return {left / perUnit, bottom / perUnit, (left + width) / perUnit, (bottom + height) / perUnit,
            false};
}

std::string layoutName(const AcApDocument* document, const std::string& block) {
    const auto record = host::findSymbol(document, "BLOCK_RECORD", wide(block));
    const auto handle = record ? host::recordGroup(document, *record, 340) : std::nullopt;
    const auto id = handle ? host::findHandle(document, wide(*handle)) : std::nullopt;
    if (!id) return {};
    const EntityRecord layout(document, *id);
    Layout found;
    if (layout.type() == "LAYOUT") readLayout(layout, found);
    return found.name;
}

std::vector<Layout> layoutsOf(AcApDocument* document) {
    std::vector<Layout> layouts;
    host::forEachSymbol(document, L"", "BLOCK_RECORD", [&](const host::SymbolInfo& symbol) {
        const auto handle = host::recordGroup(document, symbol.name, 340);
        const auto id = handle ? host::findHandle(document, wide(*handle)) : std::nullopt;
        if (!id) return;
        const EntityRecord record(document, *id);
        if (record.type() != "LAYOUT") return;
        Layout layout;
        layout.block = utf8(symbol.symbol);
        layout.model = sameName(layout.block, kModel);
        readLayout(record, layout);
        if (layout.name.empty()) layout.name = layout.block;
        layouts.push_back(std::move(layout));
    });
    countEntities(document, layouts);
    std::ranges::stable_sort(layouts, [](const Layout& a, const Layout& b) {
        return a.model != b.model ? a.model : a.order < b.order;
    });
    return layouts;
}

View viewOf(const AcApDocument* document, mor::EntityName name, const EntityRecord& viewport,
            std::size_t number) {
    View view;
    const Point centre = viewport.point(10, {});
    const double width = viewport.real(40);
    const double height = viewport.real(41);
    view.frame = {centre[0] - width / 2, centre[1] - height / 2, centre[0] + width / 2,
                  centre[1] + height / 2, false};
    const bool own =
        viewport.find(69) == nullptr ? number == 0 : viewport.integer(69) == kSheetItself;
    const bool off = (static_cast<unsigned>(viewport.integer(90)) & kOff) != 0 ||
                     (viewport.find(68) != nullptr && viewport.integer(68) == 0);
    Aim aim = aimOf(viewport);
    if (!(aim.height > 0.0)) aim = oldAimOf(extendedData(document, name, "ACAD"));
    for (const host::GroupView& group : viewport.groups()) {
        if (group.code != 331 && group.code != 341) continue;
        const auto layer = host::findHandleBeside(document, name, wide(std::string(group.value)));
        if (const auto text = layer ? host::recordGroup(document, *layer, 2) : std::nullopt)
            aim.frozen.push_back(*text);
    }
    view.frozen.insert(aim.frozen.begin(), aim.frozen.end());
    view.perspective = aim.perspective;
    view.shown = !own && !off && width > 0.0 && height > 0.0 && aim.height > 0.0;
    if (view.shown) view.matrix = matrixOf(aim, centre, height / aim.height);
    return view;
}

std::optional<mor::EntityName> dictionaryEntry(const AcApDocument* document,
                                               mor::EntityName dictionary, std::string_view key) {
    bool next = false;
    for (const host::RecordGroup& group : host::recordGroups(document, dictionary)) {
        if (group.code == 3) next = group.value == key;
        if (next && (group.code == 350 || group.code == 360))
            return host::findHandleBeside(document, dictionary, wide(group.value));
    }
    return std::nullopt;
}

std::optional<mor::EntityName> extensionEntry(const AcApDocument* document, mor::EntityName name,
                                              const EntityRecord& record,
                                              const std::vector<std::string>& keys) {
    if (record.extension().empty()) return std::nullopt;
    auto at = host::findHandleBeside(document, name, wide(std::string(record.extension())));
    for (const std::string& key : keys)
        if (at) at = dictionaryEntry(document, *at, key);
    return at;
}

namespace {

/// The boundary of what an inverted filter cuts out. The filter itself holds a boundary around the
/// rest, for programs that know no inverted ones.
std::vector<Point> cutOut(const AcApDocument* document, mor::EntityName name,
                          const EntityRecord& filter) {
    std::vector<Point> corners;
    const auto id = extensionEntry(document, name, filter, {"ACAD_XREC_ROUNDTRIP"});
    if (!id) return corners;
    bool within = false;
    for (const host::RecordGroup& group : host::recordGroups(document, *id)) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == 102) within = group.value == "ACAD_INVERTEDCLIP_ROUNDTRIP";
        if (within && group.code == 10) corners.push_back({value, 0.0, 0.0});
        if (within && group.code == 20 && !corners.empty()) corners.back()[1] = value;
    }
    return corners;
}

}  // namespace

std::optional<BlockClip> clipOf(const AcApDocument* document, mor::EntityName name,
                                const EntityRecord& insert) {
    const auto id = extensionEntry(document, name, insert, {"ACAD_FILTER", "SPATIAL"});
    if (!id) return std::nullopt;
    const EntityRecord filter(document, *id);
    if (filter.type() != "SPATIAL_FILTER" || filter.integer(71, 1) == 0) return std::nullopt;
    std::vector<double> numbers;
    std::vector<Point> corners;
    const bool front = filter.integer(72) != 0;
    bool frontRead = !front;
    for (const host::GroupView& group : filter.groups()) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == 10) corners.push_back({value, 0.0, 0.0});
        if (group.code == 20 && !corners.empty()) corners.back()[1] = value;
        if (group.code == 40 && !frontRead)
            frontRead = true;  // the distance of a plane in front
        else if (group.code == 40)
            numbers.push_back(value);
    }
    BlockClip clip;
    if (const auto cut = cutOut(document, *id, filter); cut.size() > 1) {
        corners = cut;
        clip.inverted = true;
    }
    if (corners.size() < 2 || numbers.size() < 24) return std::nullopt;
    if (corners.size() == 2)
        corners = {corners[0],
                   {corners[1][0], corners[0][1], 0.0},
                   corners[1],
                   {corners[0][0], corners[1][1], 0.0}};
    // From the boundary's own plane into the space, and from there into the block.
    const CMORMathTransMatrix intoBlock = readMatrix(numbers, 0);
    const CMORMathTransMatrix intoPlane = readMatrix(numbers, 12);
    for (const Point& corner : corners) {
        // The second matrix turns and moves only: its inverse is its transposed one.
        Point back{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t row = 0; row < 3; ++row)
                back[i] += intoPlane.rows[row][i] * (corner[row] - intoPlane.rows[row][3]);
        clip.corners.push_back(transformed(intoBlock, back));
    }
    return clip;
}

std::map<std::uint64_t, std::uint64_t> drawOrder(const AcApDocument* document,
                                                 mor::EntityName blockRecord) {
    std::map<std::uint64_t, std::uint64_t> order;
    const EntityRecord block(document, blockRecord);
    const auto id = extensionEntry(document, blockRecord, block, {"ACAD_SORTENTS"});
    if (!id) return order;
    std::uint64_t entity = 0;
    bool owned = false;  // the first 5 may be the table's own handle
    for (const host::RecordGroup& group : host::recordGroups(document, *id)) {
        owned = owned || group.code == 100;
        if (group.code == 331) entity = handleOf(group.value);
        if (group.code == 5 && owned && entity != 0) order[entity] = handleOf(group.value);
    }
    return order;
}

}  // namespace mor::tool
