#pragma once

#include "tools/moradmin/changes/contents.h"
#include "tools/moradmin/session.h"

#include <optional>

namespace mor::tool {

/// Tells what a command has changed, before that is saved: with --dry-run, -v and --json each path
/// with its old and new value, and the records that are written anew. Of a drawing that goes to
/// stdout on stderr.
class ChangeReport {
public:
    /// Remembers the store as it is, where it will be told.
    ChangeReport(Session& session, const Options& options);
    /// `target`: the file that is saved.
    void print(Session& session, const Options& options, const std::string& target) const;

private:
    std::optional<Contents> m_before;
};

/// Saves what a command has changed in the session's drawing, and tells it; with --dry-run that
/// alone.
void saveAndTell(Session& session, const Options& options, const ChangeReport& report);

/// Throws Failure when -o would take the place of a file that is not the drawing, or there is
/// nowhere to save to.
void refuseOtherTarget(const Options& options);

}  // namespace mor::tool
