#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"

#include <iostream>

namespace mor::tool {

namespace {

CMORMathTransMatrix placementOf(const Session& session, const Options& options) {
    if (options.inside.empty())
        throw Failure(kUsage,
                      options.command +
                          " wants --in NAME or --in HANDLE: the reference whose coordinates "
                          "are carried into the drawing");
    if (!session.placedIn().empty())
        printNote(session.message("the insert stands in the block " + session.placedIn() +
                                  ": these are coordinates of that block"));
    return session.placement();
}

}  // namespace

int runPoint(Session& session, const Options& options) {
    Point point{};
    for (std::size_t i = 0; i < options.arguments.size(); ++i) {
        const auto value = readReal(options.arguments[i]);
        if (!value)
            throw Failure(kUsage, "\"" + options.arguments[i] +
                                      "\" is no coordinate; numbers such as 12.5 or -3e2 are");
        point[i] = *value;
    }
    const Point placed = transformed(placementOf(session, options), point);
    if (!isFinite(placed))
        throw Failure(
            kRefused,
            session.message("the point's coordinates in the drawing are too large for numbers"));
    if (options.json) {
        Json object = jsonHead(options);
        object["point"] = placed;
        printJson(object);
    } else {
        std::cout << pointText(placed) << "\n";
    }
    return kDone;
}

int runMatrix(Session& session, const Options& options) {
    const CMORMathTransMatrix matrix = placementOf(session, options);
    if (options.json) {
        Json object = jsonHead(options);
        object["matrix"] = matrix.rows;
        printJson(object);
        return kDone;
    }
    for (const auto& row : matrix.rows)
        std::cout << pointText({row[0], row[1], row[2]}) << " " << realText(row[3]) << "\n";
    return kDone;
}

}  // namespace mor::tool
