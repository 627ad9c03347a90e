#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/drawers.h"
#include "tools/moradmin/picture/painter.h"
#include "tools/moradmin/references/cells.h"
#include "tools/moradmin/references/references.h"
#include "xref/xref_view.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numbers>
#include <system_error>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kInvisibleAttribute = 1;
constexpr std::size_t kDeepest = 256;
constexpr const char* kTooMany = "beyond a million elements, 250000 inserts or 256 MB";
constexpr std::size_t kMostOfBlock = std::size_t{256} << 10U;  // of one whose records are kept
constexpr std::size_t kMostKept = std::size_t{32} << 20U;
constexpr double kBeyond = 1e9;  ///< half the side of the area around what is cut out

/// Why a reference is not loaded: what was wrong with its file, where there is one.
std::string whyMissing(const host::ReferenceInfo& reference) {
    for (const host::ReferenceTry& attempt : reference.tries) {
        std::error_code code;
        if (!attempt.path.empty() && std::filesystem::is_regular_file(attempt.path, code))
            return attempt.path.string() + ": " + attempt.why;
    }
    return reference.tries.empty() ? "not found" : reference.tries.back().why;
}

bool isAttribute(const std::string& type) { return equalNoCase(wide(type), L"ATTRIB"); }

}  // namespace

void Painter::paintInsert(const Insert& insert, const Inserted& where) {
    const std::wstring blockName = insertedBlock(insert.name).value_or(L"");
    ++m_inserts;
    // Those of the drawing itself are told by their flags: their files need not be read.
    if (!m_choice.references && host::isReference(m_session.document(), blockName))
        return hide("references (--no-xrefs)");
    Block& block = findBlock(blockName);
    const auto& reference = block.reference;
    if (!m_choice.references && reference) return hide("references (--no-xrefs)");
    if (reference && reference->overlay && reference->status == host::ReferenceStatus::Orphaned)
        return hide("overlays below a reference");
    if (reference && !reference->loaded) {
        if (wanted(*insert.layer.name)) paintMissing(insert, *reference, where);
        return;
    }
    const bool nested = where.reference != nullptr || !where.blocks.empty();
    const auto own = placementOf(insert.name, reference.has_value(), nested);
    lookUp(block);
    if (!block.found || !own) return leaveOut("INSERT of a block that is not there");
    if (!isFinite(transformed(*own, {})) || !isFinite(turned(*own, {1.0, 1.0, 1.0})))
        return leaveOut("INSERT with numbers out of range");
    if (const char* why = whyNotWithin(where, block)) return leaveOut(why);
    if (!block.first) return paintAttributes(insert, where);
    Inserted inner{{}, where.reference, &insert.layer, insert.look, where.blocks};
    if (reference) inner.reference = &block.path;
    inner.blocks.push_back(block.key);
    const Scene::Group group = m_scene.open(insert.origin, utf8(blockName));
    const auto clipped = clipBlock(insert, product(where.placement, *own));
    bool whole = true;
    forEachCell(insert.record, where.placement, [&](const CMORMathTransMatrix& owner) {
        if (isFull()) return whole = false;
        inner.placement = product(owner, *own);
        const std::size_t before = m_scene.offered();
        paintBlock(block, inner);
        return m_scene.offered() > before;
    });
    if (!whole) leaveOut(kTooMany);
    if (clipped) m_scene.close(*clipped);
    m_scene.close(group);
    forEachCell(insert.record, where.placement, [&](const CMORMathTransMatrix& owner) {
        Inserted cell = where;
        cell.placement = owner;
        const std::size_t before = m_scene.offered();
        paintAttributes(insert, cell);
        return m_scene.offered() > before && !isFull();
    });
}

std::optional<Scene::Group> Painter::clipBlock(const Insert& insert,
                                               const CMORMathTransMatrix& placement) {
    const auto clip = clipOf(m_session.document(), insert.name, insert.record);
    if (!clip) return std::nullopt;
    Path path = m_scene.path();
    if (clip->inverted) {
        const Point at = m_scene.shift();
        for (const auto& [x, y] :
             {std::pair(-1, -1), std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)})
            path.join({at[0] + x * kBeyond, at[1] + y * kBeyond, 0.0});
        path.close();
    }
    bool first = true;
    for (const Point& corner : clip->corners) {
        const Point placed = transformed(placement, corner);
        first ? path.moveTo(placed) : path.lineTo(placed);
        first = false;
    }
    path.close();
    if (!path.isFinite()) return std::nullopt;
    return m_scene.clip(path);
}

const char* Painter::whyNotWithin(const Inserted& where, const Block& block) {
    if (std::ranges::find(where.blocks, block.key) != where.blocks.end())
        return "INSERT of a block within itself";
    return where.blocks.size() >= kDeepest ? "INSERT within 256 others" : nullptr;
}

void Painter::paintBlock(Block& block, const Inserted& inner) {
    if (!block.bytes) {
        const std::size_t before = m_desk.read;
        for (const mor::EntityName& name : membersOf(block)) paintEntity(name, inner);
        block.bytes = m_desk.read - before;
        return;
    }
    // Small ones that are drawn again are likely to be drawn often: their records are kept.
    if (!block.records && *block.bytes <= kMostOfBlock && m_keptBytes < kMostKept) {
        m_keptBytes += *block.bytes;
        block.members = membersOf(block);
        block.records = std::make_unique<host::RecordRun>();
        block.records->read(m_session.document(), block.members);
    }
    if (!block.records)
        for (const mor::EntityName& name : membersOf(block)) paintEntity(name, inner);
    for (std::size_t i = 0; i < block.members.size(); ++i)
        paintEntity(block.members[i], inner, block.records->groups(i));
}

std::vector<mor::EntityName> Painter::membersOf(const Block& block) {
    if (!block.ordered.empty()) return block.ordered;
    std::vector<mor::EntityName> names;
    ads_name at{};
    block.first->copyTo(at);
    do {
        names.emplace_back(at);
    } while (acdbEntNext(at, at) == RTNORM);
    return names;
}

/// The texts behind an insert, in the coordinates of its owner.
void Painter::paintAttributes(const Insert& insert, const Inserted& where) {
    ads_name at{};
    insert.name.copyTo(at);
    while (acdbEntNext(at, at) == RTNORM) {
        const mor::EntityName name(at);
        const auto facts = host::entityFacts(m_session.document(), name);
        if (!facts) return;
        const Kind& kind = kindOf(facts->type);
        if (!isAttribute(*kind.type)) return;
        if (isFull()) return leaveOut(kTooMany);
        ++m_visited;
        const Reading reading(*this, name);
        const EntityRecord& record = reading.record();
        const LayerLook& own = layerOf(*facts, name);
        const LayerLook& layer = layerWithin(own, where);
        const bool invisible =
            (record.integer(kGroupFlags) & kInvisibleAttribute) != 0 || record.integer(60) != 0;
        if (invisible || !isShown(layer, false)) continue;
        if (textParts(record.text(1)).empty() && record.embedded().empty()) continue;
        const Look look = m_looks.lookOf(record, layer, insert.look, where.path());
        const Origin origin{facts->handle, {own.name, kind.type, &where.path()}};
        paintShape({name, kind, record, origin, layer, look}, where);
    }
}

void Painter::paintOwnBlock(const Insert& entity, const Inserted& where) {
    std::wstring name = wide(entity.record.text(2));
    if (where.reference != nullptr) name = wide(*where.reference) + L"|" + name;
    Block& block = findBlock(name);
    lookUp(block);
    if (block.found && !block.first && !name.empty()) return;  // it shows nothing
    if (!block.first || whyNotWithin(where, block) != nullptr) return paintShape(entity, where);
    Inserted inner{where.placement, where.reference, &entity.layer, entity.look, where.blocks};
    if (*entity.kind.type == "ACAD_TABLE") {
        const host::PlaneAxes axes = entity.record.plane();
        const Point at = entity.record.point(10, {});
        const Point right = entity.record.point(11, Point{1.0, 0.0, 0.0});
        const double length = std::hypot(right[0], right[1], right[2]);
        const Point x = length > 0.0 ? (1.0 / length) * right : axes[0];
        const std::array<Point, 3> own = {x, cross(axes[2], x), axes[2]};
        CMORMathTransMatrix matrix;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column)
                matrix.rows[row][column] = own[column][row];
            matrix.rows[row][3] = at[row];
        }
        inner.placement = product(where.placement, matrix);
    }
    inner.blocks.push_back(block.key);
    const Scene::Group group = m_scene.open(entity.origin, utf8(name));
    paintBlock(block, inner);
    m_scene.close(group);
}

bool Painter::paintPart(const Pencil& pen, const std::string& blockName,
                        const CMORMathTransMatrix& own) {
    if (m_where == nullptr || blockName.empty()) return false;
    const Inserted& where = *m_where;
    Block& block = findBlock(wide(pen.qualified(blockName)));
    lookUp(block);
    if (!block.first || whyNotWithin(where, block) != nullptr || isFull()) return false;
    const std::string layer = pen.record().text(8);
    const LayerLook& own0 = m_looks.layer(pen.qualified(layer.empty() ? "0" : layer));
    Inserted inner{product(pen.placement(), own), where.reference, &own0, pen.look(), where.blocks};
    inner.blocks.push_back(block.key);
    ++m_inserts;
    const Origin& origin = *m_origin;
    const Scene::Group group = m_scene.open(origin, blockName);
    paintBlock(block, inner);
    m_scene.close(group);
    m_scene.setOrigin(origin);  // what follows belongs to the entity again
    return true;
}

void Painter::paintMissing(const Insert& insert, const host::ReferenceInfo& reference,
                           const Inserted& where) {
    const std::string saved = utf8(reference.saved.empty() ? reference.name : reference.saved);
    Missing& missing = m_missing[saved];
    ++missing.count;
    missing.why = whyMissing(reference);
    m_scene.setOrigin(insert.origin);
    m_scene.missing(transformed(where.placement,
                                fromPlane(insert.record.plane(), insert.record.point(10, Point{}))),
                    saved);
}

Path Painter::clipPath(const EntityRecord& viewport, mor::EntityName name, const View& view) const {
    Path path = m_scene.path();
    const auto boundary =
        host::findHandleBeside(m_session.document(), name, wide(viewport.text(340)));
    if (boundary) {
        const EntityRecord record(m_session.document(), *boundary);
        if (record.type() == "CIRCLE" && record.point(10)) {
            const host::PlaneAxes axes = record.plane();
            path.along({fromPlane(axes, *record.point(10)), record.real(40) * axes[0],
                        record.real(40) * axes[1]},
                       0.0, 2 * std::numbers::pi);
        }
        if (record.type() == "LWPOLYLINE")
            for (const Vertex& vertex : verticesOf(record))
                path.join(fromPlane(record.plane(), vertex.at));
        if (!path.empty()) {
            path.close();
            return path;
        }
    }
    const Extent& frame = view.frame;
    for (const auto& [x, y] :
         {std::pair(frame.left, frame.bottom), std::pair(frame.right, frame.bottom),
          std::pair(frame.right, frame.top), std::pair(frame.left, frame.top)})
        path.join({x, y, 0.0});
    path.close();
    return path;
}

void Painter::paintViewport(const Insert& viewport, const Inserted& where) {
    if (m_choice.layout.model || m_frozen != nullptr) return;
    const View view = viewOf(m_session.document(), viewport.name, viewport.record, m_viewports++);
    if (!view.shown) return;
    if (view.perspective) leaveOut("perspective of a viewport, drawn without it");
    const Path frame = clipPath(viewport.record, viewport.name, view);
    const Scene::Group group = m_scene.open(viewport.origin, m_choice.layout.block);
    const Scene::Group clip = m_scene.clip(frame);
    Inserted inner{product(where.placement, view.matrix), where.reference, nullptr, Look{}, {}};
    m_frozen = &view.frozen;
    paintAll(m_model, inner);
    m_frozen = nullptr;
    m_scene.close(clip);
    m_scene.close(group);
    if (!viewport.layer.off && !viewport.layer.frozen && (viewport.layer.plotted || m_choice.all) &&
        wanted(*viewport.layer.name)) {
        m_scene.setOrigin(viewport.origin);
        static const std::string none;
        Pencil pen(m_desk, viewport.name, viewport.record, where.placement, viewport.look, none);
        pen.stroke(frame);
    }
}

std::optional<CMORMathTransMatrix> Painter::placementOf(mor::EntityName insert, bool reference,
                                                        bool nested) {
    const mor::EntityName words = insert;
    CMORAdsTransformation own;
    MOR_XRefView view;
    if (reference && !nested && view.connect(words) && view.getMat(own)) return own.matrix;
    return own.loadFromEntity(words) ? std::optional(own.matrix) : std::nullopt;
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

void Painter::lookUp(Block& block) const {
    if (block.looked) return;
    block.looked = true;
    const mor::ResbufList record{acdbTblSearch(L"BLOCK", block.key->c_str(), 0)};
    block.found = static_cast<bool>(record);
    const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity);
    if (first == nullptr) return;
    block.first = mor::EntityName(first->resval.rlname);
    const auto table = host::resolveSymbol(m_session.document(), "BLOCK_RECORD", *block.key);
    if (!table || drawOrder(m_session.document(), *table).empty()) return;
    block.ordered = membersOf(block);
    putInOrder(block.ordered, *table);
}

}  // namespace mor::tool
