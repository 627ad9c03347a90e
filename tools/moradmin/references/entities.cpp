#include "dwgfs/names.h"
#include "platform/entity.h"
#include "platform/runtime.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/deep.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/listed_entity.h"
#include "tools/moradmin/references/patterns.h"
#include "tools/moradmin/references/references.h"
#include "xref/space_iterator.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <set>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// The entities of the space that lie on the layers, in any order.
template <typename Visit>
void forEachEntityOn(const Session& session, const CMORStringList& layers, const Visit& visit) {
    MOR_SpaceIterator next(session.view(), layers);
    while (const ads_name* name = next()) visit(mor::EntityName(*name));
}

std::vector<mor::EntityName> entitiesOn(const Session& session, const CMORStringList& layers) {
    std::vector<mor::EntityName> names;
    forEachEntityOn(session, layers, [&](mor::EntityName name) { names.push_back(name); });
    return names;
}

/// Prints entities one by one; on a terminal, in columns at the end.
class Printer {
public:
    Printer(Session& session, const Options& options) : m_session(session), m_options(options) {
        if (hasPoints()) m_placement = session.placement();
    }
    /// What carries points of the session's own entities into the drawing.
    [[nodiscard]] const CMORMathTransMatrix& placement() const { return m_placement; }
    void print(const ListedEntity& entity, mor::EntityName name,
               const CMORMathTransMatrix& placement) {
        std::vector<Point> points;
        if (hasPoints())
            for (const Point& point : pointsOf(m_session.document(), name))
                if (const Point placed = transformed(placement, point); isFinite(placed))
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
    [[nodiscard]] bool hasPoints() const { return m_options.world || m_options.deep; }
    [[nodiscard]] std::vector<std::string> headings() const {
        std::vector<std::string> all = {"HANDLE", "TYPE", "LAYER", "SPACE"};
        if (hasPoints()) all.emplace_back("POINTS");
        return all;
    }
    void printAsJson(const ListedEntity& entity, const std::vector<Point>& points) const {
        Json object = entityJson(m_options, entity);
        object["points"] = hasPoints() ? Json(points) : Json(nullptr);
        printJson(object);
    }
    void printAsRow(const ListedEntity& entity, const std::vector<Point>& points) {
        std::vector<std::string> row = {entity.handle.empty() ? "-" : entity.handle, entity.type,
                                        entity.layer, entity.space};
        if (hasPoints()) {
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

/// Patterns as the walk wants them: it puts the name of the reference in front of each, which
/// people may have written already.
CMORStringList layersMeant(const Session& session, const std::vector<std::string>& patterns) {
    CMORStringList layers;
    const std::wstring prefix = upperCase(session.reference() + L"|");
    for (const std::string& pattern : patterns) {
        const std::wstring text = wide(pattern);
        const bool full = !session.reference().empty() && upperCase(text).starts_with(prefix);
        layers.Append(full ? text.substr(prefix.size()).c_str() : text.c_str());
    }
    if (patterns.empty()) layers.Append(L"*");
    return layers;
}

/// Whether an insert is a directory of the store.
bool isOwnInsert(mor::EntityName name) {
    const auto block = insertedBlock(name);
    if (!block) return false;
    const std::size_t bar = block->rfind(L'|');
    return isOwnBlock(bar == std::wstring::npos ? *block : block->substr(bar + 1));
}

/// Tells the store's own entities.
class OwnInserts {
public:
    OwnInserts(const Session& session, const Options& options) : m_wanted(!options.all) {
        m_known = session.reference().empty();
        if (m_wanted && m_known)
            host::forEachInsert(
                session.document(), kFileSystemBlock,
                [this](const host::RecordInfo& info) { m_inserts.insert(info.name); });
    }
    /// Whether that one is; counted.
    [[nodiscard]] bool take(mor::EntityName name) {
        if (!m_wanted || (m_known && m_inserts.empty())) return false;
        const bool own = m_known ? m_inserts.contains(name) : isOwnInsert(name);
        if (own) ++m_count;
        return own;
    }
    [[nodiscard]] std::size_t count() const { return m_count; }
    /// Those of the drawing itself, before anything is taken.
    [[nodiscard]] std::size_t known() const { return m_inserts.size(); }

private:
    bool m_wanted;
    bool m_known;  ///< elsewhere each insert is looked at
    std::set<mor::EntityName> m_inserts;
    std::size_t m_count = 0;
};

/// All entities of the drawing, which its index counts; nothing is gone through.
std::size_t countEntities(const Session& session) {
    std::size_t all = 0;
    for (const auto& [type, count] : host::entityTypes(session.document())) all += count;
    return all;
}

/// What the listing has gone through.
struct Tally {
    std::size_t listed = 0;
    std::set<std::string> types;  ///< of all that were looked at
    std::vector<mor::EntityName> inserts;
};

/// Says what was asked for and is nowhere.
void tellUnknown(const Session& session, const Options& options, const Tally& tally) {
    if (options.quiet || tally.listed != 0) return;
    if (tally.types.empty() && !options.layers.empty())
        return printNote(session.message("no entity lies on a layer that matches " +
                                         options.layers.front() +
                                         hintFor(options.layers.front(), layerNames(session))));
    if (options.types.empty() || tally.types.empty()) return;
    std::string known;
    for (const std::string& type : tally.types) known += " " + type;
    printNote(session.message("no entity is of the type " + options.types.front() + "; there are" +
                              known));
}

/// Says what is not listed because it lies in blocks, or in a reference that is not there. Of one
/// drawing among many only when that is asked for.
void tellNotListed(const Session& session, const Options& options, const Tally& tally) {
    if (options.quiet) return;
    if ((isPrefixed() || options.count) && !options.verbose && !options.deep) return;
    tellMissing(session, options);
    if (options.deep) return;
    const std::size_t deep = countDeepEntities(session, tally.inserts);
    if (deep != 0 || options.verbose)
        printNote(session.message(std::to_string(deep) + (deep == 1 ? " more lies" : " more lie") +
                                  " in blocks and references; --deep lists them"));
}

/// What lies in blocks and references, where it is asked for; else how many inserts there are.
void listDeep(Session& session, const Options& options, const std::vector<mor::EntityName>& names,
              const TextPatterns& types, Printer& printer, Tally& tally) {
    const TextPatterns layers(options.layers);
    CMOREntity entity;
    const bool whole = forEachDeepEntity(session, names, [&](const DeepEntity& deep) {
        ListedEntity found = describe(session, deep.name, entity);
        found.space = deep.way;
        tally.types.insert(found.type);
        if (!types.match(found.type) || !layers.match(found.layer)) return;
        ++tally.listed;
        if (!options.count) printer.print(found, deep.name, deep.placement);
    });
    if (!whole) printNote(session.message("more than a million entities lie in blocks; cut short"));
}

/// Whether nothing is looked at but how many there are.
bool isCounted(const Options& options) {
    return options.count && options.types.empty() && !options.verbose && !options.deep;
}

}  // namespace

int runEntities(Session& session, const Options& options) {
    const std::vector<std::string> patterns = splitPatterns(options.layers);
    const TextPatterns types(options.types);
    Printer printer(session, options);
    OwnInserts own(session, options);
    std::vector<mor::EntityName> names;
    Tally tally;
    if (isCounted(options) && patterns.empty() && session.reference().empty())
        tally.listed = countEntities(session) - own.known();
    else
        forEachEntityOn(session, layersMeant(session, patterns), [&](mor::EntityName name) {
            if (own.take(name)) return;
            if (isCounted(options))
                ++tally.listed;
            else
                names.push_back(name);
        });
    std::ranges::sort(names);  // a selection comes in an order of its own
    CMOREntity entity;
    for (const mor::EntityName& name : names) {
        const ListedEntity found = describe(session, name, entity);
        tally.types.insert(found.type);
        if (found.type == "INSERT") tally.inserts.push_back(name);
        if (!types.match(found.type)) continue;
        ++tally.listed;
        if (!options.count) printer.print(found, name, printer.placement());
    }
    if (options.deep) {
        // Whatever layer an insert lies on, what it brings has layers of its own.
        std::vector<mor::EntityName> all = entitiesOn(session, layersMeant(session, {}));
        std::ranges::sort(all);
        listDeep(session, options, all, types, printer, tally);
    }
    printer.end();
    if (options.count && options.json) {
        Json object = jsonHead(options);
        object["count"] = tally.listed;
        printJson(object);
    } else if (options.count) {
        std::cout << tally.listed << "\n";
    }
    tellNotListed(session, options, tally);
    tellUnknown(session, options, tally);
    tellOwn(session, options, own.count(), "entities");
    const bool filtered = !patterns.empty() || !types.empty();
    return tally.listed == 0 && filtered ? kNo : kDone;
}

}  // namespace mor::tool
