#pragma once

#include "platform/lisp.h"
#include "platform/string_list.h"
#include "platform/types.h"

#include <cstdint>

class CMORCadLetterSpace;
class CMORCadLetterSpaceIterator;

/// A space of a document: model space, or an external reference that is attached to the drawing. An
/// envelope that forwards to a letter which it shares with all others of the document on the same
/// space, and does not own. Without a letter it is empty: it answers false or null. So does an
/// envelope whose letter is gone (the reference was reloaded, the document released) or belongs to
/// another document than the current one.
class CMORCadSpace {
public:
    CMORCadSpace();
    virtual ~CMORCadSpace();
    /// Connects to the external reference of that name, without regard to case; false, and empty,
    /// when there is none. A former letter is dropped, with the message "CMORCadSpace::connect:
    /// object is not empty".
    virtual bool connect(const wchar_t* name);
    /// Connects to model space, likewise.
    virtual bool connect();
    [[nodiscard]] virtual bool isConnected() const;
    /// Drops the letter without touching it; true.
    virtual bool forget();
    [[nodiscard]] virtual bool isEmpty() const;
    /// The name of the entity with that handle in the space; false, and `result` untouched, when
    /// empty. For a handle that is not found a reference gives {0, 0}; model space leaves what the
    /// platform puts there.
    virtual bool handEnt(const wchar_t* handle, ads_name result) const;
    /// The record of a symbol of the space, null when there is none. The caller releases the list.
    [[nodiscard]] virtual resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol) const;
    /// The record of a block of the space, null when there is none or the look-up throws.
    [[nodiscard]] virtual resbuf* searchBlock(const wchar_t* block) const;
    /// "ModelSpace" or the reference's name; null when empty. Belongs to the letter.
    [[nodiscard]] virtual const wchar_t* getName() const;
    [[nodiscard]] virtual bool isWriteable() const;
    /// A plain envelope on the same letter; the caller owns it.
    [[nodiscard]] virtual CMORCadSpace* clone() const;

private:
    // For MOR_SpaceIterator only: a new iterator letter that the caller owns, or null.
    [[nodiscard]] virtual CMORCadLetterSpaceIterator* getIterator(
        const CMORStringList& layers) const;
    [[nodiscard]] virtual CMORCadLetterSpaceIterator* getIterator(
        const CMORAdsLispVar& layers) const;
    friend class MOR_SpaceIterator;

public:
    /// 1 when both have a letter and it is the same one, else 0.
    int operator==(const CMORCadSpace& other) const;

protected:
    CMORCadSpace(const CMORCadSpace& other);  // shares the letter

    void init();
    void clean();
    void copyFrom(const CMORCadSpace& other);

private:
    CMORCadSpace& operator=(const CMORCadSpace& other);

    void initData();
    void cleanData();
    void copyData(const CMORCadSpace& other);

    CMORCadLetterSpace* m_letter = nullptr;  // the space table's; may be gone: see isEmpty
    std::uint64_t m_serial = 0;              // of m_letter; 0 for none
};
