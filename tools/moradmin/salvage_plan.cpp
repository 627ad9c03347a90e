#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/paths.h"
#include "tools/moradmin/salvage.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <set>

namespace mor::tool {

namespace {

constexpr const wchar_t* kLostFound = L"/lost-found";

class Planner {
public:
    Planner(const Session& session, const StoreState& state)
        : m_document(session.document()), m_state(state) {
        for (std::size_t i = 0; i < state.directories.size(); ++i) {
            m_byName.emplace(state.directories[i].name, i);
            if (isDirPath(state.directories[i].info))
                m_claims[state.directories[i].info].push_back(i);
        }
    }

    SalvagePlan run() {
        if (const auto root = chooseRoot()) place(*root, L"/");
        placeClaims();
        placeRest();
        std::ranges::stable_sort(m_plan.places, {},
                                 [](const SalvagePlan::Place& p) { return p.path.size(); });
        return std::move(m_plan);
    }

private:
    [[nodiscard]] const StoredDirectory& record(std::size_t index) const {
        return m_state.directories[index];
    }
    [[nodiscard]] bool claimedByAnother(const std::wstring& path, std::size_t index) const {
        const auto claims = m_claims.find(path);
        return claims != m_claims.end() &&
               std::ranges::any_of(claims->second,
                                   [index](std::size_t other) { return other != index; });
    }
    std::optional<std::size_t> chooseRoot();
    void place(std::size_t index, const std::wstring& path);
    void followLinks(std::size_t index, const std::wstring& path);
    void placeClaims();
    void placeRest();
    void placeAtOrBeside(std::size_t index, const std::wstring& path);
    [[nodiscard]] bool isFree(const std::wstring& path) const;
    [[nodiscard]] std::wstring lostName(std::size_t index) const;

    const AcApDocument* m_document;
    const StoreState& m_state;
    SalvagePlan m_plan;
    std::map<mor::EntityName, std::size_t> m_byName;
    std::map<std::wstring, std::vector<std::size_t>> m_claims;  // by "$INFO"
    std::set<std::size_t> m_placed;
    std::deque<std::pair<std::size_t, std::wstring>> m_queue;
};

std::optional<std::size_t> Planner::chooseRoot() {
    const StoredDirectory* linked = m_state.directory(L"/");
    if (linked != nullptr) {
        const std::size_t index = m_byName[linked->name];
        const bool readable = linked->attributes.damage.empty();
        if (readable && (linked->info == L"/" || !claimedByAnother(L"/", index))) return index;
    }
    const auto claims = m_claims.find(L"/");
    if (claims == m_claims.end()) return std::nullopt;
    // The one with the most entries: an empty one was made by a look-up that had lost the others.
    return *std::ranges::max_element(
        claims->second, {}, [this](std::size_t i) { return record(i).attributes.items.size(); });
}

void Planner::place(std::size_t index, const std::wstring& path) {
    m_placed.insert(index);
    m_plan.byPath.emplace(path, m_plan.places.size());
    m_plan.places.push_back({index, path, record(index).path != path});
    m_queue.emplace_back(index, path);
    while (!m_queue.empty()) {
        const auto [next, at] = m_queue.front();
        m_queue.pop_front();
        followLinks(next, at);
    }
}

void Planner::followLinks(std::size_t index, const std::wstring& path) {
    for (const host::RecordAttribute& attribute : record(index).attributes.items) {
        const auto name = dirNameOfLink(attribute.name);
        if (attribute.name == kRootLink || !name || !isDirName(*name)) continue;
        const auto target = host::findHandle(m_document, host::stringOf(attribute.value));
        const auto known = target ? m_byName.find(*target) : m_byName.end();
        if (known == m_byName.end() || m_placed.contains(known->second)) continue;
        const std::wstring at = joined(path, std::wstring(*name));
        const std::wstring& info = record(known->second).info;
        if (info != at && (claimedByAnother(at, known->second) || !isFree(at))) continue;
        if (at.size() > kMaxPathLength || m_plan.byPath.contains(at)) continue;
        m_placed.insert(known->second);
        m_plan.byPath.emplace(at, m_plan.places.size());
        m_plan.places.push_back({known->second, at, record(known->second).path != at});
        m_queue.emplace_back(known->second, at);
    }
}

bool Planner::isFree(const std::wstring& path) const {
    if (m_plan.byPath.contains(path)) return false;
    const auto parent = m_plan.byPath.find(parentOf(path));
    if (parent == m_plan.byPath.end()) return true;
    const StoredDirectory& directory = record(m_plan.places[parent->second].directory);
    // The link that is there already: its file of the same name is the one that gives way.
    if (const auto* link = directory.find(L"^" + nameOf(path)); link != nullptr) return true;
    return directory.find(nameOf(path)) == nullptr &&
           directory.find(L">" + nameOf(path)) == nullptr;
}

void Planner::placeAtOrBeside(std::size_t index, const std::wstring& path) {
    if (isFree(path)) {
        place(index, path);
        return;
    }
    if (!record(index).hasFiles() && record(index).attributes.damage.empty()) {
        m_placed.insert(index);
        m_plan.dropped.push_back(index);
        return;
    }
    for (int number = 2;; ++number) {
        const std::wstring numbered = path + L"-" + std::to_wstring(number);
        if (!isFree(numbered)) continue;
        if (numbered.size() > kMaxPathLength || nameOf(numbered).size() > kMaxDirNameLength)
            place(index, joined(kLostFound, lostName(index)));
        else
            place(index, numbered);
        return;
    }
}

void Planner::placeClaims() {
    std::vector<std::size_t> waiting;
    for (std::size_t i = 0; i < m_state.directories.size(); ++i)
        if (isDirPath(record(i).info) && record(i).info != L"/" &&
            record(i).info.size() <= kMaxPathLength)
            waiting.push_back(i);
    // Parents first: their links may reach the others. Among equals those with values keep the
    // name.
    std::ranges::stable_sort(waiting, [this](std::size_t a, std::size_t b) {
        if (record(a).info.size() != record(b).info.size())
            return record(a).info.size() < record(b).info.size();
        return record(a).hasFiles() && !record(b).hasFiles();
    });
    for (const std::size_t index : waiting)
        if (!m_placed.contains(index)) placeAtOrBeside(index, record(index).info);
}

std::wstring Planner::lostName(std::size_t index) const {
    const std::string& handle = record(index).handle;
    return L"dir-" + std::wstring(handle.begin(), handle.end());
}

void Planner::placeRest() {
    for (std::size_t i = 0; i < m_state.directories.size(); ++i)
        if (!m_placed.contains(i)) placeAtOrBeside(i, joined(kLostFound, lostName(i)));
}

}  // namespace

SalvagePlan planSalvage(const Session& session, const StoreState& state) {
    return Planner(session, state).run();
}

}  // namespace mor::tool
