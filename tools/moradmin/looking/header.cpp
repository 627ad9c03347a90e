#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/looking/foreign.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/patterns.h"

#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// "INSUNITS" means $INSUNITS.
std::vector<std::string> namesMeant(const std::vector<std::string>& words) {
    std::vector<std::string> names;
    for (const std::string& word : words)
        names.push_back(word.starts_with('$') ? word : "$" + word);
    return names;
}

}  // namespace

int runHeader(Session& session, const Options& options) {
    const std::vector<HeaderVariable> all = headerVariables(session.document());
    const std::vector<std::string> words = namesMeant(options.arguments);
    const TextPatterns patterns(words);
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> names;
    Json variables = Json::object();
    for (const HeaderVariable& variable : all) {
        names.push_back(variable.name);
        if (!patterns.match(variable.name)) continue;
        rows.push_back({variable.name, valuesText(variable.groups)});
        variables[variable.name] = valuesJson(variable.groups);
    }
    if (rows.empty() && !words.empty())
        throw Failure(
            kRefused,
            session.message("the header has no " + words.front() + hintFor(words.front(), names)),
            words.front());
    if (options.json) {
        Json object = jsonHead(options);
        object["variables"] = std::move(variables);
        printJson(object);
    } else {
        printTable({"NAME", "VALUE"}, rows);
    }
    return kDone;
}

}  // namespace mor::tool
