#pragma once

#include "platform/entity_name.h"
#include "tools/moradmin/session.h"

#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// The references that are loaded, nested ones behind their referring one, by the path of
/// references; only those below the reference that the session looks through.
[[nodiscard]] std::vector<std::wstring> loadedReferences(const Session& session);
/// Why a reference was not taken from there, or not at all.
[[nodiscard]] std::string whyNot(const host::ReferenceTry& attempt);
/// A qualified name as the drawing has it that the session looks at.
[[nodiscard]] std::string nameWithin(const Session& session, const std::wstring& qualified);

/// The block that an insert names, as the drawing knows it; none for anything but an insert.
[[nodiscard]] std::optional<std::wstring> insertedBlock(mor::EntityName insert);

}  // namespace mor::tool
