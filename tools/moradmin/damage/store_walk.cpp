#include "tools/moradmin/damage/store_walk.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "platform/runtime.h"
#include "tools/moradmin/damage/store_judge.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

using Severity = Finding::Severity;

/// Reads the records and follows the links, the root's first.
class Walker {
public:
    explicit Walker(const AcApDocument* document) : m_document(document) {}

    StoreState run() {
        collectInserts();
        const bool hasBlock = host::hasBlock(m_document, kFileSystemBlock);
        if (hasBlock) {
            const bool used = std::ranges::any_of(m_found, [](const StoredDirectory& directory) {
                return !directory.attributes.items.empty();
            });
            judgeSurroundings(m_document, !m_found.empty(), used, m_state.findings);
            if (const auto root = findRoot()) reach(*root);
        } else if (!m_found.empty()) {
            add({.code = "block-missing",
                 .severity = Severity::Error,
                 .mends = true,
                 .stops = true,
                 .message = "there are " + std::to_string(m_found.size()) +
                            " directories, but the block that anchors them is missing"});
        }
        gatherDirectories();
        findDoubledHandles();
        settle(hasBlock);
        return std::move(m_state);
    }

private:
    struct Step {
        std::size_t directory = 0;
        std::wstring path;  // empty where it would be too long
        std::size_t depth = 0;
    };
    enum class Seen { No, OnTheWay, Before };

    void add(Finding finding) { m_state.findings.push_back(std::move(finding)); }
    void collectInserts();
    std::optional<std::size_t> findRoot();
    [[nodiscard]] std::optional<std::size_t> target(const Finding& dead, const Finding& wrong,
                                                    const std::wstring& handle);
    void reach(std::size_t root);
    void leaveUpTo(std::size_t depth);
    void visit(const Step& step, std::vector<Step>& steps);
    void follow(const StoredDirectory& directory, const host::RecordAttribute& link,
                std::wstring_view name, const Step& step, std::vector<Step>& children);
    [[nodiscard]] std::string placeOf(std::size_t directory) const;
    void gatherDirectories();
    void findDoubledHandles();
    void settle(bool hasBlock);

    const AcApDocument* m_document;
    StoreState m_state;
    bool m_closed = false;                 // the anchor cannot be read: nothing can be linked to it
    std::vector<StoredDirectory> m_found;  // in the order of the file
    std::map<mor::EntityName, std::size_t> m_byName;
    std::vector<Seen> m_seen;
    std::vector<std::size_t> m_order;  // of those that links reach, as they are reached
    std::vector<std::size_t> m_way;    // from the root to the directory being looked at
};

void Walker::collectInserts() {
    host::forEachInsert(m_document, kFileSystemBlock, [this](const host::RecordInfo& info) {
        StoredDirectory directory;
        directory.name = info.name;
        directory.handle = host::handleText(info.handle);
        directory.paper = info.place == host::Place::PaperSpace;
        const auto layer = host::recordGroup(m_document, info.name, 8).value_or("");
        directory.offLayer = !equalNoCase(host::fromUtf8(layer).value_or(L""), kControlLayer);
        directory.attributes = host::recordAttributes(m_document, info.name);
        // An insert of the block that somebody put elsewhere, without a trace of ours, is no
        // directory.
        if (directory.offLayer && directory.attributes.items.empty() &&
            directory.attributes.damage.empty())
            return;
        m_byName.emplace(info.name, m_found.size());
        m_found.push_back(std::move(directory));
    });
    m_seen.resize(m_found.size(), Seen::No);
}

std::optional<std::size_t> Walker::target(const Finding& dead, const Finding& wrong,
                                          const std::wstring& handle) {
    const auto name = host::findHandle(m_document, handle);
    const auto info = name ? host::recordInfo(m_document, *name) : std::nullopt;
    if (!info || info->erased) {
        add(dead);
        m_state.findings.back().message += ", which does not exist";
        return std::nullopt;
    }
    const auto known = m_byName.find(*name);
    if (known != m_byName.end()) return known->second;
    add(wrong);
    m_state.findings.back().message += ", a " + info->type + ", which is no directory";
    return std::nullopt;
}

std::optional<std::size_t> Walker::findRoot() {
    const auto anchor = host::firstEntityOfBlock(m_document, kFileSystemBlock);
    const bool directories = !m_found.empty();
    const Finding error{.severity = Severity::Error, .path = kRootPath, .stops = true};
    Finding finding = error;
    finding.mends = true;
    if (!anchor) {
        finding.code = "block-empty";
        finding.message = "the block that anchors the store is empty";
        if (directories) add(finding);
        return std::nullopt;
    }
    const auto info = host::recordInfo(m_document, *anchor);
    finding.handle = host::handleText(info->handle);
    if (info->type != "ATTDEF")
        add({.code = "anchor-type",
             .path = kRootPath,
             .handle = finding.handle,
             .mends = true,
             .message = "the first entity of the block is a " + info->type + ", not an ATTDEF"});
    StoredDirectory block;
    block.attributes = host::recordAttributes(m_document, *anchor);
    if (!block.attributes.damage.empty()) {
        finding.code = "attributes-damaged";
        finding.mends = false;
        m_closed = true;
        finding.message = "the attributes of the anchor cannot be read: " + block.attributes.damage;
        add(finding);
        return std::nullopt;
    }
    const host::RecordAttribute* link = block.find(kRootLink);
    if (link == nullptr) {
        finding.code = "root-link-absent";
        finding.message = "the root link is absent";
        if (directories) add(finding);
        return std::nullopt;
    }
    const std::wstring text = linkText(*link);
    finding.handle = host::toUtf8(text);
    finding.message = "the root link names the handle " + finding.handle;
    finding.code = "root-link-wrong";
    Finding dead = finding;
    dead.code = "root-link-dead";
    dead.stops = directories;
    if (!directories) dead.severity = Severity::Note;
    return target(dead, finding, text);
}

std::string Walker::placeOf(std::size_t directory) const {
    const StoredDirectory& found = m_found[directory];
    return found.path.empty() ? "[" + found.handle + "]" : host::toUtf8(found.path);
}

void Walker::follow(const StoredDirectory& directory, const host::RecordAttribute& link,
                    std::wstring_view name, const Step& step, std::vector<Step>& children) {
    const std::wstring text = linkText(link);
    Finding finding{.code = "link-wrong",
                    .severity = Severity::Error,
                    .path = step.path,
                    .handle = directory.handle,
                    .mends = true,
                    .stops = true,
                    .message = "the link names the handle " + host::toUtf8(text)};
    if (!finding.path.empty()) {
        if (step.path != kRootPath) finding.path += L'/';
        finding.path += name;
    }
    Finding dead = finding;
    dead.code = "link-dead";
    const auto child = target(dead, finding, text);
    if (!child) return;
    if (m_seen[*child] == Seen::OnTheWay) {
        finding.code = "circle";
        finding.handle = m_found[*child].handle;
        finding.stops = false;
        finding.message = "the link leads back to " + placeOf(*child);
        add(finding);
        return;
    }
    std::wstring path = finding.path.size() > kMaxPathLength ? L"" : finding.path;
    children.push_back({*child, std::move(path), step.depth + 1});
}

void Walker::visit(const Step& step, std::vector<Step>& steps) {
    StoredDirectory& directory = m_found[step.directory];
    directory.path = step.path;
    directory.tooDeep = step.path.empty();
    m_order.push_back(step.directory);
    if (directory.tooDeep)
        judgeUnreachable(directory, m_state.findings);
    else
        judgeDirectory(directory, m_state.findings);
    std::vector<Step> children;
    for (const host::RecordAttribute& attribute : directory.attributes.items) {
        const auto name = dirNameOfLink(attribute.name);
        if (attribute.name == kRootLink || !name || !isDirName(*name)) continue;
        follow(directory, attribute, *name, step, children);
    }
    std::ranges::move(children.rbegin(), children.rend(), std::back_inserter(steps));
}

void Walker::leaveUpTo(std::size_t depth) {
    for (; m_way.size() > depth; m_way.pop_back()) m_seen[m_way.back()] = Seen::Before;
}

void Walker::reach(std::size_t root) {
    std::vector<Step> steps;
    steps.push_back({root, kRootPath, 0});
    while (!steps.empty()) {
        const Step step = std::move(steps.back());
        steps.pop_back();
        if (m_seen[step.directory] != Seen::No) {
            add({.code = "link-doubled",
                 .severity = Severity::Error,
                 .path = step.path,
                 .handle = m_found[step.directory].handle,
                 .mends = true,
                 .message =
                     "the directory is linked twice, as " + placeOf(step.directory) + " too"});
            continue;
        }
        leaveUpTo(step.depth);
        m_way.push_back(step.directory);
        m_seen[step.directory] = Seen::OnTheWay;
        visit(step, steps);
    }
}

/// Those with a path first, then those that lie too deep, then those that no link reaches.
void Walker::gatherDirectories() {
    const auto deep =
        std::stable_partition(m_order.begin(), m_order.end(),
                              [this](std::size_t index) { return !m_found[index].tooDeep; });
    m_state.reachable = static_cast<std::size_t>(deep - m_order.begin());
    for (std::size_t i = 0; i < m_found.size(); ++i)
        if (m_seen[i] == Seen::No) {
            judgeUnreachable(m_found[i], m_state.findings);
            m_order.push_back(i);
        }
    if (m_closed)
        for (Finding& finding : m_state.findings)
            if (finding.code == "orphan") finding.mends = false;
    m_state.directories.reserve(m_order.size());
    for (const std::size_t index : m_order)
        m_state.directories.push_back(std::move(m_found[index]));
    for (std::size_t i = 0; i < m_state.reachable; ++i)
        m_state.byPath.emplace(m_state.directories[i].path, i);
}

void Walker::findDoubledHandles() {
    std::map<std::string_view, const StoredDirectory*> byHandle;
    for (const StoredDirectory& directory : m_state.directories)
        byHandle.emplace(directory.handle, &directory);
    for (const host::Problem& problem : host::documentProblems(m_document)) {
        if (problem.kind != host::Problem::Kind::DoubledHandle) continue;
        const auto ours = byHandle.find(problem.handle);
        if (ours != byHandle.end())
            add({.code = "handle-doubled",
                 .severity = Severity::Error,
                 .path = ours->second->path,
                 .handle = problem.handle,
                 .mends = true,
                 .message = problem.text});
    }
}

void Walker::settle(bool hasBlock) {
    if (m_state.firstStopping() != nullptr)
        m_state.kind = StoreState::Kind::Broken;
    else if (m_state.reachable > 0)
        m_state.kind = StoreState::Kind::Sound;
    else
        m_state.kind = hasBlock ? StoreState::Kind::Empty : StoreState::Kind::None;
}

}  // namespace

StoreState walkStore(const AcApDocument* document) { return Walker(document).run(); }

}  // namespace mor::tool
