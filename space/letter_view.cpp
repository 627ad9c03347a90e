#include "space/letter_view.h"

#include "space/letter_lists.h"
#include "space/space.h"

#include <utility>

CMORCadLetterView::CMORCadLetterView() { CMORCadLetterView::init(); }

CMORCadLetterView::CMORCadLetterView(const CMORCadLetterView& other) {
    if (other.m_space != nullptr) m_space.reset(other.m_space->clone());
}

CMORCadLetterView::~CMORCadLetterView() { CMORCadLetterView::clean(); }

bool CMORCadLetterView::connect(const ads_name /*ename*/) { return false; }

bool CMORCadLetterView::connect() { return false; }

bool CMORCadLetterView::isConnected() { return !isEmpty() && m_space->isConnected(); }

bool CMORCadLetterView::forget() {
    if (isEmpty()) return false;
    const bool forgotten = m_space->forget();
    mor::LetterLists::forget(std::move(m_space));
    return forgotten;
}

bool CMORCadLetterView::isWriteable() { return !isEmpty() && m_space->isWriteable(); }

const wchar_t* CMORCadLetterView::getHandle() { return nullptr; }

bool CMORCadLetterView::handEnt(const wchar_t* handle, ads_name result) {
    return !isEmpty() && m_space->handEnt(handle, result);
}

resbuf* CMORCadLetterView::searchBlock(const wchar_t* block) {
    return isEmpty() ? nullptr : m_space->searchBlock(block);
}

resbuf* CMORCadLetterView::tblSearch(const wchar_t* table, const wchar_t* symbol) {
    return isEmpty() ? nullptr : m_space->tblSearch(table, symbol);
}

bool CMORCadLetterView::toWCS(CMORMathPoint& /*point*/) { return true; }

bool CMORCadLetterView::toWCS(double* /*point*/) { return true; }

bool CMORCadLetterView::getMat(CMORAdsTransformation& transformation) {
    transformation.matrix.Identity();
    return true;
}

CMORCadSpace* CMORCadLetterView::getSpace() { return m_space.get(); }

bool CMORCadLetterView::isEmpty() { return m_space == nullptr; }

void CMORCadLetterView::setSpace(CMORCadSpace* space) {
    clean();
    m_space.reset(space);
}

void CMORCadLetterView::init() { static_cast<void>(m_space.release()); }

void CMORCadLetterView::clean() { m_space.reset(); }

void CMORCadLetterView::copyFrom(const CMORCadLetterView& other) {
    clean();
    if (other.m_space != nullptr) m_space.reset(other.m_space->clone());
}
