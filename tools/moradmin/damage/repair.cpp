#include "frame/message_system.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/damage/check.h"
#include "tools/moradmin/damage/salvage_apply.h"
#include "tools/moradmin/damage/salvage_plan.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/removing.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>

namespace mor::tool {

namespace {

void sendCheck() {
    static_cast<void>(CMORCadDwgFileSystem::getTheGlobalObject());  // it is this object that checks
    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::CheckDwgFileSystem);
}

void salvage(Session& session, bool json) {
    const StoreState before = session.takeState();
    if (before.findings.empty()) return;
    const SalvagePlan plan = planSalvage(session, before);
    for (const std::string& line : applySalvage(session, before, plan)) {
        session.facts()["done"].push_back(line);
        if (!json) std::cout << line << "\n";
    }
}

}  // namespace

int runRepair(Session& session, const Options& options) {
    const std::array chosen = {options.salvage, options.library, options.reset};
    if (std::ranges::count(chosen, true) > 1)
        throw Failure(kUsage, "one of --salvage, --library and --reset, please");
    if (options.reset && !options.yes)
        throw Failure(kUsage, "--reset erases every stored value; say --yes when that is meant");
    session.facts()["done"] = Json::array();
    if (options.library)
        sendCheck();
    else if (options.reset)
        removeStore(session, true);
    else
        salvage(session, options.json);
    session.forget();
    const StoreState& after = session.state();
    int left = 0;
    session.facts()["findings"] = Json::array();
    for (const Finding& finding : after.findings) {
        if (finding.severity == Finding::Severity::Note) continue;
        session.facts()["findings"].push_back(findingJson(finding));
        if (!options.json) printFinding(session.file(), finding);
        left += finding.severity == Finding::Severity::Error ? 1 : 0;
    }
    if (left == 0) return kDone;
    printNote(session.message(std::to_string(left) + " errors are left"));
    return kDamaged;  // what could be mended is saved all the same
}

}  // namespace mor::tool
