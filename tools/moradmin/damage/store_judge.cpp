#include "tools/moradmin/damage/store_judge.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "space/record_flags.h"
#include "tools/moradmin/output.h"

#include <cstdlib>
#include <string>
#include <unordered_set>
#include <utility>

namespace mor::tool {

namespace {

using Severity = Finding::Severity;

/// Adds findings on one directory.
class Judge {
public:
    Judge(const StoredDirectory& directory, std::vector<Finding>& findings)
        : m_directory(directory), m_findings(findings) {}

    void run() {
        const host::RecordAttributes& attributes = m_directory.attributes;
        if (m_directory.paper)
            add({.code = "paper-space",
                 .mends = true,
                 .message = "the directory lies in paper space"});
        if (m_directory.offLayer)
            add({.code = "off-layer",
                 .mends = true,
                 .message = "the directory is off the control layer"});
        if (attributes.free < 0)
            add({.code = "over-room",
                 .message =
                     "the record is " + std::to_string(-attributes.free) + " bytes over its room"});
        if (!attributes.damage.empty())
            add({.code = "attributes-damaged",
                 .severity = Severity::Error,
                 .stops = true,
                 .message = "the attributes cannot be read: " + attributes.damage});
        else
            judgeInfo();
        judgeNames();
    }

private:
    void add(Finding finding) {
        if (finding.path.empty()) finding.path = m_directory.path;
        finding.handle = m_directory.handle;
        m_findings.push_back(std::move(finding));
    }
    void judgeInfo() {
        const std::wstring info = m_directory.info();
        if (info == m_directory.path) return;
        add({.code = "info-contradicts",
             .mends = true,
             .message = info.empty() ? "the directory does not say its path"
                                     : "the directory says it was made as " + host::toUtf8(info)});
    }
    [[nodiscard]] std::wstring pathOf(const std::wstring& entry) const {
        return (m_directory.path == kRootPath ? L"" : m_directory.path) + L"/" + entry;
    }
    void judgeNames() {
        std::unordered_set<std::wstring_view> links;
        for (const host::RecordAttribute& attribute : m_directory.attributes.items)
            if (const auto name = dirNameOfLink(attribute.name)) links.insert(*name);
        for (const host::RecordAttribute& attribute : m_directory.attributes.items) {
            const std::wstring& name = attribute.name;
            if (isFileName(name)) {
                judgeFile(name, links);
                continue;
            }
            const auto linked = dirNameOfLink(name);
            const bool link = name == kRootLink || (linked && isDirName(*linked));
            if (!link && name != kIdAttribute && name != kInfoAttribute)
                add({.code = "name-outside-rules",
                     .path = pathOf(name),
                     .message = "the name \"" + host::toUtf8(name) +
                                "\" follows no rule; no listing shows it"});
        }
    }
    void judgeFile(std::wstring_view name, const std::unordered_set<std::wstring_view>& links) {
        if (m_directory.path == kRootPath)
            add({.code = "file-in-root",
                 .severity = Severity::Error,
                 .path = pathOf(std::wstring(name)),
                 .mends = true,
                 .stops = true,
                 .message = "a file lies in the root, where nothing reads it"});
        if (links.contains(withoutArrow(name)))
            add({.code = "name-taken-twice",
                 .severity = Severity::Error,
                 .path = pathOf(std::wstring(name)),
                 .mends = true,
                 .stops = true,
                 .message = "a file and a directory have one name; the file is out of reach"});
    }

    const StoredDirectory& m_directory;
    std::vector<Finding>& m_findings;
};

}  // namespace

void judgeDirectory(const StoredDirectory& directory, std::vector<Finding>& findings) {
    Judge(directory, findings).run();
}

void judgeUnreachable(const StoredDirectory& directory, std::vector<Finding>& findings) {
    const bool damaged = !directory.attributes.damage.empty();
    const bool holds = directory.hasFiles() || damaged;
    findings.push_back(
        {.code = directory.tooDeep ? "too-deep" : "orphan",
         .severity = holds ? Severity::Error : Severity::Warning,
         .path = directory.info(),
         .handle = directory.handle,
         .mends = true,
         .stops = holds,
         .message = std::string(directory.tooDeep ? "the directory lies deeper than a path can name"
                                                  : "no link leads to the directory") +
                    (holds ? "; its values are out of reach" : "")});
    if (damaged)
        findings.push_back(
            {.code = "attributes-damaged",
             .severity = Severity::Error,
             .path = directory.info(),
             .handle = directory.handle,
             .stops = true,
             .message = "the attributes cannot be read: " + directory.attributes.damage});
}

void judgeSurroundings(const AcApDocument* document, bool directories, bool used,
                       std::vector<Finding>& findings) {
    const auto layer = host::findSymbol(document, "LAYER", kControlLayer);
    if (layer) {
        const auto flags = host::recordGroup(document, *layer, kGroupFlags).value_or("0");
        const int bits = std::atoi(flags.c_str());
        if ((bits & kLayerFrozen) == 0)
            findings.push_back({.code = "layer-not-frozen",
                                .mends = true,
                                .message = "the control layer is not frozen"});
        if ((bits & kLayerLocked) == 0)
            findings.push_back({.code = "layer-not-locked",
                                .mends = true,
                                .message = "the control layer is not locked"});
    } else if (directories) {
        findings.push_back(
            {.code = "layer-missing", .mends = true, .message = "the control layer has no record"});
    }
    if (used &&
        !host::findSymbol(document, "APPID", wide(std::string(host::kAttributeApplication))))
        findings.push_back(
            {.code = "application-unregistered",
             .severity = Severity::Error,
             .mends = true,
             .message = "the application under which attributes are stored is not registered; CAD "
                        "programs refuse the file"});
}

}  // namespace mor::tool
