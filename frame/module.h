#pragma once

#include "platform/mfc.h"

/// The module's entry, called when the library is loaded into a program and when it is taken out
/// again. A program that links the library calls attach once before it uses anything of it, and
/// detach last.
namespace mor {

/// 1 when the module is registered with the host; 0 when the host refuses it, after undoing what
/// was done.
int attachModule(void* instance = nullptr);

/// Releases everything that the library still holds: global views first, then file systems,
/// forgotten letters and live letters. Always 1. May be followed by another attach; but of the
/// documents that stay open only the current one forgets what was released, so the others must be
/// closed before the library is used on them again. The message registry stays.
int detachModule();

}  // namespace mor
