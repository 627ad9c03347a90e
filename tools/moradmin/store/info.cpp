#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/looking/facts.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <iostream>
#include <string>

namespace mor::tool {

namespace {

struct StoreTotals {
    std::size_t files = 0;
    long bytes = 0;
};

StoreTotals totalsOf(const StoreState& state) {
    StoreTotals totals;
    for (std::size_t i = 0; i < state.reachable; ++i)
        for (const host::RecordAttribute& item : state.directories[i].attributes.items) {
            if (!isFileName(item.name)) continue;
            ++totals.files;
            totals.bytes += item.bytes;
        }
    return totals;
}

const char* stateName(StoreState::Kind kind) {
    switch (kind) {
        case StoreState::Kind::None:
            return "none";
        case StoreState::Kind::Empty:
            return "empty";
        case StoreState::Kind::Sound:
            return "sound";
        case StoreState::Kind::Broken:
            return "damaged";
    }
    return "none";
}

Json infoJson(Session& session, const Options& options) {
    const StoreState& state = session.state();
    const host::DocumentInfo& info = session.info();
    const bool own = session.reference().empty();
    const StoreTotals totals = totalsOf(state);
    Json object = jsonHead(options);
    object["path"] = own ? session.file() : info.path.string();
    object["reference"] = textOrNull(utf8(session.reference()));
    object["release"] = host::releaseName(info.release);
    object["version"] = textOrNull(info.version);
    object["codePage"] = textOrNull(info.codePage);
    object["encoding"] = textOrNull(info.encoding);
    object["form"] = info.form;
    object["lineEnd"] = textOrNull(info.lineEnd);
    object["bytes"] = info.bytes;
    object["records"] = info.records;
    object["deadBytes"] = info.form == "DWG" ? Json(info.deadBytes) : Json(nullptr);
    object["damage"] = nullptr;
    if (info.damage)
        object["damage"] = {{"line", info.damage->line},
                            {"byte", info.damage->offset},
                            {"places", info.damage->places},
                            {"message", info.damage->text}};
    object["store"] = {{"state", stateName(state.kind)},
                       {"directories", state.reachable},
                       {"files", totals.files},
                       {"used", totals.bytes},
                       {"findings", state.findings.size()}};
    if (own && (options.json || !isPrefixed()))
        addDrawingFacts(object, session.document());
    else
        addNoFacts(object);
    return object;
}

/// One row of a table of several drawings.
void printInfoRow(const Json& facts) {
    const Json& store = facts["store"];
    const auto number = [](const Json& value) { return std::to_string(value.get<long>()); };
    printTable(
        {"RELEASE", "FORM", ">BYTES", ">RECORDS", "STORE", ">DIRECTORIES", ">FILES", ">USED"},
        {{facts["release"].get<std::string>(), facts["form"].get<std::string>(),
          number(facts["bytes"]), number(facts["records"]), store["state"].get<std::string>(),
          number(store["directories"]), number(store["files"]), number(store["used"])}});
}

void printInfo(Session& session, const Json& facts) {
    const StoreState& state = session.state();
    const host::DocumentInfo& info = session.info();
    const Json& store = facts["store"];
    std::cout << "drawing   " << oneLine(facts["path"].get<std::string>()) << "\n"
              << "release   " << host::releaseName(info.release) << " ("
              << (info.version.empty() ? "no $ACADVER" : oneLine(info.version)) << ")\n"
              << "text      " << info.encoding << ", "
              << (info.lineEnd.empty() ? info.form : info.lineEnd) << "\n"
              << "size      " << info.bytes << " bytes, " << info.records << " records\n"
              << "store     " << stateName(state.kind) << ", " << state.reachable
              << " directories, " << store["files"].get<long>() << " files, "
              << store["used"].get<long>() << " bytes in files\n";
    if (session.reference().empty()) printFacts(std::cout, facts);
    if (info.deadBytes != 0)
        std::cout << "dead      " << info.deadBytes
                  << " bytes of older versions of objects; what stands in them can be read from "
                     "the file until the CAD program saves it\n";
    if (info.damage) std::cout << "damage    " << oneLine(damagePlace(*info.damage)) << "\n";
    for (const Finding& finding : state.findings)
        std::cout << "finding   " << finding.code << " " << oneLine(utf8(finding.path)) << ": "
                  << oneLine(finding.message) << "\n";
}

}  // namespace

int runInfo(Session& session, const Options& options) {
    const Json facts = infoJson(session, options);
    if (options.json)
        printJson(facts);
    else if (isPrefixed())
        printInfoRow(facts);
    else
        printInfo(session, facts);
    return kDone;
}

}  // namespace mor::tool
