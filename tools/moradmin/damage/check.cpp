#include "tools/moradmin/damage/check.h"

#include "host/host.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

namespace {

using Severity = Finding::Severity;

const char* severityName(Severity severity) {
    switch (severity) {
        case Severity::Note:
            return "note";
        case Severity::Warning:
            return "warning";
        case Severity::Error:
            return "error";
    }
    return "note";
}

/// Faults of the file itself that are none of the store's.
std::vector<Finding> fileNotes(const AcApDocument* document, const StoreState& state) {
    std::vector<Finding> notes;
    std::set<std::string_view> ours;
    for (const Finding& finding : state.findings)
        if (finding.code == "handle-doubled") ours.insert(finding.handle);
    if (const auto damage = host::documentInfo(document).damage)
        notes.push_back(
            {"drawing-damaged", Severity::Error, L"", "", false, false,
             damage->places != 0
                 ? "the drawing is damaged " + damagePlace(*damage)
                 : "the drawing can only be read up to byte " + std::to_string(damage->offset) +
                       (damage->line == 0 ? "" : ", line " + std::to_string(damage->line)) + ": " +
                       damage->text});
    for (const host::Problem& problem : host::documentProblems(document)) {
        const bool handle = problem.kind == host::Problem::Kind::DoubledHandle;
        if (handle && ours.contains(problem.handle)) continue;
        notes.push_back({handle ? "other-handle-doubled" : "eof-missing", Severity::Note, L"", "",
                         false, false, problem.text});
    }
    return notes;
}

/// Findings that decide what the library does, the most far-reaching first.
struct Answer {
    const char* code;
    const char* text;
};
constexpr std::array<Answer, 9> kAnswers = {{
    {"block-missing",
     "it finds no store, and starts an empty one at the first write; the directories stay, out of "
     "reach"},
    {"block-empty",
     "it finds no store, and starts an empty one at the first write; the directories stay, out of "
     "reach"},
    {"root-link-dead", "it drops the root link, erases all directories and starts an empty store"},
    {"root-link-wrong",
     "it takes the wrong record for the root or starts an empty store; the directories are lost to "
     "it"},
    {"root-link-absent", "it starts an empty store; the directories stay, out of reach"},
    {"link-dead",
     "it starts an empty store as soon as it follows the dead link; the directories stay, out of "
     "reach"},
    {"link-wrong",
     "it takes the wrong record for a directory, or starts an empty store when it cannot"},
    {"attributes-damaged", "it does not see what the damaged record holds"},
    {"anchor-type", "it makes the block anew and carries the root link over"},
}};

int exitOf(const std::vector<Finding>& findings) {
    return std::ranges::any_of(findings,
                               [](const Finding& f) { return f.severity == Severity::Error; })
               ? kDamaged
               : kDone;
}

void printReport(const Options& options, const std::string& file, const StoreState& state,
                 const std::vector<Finding>& findings) {
    const std::string answer = libraryAnswer(state);
    if (options.json) {
        Json object = jsonHead(options);
        object["path"] = file;
        object["clean"] = exitOf(findings) == kDone;
        object["library"] = answer;
        object["findings"] = Json::array();
        for (const Finding& finding : findings) object["findings"].push_back(findingJson(finding));
        printJson(object);
        return;
    }
    for (const Finding& finding : findings) printFinding(isPrefixed() ? "" : file, finding);
    const auto errors = std::ranges::count(findings, Severity::Error, &Finding::severity);
    const auto warnings = std::ranges::count(findings, Severity::Warning, &Finding::severity);
    const std::string shown = isPrefixed() ? "" : oneLine(file) + ": ";
    if (findings.empty()) {
        if (!options.quiet) std::cout << shown << "clean; " << state.reachable << " directories\n";
        return;
    }
    std::cout << shown << errors << " errors, " << warnings << " warnings; " << state.reachable
              << " directories are reachable\n"
              << shown << "on opening it the library would do this: " << answer << "\n";
}

}  // namespace

std::string libraryAnswer(const StoreState& state) {
    for (const Answer& answer : kAnswers)
        for (const Finding& finding : state.findings)
            if (finding.code == answer.code && finding.severity != Severity::Note)
                return answer.text;
    switch (state.kind) {
        case StoreState::Kind::None:
            return "it finds no store, and starts one at the first write";
        case StoreState::Kind::Empty:
            return "it starts an empty store";
        default:
            return "it uses the store as it is";
    }
}

Json findingJson(const Finding& finding) {
    return Json{{"code", finding.code},
                {"severity", severityName(finding.severity)},
                {"path", textOrNull(utf8(finding.path))},
                {"handle", textOrNull(finding.handle)},
                {"fix", finding.mends},
                {"message", finding.message}};
}

void printFinding(const std::string& file, const Finding& finding) {
    std::string line = (file.empty() ? "" : file + ": ") + severityName(finding.severity) + ": " +
                       finding.code + ": ";
    if (!finding.path.empty()) line += utf8(finding.path) + ": ";
    line += finding.message;
    if (!finding.handle.empty()) line += " [" + finding.handle + "]";
    std::cout << oneLine(line) << (finding.mends ? " (repair mends it)" : "") << "\n";
}

int runCheck(Session& session, const Options& options) {
    const StoreState& state = session.state();
    std::vector<Finding> findings = state.findings;
    for (Finding& note : fileNotes(session.document(), state)) findings.push_back(std::move(note));
    printReport(options, session.file(), state, findings);
    return exitOf(findings);
}

}  // namespace mor::tool
