#include "host/host.h"
#include "platform/entity.h"
#include "platform/owned.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "tools/moradmin/shown_text.h"
#include "tools/moradmin/view/page.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace mor::tool {

namespace {

constexpr int kFirstExtended = 1000;
constexpr int kApplication = 1001;
constexpr int kOwner = 330;
/// Under which the attributes of records are stored that are shown as values.
constexpr std::string_view kOwnApplication = "MOR_ATTRIBUTES";

/// Finds records of the drawing and of its references by their handles.
class RecordFinder {
public:
    explicit RecordFinder(const AcApDocument* document) : m_document(document) {}

    [[nodiscard]] std::optional<mor::EntityName> find(const std::string& reference,
                                                      const std::string& handle) {
        if (reference.empty()) return host::findHandle(m_document, wide(handle));
        const auto [known, added] = m_inside.try_emplace(reference);
        if (added) known->second = firstWithin(reference);
        if (!known->second) return std::nullopt;
        return host::findHandleBeside(m_document, *known->second, wide(handle));
    }

private:
    static std::optional<mor::EntityName> firstWithin(const std::string& reference) {
        const mor::ResbufList record{acdbTblSearch(L"BLOCK", wide(reference).c_str(), 0)};
        const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity);
        return first == nullptr ? std::nullopt
                                : std::optional(mor::EntityName(first->resval.rlname));
    }

    const AcApDocument* m_document;
    std::map<std::string, std::optional<mor::EntityName>> m_inside;  ///< any record of each
};

Json extendedDataOf(const std::vector<host::RecordGroup>& groups) {
    Json applications = Json::object();
    std::string application;
    for (const host::RecordGroup& group : groups) {
        if (group.code < kFirstExtended) continue;
        if (group.code == kApplication) {
            application = group.value;
            if (application != kOwnApplication) applications[application] = Json::array();
        } else if (application != kOwnApplication) {
            applications[application].push_back({std::to_string(group.code), group.value});
        }
    }
    return applications;
}

/// What the attributes of inserts say, by the handle of the insert.
std::map<std::string, Json> attributesByInsert(const AcApDocument* document) {
    std::map<std::string, Json> all;
    host::forEachRecord(document, [&](const host::RecordInfo& info) {
        if (info.type != "ATTRIB") return;
        std::string owner;
        std::string tag;
        std::string value;
        for (const host::RecordGroup& group : host::recordGroups(document, info.name)) {
            if (group.code == kOwner && owner.empty()) owner = group.value;
            if (group.code == 2) tag = group.value;
            if (group.code == 1 && value.empty()) value = group.value;
        }
        all.try_emplace(owner, Json::array()).first->second.push_back({tag, value});
    });
    return all;
}

Json detailsOf(const AcApDocument* document, mor::EntityName name) {
    Json details = Json::object();
    if (Json data = extendedDataOf(host::recordGroups(document, name)); !data.empty())
        details["xdata"] = std::move(data);
    for (const host::RecordAttribute& item : host::recordAttributes(document, name).items)
        details["values"].push_back({utf8(item.name), host::lispText(item.value)});
    return details;
}

}  // namespace

Json recordDetails(const Session& session, const Scene& scene) {
    RecordFinder records(session.document());
    Json all = Json::object();
    std::set<std::string> seen;
    for (const Scene::Element& element : scene.elements()) {
        const Scene::Owner& owner = scene.ownerOf(element);
        const std::string& reference = *scene.kinOf(owner).reference;
        const std::string handle = host::handleText(owner.handle);
        std::string key = reference;
        if (!reference.empty()) key += '|';
        key += handle;
        if (owner.handle == 0 || !seen.insert(key).second) continue;
        const auto name = records.find(reference, handle);
        if (!name) continue;
        if (Json details = detailsOf(session.document(), *name); !details.empty())
            all[key] = std::move(details);
    }
    if (session.reference().empty())
        for (auto& [insert, attributes] : attributesByInsert(session.document()))
            if (seen.contains(insert)) all[insert]["attributes"] = std::move(attributes);
    return all;
}

}  // namespace mor::tool
