#pragma once

#include "space/letter_space.h"
#include "space/space.h"

/// The envelope for model space; empty until `connect()`.
class CMORCadModelSpace : public CMORCadSpace {
public:
    CMORCadModelSpace();
    CMORCadModelSpace(const CMORCadModelSpace& other);
    CMORCadModelSpace& operator=(const CMORCadModelSpace&) = delete;
    ~CMORCadModelSpace() override;
};

/// The letter of model space: always connected, valid and writeable. Works directly on the current
/// drawing; names and patterns go to the platform unchanged.
class CMORCadLetterModelSpace : public CMORCadLetterSpace {
public:
    CMORCadLetterModelSpace();
    ~CMORCadLetterModelSpace() override;

    [[nodiscard]] bool isModelSpace() override;
    [[nodiscard]] bool isValid() override;
    [[nodiscard]] const wchar_t* getName() override;
    [[nodiscard]] resbuf* searchBlock(const wchar_t* block) override;
    [[nodiscard]] resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol) override;
    [[nodiscard]] bool isConnected() override;
    [[nodiscard]] bool isLocal() override;
    /// Finds entities of layouts and block definitions too. On failure `result` holds what the
    /// platform left.
    bool handEnt(const wchar_t* handle, ads_name result) override;
    [[nodiscard]] bool isWriteable() override;
    [[nodiscard]] CMORCadLetterSpaceIterator* getIterator(const CMORStringList& layers) override;
    [[nodiscard]] CMORCadLetterSpaceIterator* getIterator(const CMORAdsLispVar& layers) override;

    /// Whether the space is an external reference: false.
    [[nodiscard]] virtual bool isXRef();
};
