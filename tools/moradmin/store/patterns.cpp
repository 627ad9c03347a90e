#include "tools/moradmin/store/patterns.h"

#include "dwgfs/path_rules.h"
#include "platform/output_calls.h"
#include "platform/types.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/store/paths.h"
#include "tools/moradmin/store/way.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace mor::tool {

namespace {

constexpr std::wstring_view kAnyDepth = L"**";

std::vector<std::wstring> partsOf(const std::wstring& pattern) {
    std::vector<std::wstring> parts;
    for (std::size_t begin = 1, end = 0; end != std::wstring::npos; begin = end + 1) {
        end = pattern.find(L'/', begin);
        parts.push_back(pattern.substr(begin, end == std::wstring::npos ? end : end - begin));
    }
    return parts;
}

/// Whether the names of a path match the parts from one on.
bool matches(const std::vector<std::wstring>& names, std::size_t name,
             const std::vector<std::wstring>& parts, std::size_t part) {
    if (part == parts.size()) return name == names.size();
    if (parts[part] == kAnyDepth) {
        for (std::size_t next = name; next <= names.size(); ++next)
            if (matches(names, next, parts, part + 1)) return true;
        return false;
    }
    return name < names.size() && acutWcMatch(names[name].c_str(), parts[part].c_str()) == RTNORM &&
           matches(names, name + 1, parts, part + 1);
}

class Search {
public:
    Search(Session& session, const std::wstring& pattern)
        : m_session(session), m_way(session), m_parts(partsOf(pattern)) {
        m_anyDepth = std::ranges::find(m_parts, kAnyDepth) != m_parts.end();
    }

    std::vector<Match> run() {
        if (m_session.hasDirectories() && m_way.show(L"/")) below(L"/");
        return std::move(m_found);
    }

private:
    void below(const std::wstring& directory) {
        for (const Store::Entry& entry : m_session.store().entries(directory)) {
            const std::wstring path = joined(directory, entry.name);
            m_names.push_back(entry.name);
            if (matches(m_names, 0, m_parts, 0)) m_found.push_back({path, entry.directory});
            if (entry.directory && goesOn() && m_way.show(path)) {
                below(path);
                m_way.leave();
            }
            m_names.pop_back();
        }
    }
    /// Whether something below the directory may match.
    [[nodiscard]] bool goesOn() const {
        if (m_anyDepth) return true;
        if (m_names.size() >= m_parts.size()) return false;
        return acutWcMatch(m_names.back().c_str(), m_parts[m_names.size() - 1].c_str()) == RTNORM;
    }

    Session& m_session;
    Way m_way;
    std::vector<std::wstring> m_parts;
    std::vector<std::wstring> m_names;
    std::vector<Match> m_found;
    bool m_anyDepth = false;
};

}  // namespace

bool isPathPattern(const std::string& word) {
    return word.starts_with('/') && word.find_first_of("*?#@[~") != std::string::npos;
}

void refuseBadPattern(const Session& session, const std::string& word) {
    const std::wstring pattern = wide(word);
    const auto fail = [&](const std::string& text) {
        throw Failure(kRefused, session.message(text), word);
    };
    if (!pattern.starts_with(L'/')) fail("a pattern begins with /, as in /cfg/*/x");
    if (pattern.size() > kMaxPathLength) fail("a pattern has at most 1023 characters");
    for (const std::wstring& part : partsOf(pattern))
        for (std::size_t i = 0; i < part.size(); ++i) {
            if (part[i] == L'`')
                ++i;
            else if (part[i] == L'[') {
                i = part.find(L']', i);
                if (i == std::wstring::npos)
                    fail("the [ of \"" + utf8(part) + "\" is not closed by a ]");
            }
        }
}

std::vector<Match> pathsMatching(Session& session, const std::wstring& pattern) {
    return Search(session, pattern).run();
}

std::vector<Match> pathsMeant(Session& session, const std::string& word) {
    if (!isPathPattern(word)) {
        const std::wstring path = wide(word);
        return {{path, !isStoredFile(session, path)}};
    }
    refuseBadPattern(session, word);
    std::vector<Match> found = pathsMatching(session, wide(word));
    if (found.empty()) throw Failure(kRefused, session.message("nothing matches " + word), word);
    return found;
}

}  // namespace mor::tool
