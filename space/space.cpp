#include "space/space.h"

#include "platform/output_calls.h"
#include "space/letter_space.h"
#include "space/space_table.h"

#include <memory>

namespace {

void reportNotEmpty() { acutPrintf(L"%s: object is not empty\n", L"CMORCadSpace::connect"); }

std::uint64_t serialOf(const CMORCadLetterSpace* letter) {
    return letter == nullptr ? 0 : letter->serial();
}

}  // namespace

CMORCadSpace::CMORCadSpace() { initData(); }

CMORCadSpace::CMORCadSpace(const CMORCadSpace& other) {
    initData();
    copyData(other);
}

CMORCadSpace::~CMORCadSpace() { cleanData(); }

CMORCadSpace& CMORCadSpace::operator=(const CMORCadSpace& other) {
    if (this == &other) return *this;
    cleanData();
    copyData(other);
    return *this;
}

bool CMORCadSpace::connect(const wchar_t* name) {
    if (!isEmpty()) reportNotEmpty();
    m_letter = mor::findOrCreateXRefLetter(name);
    m_serial = serialOf(m_letter);
    return isConnected();
}

bool CMORCadSpace::connect() {
    if (!isEmpty()) reportNotEmpty();
    m_letter = mor::findOrCreateModelSpaceLetter();
    m_serial = serialOf(m_letter);
    return isConnected();
}

bool CMORCadSpace::isConnected() const { return !isEmpty() && m_letter->isConnected(); }

bool CMORCadSpace::forget() {
    initData();
    return true;
}

bool CMORCadSpace::isEmpty() const {
    return m_letter == nullptr || !mor::isLiveLetter(m_letter, m_serial);
}

bool CMORCadSpace::handEnt(const wchar_t* handle, ads_name result) const {
    if (isEmpty() || handle == nullptr) return false;
    return m_letter->handEnt(handle, result);
}

resbuf* CMORCadSpace::tblSearch(const wchar_t* table, const wchar_t* symbol) const {
    if (isEmpty() || table == nullptr || symbol == nullptr) return nullptr;
    return m_letter->tblSearch(table, symbol);
}

resbuf* CMORCadSpace::searchBlock(const wchar_t* block) const {
    if (isEmpty() || block == nullptr) return nullptr;
    try {
        return m_letter->searchBlock(block);
    } catch (...) {
        return nullptr;  // the one look-up whose callers rely on an answer in every case
    }
}

const wchar_t* CMORCadSpace::getName() const { return isEmpty() ? nullptr : m_letter->getName(); }

bool CMORCadSpace::isWriteable() const { return !isEmpty() && m_letter->isWriteable(); }

CMORCadSpace* CMORCadSpace::clone() const {
    auto copy = std::make_unique<CMORCadSpace>();
    copy->copyFrom(*this);
    return copy.release();  // caller owns
}

CMORCadLetterSpaceIterator* CMORCadSpace::getIterator(const CMORStringList& layers) const {
    return isEmpty() ? nullptr : m_letter->getIterator(layers);
}

CMORCadLetterSpaceIterator* CMORCadSpace::getIterator(const CMORAdsLispVar& layers) const {
    return isEmpty() ? nullptr : m_letter->getIterator(layers);
}

int CMORCadSpace::operator==(const CMORCadSpace& other) const {
    return !isEmpty() && !other.isEmpty() && m_serial == other.m_serial ? 1 : 0;
}

void CMORCadSpace::init() { initData(); }

void CMORCadSpace::clean() { cleanData(); }

void CMORCadSpace::copyFrom(const CMORCadSpace& other) { copyData(other); }

void CMORCadSpace::initData() {
    m_letter = nullptr;
    m_serial = 0;
}

void CMORCadSpace::cleanData() { initData(); }

void CMORCadSpace::copyData(const CMORCadSpace& other) {
    m_letter = other.m_letter;
    m_serial = other.m_serial;
}
