#pragma once

#include "platform/lisp.h"
#include "platform/string_list.h"
#include "space/letter_iterator.h"
#include "space/letter_space.h"
#include "space/letter_view.h"

#include <memory>

/// Makes the letters that live in xref/, for the envelopes of space/. Defined in
/// xref/letter_factory.cpp.
namespace mor {

/// A letter connected to the external reference of that name; null when it cannot be connected.
[[nodiscard]] std::unique_ptr<CMORCadLetterSpace> makeXRefLetter(const wchar_t* name);
/// An unconnected letter for a view through a block reference.
[[nodiscard]] std::unique_ptr<CMORCadLetterView> makeXRefViewLetter();
/// An iterator over the drawing's entities on the layers that match; null when nothing is selected.
[[nodiscard]] std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(
    const CMORStringList& layers);
[[nodiscard]] std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(
    const CMORAdsLispVar& layers);

}  // namespace mor
