#pragma once

#include "platform/database.h"
#include "platform/document_data.h"
#include "platform/entity_name.h"
#include "platform/mfc.h"
#include "platform/types.h"

#include <map>
#include <memory>

/// Order of names without regard to case.
struct CStringLessNoCase {
    [[nodiscard]] bool operator()(const CString& a, const CString& b) const {
        return a.CompareNoCase(b) < 0;
    }
};

/// What is kept of one block.
struct CXrefBlockInfo {
    CString name;
    CString path;  ///< of an external reference or overlay; else the name again
    bool xref = false;
    bool overlay = false;
    bool hasAttributes = false;
    bool anonymous = false;
    mor::EntityName firstEntity;  ///< none when the block is empty or cannot be read
    AcGePoint3d origin;
};

/// The blocks of the database that holds the entities of one external reference, under the names
/// that they have there. Loaded once.
class CXrefBlockMap {
public:
    /// Reads the blocks of that reference's database; the first of two with one name counts. False
    /// when it is loaded already (nothing changes), when there is no such block ("Xrefhandle [...]
    /// tblsearch failed" on the command line), or when its database cannot be walked; the map then
    /// stays unloaded.
    bool Load(const wchar_t* xrefName);
    /// Replaces the blocks by those of the table. On failure those read so far stay.
    bool BuildFromBlockTable(AcDbBlockTable* blockTable);
    /// ((0 . "BLOCK") (2 . name) (70 . flags) (-2 . entity) (10 x y z) (3 . name) (1 . path)) for
    /// the caller to release; any case. Null when there is no such block or the map is not loaded.
    /// The flags are 1 anonymous, 2 with attribute definitions, 4 external reference, 8 overlay.
    [[nodiscard]] resbuf* BlockSearch(const wchar_t* name) const;
    /// Prints the blocks by name, for diagnosis.
    void Dump() const;

private:
    bool buildFromDatabaseOf(const ads_name entity);

    CString m_xrefName;  // empty until loaded
    std::map<CString, CXrefBlockInfo, CStringLessNoCase> m_blocks;
};

/// A document's block maps by external reference. A map is made once and never looked at again, so
/// a changed reference needs a new object. A copy is empty.
class CDocvarXrefTblBlockMap : public CMORMDIDocumentVariable {
public:
    CDocvarXrefTblBlockMap();
    CDocvarXrefTblBlockMap(const CDocvarXrefTblBlockMap&) = delete;
    CDocvarXrefTblBlockMap& operator=(const CDocvarXrefTblBlockMap&) = delete;
    ~CDocvarXrefTblBlockMap() override;

    /// Both give a new, empty object that the caller owns.
    [[nodiscard]] CMORMDIDocumentVariable* CreateInstance() const override;
    [[nodiscard]] CMORMDIDocumentVariable* CreateCopy() const override;

    /// The map for the reference, loaded at the first call; a failed load is kept too. Never null;
    /// owned here.
    CXrefBlockMap* GetXrefBlockMap(const CString& xrefName);

private:
    std::map<CString, std::unique_ptr<CXrefBlockMap>, CStringLessNoCase> m_maps;
};
