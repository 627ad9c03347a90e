#pragma once

#include "platform/entity_name.h"
#include "tools/moradmin/session.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// A walk through the directories below one. Links may lead in a circle or twice to one directory:
/// a walk enters every directory once.
class Way {
public:
    explicit Way(Session& session) : m_session(session) {}

    /// For walks that show: false for a directory that does not resolve, has a path too long to go
    /// on, or is on the way already. One that was entered before by another path is not entered
    /// again, and a note says so.
    [[nodiscard]] bool show(const std::wstring& path);
    /// For walks that copy: the same, but refuses (exit 4) what was entered before by another path:
    /// a copy would hold it twice, and where every directory is linked twice the copies multiply.
    [[nodiscard]] bool copy(const std::wstring& path);
    /// Out of the directory that was entered last.
    void leave();

private:
    struct Visit {
        std::wstring path;
        bool open = false;
    };
    /// The visit before, null when there was none and the directory is entered now; nothing when it
    /// cannot be entered at all.
    [[nodiscard]] std::optional<const Visit*> enter(const std::wstring& path);

    Session& m_session;
    std::map<mor::EntityName, Visit> m_visits;
    std::vector<mor::EntityName> m_open;
};

}  // namespace mor::tool
