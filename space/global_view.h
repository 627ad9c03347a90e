#pragma once

namespace mor_xref {

/// Switches the current document's global view to the block reference with that handle, to model
/// space for the empty text. False, and nothing changed, when the handle is unknown (or null);
/// false, and the global view empty, when the entity is no block reference of an external
/// reference.
bool SwitchGlobalView(const wchar_t* handle);

}  // namespace mor_xref
