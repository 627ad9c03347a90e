#include "tools/moradmin/store/way.h"

#include "dwgfs/path_rules.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"

namespace mor::tool {

std::optional<const Way::Visit*> Way::enter(const std::wstring& path) {
    if (path.size() >= kMaxPathLength) return std::nullopt;
    const mor::EntityName name = m_session.store().directoryName(path);
    if (name.isNone()) return std::nullopt;
    const auto [visit, fresh] = m_visits.try_emplace(name, Visit{path, true});
    if (!fresh) return &visit->second;
    m_open.push_back(name);
    return nullptr;
}

void Way::leave() {
    m_visits[m_open.back()].open = false;
    m_open.pop_back();
}

bool Way::show(const std::wstring& path) {
    const auto before = enter(path);
    if (!before) return false;
    if (*before == nullptr) return true;
    if (!(*before)->open)
        printNote(m_session.message(utf8(path) + " is " + utf8((*before)->path) +
                                    ", linked twice; what it holds is shown there"));
    return false;
}

bool Way::copy(const std::wstring& path) {
    const auto before = enter(path);
    if (!before) return false;
    if (*before == nullptr) return true;
    if ((*before)->open) return false;
    throw Failure(kDamaged,
                  m_session.message(utf8(path) + " is " + utf8((*before)->path) +
                                    ", linked twice (link-doubled); \"moradmin repair\" mends it"),
                  utf8(path));
}

}  // namespace mor::tool
