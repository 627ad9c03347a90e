#include "tools/moradmin/store_walk.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "platform/runtime.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace mor::tool {

namespace {

using Severity = Finding::Severity;

std::string hex(std::uint64_t handle) {
    if (handle == 0) return {};
    std::string text;
    for (; handle != 0; handle >>= 4) text.insert(text.begin(), "0123456789ABCDEF"[handle & 15]);
    return text;
}

std::wstring textOf(const host::RecordAttributes& attributes, std::wstring_view name) {
    for (const host::RecordAttribute& attribute : attributes.items)
        if (attribute.name == name) return host::stringOf(attribute.value);
    return {};
}

/// Reads the records and follows the links, the root's first.
class Walker {
public:
    explicit Walker(const AcApDocument* document) : m_document(document) {}

    StoreState run() {
        collectInserts();
        const bool hasBlock = host::hasBlock(m_document, kFileSystemBlock);
        if (!hasBlock) {
            if (!m_inserts.empty()) blockMissing();
            settle(hasBlock);
            return std::move(m_state);
        }
        checkSurroundings();
        if (const auto root = findRoot()) reach(*root);
        addOrphans();
        findDoubledHandles();
        settle(hasBlock);
        return std::move(m_state);
    }

private:
    struct Step {
        mor::EntityName name;
        std::wstring path;
        std::size_t depth = 0;
    };

    Finding& add(std::string code, Severity severity, std::wstring path, std::string handle,
                 bool stops, bool mends, std::string message) {
        m_state.findings.push_back({std::move(code), severity, std::move(path), std::move(handle),
                                    mends, stops, std::move(message)});
        return m_state.findings.back();
    }
    void collectInserts();
    void blockMissing();
    void checkSurroundings();
    std::optional<mor::EntityName> findRoot();
    void reach(mor::EntityName root);
    void visit(StoredDirectory& directory, const Step& step, std::vector<Step>& steps);
    void follow(const StoredDirectory& directory, const host::RecordAttribute& link,
                const std::wstring& name, const Step& step, std::vector<Step>& children);
    void judge(const StoredDirectory& directory, const std::wstring& path);
    void judgeNames(const StoredDirectory& directory, const std::wstring& path);
    void addOrphans();
    void findDoubledHandles();
    void settle(bool hasBlock);

    const AcApDocument* m_document;
    StoreState m_state;
    std::map<mor::EntityName, StoredDirectory> m_inserts;
    std::vector<mor::EntityName> m_order;  // of the inserts in the file
    std::map<mor::EntityName, std::wstring> m_seen;
    std::vector<mor::EntityName> m_way;  // from the root to the directory being looked at
};

void Walker::collectInserts() {
    host::forEachInsert(m_document, kFileSystemBlock, [this](const host::RecordInfo& info) {
        StoredDirectory directory;
        directory.name = info.name;
        directory.handle = hex(info.handle);
        directory.paper = info.place == host::Place::PaperSpace;
        const auto layer = host::recordGroup(m_document, info.name, 8).value_or("");
        directory.offLayer = !equalNoCase(host::fromUtf8(layer).value_or(L""), kControlLayer);
        directory.attributes = host::recordAttributes(m_document, info.name);
        // An insert of the block that somebody put elsewhere, without a trace of ours, is no
        // directory.
        if (directory.offLayer && directory.attributes.items.empty() &&
            directory.attributes.damage.empty())
            return;
        directory.info = textOf(directory.attributes, kInfoAttribute);
        m_order.push_back(info.name);
        m_inserts.emplace(info.name, std::move(directory));
    });
}

void Walker::blockMissing() {
    add("block-missing", Severity::Error, L"", "", true, true,
        "there are " + std::to_string(m_inserts.size()) +
            " directories, but the block that anchors them is missing");
    addOrphans();
}

void Walker::checkSurroundings() {
    const auto layer = host::findSymbol(m_document, "LAYER", kControlLayer);
    if (layer) {
        const auto flags = host::recordGroup(m_document, *layer, 70).value_or("0");
        const int bits = std::atoi(flags.c_str());
        if ((bits & 1) == 0)
            add("layer-not-frozen", Severity::Warning, L"", "", false, true,
                "the control layer is not frozen");
        if ((bits & 4) == 0)
            add("layer-not-locked", Severity::Warning, L"", "", false, true,
                "the control layer is not locked");
    } else if (!m_inserts.empty()) {
        add("layer-missing", Severity::Warning, L"", "", false, true,
            "the control layer has no record");
    }
    const bool used = std::ranges::any_of(
        m_inserts, [](const auto& entry) { return !entry.second.attributes.items.empty(); });
    if (used && !host::findSymbol(m_document, "APPID", L"MOR_ATTRIBUTES"))
        add("application-unregistered", Severity::Error, L"", "", false, true,
            "the application under which attributes are stored is not registered; CAD programs "
            "refuse the file");
}

std::optional<mor::EntityName> Walker::findRoot() {
    const auto anchor = host::firstEntityOfBlock(m_document, kFileSystemBlock);
    const bool directories = !m_inserts.empty();
    if (!anchor) {
        if (directories)
            add("block-empty", Severity::Error, L"/", "", true, true,
                "the block that anchors the store is empty");
        return std::nullopt;
    }
    const auto info = host::recordInfo(m_document, *anchor);
    const std::string handle = hex(info->handle);
    if (info->type != "ATTDEF")
        add("anchor-type", Severity::Warning, L"/", handle, false, true,
            "the first entity of the block is a " + info->type + ", not an ATTDEF");
    const host::RecordAttributes attributes = host::recordAttributes(m_document, *anchor);
    if (!attributes.damage.empty()) {
        add("attributes-damaged", Severity::Error, L"/", handle, true, false,
            "the attributes of the anchor cannot be read: " + attributes.damage);
        return std::nullopt;
    }
    const std::wstring link = textOf(attributes, kRootLink);
    const auto root = link.empty() ? std::nullopt : host::findHandle(m_document, link);
    if (link.empty()) {
        if (directories)
            add("root-link-absent", Severity::Error, L"/", handle, true, true,
                "the root link is absent");
    } else if (!root || !host::recordInfo(m_document, *root) ||
               host::recordInfo(m_document, *root)->erased) {
        add("root-link-dead", directories ? Severity::Error : Severity::Note, L"/",
            host::toUtf8(link), directories, true,
            "the root link names the handle " + host::toUtf8(link) + ", which does not exist");
    } else if (!m_inserts.contains(*root)) {
        add("root-link-wrong", Severity::Error, L"/", host::toUtf8(link), true, true,
            "the root link names the handle " + host::toUtf8(link) + ", a " +
                host::recordInfo(m_document, *root)->type + ", which is no directory");
    } else {
        return root;
    }
    return std::nullopt;
}

void Walker::judgeNames(const StoredDirectory& directory, const std::wstring& path) {
    std::set<std::wstring> links;
    for (const host::RecordAttribute& attribute : directory.attributes.items)
        if (attribute.name.starts_with(L'^')) links.insert(attribute.name.substr(1));
    for (const host::RecordAttribute& attribute : directory.attributes.items) {
        const std::wstring& name = attribute.name;
        const std::wstring full = (path == L"/" ? L"" : path) + L"/" + name;
        const bool own = name == kIdAttribute || name == kInfoAttribute;
        const bool link = name.starts_with(L'^') && isDirName(name.substr(1));
        if (!own && !link && !isFileName(name))
            add("name-outside-rules", Severity::Warning, full, directory.handle, false, false,
                "the name \"" + host::toUtf8(name) + "\" follows no rule; no listing shows it");
        const std::wstring plain = name.starts_with(L'>') ? name.substr(1) : name;
        if (!link && isFileName(name) && links.contains(plain))
            add("name-taken-twice", Severity::Error, full, directory.handle, true, true,
                "a file and a directory have one name; the file is out of reach");
    }
}

void Walker::judge(const StoredDirectory& directory, const std::wstring& path) {
    const std::string& handle = directory.handle;
    if (directory.paper)
        add("paper-space", Severity::Warning, path, handle, false, true,
            "the directory lies in paper space");
    if (directory.offLayer)
        add("off-layer", Severity::Warning, path, handle, false, true,
            "the directory is off the control layer");
    if (directory.attributes.free < 0)
        add("over-room", Severity::Warning, path, handle, false, false,
            "the record is " + std::to_string(-directory.attributes.free) + " bytes over its room");
    if (!directory.attributes.damage.empty())
        add("attributes-damaged", Severity::Error, path, handle, true, false,
            "the attributes cannot be read: " + directory.attributes.damage);
    if (directory.attributes.damage.empty() && directory.info != path)
        add("info-contradicts", Severity::Warning, path, handle, false, true,
            directory.info.empty()
                ? "the directory does not say its path"
                : "the directory says it was made as " + host::toUtf8(directory.info));
    judgeNames(directory, path);
}

void Walker::follow(const StoredDirectory& directory, const host::RecordAttribute& link,
                    const std::wstring& name, const Step& step, std::vector<Step>& children) {
    const std::wstring path = (step.path == L"/" ? L"" : step.path) + L"/" + name;
    const std::wstring handle = host::stringOf(link.value);
    const std::string shown = handle.empty() ? host::lispText(link.value) : host::toUtf8(handle);
    const auto target = handle.empty() ? std::nullopt : host::findHandle(m_document, handle);
    if (!target || host::recordInfo(m_document, *target)->erased) {
        add("link-dead", Severity::Error, path, directory.handle, true, true,
            "the link names the handle " + shown + ", which does not exist");
    } else if (!m_inserts.contains(*target)) {
        add("link-wrong", Severity::Error, path, directory.handle, true, true,
            "the link names the handle " + shown + ", a " +
                host::recordInfo(m_document, *target)->type + ", which is no directory");
    } else if (std::ranges::find(m_way, *target) != m_way.end()) {
        add("circle", Severity::Error, path, shown, false, true,
            "the link leads back to " + host::toUtf8(m_seen[*target]));
    } else {
        children.push_back({*target, path, step.depth + 1});
    }
}

void Walker::visit(StoredDirectory& directory, const Step& step, std::vector<Step>& steps) {
    judge(directory, step.path);
    std::vector<Step> children;
    for (const host::RecordAttribute& attribute : directory.attributes.items) {
        const auto name = dirNameOfLink(attribute.name);
        if (attribute.name == kRootLink || !name || !isDirName(*name)) continue;
        follow(directory, attribute, std::wstring(*name), step, children);
    }
    steps.insert(steps.end(), children.rbegin(), children.rend());
}

void Walker::reach(mor::EntityName root) {
    std::vector<Step> steps = {{root, L"/", 0}};
    while (!steps.empty()) {
        const Step step = steps.back();
        steps.pop_back();
        if (const auto seen = m_seen.find(step.name); seen != m_seen.end()) {
            add("link-doubled", Severity::Error, step.path, m_inserts[step.name].handle, false,
                true, "the directory is linked twice, as " + host::toUtf8(seen->second) + " too");
            continue;
        }
        m_way.resize(step.depth);
        m_way.push_back(step.name);
        m_seen.emplace(step.name, step.path);
        StoredDirectory& directory = m_inserts[step.name];
        directory.path = step.path;
        m_state.byPath.emplace(step.path, m_state.directories.size());
        visit(directory, step, steps);
        m_state.directories.push_back(directory);
    }
    m_state.reachable = m_state.directories.size();
}

void Walker::addOrphans() {
    for (const mor::EntityName name : m_order) {
        if (m_seen.contains(name)) continue;
        const StoredDirectory& directory = m_inserts[name];
        const bool holds = directory.hasFiles() || !directory.attributes.damage.empty();
        add("orphan", holds ? Severity::Error : Severity::Warning, directory.info, directory.handle,
            holds, true,
            std::string("no link leads to the directory") +
                (holds ? "; its values are out of reach" : ""));
        if (!directory.attributes.damage.empty())
            add("attributes-damaged", Severity::Error, directory.info, directory.handle, true,
                false, "the attributes cannot be read: " + directory.attributes.damage);
        m_state.directories.push_back(directory);
    }
}

void Walker::findDoubledHandles() {
    for (const host::Problem& problem : host::documentProblems(m_document)) {
        if (problem.kind != host::Problem::Kind::DoubledHandle) continue;
        const auto ours =
            std::ranges::find(m_state.directories, problem.handle, &StoredDirectory::handle);
        if (ours != m_state.directories.end())
            add("handle-doubled", Severity::Error, ours->path, problem.handle, false, true,
                problem.text);
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

const host::RecordAttribute* StoredDirectory::find(std::wstring_view attribute) const {
    const auto found = std::ranges::find(attributes.items, attribute, &host::RecordAttribute::name);
    return found == attributes.items.end() ? nullptr : &*found;
}

bool StoredDirectory::hasFiles() const {
    return std::ranges::any_of(
        attributes.items, [](const host::RecordAttribute& item) { return isFileName(item.name); });
}

const StoredDirectory* StoreState::directory(std::wstring_view path) const {
    const auto found = byPath.find(std::wstring(path));
    return found == byPath.end() ? nullptr : &directories[found->second];
}

const Finding* StoreState::firstStopping() const {
    const auto found = std::ranges::find(findings, true, &Finding::stops);
    return found == findings.end() ? nullptr : &*found;
}

StoreState walkStore(const AcApDocument* document) { return Walker(document).run(); }

}  // namespace mor::tool
