#pragma once

#include "platform/lisp.h"
#include "platform/string_list.h"
#include "platform/types.h"

#include <cstdint>

class CMORCadLetterSpaceIterator;

/// The implementation behind a space envelope, shared by all envelopes of a document that address
/// the same space. Owned by the document's space table. The base class is complete: it answers as a
/// space that has nothing. Letters act on the drawing of the current document.
class CMORCadLetterSpace {
public:
    CMORCadLetterSpace() noexcept;
    CMORCadLetterSpace(const CMORCadLetterSpace&) = delete;
    CMORCadLetterSpace& operator=(const CMORCadLetterSpace&) = delete;

    virtual ~CMORCadLetterSpace();
    /// Whether the space is found under that name.
    [[nodiscard]] virtual bool hasName(const wchar_t* name);
    [[nodiscard]] virtual bool isModelSpace();
    /// False once the drawing has changed so that the letter must be replaced.
    [[nodiscard]] virtual bool isValid();
    /// Never null; valid while the letter lives.
    [[nodiscard]] virtual const wchar_t* getName();
    /// The record of a block, of a symbol: the caller owns the list; null when there is none.
    [[nodiscard]] virtual resbuf* searchBlock(const wchar_t* block);
    [[nodiscard]] virtual resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol);
    [[nodiscard]] virtual bool isConnected();
    /// Whether the space is the current drawing's own.
    [[nodiscard]] virtual bool isLocal();
    /// The name of the entity with that handle; false when there is none.
    virtual bool handEnt(const wchar_t* handle, ads_name result);
    [[nodiscard]] virtual bool isWriteable();
    /// A new iterator over the entities on the layers that match the patterns; null when there is
    /// nothing to iterate over. The caller owns it.
    [[nodiscard]] virtual CMORCadLetterSpaceIterator* getIterator(const CMORStringList& layers);
    [[nodiscard]] virtual CMORCadLetterSpaceIterator* getIterator(const CMORAdsLispVar& layers);

    /// Tells a letter apart from every other one of the process, also from later ones at its
    /// address. From 1.
    [[nodiscard]] std::uint64_t serial() const noexcept { return m_serial; }
    /// Whether the letter with that serial number still lives and was made for the current
    /// document. `letter` may point to one that is gone.
    [[nodiscard]] static bool livesHere(const CMORCadLetterSpace* letter,
                                        std::uint64_t serial) noexcept;

private:
    static CMORCadLetterSpace* s_live;  // a chain of all letters that live: needs no memory

    const std::uint64_t m_serial;
    const void* const m_document;  // data of the document for which it was made
    CMORCadLetterSpace* m_next = nullptr;
    CMORCadLetterSpace* m_previous = nullptr;
};
