#include "tools/moradmin/picture/painter.h"

#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/runtime.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/drawers.h"
#include "tools/moradmin/picture/paint_library.h"
#include "tools/moradmin/references/references.h"
#include "xref/space_iterator.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kInvisibleAttribute = 1;
constexpr int kConstantAttribute = 2;
/// A drawing whose blocks multiply to more than this is drawn in part.
constexpr std::size_t kMostElements = 1'000'000;
constexpr std::size_t kMostInserts = 250'000;
constexpr std::size_t kMostVisited = 4'000'000;
constexpr std::size_t kMostBytes = std::size_t{256} << 20U;  // of the picture
constexpr std::size_t kMostRead = std::size_t{2} << 30U;     // of records, blocks as often as drawn
/// Coordinates larger than this are shifted: viewers of pictures calculate with seven digits.
constexpr double kLargest = 1e5;
constexpr double kShiftStep = 1000.0;

constexpr const char* kTooMany = "beyond a million elements, 250000 inserts or 256 MB";
constexpr const char* kHiddenLayer = "on layers that are off or frozen";
constexpr const char* kNotPlotted = "on layers that are not plotted (--all)";

bool isSubEntity(const std::string& type) {
    return type == "ATTRIB" || type == "VERTEX" || type == "SEQEND";
}

/// Things that never show.
bool isUnseen(const std::string& type) {
    return type == "LIGHT" || type == "CAMERA" || type == "SUN" || type == "SECTIONOBJECT";
}

using Drawer = bool (*)(Pencil&);

Drawer drawerOf(const std::string& type) {
    static const std::unordered_map<std::string, Drawer> all = {{"LINE", drawLine},
                                                                {"RAY", drawRay},
                                                                {"XLINE", drawRay},
                                                                {"POINT", drawPoint},
                                                                {"CIRCLE", drawCircle},
                                                                {"ARC", drawArc},
                                                                {"ELLIPSE", drawEllipse},
                                                                {"SPLINE", drawSpline},
                                                                {"HELIX", drawSpline},
                                                                {"LWPOLYLINE", drawLightPolyline},
                                                                {"POLYLINE", drawPolyline},
                                                                {"MLINE", drawMultiline},
                                                                {"SOLID", drawSolid},
                                                                {"TRACE", drawSolid},
                                                                {"3DFACE", drawFace},
                                                                {"MESH", drawMesh},
                                                                {"HATCH", drawHatch},
                                                                {"MPOLYGON", drawHatch},
                                                                {"TEXT", drawText},
                                                                {"ATTRIB", drawText},
                                                                {"ATTDEF", drawText},
                                                                {"MTEXT", drawLongText},
                                                                {"TOLERANCE", drawTolerance},
                                                                {"LEADER", drawLeader},
                                                                {"MULTILEADER", drawMultileader},
                                                                {"MLEADER", drawMultileader},
                                                                {"IMAGE", drawImage},
                                                                {"WIPEOUT", drawWipeout},
                                                                {"PDFUNDERLAY", drawUnderlay},
                                                                {"DWFUNDERLAY", drawUnderlay},
                                                                {"DGNUNDERLAY", drawUnderlay},
                                                                {"OLE2FRAME", drawOleFrame}};
    const auto found = all.find(type);
    return found == all.end() ? nullptr : found->second;
}

bool isDimension(const std::string& type) {
    return type == "DIMENSION" || type == "ARC_DIMENSION" || type == "LARGE_RADIAL_DIMENSION";
}

/// Where the first point of the first entity that has one lies: what large coordinates are counted
/// from.
Point shiftOf(const Session& session, const Painter::Choice& choice) {
    const CMORMathTransMatrix placement = session.placement();
    MOR_SpaceIterator entities(session.view());
    while (const ads_name* name = entities()) {
        const auto info = host::recordInfo(session.document(), mor::EntityName(*name));
        const bool paper = info && info->place == host::Place::PaperSpace;
        if (paper != !choice.layout.model || (paper && layoutBlock(*info) != choice.layout.block))
            continue;
        const std::vector<Point> points = pointsOf(session.document(), mor::EntityName(*name));
        if (points.empty()) continue;
        Point shift = transformed(placement, points.front());
        for (double& coordinate : shift)
            coordinate = std::fabs(coordinate) > kLargest && isFinite(shift)
                             ? std::floor(coordinate / kShiftStep) * kShiftStep
                             : 0.0;
        return shift;
    }
    return {};
}

/// Why an entity of that type is not drawn, to be put behind it.
std::string whyNotDrawn(const std::string& type, bool opaque) {
    static constexpr std::string_view kSolids[] = {
        "3DSOLID",         "BODY",         "REGION",       "SURFACE",       "EXTRUDEDSURFACE",
        "REVOLVEDSURFACE", "SWEPTSURFACE", "PLANESURFACE", "LOFTEDSURFACE", "NURBSURFACE"};
    if (std::ranges::find(kSolids, type) != std::end(kSolids))
        return ": its form is data of a modeller of solids";
    if (opaque) return ": its data are not read in this form of drawing";
    if (type == "SHAPE") return ": its form lies in a file of shapes";
    if (drawerOf(type) == nullptr && !isDimension(type)) return ": it is no entity that is known";
    return ": its record is incomplete, or its numbers are out of range";
}

bool isControlLayer(const std::string& name) {
    return sameName(name.substr(name.rfind('|') + 1), utf8(kControlLayer));
}

}  // namespace

Painter::Painter(Session& session, const Palette& palette, Choice choice)
    : m_session(session),
      m_choice(std::move(choice)),
      m_patterns(m_choice.layers),
      m_prefix(session.reference().empty() ? "" : utf8(session.reference()) + "|"),
      m_top(utf8(session.reference())),
      m_scene(shiftOf(session, m_choice)),
      m_fonts(paintLibrary().fonts()),
      m_looks(session.document()),
      m_desk{session.document(),
             m_scene,
             *m_fonts,
             m_looks,
             palette,
             host::documentInfo(session.document()).settings,
             [this](const Pencil& pen, const std::string& block, const CMORMathTransMatrix& own) {
                 return paintPart(pen, block, own);
             }} {}

void Painter::paint() {
    const Inserted top{
        m_session.placement(), m_top.empty() ? nullptr : &m_top, nullptr, Look{}, {}};
    MOR_SpaceIterator entities(m_session.view());
    while (const ads_name* next = entities()) {
        const mor::EntityName name(*next);
        const auto info = host::recordInfo(m_session.document(), name);
        if (!info) continue;
        if (!m_top.empty() || info->place != host::Place::PaperSpace)
            (m_choice.layout.model ? m_names : m_model).push_back(name);
        else if (!m_choice.layout.model && sameName(layoutBlock(*info), m_choice.layout.block))
            m_names.push_back(name);
    }
    std::ranges::sort(m_model);
    std::ranges::sort(m_names);  // later ones are drawn over earlier ones
    paintSpace(top);
}

void Painter::paintSpace(const Inserted& top) {
    std::optional<mor::EntityName> block;
    const std::string wantedBlock = m_choice.layout.model ? "*Model_Space" : m_choice.layout.block;
    host::forEachSymbol(m_session.document(), m_session.reference(), "BLOCK_RECORD",
                        [&](const host::SymbolInfo& symbol) {
                            if (sameName(utf8(symbol.symbol), wantedBlock)) block = symbol.name;
                        });
    if (block) putInOrder(m_names, *block);
    for (const mor::EntityName& name : m_names) paintEntity(name, top);
}

void Painter::putInOrder(std::vector<mor::EntityName>& names, mor::EntityName block) const {
    const auto order = drawOrder(m_session.document(), block);
    if (order.empty()) return;
    std::vector<std::pair<std::uint64_t, mor::EntityName>> keyed;
    for (const mor::EntityName& name : names) {
        const auto info = host::recordInfo(m_session.document(), name);
        const std::uint64_t handle = info ? info->handle : 0;
        const auto moved = order.find(handle);
        keyed.emplace_back(moved == order.end() ? handle : moved->second, name);
    }
    std::ranges::stable_sort(keyed, {}, &std::pair<std::uint64_t, mor::EntityName>::first);
    for (std::size_t i = 0; i < names.size(); ++i) names[i] = keyed[i].second;
}

bool Painter::isFull() const {
    return m_scene.strokes() >= kMostElements || m_inserts >= kMostInserts ||
           m_visited >= kMostVisited || m_scene.bytes() >= kMostBytes || m_desk.read >= kMostRead;
}

Origin Painter::originOf(const CMOREntity& entity, const Inserted& where) {
    return {utf8(entity.Handle().GetString()), utf8(entity.GetLayer(nullptr)),
            utf8(entity.Type().GetString()),
            where.reference == nullptr ? std::string() : *where.reference};
}

/// The layer on which an entity shows: for layer 0 in a block that of the insert.
const LayerLook& Painter::layerOf(const Origin& origin, const Inserted& where) {
    return m_looks.layer(origin.layer == "0" && where.layer != nullptr ? *where.layer
                                                                       : origin.layer);
}

bool Painter::wanted(const std::string& layer) const {
    const bool inside = !m_prefix.empty() && layer.starts_with(m_prefix);
    return m_patterns.match(inside ? layer.substr(m_prefix.size()) : layer);
}

bool Painter::isShown(const LayerLook& layer, bool insert) {
    if (!insert && !wanted(*layer.name)) return false;
    const bool frozen =
        layer.frozen || (m_frozen != nullptr && m_frozen->find(*layer.name) != m_frozen->end());
    if (frozen || (layer.off && !insert)) {
        // What the store keeps is no part of what the drawing shows.
        if (!isControlLayer(*layer.name)) hide(kHiddenLayer);
        return false;
    }
    if (insert || layer.plotted || m_choice.all) return true;
    hide(kNotPlotted);
    return false;
}

void Painter::paintEntity(mor::EntityName name, const Inserted& where) {
    CMOREntity entity;
    if (!entity.Connect(name)) return;
    ++m_visited;
    const Origin origin = originOf(entity, where);
    if (isSubEntity(origin.type) || isUnseen(origin.type)) return;
    if (isFull()) return leaveOut(kTooMany);
    const LayerLook& layer = layerOf(origin, where);
    const EntityRecord record(m_session.document(), name);
    m_desk.read += record.bytes();
    if (origin.type == "ATTDEF") {
        // Within a block only what is the same for all inserts shows.
        const int flags = record.integer(70);
        if ((flags & kInvisibleAttribute) != 0 ||
            (!where.blocks.empty() && (flags & kConstantAttribute) == 0))
            return;
    }
    if (record.integer(60) != 0) return hide("invisible");
    const std::string& reference = where.reference == nullptr ? std::string() : *where.reference;
    const Look look = m_looks.lookOf(record, layer, where.look, reference);
    const Insert all{name, record, origin, layer, look};
    if (origin.type == "VIEWPORT") return paintViewport(all, where);
    const bool insert = origin.type == "INSERT";
    if (!isShown(layer, insert)) return;
    if (insert) return paintInsert(all, where);
    if (isDimension(origin.type) || origin.type == "ACAD_TABLE") return paintOwnBlock(all, where);
    paintShape(all, where);
}

void Painter::paintShape(const Insert& entity, const Inserted& where) {
    const Drawer draw =
        isDimension(entity.origin.type) ? drawDimension : drawerOf(entity.origin.type);
    m_scene.setOrigin(entity.origin);
    const Inserted* outer = std::exchange(m_where, &where);
    const Origin* outerOrigin = std::exchange(m_origin, &entity.origin);
    Pencil pen(m_desk, entity.name, entity.record, where.placement, entity.look,
               where.reference == nullptr ? std::string() : *where.reference);
    const std::size_t before = m_scene.offered();
    const bool drawn =
        (draw != nullptr && draw(pen)) || m_scene.offered() > before || drawPreview(pen);
    m_where = outer;
    m_origin = outerOrigin;
    if (drawn) return;
    const auto info = host::recordInfo(m_session.document(), entity.name);
    leaveOut(entity.origin.type + whyNotDrawn(entity.origin.type, info && info->opaque));
}

}  // namespace mor::tool
