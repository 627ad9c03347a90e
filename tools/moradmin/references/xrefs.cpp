#include "dwgfs/names.h"
#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/references.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

bool isMissing(const host::ReferenceInfo& reference) {
    return reference.status == host::ReferenceStatus::NotFound ||
           reference.status == host::ReferenceStatus::Unresolved;
}

/// Whether the referenced drawing holds a file store.
bool hasStore(AcApDocument* document, const host::ReferenceInfo& reference) {
    return reference.loaded && host::hasBlock(document, reference.name, kFileSystemBlock);
}

Json referenceJson(AcApDocument* document, const host::ReferenceInfo& reference) {
    Json object{{"name", utf8(reference.name)}};
    object["kind"] = reference.overlay ? "overlay" : "attach";
    object["status"] = statusName(reference.status);
    object["saved"] = textOrNull(utf8(reference.saved));
    object["found"] = textOrNull(reference.found.string());
    object["inserts"] = reference.inserts;
    object["entities"] = reference.entities;
    object["store"] = hasStore(document, reference);
    object["tries"] = Json::array();
    for (const host::ReferenceTry& attempt : reference.tries)
        object["tries"].push_back(
            {{"path", textOrNull(attempt.path.string())}, {"why", attempt.why}});
    return object;
}

void printTree(const std::vector<host::ReferenceInfo>& references) {
    for (const host::ReferenceInfo& reference : references) {
        const bool found = !reference.found.empty();
        std::cout << std::string(2 * reference.depth, ' ') << oneLine(utf8(reference.block)) << " ("
                  << statusName(reference.status) << ") "
                  << oneLine(found ? reference.found.string() : utf8(reference.saved)) << "\n";
    }
}

void printRows(AcApDocument* document, const std::vector<host::ReferenceInfo>& references,
               bool tries) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(references.size());
    for (const host::ReferenceInfo& reference : references)
        rows.push_back({utf8(reference.name), reference.overlay ? "overlay" : "attach",
                        statusName(reference.status), std::to_string(reference.inserts),
                        std::to_string(reference.entities),
                        hasStore(document, reference) ? "store" : "-", utf8(reference.saved),
                        reference.found.empty() ? "-" : reference.found.string()});
    printTable({"NAME", "KIND", "STATUS", ">INSERTS", ">ENTITIES", "STORE", "SAVED", "FOUND"},
               rows);
    if (!tries) return;
    for (const host::ReferenceInfo& reference : references)
        for (const host::ReferenceTry& attempt : reference.tries)
            printNote(utf8(reference.name) + ": " + whyNot(attempt));
}

}  // namespace

const char* statusName(host::ReferenceStatus status) {
    switch (status) {
        case host::ReferenceStatus::Loaded:
            return "loaded";
        case host::ReferenceStatus::NotFound:
            return "not found";
        case host::ReferenceStatus::Unresolved:
            return "unresolved";
        case host::ReferenceStatus::Orphaned:
            return "orphaned";
        case host::ReferenceStatus::Unreferenced:
            return "unreferenced";
    }
    return "unresolved";
}

int runXrefs(Session& session, const Options& options) {
    std::vector<host::ReferenceInfo> references = host::references(session.document());
    const bool missing = std::ranges::any_of(references, isMissing);
    if (options.missing)
        std::erase_if(references, [](const auto& reference) { return !isMissing(reference); });
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = session.file();
        object["references"] = Json::array();
        for (const host::ReferenceInfo& reference : references)
            object["references"].push_back(referenceJson(session.document(), reference));
        printJson(object);
    } else if (options.tree) {
        printTree(references);
    } else {
        printRows(session.document(), references, options.verbose);
    }
    return missing && options.missing ? kNo : kDone;
}

}  // namespace mor::tool
