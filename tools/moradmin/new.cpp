#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/running/private_files.h"

#include <filesystem>
#include <iostream>
#include <string>

namespace mor::tool {

namespace {

host::Release releaseNamed(const std::string& name) {
    const auto release = host::releaseOfName(name);
    if (!release || *release == host::Release::R13 || *release == host::Release::R14)
        throw Failure(
            kUsage, "\"" + name + "\" is no release: R12 R2000 R2004 R2007 R2010 R2013 R2018 are");
    return *release;
}

}  // namespace

int runNew(const Options& options) {
    const bool streamed = options.drawing == "-";
    refuseOtherForm(options.drawing, "DXF");
    const host::Release release = releaseNamed(options.release);
    AcApDocument* document = host::createDocument(release, options.crlf ? "\r\n" : "\n");
    host::SaveOptions how;
    how.output = streamed ? privateFile("new") : options.drawing;
    how.overwrite = false;
    how.backup = false;
    how.dryRun = options.dryRun;
    const auto saved = host::saveDocument(document, how);
    host::closeDocument(document);
    if (!saved) throw Failure(saved.error());
    if (options.json) {
        Json object = jsonHead(options);
        object["dryRun"] = options.dryRun;
        object["output"] = options.drawing;
        object["release"] = host::releaseName(release);
        object["bytes"] = saved.value().bytes;
        (streamed ? std::cerr : std::cout) << jsonText(object) << "\n";
    }
    if (!saved.value().warning.empty()) printNote(options.drawing + ": " + saved.value().warning);
    if (streamed && !options.dryRun) copyToOutput(how.output.string());
    return kDone;
}

}  // namespace mor::tool
