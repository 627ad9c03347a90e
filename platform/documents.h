#pragma once

namespace Acad {
enum ErrorStatus : int {
    eOk = 0,
    eInvalidInput = 3,
    eNullObjectId = 67,
    eInvalidObjectId = 68,
    eWasErased = 80,
    eKeyNotFound = 138,
    eLockConflict = 330,
    eNoDocument = 331
};
}  // namespace Acad

namespace AcAp {
enum DocLockMode : int { kNone = 0, kAutoWrite = 1, kNotLocked = 2, kWrite = 4 };
}  // namespace AcAp

/// A document: an open drawing with its per-document data. Owned by the application.
class AcApDocument;

/// The application's documents.
class AcApDocManager {
public:
    virtual ~AcApDocManager() = default;
    /// The document in whose context calls run; null when there is none.
    [[nodiscard]] virtual AcApDocument* curDocument() const = 0;
    /// The document of the active window; null when there is none.
    [[nodiscard]] virtual AcApDocument* mdiActiveDocument() const = 0;
    /// Takes a lock, counted per document; eOk on success. The command names may be null.
    virtual Acad::ErrorStatus lockDocument(AcApDocument* document, AcAp::DocLockMode mode,
                                           const wchar_t* globalCommand,
                                           const wchar_t* localCommand, bool prompt) = 0;
    /// Gives one lock back; eInvalidInput when none is held.
    virtual Acad::ErrorStatus unlockDocument(AcApDocument* document) = 0;
};

/// Never null; owned by the application.
[[nodiscard]] AcApDocManager* acDocManagerPtr();
