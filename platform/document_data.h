#pragma once

#include "platform/database.h"

#include <set>
#include <string>

class CMORCadDwgFileSystem;
class CMORCadLetterSpace;
class CMORCadView;

/// Base class of per-document objects.
class CMORMDIDocumentVariable {
public:
    CMORMDIDocumentVariable();
    CMORMDIDocumentVariable(const CMORMDIDocumentVariable&);
    CMORMDIDocumentVariable& operator=(const CMORMDIDocumentVariable&);

    virtual ~CMORMDIDocumentVariable();
    virtual bool Init(const CMORMDIDocumentVariable& other);
    virtual bool Init();
    virtual bool Clean();
    /// A new object of the same class, freshly constructed; the caller owns it.
    [[nodiscard]] virtual CMORMDIDocumentVariable* CreateInstance() const = 0;
    /// A new object of the same class made from this one; the caller owns it.
    [[nodiscard]] virtual CMORMDIDocumentVariable* CreateCopy() const = 0;
    virtual bool GetVariableAsText(AcDbObjectId id, std::wstring& text);
};

/// What the entity library keeps per document. It owns none of what the slots point to.
class CMORMDIDocumentData {
public:
    /// The data of the current document; a permanent empty one when no document is open.
    [[nodiscard]] static CMORMDIDocumentData& GetCurrentDocumentData();

    CMORCadDwgFileSystem*& GetMorDwgFileSystem() noexcept { return m_fileSystem; }
    CMORCadView*& GetMapGlobalObject() noexcept { return m_globalView; }
    std::set<CMORCadLetterSpace*>& GetSpaceTable2() noexcept { return m_spaceTable; }

private:
    CMORCadDwgFileSystem* m_fileSystem = nullptr;
    CMORCadView* m_globalView = nullptr;
    std::set<CMORCadLetterSpace*> m_spaceTable;
};

enum EMORReactorImportance : int { eMORReactorImportanceHigh = 3 };

/// While it lives, the entity library's document reactors do not react to changes. Nests.
class CMORSwitchMDIReactorOnOff {
public:
    explicit CMORSwitchMDIReactorOnOff(EMORReactorImportance importance);
    ~CMORSwitchMDIReactorOnOff();
    CMORSwitchMDIReactorOnOff(const CMORSwitchMDIReactorOnOff&) = delete;
    CMORSwitchMDIReactorOnOff& operator=(const CMORSwitchMDIReactorOnOff&) = delete;
};
