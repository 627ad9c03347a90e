#include "space/view.h"

#include "platform/runtime.h"
#include "space/letter_factory.h"
#include "space/letter_lists.h"
#include "space/model_space_view.h"
#include "space/space.h"

#include <utility>

CMORCadView::CMORCadView() { initData(); }

// NOLINTNEXTLINE(*redundant-member-init): the compiler asks for it
CMORCadView::CMORCadView(const CMORCadView& other) : CMORMDIDocumentVariable() {
    initData();
    copyData(other);
}

// The base part is not assigned: what the registry keeps there belongs to this object.
CMORCadView& CMORCadView::operator=(const CMORCadView& other) {
    if (this == &other) return *this;
    cleanData();
    copyData(other);
    return *this;
}

CMORCadView::~CMORCadView() { cleanData(); }

CMORMDIDocumentVariable* CMORCadView::CreateInstance() const {
    return std::make_unique<CMORCadView>().release();  // caller owns
}

CMORMDIDocumentVariable* CMORCadView::CreateCopy() const {
    return std::make_unique<CMORCadView>(*this).release();  // caller owns
}

bool CMORCadView::isConnected() const { return !isEmpty() && m_letter->isConnected(); }

bool CMORCadView::forget() {
    if (isEmpty()) return false;
    const bool forgotten = m_letter->forget();
    mor::LetterLists::forget(std::move(m_letter));
    return forgotten;
}

const wchar_t* CMORCadView::getHandle() const {
    return isEmpty() ? nullptr : m_letter->getHandle();
}

bool CMORCadView::handEnt(const wchar_t* handle, ads_name result) const {
    return !isEmpty() && m_letter->handEnt(handle, result);
}

resbuf* CMORCadView::tblSearch(const wchar_t* table, const wchar_t* symbol) const {
    return isEmpty() ? nullptr : m_letter->tblSearch(table, symbol);
}

resbuf* CMORCadView::searchBlock(const wchar_t* block) const {
    return isEmpty() ? nullptr : m_letter->searchBlock(block);
}

bool CMORCadView::sameSpace(const CMORCadView& other) const {
    const CMORCadSpace* own = getSpace();
    if (own == nullptr) return false;
    const CMORCadSpace* others = other.getSpace();
    return others != nullptr && (*own == *others) != 0;
}

const wchar_t* CMORCadView::SpaceName() const {
    if (isEmpty()) return L"<empty>";
    const CMORCadSpace* space = m_letter->getSpace();
    if (space == nullptr) return L"<no-space>";
    const wchar_t* name = space->getName();
    return name == nullptr ? L"<nameless>" : name;
}

bool CMORCadView::toWCS(CMORMathPoint& point) const { return !isEmpty() && m_letter->toWCS(point); }

bool CMORCadView::toWCS(double* point) const { return !isEmpty() && m_letter->toWCS(point); }

bool CMORCadView::getMat(CMORAdsTransformation& transformation) const {
    return !isEmpty() && m_letter->getMat(transformation);
}

const CMORCadSpace* CMORCadView::getSpace() const {
    return isEmpty() ? nullptr : m_letter->getSpace();
}

bool CMORCadView::isEmpty() const { return m_letter == nullptr; }

bool CMORCadView::isWriteable() const { return !isEmpty() && m_letter->isWriteable(); }

bool CMORCadView::connect(const ads_name ename) {
    cleanData();
    m_letter = mor::makeXRefViewLetter();
    if (m_letter->connect(ename)) return true;
    cleanData();
    return false;
}

bool CMORCadView::connect() {
    cleanData();
    m_letter = std::make_unique<CMORCadLetterModelSpaceView>();
    if (m_letter->connect()) return true;
    cleanData();
    return false;
}

CMORCadView::ViewTypeEnum CMORCadView::ViewType() {
    return m_letter == nullptr ? eEmpty : static_cast<ViewTypeEnum>(m_letter->viewType());
}

int CMORCadView::operator==(const CMORCadView& other) const {
    if (!sameSpace(other)) return 0;
    const wchar_t* own = getHandle();
    const wchar_t* others = other.getHandle();
    if (own == nullptr || others == nullptr) return 0;
    return mor::equalNoCase(own, others) ? 1 : 0;
}

void CMORCadView::initData() { static_cast<void>(m_letter.release()); }

void CMORCadView::cleanData() { m_letter.reset(); }

void CMORCadView::copyData(const CMORCadView& other) {
    cleanData();
    if (!other.isEmpty()) m_letter.reset(other.m_letter->clone());
}
