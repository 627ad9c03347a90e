#include "space/letter_space.h"

#include "platform/document_data.h"

namespace {

std::uint64_t nextSerial() noexcept {
    static std::uint64_t s_last = 0;
    return ++s_last;
}

}  // namespace

CMORCadLetterSpace* CMORCadLetterSpace::s_live = nullptr;

CMORCadLetterSpace::CMORCadLetterSpace() noexcept
    : m_serial(nextSerial()),
      m_document(&CMORMDIDocumentData::GetCurrentDocumentData()),
      m_next(s_live) {
    if (m_next != nullptr) m_next->m_previous = this;
    s_live = this;
}

CMORCadLetterSpace::~CMORCadLetterSpace() {
    (m_previous == nullptr ? s_live : m_previous->m_next) = m_next;
    if (m_next != nullptr) m_next->m_previous = m_previous;
}

bool CMORCadLetterSpace::livesHere(const CMORCadLetterSpace* letter,
                                   std::uint64_t serial) noexcept {
    const CMORCadLetterSpace* live = s_live;
    while (live != nullptr && live != letter) live = live->m_next;
    return live != nullptr && live->m_serial == serial &&
           live->m_document == &CMORMDIDocumentData::GetCurrentDocumentData();
}

bool CMORCadLetterSpace::hasName(const wchar_t* /*name*/) { return false; }

bool CMORCadLetterSpace::isModelSpace() { return false; }

bool CMORCadLetterSpace::isValid() { return false; }

const wchar_t* CMORCadLetterSpace::getName() { return L""; }

resbuf* CMORCadLetterSpace::searchBlock(const wchar_t* /*block*/) { return nullptr; }

resbuf* CMORCadLetterSpace::tblSearch(const wchar_t* /*table*/, const wchar_t* /*symbol*/) {
    return nullptr;
}

bool CMORCadLetterSpace::isConnected() { return false; }

bool CMORCadLetterSpace::isLocal() { return false; }

bool CMORCadLetterSpace::handEnt(const wchar_t* /*handle*/, ads_name /*result*/) { return false; }

bool CMORCadLetterSpace::isWriteable() { return false; }

CMORCadLetterSpaceIterator* CMORCadLetterSpace::getIterator(const CMORStringList& /*layers*/) {
    return nullptr;
}

CMORCadLetterSpaceIterator* CMORCadLetterSpace::getIterator(const CMORAdsLispVar& /*layers*/) {
    return nullptr;
}
