#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/input.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/storing.h"

#include <string>

namespace mor::tool {

namespace {

CMORAdsLispVar parsedValue(const std::string& text, bool inScript) {
    auto value = host::readLisp(text);
    if (!value)
        throw Failure(kUsage,
                      "the value is no LISP text: " + value.error().message() +
                          (inScript ? "; a script takes quotes away: '\"...\"', or --string" : ""));
    if (CMORAdsLisp::NilP(value.value()))
        throw Failure(
            kUsage,
            "nil cannot be stored, it would remove the file; \"moradmin rm\" removes files");
    return value.value();
}

CMORAdsLispVar wantedValue(const Options& options) {
    const bool given = options.arguments.size() > 1;
    if (given && options.fileValue)
        throw Failure(kUsage, "one value, please: on the command line or with --file FILE");
    if (!given && !options.fileValue)
        throw Failure(kUsage, "a value is missing: LISP text, - for stdin or --file FILE");
    std::string text = given ? options.arguments[1] : readText(*options.fileValue);
    const bool read = !given || text == "-";
    if (given && read) text = readText("-");
    if (options.line && !options.asString) throw Failure(kUsage, "--line belongs to --string");
    if (options.line && read && text.ends_with('\n')) text.pop_back();
    return options.asString ? host::makeString(wide(text)) : parsedValue(text, options.inScript);
}

}  // namespace

int runPut(Session& session, const Options& options) {
    const std::wstring path = filePath(session, options.argument());
    const CMORAdsLispVar value = wantedValue(options);
    session.refuseDamagedStore();
    putValue(session, path, value);
    confirmValue(session, *Session::freshStore(), path, value);
    return kDone;
}

}  // namespace mor::tool
