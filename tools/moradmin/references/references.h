#pragma once

#include "platform/entity_name.h"
#include "tools/moradmin/session.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// The references that are loaded, nested ones behind their referring one, by the path of
/// references; only those below the reference that the session looks through.
[[nodiscard]] std::vector<std::wstring> loadedReferences(const Session& session);
/// "loaded", "not found" and so on.
[[nodiscard]] const char* statusName(host::ReferenceStatus status);
/// Why a reference was not taken from there, or not at all.
[[nodiscard]] std::string whyNot(const host::ReferenceTry& attempt);
/// What would help where references are not found.
inline constexpr const char* kWhereReferencesLie =
    "--xref-path DIR and --map FROM=TO say where else references lie";
/// Tells on stderr which references are missing, unless --quiet says not to: what they hold is not
/// listed.
void tellMissing(const Session& session, const Options& options);
/// Tells on stderr, with -v, how many things of the store were not listed.
void tellOwn(const Session& session, const Options& options, std::size_t count, const char* what);
/// The layers of the drawing or reference that is looked at, by the names that are shown.
[[nodiscard]] std::vector<std::string> layerNames(const Session& session);
/// A qualified name as the drawing has it that the session looks at.
[[nodiscard]] std::string nameWithin(const Session& session, const std::wstring& qualified);

/// The block that an insert names, as the drawing knows it; none for anything but an insert.
[[nodiscard]] std::optional<std::wstring> insertedBlock(mor::EntityName insert);

}  // namespace mor::tool
