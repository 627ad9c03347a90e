#include "space/letter_factory.h"

namespace mor {

std::unique_ptr<CMORCadLetterSpace> makeXRefLetter(const wchar_t* /*name*/) { return nullptr; }

std::unique_ptr<CMORCadLetterView> makeXRefViewLetter() { return nullptr; }

std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(
    const CMORStringList& /*layers*/) {
    return nullptr;
}

std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(
    const CMORAdsLispVar& /*layers*/) {
    return nullptr;
}

}  // namespace mor
