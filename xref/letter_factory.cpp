#include "space/letter_factory.h"

#include "xref/model_space_iterator.h"
#include "xref/xref_space.h"
#include "xref/xref_view.h"

namespace mor {
namespace {

template <typename Layers>
std::unique_ptr<CMORCadLetterSpaceIterator> selectByLayer(const Layers& layers) {
    auto iterator = std::make_unique<CMORCadLetterModelSpaceIterator>();
    if (!iterator->selectEntitiesByLayer(layers)) return nullptr;
    return iterator;
}

}  // namespace

std::unique_ptr<CMORCadLetterSpace> makeXRefLetter(const wchar_t* name) {
    auto letter = std::make_unique<MOR_Letter_XRef>();
    if (!letter->connect(name)) return nullptr;
    return letter;
}

std::unique_ptr<CMORCadLetterView> makeXRefViewLetter() {
    return std::make_unique<MOR_Letter_XRefView>();
}

std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(const CMORStringList& layers) {
    return selectByLayer(layers);
}

std::unique_ptr<CMORCadLetterSpaceIterator> makeModelSpaceIterator(const CMORAdsLispVar& layers) {
    return selectByLayer(layers);
}

}  // namespace mor
