#include "tools/moradmin/damage/salvage_plan.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "dwgfs/path_rules.h"
#include "host/host.h"
#include "tools/moradmin/store/paths.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <set>

namespace mor::tool {

namespace {

constexpr const wchar_t* kLostFound = L"/lost-found";
constexpr std::size_t kPlacesPerLostFound = 200;

class Planner {
public:
    Planner(const Session& session, const StoreState& state)
        : m_document(session.document()), m_state(state) {
        for (std::size_t i = 0; i < state.directories.size(); ++i) {
            m_byName.emplace(state.directories[i].name, i);
            m_infos.push_back(state.directories[i].info());
            if (isDirPath(m_infos.back())) m_claims[m_infos.back()].push_back(i);
        }
    }

    SalvagePlan run() {
        if (const auto root = chooseRoot()) place(*root, L"/");
        placeClaims();
        placeRest();
        std::ranges::stable_sort(m_plan.places, {},
                                 [](const SalvagePlan::Place& p) { return p.path.size(); });
        m_plan.byPath.clear();
        for (std::size_t i = 0; i < m_plan.places.size(); ++i)
            m_plan.byPath.emplace(m_plan.places[i].path, i);
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
    [[nodiscard]] bool isClosed(std::wstring path) const;
    [[nodiscard]] std::wstring lostPlace(std::size_t index);

    const AcApDocument* m_document;
    const StoreState& m_state;
    SalvagePlan m_plan;
    std::map<mor::EntityName, std::size_t> m_byName;
    std::vector<std::wstring> m_infos;                          // of the directories
    std::map<std::wstring, std::vector<std::size_t>> m_claims;  // by "$INFO"
    std::map<std::wstring, int> m_numbers;                      // last one used beside a path
    std::size_t m_lost = 0;                                     // places in /lost-found given out
    std::set<std::size_t> m_placed;
    std::deque<std::pair<std::size_t, std::wstring>> m_queue;
};

std::optional<std::size_t> Planner::chooseRoot() {
    const StoredDirectory* linked = m_state.directory(L"/");
    if (linked != nullptr) {
        const std::size_t index = m_byName[linked->name];
        const bool readable = linked->attributes.damage.empty();
        // What holds files was made as another directory, when it says so: no root has any.
        const bool other = linked->hasFiles() && isDirPath(m_infos[index]);
        if (readable && (m_infos[index] == L"/" || (!other && !claimedByAnother(L"/", index))))
            return index;
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
        const auto target = host::findHandle(m_document, linkText(attribute));
        const auto known = target ? m_byName.find(*target) : m_byName.end();
        if (known == m_byName.end() || m_placed.contains(known->second)) continue;
        const std::wstring at = joined(path, std::wstring(*name));
        const std::wstring& info = m_infos[known->second];
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
    if (const auto* link = directory.find(linkNameOf(nameOf(path))); link != nullptr) return true;
    return directory.find(nameOf(path)) == nullptr &&
           directory.find(kFileArrow + nameOf(path)) == nullptr;
}

/// Whether a directory on the way there cannot be read: it takes no link.
bool Planner::isClosed(std::wstring path) const {
    while (path != kRootPath) {
        path = parentOf(path);
        const auto above = m_plan.byPath.find(path);
        if (above != m_plan.byPath.end() &&
            !record(m_plan.places[above->second].directory).attributes.damage.empty())
            return true;
    }
    return false;
}

void Planner::placeAtOrBeside(std::size_t index, const std::wstring& path) {
    if (isClosed(path)) {
        place(index, lostPlace(index));
        return;
    }
    if (isFree(path)) {
        place(index, path);
        return;
    }
    if (!record(index).hasFiles() && record(index).attributes.damage.empty()) {
        m_placed.insert(index);
        m_plan.dropped.push_back(index);
        return;
    }
    int& number = m_numbers.try_emplace(path, 1).first->second;
    while (true) {
        const std::wstring numbered = path + L"-" + std::to_wstring(++number);
        if (!isFree(numbered)) continue;
        if (numbered.size() > kMaxPathLength || nameOf(numbered).size() > kMaxDirNameLength)
            place(index, lostPlace(index));
        else
            place(index, numbered);
        return;
    }
}

void Planner::placeClaims() {
    std::vector<std::size_t> waiting;
    for (std::size_t i = 0; i < m_state.directories.size(); ++i)
        if (isDirPath(m_infos[i]) && m_infos[i] != L"/") waiting.push_back(i);
    // Parents first: their links may reach the others. Among equals those with values keep the
    // name.
    std::ranges::stable_sort(waiting, [this](std::size_t a, std::size_t b) {
        if (m_infos[a].size() != m_infos[b].size()) return m_infos[a].size() < m_infos[b].size();
        return record(a).hasFiles() && !record(b).hasFiles();
    });
    for (const std::size_t index : waiting)
        if (!m_placed.contains(index)) placeAtOrBeside(index, m_infos[index]);
}

/// A place of its own below /lost-found; one directory has not room for the links of all.
std::wstring Planner::lostPlace(std::size_t index) {
    const std::string& handle = record(index).handle;
    return joined(lostFound(m_lost++ / kPlacesPerLostFound),
                  L"dir-" + std::wstring(handle.begin(), handle.end()));
}

void Planner::placeRest() {
    for (std::size_t i = 0; i < m_state.directories.size(); ++i)
        if (!m_placed.contains(i)) placeAtOrBeside(i, lostPlace(i));
}

}  // namespace

std::wstring lostFound(std::size_t number) {
    return number == 0 ? kLostFound : kLostFound + (L"-" + std::to_wstring(number + 1));
}

SalvagePlan planSalvage(const Session& session, const StoreState& state) {
    return Planner(session, state).run();
}

}  // namespace mor::tool
