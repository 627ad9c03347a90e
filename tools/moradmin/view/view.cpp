#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/picture/output_file.h"
#include "tools/moradmin/view/page.h"

#include <iostream>

namespace mor::tool {

int runView(Session& session, const Options& options) {
    Options own = options;
    if (own.output == "-") own.output.clear();
    if (own.json && own.output.empty())
        throw Failure(kUsage, "view --json wants -o FILE: the page itself is no JSON");
    own.picture.form = "svg";  // that stands in the page, whatever it is called
    if (!own.output.empty()) refuseDrawings(own.output);
    Drawn drawn(session, own);
    const auto write = [&](std::ostream& out) { writePage(out, session, drawn); };
    if (own.output.empty())
        write(std::cout);
    else
        writeTo(own.output, write);
    tellLeftOut(session, own, drawn);
    if (own.json) {
        Json object = jsonHead(own);
        object["output"] = own.output;
        object["elements"] = drawn.painter.scene().strokes();
        printJson(object);
    }
    return kDone;
}

}  // namespace mor::tool
