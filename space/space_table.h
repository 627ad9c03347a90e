#pragma once

#include <cstdint>

class CMORCadLetterSpace;

/// The shared space letters of the current document. A table holds at most one letter for model
/// space and one per external reference.
namespace mor {

/// Gives the letter to the table and returns it. The first letter of an empty table registers
/// `spaceTableCallBack`. When this throws, the letter is still the caller's.
CMORCadLetterSpace* insertLetter(CMORCadLetterSpace* letter);
/// Takes the letter out of the table and destroys it; false when it is not there.
bool removeLetter(CMORCadLetterSpace* letter);

/// The letter of the external reference of that name; one that is no longer valid is destroyed and
/// replaced. Null when the drawing has no such reference or it cannot be connected.
[[nodiscard]] CMORCadLetterSpace* findOrCreateXRefLetter(const wchar_t* name);
/// The model-space letter; never null.
[[nodiscard]] CMORCadLetterSpace* findOrCreateModelSpaceLetter();

/// Destroys all letters of the table and removes one registration of `spaceTableCallBack`, also
/// when there were none.
void clearSpaceTable();
/// On message 3 releases the current document's global view, its letters, and what was forgotten
/// in it.
void spaceTableCallBack(int message);

/// Whether the letter with that serial number still lives and is the current document's, in its
/// table or taken out of it. `letter` may point to one that is gone.
[[nodiscard]] bool isLiveLetter(CMORCadLetterSpace* letter, std::uint64_t serial);

}  // namespace mor
