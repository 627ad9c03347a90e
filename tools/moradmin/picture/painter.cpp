#include "tools/moradmin/picture/painter.h"

#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/references/layer_state.h"
#include "tools/moradmin/references/references.h"
#include "xref/space_iterator.h"
#include "xref/xref_view.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace mor::tool {

namespace {

constexpr int kInvisibleAttribute = 1;
/// A drawing whose blocks multiply to more than this is drawn in part.
constexpr std::size_t kMostElements = 1'000'000;
constexpr std::size_t kMostInserts = 250'000;
constexpr std::size_t kMostVisited = 4'000'000;
constexpr std::size_t kMostBytes = std::size_t{256} << 20U;  // of the picture
constexpr std::size_t kMostRead = std::size_t{2} << 30U;     // of records, blocks as often as drawn
constexpr std::size_t kDeepest = 256;
/// Coordinates larger than this are shifted: viewers of pictures calculate with seven digits.
constexpr double kLargest = 1e5;
constexpr double kShiftStep = 1000.0;

constexpr const char* kTooMany = "beyond a million elements, 250000 inserts or 256 MB";
constexpr const char* kHiddenLayer = "on layers that are off or frozen";

bool isSubEntity(const std::string& type) {
    return type == "ATTRIB" || type == "VERTEX" || type == "SEQEND";
}

CMORMathTransMatrix moved(const CMORMathTransMatrix& placement, const Point& by) {
    CMORMathTransMatrix result = placement;
    const Point step = turned(placement, by);
    for (std::size_t row = 0; row < 3; ++row) result.rows[row][3] += step[row];
    return result;
}

/// Where the first point of the first entity that has one lies: what large coordinates are counted
/// from.
Point shiftOf(const Session& session, const CMORMathTransMatrix& placement) {
    MOR_SpaceIterator entities(session.view());
    while (const ads_name* name = entities()) {
        const std::vector<Point> points = pointsOf(session.document(), mor::EntityName(*name));
        if (points.empty()) continue;
        Point shift = transformed(placement, points.front());
        for (double& coordinate : shift)
            coordinate = std::fabs(coordinate) > kLargest
                             ? std::floor(coordinate / kShiftStep) * kShiftStep
                             : 0.0;
        return shift;
    }
    return {};
}

}  // namespace

Painter::Painter(Session& session, const Choice& choice)
    : m_session(session),
      m_patterns(choice.layers),
      m_references(choice.references),
      m_prefix(session.reference().empty() ? "" : utf8(session.reference()) + "|"),
      m_picture(shiftOf(session, session.placement())),
      m_top(utf8(session.reference())) {}

void Painter::paint() {
    const Inserted top{
        m_session.placement(), m_top.empty() ? nullptr : &m_top, nullptr, paletteColour(7), {}};
    std::vector<mor::EntityName> names;
    MOR_SpaceIterator entities(m_session.view());
    while (const ads_name* name = entities()) names.emplace_back(*name);
    std::ranges::sort(names);  // later ones are drawn over earlier ones
    for (const mor::EntityName& name : names) paintEntity(name, top);
}

bool Painter::isFull() const {
    return m_picture.elements() >= kMostElements || m_inserts >= kMostInserts ||
           m_visited >= kMostVisited || m_picture.bytes() >= kMostBytes || m_read >= kMostRead;
}

Origin Painter::originOf(const CMOREntity& entity, const Inserted& where) {
    return {utf8(entity.Handle().GetString()), utf8(entity.GetLayer(nullptr)),
            utf8(entity.Type().GetString()),
            where.reference == nullptr ? std::string() : *where.reference};
}

/// The layer on which an entity shows: for layer 0 in a block that of the insert.
const Painter::Layer& Painter::layerOf(const Origin& origin, const Inserted& where) {
    return layer(origin.layer == "0" && where.layer != nullptr ? *where.layer : origin.layer);
}

void Painter::paintEntity(mor::EntityName name, const Inserted& where) {
    CMOREntity entity;
    short paper = 0;
    if (!entity.Connect(name)) return;
    ++m_visited;
    const std::string type = utf8(entity.Type().GetString());
    if (isSubEntity(type) || type == "ATTDEF" || type == "VIEWPORT") return;
    if (entity.GetGroupShort(67, &paper) && paper != 0) return;  // of a layout
    if (isFull()) return leaveOut(kTooMany);
    const Origin origin = originOf(entity, where);
    const Layer& shown = layerOf(origin, where);
    const EntityRecord record(m_session.document(), name);
    m_read += record.bytes();
    const std::string colour = colourOf(record, shown, where);
    if (record.integer(60) != 0) return leaveOut("invisible");
    if (type == "INSERT") {
        if (shown.frozen) return leaveOut(kHiddenLayer);
        return paintInsert(name, record, origin, shown, colour, where);
    }
    if (!wanted(*shown.name)) return;
    if (shown.frozen || shown.off) return leaveOut(kHiddenLayer);
    if (type == "DIMENSION") return paintDimension(record, origin, shown, colour, where);
    const auto shape =
        shapeOf(m_session.document(), name, record, where.placement, m_picture.shift(), m_read);
    if (!shape) return leaveOut(type == "POLYLINE" && isMesh(record) ? "POLYLINE meshes" : type);
    m_picture.add(origin, *shape, colour);
}

void Painter::paintInsert(mor::EntityName name, const EntityRecord& record, const Origin& origin,
                          const Layer& layer, const std::string& colour, const Inserted& where) {
    const std::wstring blockName = insertedBlock(name).value_or(L"");
    ++m_inserts;
    // Those of the drawing itself are told by their flags: their files need not be read.
    if (!m_references && host::isReference(m_session.document(), blockName))
        return leaveOut("references (--no-xrefs)");
    Block& block = findBlock(blockName);
    const auto& reference = block.reference;
    if (!m_references && reference) return leaveOut("references (--no-xrefs)");
    if (reference && reference->overlay && reference->status == host::ReferenceStatus::Orphaned)
        return leaveOut("overlays below a reference");
    if (reference && !reference->loaded) {
        if (wanted(*layer.name)) paintMissing(record, origin, *reference, where);
        return;
    }
    const bool nested = where.reference != nullptr || !where.blocks.empty();
    const auto own = placementOf(name, reference.has_value(), nested);
    lookUp(block);
    if (!block.found || !own) return leaveOut("INSERT of a block that is not there");
    if (!isFinite(transformed(*own, {})) || !isFinite(turned(*own, {1.0, 1.0, 1.0})))
        return leaveOut("INSERT with numbers out of range");
    if (const char* why = whyNotWithin(where, block)) return leaveOut(why);
    paintAttributes(name, where);
    if (!block.first) return;
    Inserted inner{{}, where.reference, layer.name, colour, where.blocks};
    if (reference) inner.reference = &block.path;
    inner.blocks.push_back(block.key);
    const Picture::Group group = m_picture.open(origin, utf8(blockName));
    paintCells(*block.first, record, *own, where.placement, inner);
    m_picture.close(group);
}

const char* Painter::whyNotWithin(const Inserted& where, const Block& block) {
    if (std::ranges::find(where.blocks, block.key) != where.blocks.end())
        return "INSERT of a block within itself";
    return where.blocks.size() >= kDeepest ? "INSERT within 256 others" : nullptr;
}

void Painter::paintCells(mor::EntityName first, const EntityRecord& insert,
                         const CMORMathTransMatrix& own, const CMORMathTransMatrix& owner,
                         Inserted& inner) {
    const host::PlaneAxes axes = insert.plane();
    const auto [sine, cosine] = host::sineAndCosine(insert.real(50));
    const Point along = fromPlane(axes, {cosine, sine, 0.0});
    const Point upwards = fromPlane(axes, {-sine, cosine, 0.0});
    const int columns = std::max(insert.integer(70, 1), 1);
    const int rows = std::max(insert.integer(71, 1), 1);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            // The cells lie along the turned axes; the first one is the insert itself.
            const Point by = column * insert.real(44) * along + row * insert.real(45) * upwards;
            inner.placement = product(moved(owner, by), own);
            const std::size_t before = m_picture.elements();
            paintBlock(first, inner);
            if (m_picture.elements() == before) return;
            const bool last = row + 1 == rows && column + 1 == columns;
            if (isFull() && !last) return leaveOut(kTooMany);
        }
}

void Painter::paintBlock(mor::EntityName first, const Inserted& inner) {
    ads_name at{};
    first.copyTo(at);
    do {
        paintEntity(mor::EntityName(at), inner);
    } while (acdbEntNext(at, at) == RTNORM);
}

/// The texts behind an insert, in the coordinates of its owner.
void Painter::paintAttributes(mor::EntityName insert, const Inserted& where) {
    ads_name at{};
    insert.copyTo(at);
    CMOREntity entity;
    while (acdbEntNext(at, at) == RTNORM && entity.Connect(at) &&
           entity.Type().CompareNoCase(L"ATTRIB") == 0) {
        if (isFull()) return leaveOut(kTooMany);
        ++m_visited;
        const EntityRecord record(m_session.document(), mor::EntityName(at));
        m_read += record.bytes();
        const Origin origin = originOf(entity, where);
        const Layer& shown = layerOf(origin, where);
        if ((record.integer(kGroupFlags) & kInvisibleAttribute) != 0 || !wanted(*shown.name))
            continue;
        if (shown.frozen || shown.off) {
            leaveOut(kHiddenLayer);
            continue;
        }
        if (const auto shape = shapeOf(m_session.document(), mor::EntityName(at), record,
                                       where.placement, m_picture.shift(), m_read))
            m_picture.add(origin, *shape, colourOf(record, shown, where));
    }
}

/// A dimension's lines stand in a block of its own, where they are to be seen.
void Painter::paintDimension(const EntityRecord& record, const Origin& origin, const Layer& layer,
                             const std::string& colour, const Inserted& where) {
    std::wstring name = wide(record.text(2));
    if (where.reference != nullptr) name = wide(*where.reference) + L"|" + name;
    Block& block = findBlock(name);
    lookUp(block);
    if (!block.first || whyNotWithin(where, block) != nullptr) return leaveOut(record.type());
    Inserted inner{where.placement, where.reference, layer.name, colour, where.blocks};
    inner.blocks.push_back(block.key);
    const Picture::Group group = m_picture.open(origin, utf8(name));
    paintBlock(*block.first, inner);
    m_picture.close(group);
}

void Painter::paintMissing(const EntityRecord& insert, const Origin& origin,
                           const host::ReferenceInfo& reference, const Inserted& where) {
    const std::string saved = utf8(reference.saved.empty() ? reference.name : reference.saved);
    Missing& missing = m_missing[saved];
    ++missing.count;
    missing.why = reference.tries.empty() ? "not found" : reference.tries.back().why;
    m_picture.addMissing(
        origin, transformed(where.placement, fromPlane(insert.plane(), insert.point(10, Point{}))),
        saved);
}

std::optional<CMORMathTransMatrix> Painter::placementOf(mor::EntityName insert, bool reference,
                                                        bool nested) {
    const mor::EntityName words = insert;
    CMORAdsTransformation own;
    MOR_XRefView view;
    if (reference && !nested && view.connect(words) && view.getMat(own)) return own.matrix;
    return own.loadFromEntity(words) ? std::optional(own.matrix) : std::nullopt;
}

const Painter::Layer& Painter::layer(const std::string& name) {
    const auto [known, added] = m_layers.try_emplace(name);
    if (!added) return known->second;
    Layer& found = known->second;
    found.name = &known->first;
    found.colour = paletteColour(7);
    const auto record = host::resolveSymbol(m_session.document(), "LAYER", wide(name));
    if (!record) return found;
    const LayerState state = layerState(m_session.document(), *record);
    found.off = state.off;
    found.frozen = state.frozen;
    found.colour = state.trueColour ? trueColour(*state.trueColour) : paletteColour(state.color);
    return found;
}

std::string Painter::colourOf(const EntityRecord& record, const Layer& layer,
                              const Inserted& where) const {
    if (record.find(420) != nullptr) return trueColour(record.integer(420));
    const int colour = record.integer(62, kByLayer);
    if (colour == kByBlock) return where.colour;
    return colour == kByLayer ? layer.colour : paletteColour(std::abs(colour));
}

bool Painter::wanted(const std::string& layer) const {
    const bool inside = !m_prefix.empty() && layer.starts_with(m_prefix);
    return m_patterns.match(inside ? layer.substr(m_prefix.size()) : layer);
}

Painter::Block& Painter::findBlock(const std::wstring& name) {
    const auto [known, added] = m_blocks.try_emplace(upperCase(name));
    Block& block = known->second;
    if (!added) return block;
    block.key = &known->first;
    block.reference = host::findReference(m_session.document(), name);
    if (block.reference) block.path = utf8(block.reference->name);
    return block;
}

void Painter::lookUp(Block& block) {
    if (block.looked) return;
    block.looked = true;
    const mor::ResbufList record{acdbTblSearch(L"BLOCK", block.key->c_str(), 0)};
    block.found = static_cast<bool>(record);
    if (const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity))
        block.first = mor::EntityName(first->resval.rlname);
}

}  // namespace mor::tool
