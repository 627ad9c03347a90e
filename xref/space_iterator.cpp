#include "xref/space_iterator.h"

#include "space/space.h"
#include "space/view.h"

namespace {

CMORAdsLispVar allLayers() { return CMORAdsLisp::List(CMORAdsLispVar{L"*"}); }

}  // namespace

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadSpace& space) { start(&space, allLayers()); }

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadSpace& space, const CMORAdsLispVar& layers) {
    start(&space, layers);
}

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadSpace& space, const CMORStringList& layers) {
    start(&space, layers);
}

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadView& view) {
    start(view.getSpace(), allLayers());
}

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadView& view, const CMORAdsLispVar& layers) {
    start(view.getSpace(), layers);
}

MOR_SpaceIterator::MOR_SpaceIterator(const CMORCadView& view, const CMORStringList& layers) {
    start(view.getSpace(), layers);
}

MOR_SpaceIterator::~MOR_SpaceIterator() { cleanData(); }

void MOR_SpaceIterator::resetIterator() {
    if (!isEmpty()) m_letter->reset();
}

ads_name* MOR_SpaceIterator::operator()() { return isEmpty() ? nullptr : m_letter->next(); }

bool MOR_SpaceIterator::isEmpty() const { return m_letter == nullptr; }

void MOR_SpaceIterator::initData() { static_cast<void>(m_letter.release()); }

void MOR_SpaceIterator::cleanData() {
    m_letter.reset();
    initData();
}

template <typename Layers>
void MOR_SpaceIterator::start(const CMORCadSpace* space, const Layers& layers) {
    initData();
    if (space != nullptr) m_letter.reset(space->getIterator(layers));
}
