#pragma once

#include "frame/owned_list.h"
#include "space/letter_space.h"
#include "space/letter_view.h"
#include "space/space.h"

#include <memory>

namespace mor {

/// What `space/` must be able to release when the module ends. Defined in frame/module.cpp before
/// the lists of file systems and global views, whose objects still use them while they are deleted.
struct LetterLists {
    /// The letters of all documents' space tables, so that those of a document that was closed
    /// without message 3 are released too.
    static OwnedList<CMORCadLetterSpace> s_liveLetters;
    /// What `forget` dropped. Texts and spaces that a caller got from a forgotten view stay valid
    /// until the next message 3 that a space table receives.
    static OwnedList<CMORCadLetterView> s_forgottenLetters;
    static OwnedList<CMORCadSpace> s_forgottenSpaces;

    static void releaseForgotten() noexcept;
    /// Empties the current document's space table and releases all letters of all documents.
    static void releaseAll() noexcept;
};

}  // namespace mor
