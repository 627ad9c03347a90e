#pragma once

#include "platform/types.h"

/// Makes an entity of the current drawing from a DXF list; RTNORM when it was made.
/// "BLOCK" opens a definition, each following call adds one entity to it, "ENDBLK" closes it and
/// answers RTKWORD; nothing of it is in the drawing before that. A definition of an existing name
/// replaces that block's entities, its inserts stay. An unknown layer is created with defaults; an
/// unknown block in an insert is refused (RTREJ). A bad list throws a pending definition away; a
/// null list cancels it. References and dependent blocks cannot be made. Handles and the groups -1
/// and -2 are ignored.
int acdbEntMake(const resbuf* list);

/// The last main entity of the spaces that is not erased; RTERROR and `result` untouched when there
/// is none.
int acdbEntLast(ads_name result);

/// The entity or sub-entity after `entity` in the same block definition or space that is not
/// erased; with a null `entity` the first one of the drawing. RTERROR after the last one and for an
/// unknown name; `result` may be the same variable as `entity`, and is untouched on failure.
int acdbEntNext(const ads_name entity, ads_name result);

/// Erases a live main entity together with its sub-entities, or restores an erased one (a toggle).
/// RTERROR for unknown names, sub-entities, table records and entities of references.
int acdbEntDel(const ads_name entity);

/// The record with that handle (hexadecimal text, case and leading zeros do not matter) in the
/// current drawing, erased ones included. RTERROR for bad text and unknown handles; `result` is
/// then untouched.
int acdbHandEnt(const wchar_t* handle, ads_name result);
