#include "tools/moradmin/picture/painter.h"

#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/runtime.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/drawers.h"
#include "tools/moradmin/picture/paint_library.h"
#include "tools/moradmin/references/references.h"
#include "tools/moradmin/running/ahead.h"

#include <algorithm>
#include <array>
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
                                                                {"OLE2FRAME", drawOleFrame},
                                                                {"SHAPE", drawShape},
                                                                {"REGION", drawBody},
                                                                {"3DSOLID", drawBody},
                                                                {"BODY", drawBody}};
    const auto found = all.find(type);
    return found == all.end() ? nullptr : found->second;
}

bool isDimension(const std::string& type) {
    return type == "DIMENSION" || type == "ARC_DIMENSION" || type == "LARGE_RADIAL_DIMENSION";
}

/// Where the first point of the first entity that has one lies: what large coordinates are counted
/// from.
Point shiftOf(const Session& session, const Painter::Choice& choice, MOR_SpaceIterator& entities) {
    const CMORMathTransMatrix placement = session.placement();
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
std::string whyNotDrawn(bool known, const std::string& type, bool opaque) {
    static constexpr std::string_view kSolids[] = {
        "3DSOLID",         "BODY",         "REGION",       "SURFACE",       "EXTRUDEDSURFACE",
        "REVOLVEDSURFACE", "SWEPTSURFACE", "PLANESURFACE", "LOFTEDSURFACE", "NURBSURFACE"};
    if (std::ranges::find(kSolids, type) != std::end(kSolids))
        return ": its form is data of a modeller of solids";
    if (opaque) return ": its data are not read in this form of drawing";
    if (!known) return ": it is no entity that is known";
    return ": its record is incomplete, or its numbers are out of range";
}

/// Later ones are drawn over earlier ones. A selection gives the last one first.
void putInFileOrder(std::vector<mor::EntityName>& names) {
    std::ranges::reverse(names);
    if (!std::ranges::is_sorted(names)) std::ranges::sort(names);
}

bool isControlLayer(const std::string& name) {
    return sameName(name.substr(name.rfind('|') + 1), utf8(kControlLayer));
}

}  // namespace

Painter::Painter(Session& session, const Palette& palette, Choice choice)
    : m_session(session),
      m_choice(std::move(choice)),
      m_patterns(m_choice.layers),
      m_entities(session.view()),
      m_prefix(session.reference().empty() ? "" : utf8(session.reference()) + "|"),
      m_top(utf8(session.reference())),
      m_scene(shiftOf(session, m_choice, m_entities)),
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
    m_entities.resetIterator();
    while (const ads_name* next = m_entities()) {
        const mor::EntityName name(*next);
        const auto place = host::recordPlace(m_session.document(), name);
        if (!place) continue;
        if (!m_top.empty() || place != host::Place::PaperSpace) {
            (m_choice.layout.model ? m_names : m_model).push_back(name);
        } else if (!m_choice.layout.model) {
            const auto info = host::recordInfo(m_session.document(), name);
            if (info && sameName(layoutBlock(*info), m_choice.layout.block))
                m_names.push_back(name);
        }
    }
    putInFileOrder(m_model);
    putInFileOrder(m_names);
    m_scene.expect(std::min(m_names.size(), kMostElements));
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
    paintAll(m_names, top);
}

void Painter::paintAll(const std::vector<mor::EntityName>& names, const Inserted& where) {
    constexpr std::size_t kRun = 256;
    const std::span<const mor::EntityName> all = names;
    std::array<host::RecordRun, Ahead::kPlaces> runs;
    Ahead ahead((all.size() + kRun - 1) / kRun, [&](std::size_t number, std::size_t place) {
        const std::size_t begin = number * kRun;
        runs[place].read(m_session.document(),
                         all.subspan(begin, std::min(kRun, all.size() - begin)));
    });
    std::size_t next = 0;
    while (next < all.size() && !isFull()) {
        const host::RecordRun& run = runs[ahead.next()];
        const std::size_t begin = next;
        for (; next < std::min(begin + kRun, all.size()); ++next)
            paintEntity(all[next], where, run.groups(next - begin));
    }
    for (; next < all.size(); ++next) paintEntity(all[next], where);  // to count them
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

const std::string& Painter::Inserted::path() const {
    static const std::string none;
    return reference == nullptr ? none : *reference;
}

Painter::Kind Painter::newKind(const std::string& type) {
    const auto kind = [&type](Kind::Way way) {
        return Kind{way, isDimension(type) ? drawDimension : drawerOf(type), &type};
    };
    if (isSubEntity(type) || isUnseen(type)) return kind(Kind::Way::Never);
    if (isDimension(type) || type == "ACAD_TABLE") return kind(Kind::Way::OwnBlock);
    if (type == "ATTDEF") return kind(Kind::Way::Definition);
    if (type == "INSERT") return kind(Kind::Way::Insert);
    return kind(type == "VIEWPORT" ? Kind::Way::Viewport : Kind::Way::Shape);
}

const Painter::Kind& Painter::kindOf(std::string_view type) {
    if (m_kind != nullptr && *m_kind->type == type) return *m_kind;
    auto known = m_kinds.find(type);
    if (known == m_kinds.end()) {
        known = m_kinds.try_emplace(std::string(type)).first;
        known->second = newKind(known->first);
    }
    m_kind = &known->second;
    return *m_kind;
}

const LayerLook& Painter::layerOf(const host::EntityFacts& facts, mor::EntityName name) {
    const auto asked = [&]() -> const LayerLook& {
        return m_looks.layer(m_entity.Connect(name) ? utf8(m_entity.GetLayer(nullptr)) : "");
    };
    if (!facts.layer) return asked();
    std::vector<const LayerLook*>& layers = m_layers[name.second()];
    if (*facts.layer >= layers.size()) layers.resize(*facts.layer + std::size_t{1});
    const LayerLook*& known = layers[*facts.layer];
    if (known == nullptr) known = &asked();
    return *known;
}

Painter::Reading::Reading(Painter& painter, mor::EntityName name, const Groups& groups)
    : m_painter(painter),
      m_record(painter.m_reading < painter.m_records.size() ? painter.m_records[painter.m_reading]
                                                            : painter.m_records.emplace_back()) {
    if (groups)
        m_record.take(*groups);
    else
        m_record.read(painter.m_session.document(), name);
    painter.m_desk.read += m_record.bytes();
    ++painter.m_reading;
}

bool Painter::wanted(const std::string& layer) const {
    if (m_patterns.empty()) return true;
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

void Painter::paintEntity(mor::EntityName name, const Inserted& where, const Groups& groups) {
    const auto facts = host::entityFacts(m_session.document(), name);
    if (!facts) return;
    ++m_visited;
    const Kind& kind = kindOf(facts->type);
    if (kind.way == Kind::Way::Never) return;
    if (isFull()) return leaveOut(kTooMany);
    const LayerLook& own = layerOf(*facts, name);
    const LayerLook& layer = layerWithin(own, where);
    const Reading reading(*this, name, groups);
    const EntityRecord& record = reading.record();
    if (kind.way == Kind::Way::Definition) {
        // Within a block only what is the same for all inserts shows.
        const int flags = record.integer(70);
        if ((flags & kInvisibleAttribute) != 0 ||
            (!where.blocks.empty() && (flags & kConstantAttribute) == 0))
            return;
    }
    if (record.integer(60) != 0) return hide("invisible");
    const std::string& reference = where.path();
    const Look look = m_looks.lookOf(record, layer, where.look, reference);
    const Origin origin{facts->handle, {own.name, kind.type, &reference}};
    const Insert all{name, kind, record, origin, layer, look};
    if (kind.way == Kind::Way::Viewport) return paintViewport(all, where);
    const bool insert = kind.way == Kind::Way::Insert;
    if (!isShown(layer, insert)) return;
    if (insert) return paintInsert(all, where);
    if (kind.way == Kind::Way::OwnBlock) return paintOwnBlock(all, where);
    paintShape(all, where);
}

void Painter::paintShape(const Insert& entity, const Inserted& where) {
    m_scene.setOrigin(entity.origin);
    const Inserted* outer = std::exchange(m_where, &where);
    const Origin* outerOrigin = std::exchange(m_origin, &entity.origin);
    Pencil pen(m_desk, entity.name, entity.record, where.placement, entity.look, where.path());
    const std::size_t before = m_scene.offered();
    const bool drawn = (entity.kind.draw != nullptr && entity.kind.draw(pen)) ||
                       m_scene.offered() > before || drawPreview(pen);
    m_where = outer;
    m_origin = outerOrigin;
    if (drawn) return;
    const auto info = host::recordInfo(m_session.document(), entity.name);
    leaveOut(*entity.kind.type +
             whyNotDrawn(entity.kind.draw != nullptr, *entity.kind.type, info && info->opaque));
}

}  // namespace mor::tool
