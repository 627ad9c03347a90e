#include "tools/moradmin/changes/report.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/running/guarded.h"
#include "tools/moradmin/running/private_files.h"
#include "tools/moradmin/shown_text.h"

#include <filesystem>
#include <iostream>
#include <system_error>

namespace mor::tool {

namespace {

const char* nameOf(host::SavedEdit::Kind kind) {
    using Kind = host::SavedEdit::Kind;
    return kind == Kind::Made ? "made" : kind == Kind::Erased ? "erased" : "changed";
}

bool isTold(const Options& options) { return options.dryRun || options.verbose || options.json; }

Json recordJson(const Session& session, const host::SavedEdit& edit) {
    return {{"change", nameOf(edit.kind)},
            {"type", edit.type},
            {"handle", textOrNull(edit.handle)},
            {"what", textOrNull(session.placeOf(edit))}};
}

void printRecord(std::ostream& out, const Session& session, const host::SavedEdit& edit) {
    out << nameOf(edit.kind) << "\t" << oneLine(edit.type) << "\t"
        << (edit.handle.empty() ? "-" : edit.handle) << "\t" << oneLine(session.placeOf(edit))
        << "\n";
}

}  // namespace

ChangeReport::ChangeReport(Session& session, const Options& options) {
    if (isTold(options)) m_before = contentsOf(session.state());
}

void ChangeReport::print(Session& session, const Options& options,
                         const std::string& target) const {
    if (!m_before) return;
    session.forget();
    const std::vector<Difference> changes = differences(*m_before, contentsOf(session.state()));
    Options trial = options;
    trial.dryRun = true;
    if (trial.output == "-") trial.output = privateFile("stdout");
    const host::SaveReport planned = session.save(trial);
    std::ostream& out = options.output == "-" ? std::cerr : std::cout;
    if (options.json) {
        Json object = jsonHead(options);
        object["dryRun"] = options.dryRun;
        object["output"] = target;
        object["changes"] = Json::array();
        for (const Difference& difference : changes) {
            Json change = Json::object();
            addDifference(change, difference);
            object["changes"].push_back(std::move(change));
        }
        object["records"] = Json::array();
        for (const host::SavedEdit& edit : planned.edits)
            object["records"].push_back(recordJson(session, edit));
        object.update(session.facts());
        out << jsonText(object) << "\n";
        return;
    }
    for (const Difference& difference : changes) printDifference(out, difference);
    for (const host::SavedEdit& edit : planned.edits) printRecord(out, session, edit);
}

void saveAndTell(Session& session, const Options& options, const ChangeReport& report) {
    report.print(session, options, options.output.empty() ? session.file() : options.output);
    flushOutput();  // nobody learns of a save from an exit code that tells of the output
    if (options.dryRun) {
        if (!isTold(options)) static_cast<void>(session.save(options));
        return;
    }
    if (options.output != "-") {
        static_cast<void>(session.save(options));
        return;
    }
    Options own = options;
    own.output = privateFile("stdout");
    own.outputBefore.reset();
    static_cast<void>(session.save(own));
    copyToOutput(own.output);
}

void refuseOtherTarget(const Options& options) {
    if (options.output.empty() && options.drawing == "-" && !options.dryRun)
        throw Failure(kUsage, "a drawing from stdin is saved to -o FILE, or to stdout with -o -");
    if (options.output.empty() || options.output == "-" || options.force) return;
    std::error_code code;
    if (!std::filesystem::exists(options.output, code) ||
        std::filesystem::equivalent(options.output, options.drawing, code))
        return;
    throw Failure(kUnwritable,
                  options.output +
                      ": exists already and is not the drawing; with --force -o takes "
                      "its place",
                  options.output);
}

}  // namespace mor::tool
