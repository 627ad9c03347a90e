#include "platform/entity.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/patterns.h"
#include "tools/moradmin/shown_text.h"
#include "xref/space_iterator.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// What every listing of entities says of one.
struct Listed {
    std::string handle;
    std::string type;
    std::string layer;  // as the drawing knows it
    std::string space;
};

/// Model space, a reference, the block of a layout, or a block definition.
std::string spaceOf(const Session& session, const host::RecordInfo& info) {
    const bool model = info.place == host::Place::ModelSpace;
    if (!session.reference().empty() || model) return utf8(session.view().SpaceName());
    const bool active = info.place == host::Place::PaperSpace && info.container.empty();
    return active ? "*Paper_Space" : info.container;
}

/// Connects `entity`, which stays unconnected for what stands between the records of a table.
Listed describe(const Session& session, mor::EntityName name, CMOREntity& entity) {
    ads_name words{};
    name.copyTo(words);
    const auto info = host::recordInfo(session.document(), name);
    const std::string layer = entity.Connect(words) ? utf8(entity.GetLayer(nullptr)) : "";
    return {host::handleText(info->handle), info->type, layer, spaceOf(session, *info)};
}

Json entityJson(const Options& options, const Listed& entity) {
    Json object = jsonHead(options);
    object["handle"] = entity.handle;
    object["type"] = entity.type;
    object["layer"] = entity.layer;
    object["space"] = entity.space;
    return object;
}

/// The entities of the space that lie on the layers, in the order of the drawing.
std::vector<mor::EntityName> entitiesOn(const Session& session, const CMORStringList& layers) {
    std::vector<mor::EntityName> names;
    MOR_SpaceIterator next(session.view(), layers);
    while (const ads_name* name = next()) names.emplace_back(*name);
    std::ranges::sort(names);  // a selection comes in an order of its own
    return names;
}

/// Prints entities one by one; on a terminal, in columns at the end.
class Printer {
public:
    Printer(Session& session, const Options& options) : m_session(session), m_options(options) {
        if (options.world) m_placement = session.placement();
    }
    void print(const Listed& entity, mor::EntityName name) {
        std::vector<Point> points;
        if (m_options.world)
            for (const Point& point : pointsOf(m_session.document(), name))
                if (const Point placed = transformed(m_placement, point); isFinite(placed))
                    points.push_back(placed);
        if (m_options.json)
            printAsJson(entity, points);
        else
            printAsRow(entity, points);
    }
    void end() const {
        if (!m_rows.empty()) printTable(headings(), m_rows);
    }

private:
    [[nodiscard]] std::vector<std::string> headings() const {
        std::vector<std::string> all = {"HANDLE", "TYPE", "LAYER", "SPACE"};
        if (m_options.world) all.emplace_back("POINTS");
        return all;
    }
    void printAsJson(const Listed& entity, const std::vector<Point>& points) const {
        Json object = entityJson(m_options, entity);
        if (m_options.world) object["points"] = points;
        printJson(object);
    }
    void printAsRow(const Listed& entity, const std::vector<Point>& points) {
        std::vector<std::string> row = {entity.handle.empty() ? "-" : entity.handle, entity.type,
                                        entity.layer, entity.space};
        if (m_options.world) {
            for (const Point& point : points) row.push_back(pointText(point));
            if (points.empty()) row.emplace_back();
        }
        if (!onTerminal()) return printTable(headings(), {row});
        while (row.size() > headings().size()) {  // a column for all points
            row[headings().size() - 1] += "  " + row[headings().size()];
            row.erase(row.begin() + static_cast<std::ptrdiff_t>(headings().size()));
        }
        m_rows.push_back(std::move(row));
    }

    Session& m_session;
    const Options& m_options;
    CMORMathTransMatrix m_placement;
    std::vector<std::vector<std::string>> m_rows;
};

Json groupJson(const host::RecordGroup& group) {
    Json value = group.value;
    switch (groupKind(group.code)) {
        case GroupKind::Real:
            if (const auto real = readReal(group.value)) value = *real;
            break;
        case GroupKind::Integer:
            // What is no integer stays the real or the text that it is.
            if (const auto integer = readInteger(group.value))
                value = *integer;
            else if (group.value.find_first_of(".eE") != std::string::npos)
                if (const auto real = readReal(group.value)) value = *real;
            break;
        case GroupKind::Text:
            break;
    }
    return {{"code", group.code}, {"value", std::move(value)}};
}

Json attributesJson(const host::RecordAttributes& attributes) {
    Json items = Json::array();
    for (const host::RecordAttribute& item : attributes.items)
        items.push_back({{"name", utf8(item.name)},
                         {"type", typeName(item.value)},
                         {"used", item.bytes},
                         {"lisp", host::lispText(item.value)},
                         {"value", jsonValue(item.value)}});
    return items;
}

mor::EntityName findEntity(const Session& session, const std::string& word) {
    ads_name name{};
    if (session.view().handEnt(wide(word).c_str(), name)) return mor::EntityName(name);
    const std::string where = session.reference().empty() ? "" : " in " + utf8(session.reference());
    throw Failure(kRefused, session.message("no record has the handle " + word + where), word);
}

}  // namespace

int runEntities(Session& session, const Options& options) {
    const std::vector<std::string> patterns = splitPatterns(options.layers);
    const TextPatterns types(options.types);
    CMORStringList layers;
    for (const std::string& pattern : patterns) layers.Append(wide(pattern).c_str());
    if (patterns.empty()) layers.Append(L"*");
    Printer printer(session, options);
    std::size_t count = 0;
    CMOREntity entity;
    for (const mor::EntityName& name : entitiesOn(session, layers)) {
        const Listed found = describe(session, name, entity);
        if (!types.match(found.type)) continue;
        ++count;
        if (!options.count) printer.print(found, name);
    }
    printer.end();
    if (options.count && options.json) {
        Json object = jsonHead(options);
        object["count"] = count;
        printJson(object);
    } else if (options.count) {
        std::cout << count << "\n";
    }
    const bool filtered = !patterns.empty() || !types.empty();
    return count == 0 && filtered ? kNo : kDone;
}

int runEntity(Session& session, const Options& options) {
    const mor::EntityName name = findEntity(session, options.argument());
    const std::vector<host::RecordGroup> groups = host::recordGroups(session.document(), name);
    const host::RecordAttributes attributes = host::recordAttributes(session.document(), name);
    if (!attributes.damage.empty())
        printNote(session.message("its attributes cannot be read: " + attributes.damage));
    if (options.json) {
        CMOREntity entity;
        Json object = entityJson(options, describe(session, name, entity));
        object["groups"] = Json::array();
        for (const host::RecordGroup& group : groups) object["groups"].push_back(groupJson(group));
        object["attributes"] = attributesJson(attributes);
        object["used"] = attributes.used;
        object["free"] = attributes.free;
        printJson(object);
        return kDone;
    }
    for (const host::RecordGroup& group : groups)
        std::cout << group.code << "\t" << oneLine(group.value) << "\n";
    for (const host::RecordAttribute& item : attributes.items)
        std::cout << "attribute\t" << oneLine(utf8(item.name)) << "\t"
                  << oneLine(host::lispText(item.value)) << "\n";
    return kDone;
}

}  // namespace mor::tool
