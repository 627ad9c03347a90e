#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/picture/output_file.h"
#include "tools/moradmin/view/page.h"

#include <iostream>

namespace mor::tool {

int runView(Session& session, const Options& given) {
    Options options = given;
    if (options.output == "-") options.output.clear();
    if (options.json && options.output.empty())
        throw Failure(kUsage, "view --json wants -o FILE: the page itself is no JSON");
    options.picture.form = "svg";  // that stands in the page, whatever it is called
    if (!options.output.empty()) refuseDrawings(options.output);
    Drawn drawn(session, options);
    const auto write = [&](std::ostream& out) { writePage(out, session, drawn); };
    if (options.output.empty())
        write(std::cout);
    else
        writeTo(options.output, write);
    tellLeftOut(session, options, drawn);
    if (options.json) {
        Json object = jsonHead(options);
        object["output"] = options.output;
        object["elements"] = drawn.painter.scene().strokes();
        printJson(object);
    }
    return kDone;
}

}  // namespace mor::tool
