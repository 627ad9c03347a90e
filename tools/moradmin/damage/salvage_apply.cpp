#include "tools/moradmin/damage/salvage_apply.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "platform/document_data.h"
#include "platform/entity.h"
#include "platform/entity_calls.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace mor::tool {

namespace {

class Builder {
public:
    Builder(Session& session, const StoreState& state, const SalvagePlan& plan)
        : m_session(session), m_state(state), m_plan(plan) {
        for (const SalvagePlan::Place& place : plan.places)
            for (std::wstring path = place.path; m_needed.insert(path).second && path != kRootPath;)
                path = parentOf(path);
    }

    std::vector<std::string> run() {
        openLayer();
        renewDoubledHandles();
        placeRecords();
        for (const std::size_t index : m_plan.dropped) drop(index);
        dropWrongLinks();
        if (!m_plan.places.empty()) linkAll();
        moveFilesOfTheRoot();
        renameTakenFiles();
        closeLayer();
        return std::move(m_report);
    }

private:
    void say(const std::string& text) { m_report.push_back(text); }
    [[nodiscard]] const StoredDirectory& record(const SalvagePlan::Place& place) const {
        return m_state.directories[place.directory];
    }
    static std::wstring textOf(const CMOREntity& entity, const std::wstring& attribute) {
        std::vector<wchar_t> buffer(kMaxAttributeText + 1);
        return entity.GetAttributeText(attribute.c_str(), buffer.data()) ? buffer.data() : L"";
    }
    void openLayer();
    void closeLayer();
    void renewDoubledHandles();
    void placeRecords();
    void drop(std::size_t index);
    void dropWrongLinks();
    void linkAll();
    mor::EntityName ensure(const std::wstring& path);
    void link(CMOREntity& parent, const std::wstring& attribute, const std::wstring& path,
              mor::EntityName child);
    void moveFilesOfTheRoot();
    bool moveToLostFound(CMOREntity& root, const std::wstring& name, std::size_t number);
    void renameTakenFiles();
    static std::optional<std::wstring> freeName(const CMOREntity& directory,
                                                const std::wstring& name);
    void renameFile(mor::EntityName entity, const std::wstring& path, const std::wstring& name);

    Session& m_session;
    const StoreState& m_state;
    const SalvagePlan& m_plan;
    std::vector<std::string> m_report;
    std::set<std::wstring> m_needed;  // paths where the plan has a directory, there or below
    std::map<std::wstring, mor::EntityName> m_entities;  // by path, as they are linked
};

void Builder::openLayer() {
    CMORAdsLayer layer;
    if (!layer.Connect(kControlLayer) && !layer.Create(kControlLayer)) return;
    layer.IsLocked(false);
    layer.Flush();
}

void Builder::closeLayer() {
    CMORAdsLayer layer;
    if (!layer.Connect(kControlLayer)) return;
    if (!layer.IsFrozen()) say("froze the control layer");
    layer.IsFrozen(true);
    layer.IsLocked(true);
    layer.Flush();
}

void Builder::renewDoubledHandles() {
    for (const Finding& finding : m_state.findings) {
        if (finding.code != "handle-doubled") continue;
        for (const StoredDirectory& directory : m_state.directories)
            if (directory.handle == finding.handle &&
                host::renewHandle(m_session.document(), directory.name))
                say("gave the directory with the doubled handle " + finding.handle + " a new one");
    }
}

void Builder::placeRecords() {
    if (std::ranges::find(m_state.findings, "application-unregistered", &Finding::code) !=
        m_state.findings.end())
        say("registered the application of the attributes");
    for (const SalvagePlan::Place& place : m_plan.places) {
        const StoredDirectory& directory = record(place);
        CMOREntity entity;
        if (!directory.attributes.damage.empty() || !entity.Connect(directory.name)) continue;
        if (directory.paper) {
            entity.SetGroupShort(67, 0);
            say("moved " + utf8(place.path) + " to model space");
        }
        if (directory.offLayer) {
            entity.SetLayer(kControlLayer);
            say("moved " + utf8(place.path) + " to the control layer");
        }
        // Set again even when it is as it should be: that registers the application where it is
        // missing.
        entity.SetAttributeText(kIdAttribute, kDirectoryId);
        entity.SetAttributeText(kInfoAttribute, place.path.c_str());
        if (directory.info() != place.path)
            say("wrote its path into " + utf8(place.path) + " [" + directory.handle + "]");
        entity.Flush();
    }
}

void Builder::drop(std::size_t index) {
    if (acdbEntDel(m_state.directories[index].name) == RTNORM)
        say("removed a directory without values [" + m_state.directories[index].handle +
            "], its path is taken");
}

/// Links to what stands elsewhere now or nowhere. One whose name is needed stays, so that entries
/// keep their order; it gets another handle when its directory is linked.
void Builder::dropWrongLinks() {
    for (const SalvagePlan::Place& place : m_plan.places) {
        CMOREntity entity;
        if (!record(place).attributes.damage.empty() || !entity.Connect(record(place).name))
            continue;
        bool changed = false;
        for (const host::RecordAttribute& attribute : record(place).attributes.items) {
            const auto name = dirNameOfLink(attribute.name);
            if (!name || !isDirName(*name) || attribute.name == kRootLink) continue;
            const std::wstring path = joined(place.path, std::wstring(*name));
            if (m_needed.contains(path)) continue;
            entity.DeleteAttribute(attribute.name.c_str());
            changed = true;
            say("dropped the wrong link to " + utf8(path));
        }
        if (changed) entity.Flush();
    }
}

void Builder::link(CMOREntity& parent, const std::wstring& attribute, const std::wstring& path,
                   mor::EntityName child) {
    CMOREntity entity;
    if (!entity.Connect(child)) return;
    const std::wstring handle = entity.Handle().GetString();
    if (textOf(parent, attribute) == handle) return;
    if (parent.SetAttributeText(attribute.c_str(), handle.c_str()) && parent.Flush())
        say("linked " + utf8(path) + " [" + utf8(handle) + "]");
    else
        say("there is no room for a link to " + utf8(path) + ", or what holds it cannot be read");
}

mor::EntityName Builder::ensure(const std::wstring& path) {
    if (const auto known = m_entities.find(path); known != m_entities.end()) return known->second;
    const auto planned = m_plan.byPath.find(path);
    CMOREntity parent;
    const bool root = path == L"/";
    if (root ? !m_session.store().connectAnchor(parent) : !parent.Connect(ensure(parentOf(path))))
        return {};
    mor::EntityName name;
    if (planned != m_plan.byPath.end()) {
        name = record(m_plan.places[planned->second]).name;
        link(parent, linkNameOf(root ? path : nameOf(path)), path, name);
    } else {
        CMOREntity made;
        ads_name words{};
        if (!m_session.store().makeLinked(parent, root ? path : nameOf(path), path, made) ||
            !made.GetEName(words))
            return {};
        name = mor::EntityName(words);
        say("made the missing directory " + utf8(path));
    }
    m_entities.emplace(path, name);
    return name;
}

void Builder::linkAll() {
    for (const SalvagePlan::Place& place : m_plan.places) static_cast<void>(ensure(place.path));
}

/// Nothing reads a file in the root. A file that fits nowhere stays, and the check tells it.
void Builder::moveFilesOfTheRoot() {
    const auto known = m_entities.find(kRootPath);
    CMOREntity root;
    if (known == m_entities.end() || !root.Connect(known->second)) return;
    CMORStringList names;
    root.GetAttributeNames(names);
    std::size_t number = 0;
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        const std::wstring name = names.Nth(i);
        if (isFileName(name) && !moveToLostFound(root, name, number))
            moveToLostFound(root, name, ++number);
    }
}

bool Builder::moveToLostFound(CMOREntity& root, const std::wstring& name, std::size_t number) {
    const std::wstring path = lostFound(number);
    CMORAdsLispVar value;
    CMOREntity directory;
    if (!root.GetAttribute(name.c_str(), value) || !directory.Connect(ensure(path))) return false;
    const std::optional<std::wstring> free = freeName(directory, name);
    if (!free || !directory.SetAttribute(free->c_str(), value) || !directory.Flush()) return false;
    root.DeleteAttribute(name.c_str());
    root.Flush();
    say("moved the file " + utf8(joined(kRootPath, name)) + " to " + utf8(joined(path, *free)));
    return true;
}

/// The name, or with a number behind it the first that neither file nor directory has.
std::optional<std::wstring> Builder::freeName(const CMOREntity& directory,
                                              const std::wstring& name) {
    for (int number = 1;; ++number) {
        const std::wstring other = number == 1 ? name : name + L"-" + std::to_wstring(number);
        if (!isFileName(other)) return std::nullopt;
        CMORAdsLispVar taken;
        if (!directory.GetAttribute(other.c_str(), taken) &&
            !directory.GetAttribute(linkNameOf(other).c_str(), taken))
            return other;
    }
}

void Builder::renameFile(mor::EntityName entity, const std::wstring& path,
                         const std::wstring& name) {
    CMOREntity directory;  // of this name alone: what fails is dropped with it
    CMORAdsLispVar value;
    if (!directory.Connect(entity)) return;
    const std::optional<std::wstring> free = freeName(directory, name);
    if (!free || !directory.GetAttribute(name.c_str(), value) ||
        !directory.DeleteAttribute(name.c_str()) || !directory.SetAttribute(free->c_str(), value) ||
        !directory.Flush())
        return;
    say("renamed the file " + utf8(joined(path, name)) + " to " + utf8(*free) +
        ", a directory has its name");
}

void Builder::renameTakenFiles() {
    for (const auto& [path, name] : m_entities) {
        CMOREntity directory;
        if (!directory.Connect(name)) continue;
        CMORStringList names;
        directory.GetAttributeNames(names);
        std::set<std::wstring> links;
        for (std::size_t i = 0; i < names.Entries(); ++i)
            if (const auto link = dirNameOfLink(names.Nth(i))) links.emplace(*link);
        for (std::size_t i = 0; i < names.Entries(); ++i) {
            const std::wstring file = names.Nth(i);
            if (isFileName(file) && links.contains(std::wstring(withoutArrow(file))))
                renameFile(name, path, file);
        }
    }
}

}  // namespace

std::vector<std::string> applySalvage(Session& session, const StoreState& state,
                                      const SalvagePlan& plan) {
    return Builder(session, state, plan).run();
}

}  // namespace mor::tool
