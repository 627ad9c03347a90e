#include "space/letter_space.h"

namespace {

std::uint64_t nextSerial() noexcept {
    static std::uint64_t s_last = 0;
    return ++s_last;
}

}  // namespace

CMORCadLetterSpace::CMORCadLetterSpace() noexcept : m_serial(nextSerial()) {}

CMORCadLetterSpace::~CMORCadLetterSpace() = default;

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
