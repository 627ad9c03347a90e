#pragma once

#include "frame/owned_list.h"
#include "space/letter_space.h"
#include "space/letter_view.h"
#include "space/space.h"

#include <memory>

namespace mor {

/// What a view dropped when it was told to forget: its letter, or the letter's space.
struct Forgotten {
    explicit Forgotten(std::unique_ptr<CMORCadLetterView> forgottenLetter);
    explicit Forgotten(std::unique_ptr<CMORCadSpace> forgottenSpace);

    const void* document;  ///< data of the document that was current
    std::unique_ptr<CMORCadLetterView> letter;
    std::unique_ptr<CMORCadSpace> space;
};

/// What `space/` must be able to release when the module ends. Defined in frame/module.cpp before
/// the lists of file systems and global views, whose objects still use them while they are deleted.
struct LetterLists {
    /// The letters of all documents' space tables, so that those of a document that was closed
    /// without message 3 are released too.
    static OwnedList<CMORCadLetterSpace> s_liveLetters;
    /// What `forget` dropped. Texts and spaces that a caller got from a forgotten view stay valid
    /// until the document's space table receives message 3.
    static OwnedList<Forgotten> s_forgotten;

    /// Keep what is handed over for the current document. When memory is short it is destroyed.
    static void forget(std::unique_ptr<CMORCadLetterView> letter);
    static void forget(std::unique_ptr<CMORCadSpace> space);
    /// What was forgotten in the current document.
    static void releaseForgotten() noexcept;
    /// Empties the current document's space table and releases all letters of all documents.
    static void releaseAll() noexcept;
};

}  // namespace mor
