#include "platform/entity.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/listed_entity.h"
#include "tools/moradmin/references/patterns.h"
#include "xref/space_iterator.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// The entities of the space that lie on the layers, in any order.
std::vector<mor::EntityName> entitiesOn(const Session& session, const CMORStringList& layers) {
    std::vector<mor::EntityName> names;
    MOR_SpaceIterator next(session.view(), layers);
    while (const ads_name* name = next()) names.emplace_back(*name);
    return names;
}

/// How many there are: they need not be held for that.
std::size_t countEntitiesOn(const Session& session, const CMORStringList& layers) {
    std::size_t count = 0;
    MOR_SpaceIterator next(session.view(), layers);
    while (next() != nullptr) ++count;
    return count;
}

/// Prints entities one by one; on a terminal, in columns at the end.
class Printer {
public:
    Printer(Session& session, const Options& options) : m_session(session), m_options(options) {
        if (options.world) m_placement = session.placement();
    }
    void print(const ListedEntity& entity, mor::EntityName name) {
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
    void printAsJson(const ListedEntity& entity, const std::vector<Point>& points) const {
        Json object = entityJson(m_options, entity);
        if (m_options.world) object["points"] = points;
        printJson(object);
    }
    void printAsRow(const ListedEntity& entity, const std::vector<Point>& points) {
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

}  // namespace

int runEntities(Session& session, const Options& options) {
    const std::vector<std::string> patterns = splitPatterns(options.layers);
    const TextPatterns types(options.types);
    CMORStringList layers;
    for (const std::string& pattern : patterns) layers.Append(wide(pattern).c_str());
    if (patterns.empty()) layers.Append(L"*");
    Printer printer(session, options);
    const bool allTypes = options.count && types.empty();
    std::size_t count = allTypes ? countEntitiesOn(session, layers) : 0;
    std::vector<mor::EntityName> names;
    if (!allTypes) names = entitiesOn(session, layers);
    CMOREntity entity;
    std::ranges::sort(names);  // a selection comes in an order of its own
    for (const mor::EntityName& name : names) {
        const ListedEntity found = describe(session, name, entity);
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

}  // namespace mor::tool
