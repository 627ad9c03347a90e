#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/store/removing.h"

namespace mor::tool {

int runWipe(Session& session, const Options& options) {
    if (!options.yes)
        throw Failure(kUsage, "wipe removes every stored value; say --yes when that is meant");
    if (session.state().kind == StoreState::Kind::None && !options.all) return kDone;
    removeStore(session, options.extended || options.all);
    if (options.all) removeTraces(session);
    return kDone;
}

}  // namespace mor::tool
