#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

int runVerify(Session& session, const Options& options) {
    const std::string& file = session.file();
    const std::string shown = isPrefixed() ? "" : oneLine(file) + ": ";
    const host::DocumentInfo info = host::documentInfo(session.document());
    std::vector<std::string> lost = host::verifySave(session.document());
    if (info.damage) lost.insert(lost.begin(), "it cannot be saved over: " + info.damage->text);
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = file;
        object["clean"] = lost.empty();
        object["records"] = info.records;
        object["bytes"] = info.bytes;
        object["lost"] = lost;
        printJson(object);
    } else {
        for (const std::string& text : lost) std::cout << shown << oneLine(text) << "\n";
        if (lost.empty())
            std::cout << shown << "a save keeps all " << info.bytes << " bytes of " << info.records
                      << " records" << (info.unwritable.empty() ? "" : "; but " + info.unwritable)
                      << "\n";
    }
    return lost.empty() ? kDone : kDamaged;
}

}  // namespace mor::tool
