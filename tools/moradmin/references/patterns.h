#pragma once

#include <string>
#include <vector>

namespace mor::tool {

/// Words of the command line as single wildcard patterns: a comma splits one word into several,
/// unless it stands behind a back quote or in brackets. An empty one stays: it matches nothing that
/// has a name.
[[nodiscard]] std::vector<std::string> splitPatterns(const std::vector<std::string>& words);

/// Wildcard patterns of the platform, compared without regard to case.
class TextPatterns {
public:
    explicit TextPatterns(const std::vector<std::string>& words);
    [[nodiscard]] bool empty() const { return m_patterns.empty(); }
    /// Whether one of them matches the whole text; true when there are none.
    [[nodiscard]] bool match(const std::string& text) const;

private:
    std::vector<std::wstring> m_patterns;
};

}  // namespace mor::tool
