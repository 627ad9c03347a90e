#include "space/model_space.h"

#include "platform/entity_calls.h"
#include "platform/table_calls.h"
#include "space/letter_factory.h"

CMORCadModelSpace::CMORCadModelSpace() = default;

CMORCadModelSpace::CMORCadModelSpace(const CMORCadModelSpace& other) = default;

CMORCadModelSpace::~CMORCadModelSpace() = default;

CMORCadLetterModelSpace::CMORCadLetterModelSpace() = default;

CMORCadLetterModelSpace::~CMORCadLetterModelSpace() = default;

bool CMORCadLetterModelSpace::isModelSpace() { return true; }

bool CMORCadLetterModelSpace::isValid() { return true; }

const wchar_t* CMORCadLetterModelSpace::getName() { return L"ModelSpace"; }

resbuf* CMORCadLetterModelSpace::searchBlock(const wchar_t* block) {
    return tblSearch(L"BLOCK", block);
}

resbuf* CMORCadLetterModelSpace::tblSearch(const wchar_t* table, const wchar_t* symbol) {
    return acdbTblSearch(table, symbol, 0);
}

bool CMORCadLetterModelSpace::isConnected() { return true; }

bool CMORCadLetterModelSpace::isLocal() { return true; }

bool CMORCadLetterModelSpace::handEnt(const wchar_t* handle, ads_name result) {
    return acdbHandEnt(handle, result) == RTNORM;
}

bool CMORCadLetterModelSpace::isWriteable() { return true; }

CMORCadLetterSpaceIterator* CMORCadLetterModelSpace::getIterator(const CMORStringList& layers) {
    return mor::makeModelSpaceIterator(layers).release();  // caller owns
}

CMORCadLetterSpaceIterator* CMORCadLetterModelSpace::getIterator(const CMORAdsLispVar& layers) {
    return mor::makeModelSpaceIterator(layers).release();  // caller owns
}

bool CMORCadLetterModelSpace::isXRef() { return false; }
