#include "xref/xref_block_map.h"

#include "platform/list_calls.h"
#include "platform/output_calls.h"
#include "platform/owned.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"

#include <cstdint>
#include <utility>

namespace {

struct CloseObject {
    void operator()(AcDbObject* object) const noexcept { object->close(); }
};
/// An opened object that is closed at the end.
template <typename T>
using Opened = std::unique_ptr<T, CloseObject>;

template <typename T>
Opened<T> openForRead(AcDbObjectId id) {
    T* object = nullptr;
    if (acdbOpenObject(object, id, AcDb::kForRead) != Acad::eOk) return nullptr;
    return Opened<T>{object};
}

mor::EntityName firstEntityOf(const AcDbBlockTableRecord& record) {
    AcDbBlockTableRecordIterator* made = nullptr;
    if (record.newIterator(made, true, true) != Acad::eOk) return {};
    const std::unique_ptr<AcDbBlockTableRecordIterator> entities{made};
    if (entities->done()) return {};
    AcDbEntity* opened = nullptr;
    if (entities->getEntity(opened, AcDb::kForRead) != Acad::eOk) return {};
    const Opened<AcDbEntity> entity{opened};
    ads_name name{};
    if (acdbGetAdsName(name, entity->objectId()) != Acad::eOk) return {};
    return mor::EntityName{name};
}

CXrefBlockInfo gather(const AcDbBlockTableRecord& record, const wchar_t* name) {
    CXrefBlockInfo info;
    info.name = name;
    info.xref = record.isFromExternalReference();
    info.overlay = record.isFromOverlayReference();
    info.hasAttributes = record.hasAttributeDefinitions();
    info.anonymous = record.isAnonymous();
    info.origin = record.origin();
    info.firstEntity = firstEntityOf(record);
    info.path = info.name;
    const wchar_t* path = nullptr;
    if ((info.xref || info.overlay) && record.pathName(path) == Acad::eOk) info.path = path;
    return info;
}

short flagsOf(const CXrefBlockInfo& info) {
    return static_cast<short>((info.anonymous ? mor::kBlockAnonymous : 0) +
                              (info.hasAttributes ? mor::kBlockAttributes : 0) +
                              (info.xref ? mor::kBlockReference : 0) +
                              (info.overlay ? mor::kBlockOverlay : 0));
}

}  // namespace

bool CXrefBlockMap::Load(const wchar_t* xrefName) {
    if (!m_xrefName.IsEmpty() || xrefName == nullptr) return false;
    ads_name first{};
    {
        const mor::ResbufList block{acdbTblSearch(L"BLOCK", xrefName, 0)};
        if (!block) {
            acutPrintf(L"Xrefhandle [%s] tblsearch failed \n", xrefName);
            return false;
        }
        if (const resbuf* group = mor::findGroup(block, mor::kGroupFirstEntity))
            mor::EntityName{group->resval.rlname}.copyTo(first);
    }
    if (!buildFromDatabaseOf(first)) return false;
    m_xrefName = xrefName;
    return true;
}

bool CXrefBlockMap::buildFromDatabaseOf(const ads_name entity) {
    AcDbObjectId id;
    if (acdbGetObjectId(id, entity) != Acad::eOk) return false;
    AcDbDatabase* database = nullptr;
    if (const auto opened = openForRead<AcDbEntity>(id)) database = opened->database();
    if (database == nullptr) return false;
    AcDbBlockTable* table = nullptr;
    if (database->getSymbolTable(table, AcDb::kForRead) != Acad::eOk) return false;
    const Opened<AcDbBlockTable> blockTable{table};
    return BuildFromBlockTable(blockTable.get());
}

bool CXrefBlockMap::BuildFromBlockTable(AcDbBlockTable* blockTable) {
    m_blocks.clear();
    AcDbSymbolTableIterator* made = nullptr;
    if (blockTable == nullptr || blockTable->newIterator(made, true, false) != Acad::eOk)
        return false;
    const std::unique_ptr<AcDbSymbolTableIterator> records{made};
    for (; !records->done(); records->step(true, true)) {
        AcDbObjectId id;
        if (records->getRecordId(id) != Acad::eOk) return false;
        const auto object = openForRead<AcDbObject>(id);
        const auto* record = dynamic_cast<const AcDbBlockTableRecord*>(object.get());
        if (record == nullptr) return false;
        const wchar_t* name = nullptr;
        if (record->getName(name) != Acad::eOk) continue;
        m_blocks.try_emplace(CString{name}, gather(*record, name));
    }
    return true;
}

resbuf* CXrefBlockMap::BlockSearch(const wchar_t* name) const {
    if (m_xrefName.IsEmpty() || name == nullptr) return nullptr;
    const auto found = m_blocks.find(CString{name});
    if (found == m_blocks.end()) return nullptr;
    const CXrefBlockInfo& info = found->second;
    ads_name entity{};
    info.firstEntity.copyTo(entity);
    const ads_point origin{info.origin.x, info.origin.y, info.origin.z};
    return acutBuildList(RTDXF0, L"BLOCK", mor::kGroupName, info.name.GetString(), mor::kGroupFlags,
                         flagsOf(info), mor::kGroupFirstEntity, entity, 10, origin, 3,
                         info.name.GetString(), 1, info.path.GetString(), 0);
}

void CXrefBlockMap::Dump() const {
    acutPrintf(L"Members of xref [%s]\n", m_xrefName.GetString());
    for (const auto& [name, info] : m_blocks)
        acutPrintf(
            L"dwg-block found: [%-20s] xref: %d ovl: %d att: %d anon: %d  (>>) <%08x>\t[%s]\n",
            info.name.GetString(), info.xref ? 1 : 0, info.overlay ? 1 : 0,
            info.hasAttributes ? 1 : 0, info.anonymous ? 1 : 0,
            static_cast<unsigned>(static_cast<std::uint64_t>(info.firstEntity.first()) &
                                  0xFFFFFFFFU),
            info.path.GetString());
}

CDocvarXrefTblBlockMap::CDocvarXrefTblBlockMap() = default;

CDocvarXrefTblBlockMap::~CDocvarXrefTblBlockMap() = default;

CMORMDIDocumentVariable* CDocvarXrefTblBlockMap::CreateInstance() const {
    return std::make_unique<CDocvarXrefTblBlockMap>().release();  // caller owns
}

CMORMDIDocumentVariable* CDocvarXrefTblBlockMap::CreateCopy() const {
    return std::make_unique<CDocvarXrefTblBlockMap>().release();  // caller owns
}

CXrefBlockMap* CDocvarXrefTblBlockMap::GetXrefBlockMap(const CString& xrefName) {
    const auto found = m_maps.find(xrefName);
    if (found != m_maps.end()) return found->second.get();
    auto made = std::make_unique<CXrefBlockMap>();
    static_cast<void>(made->Load(xrefName));  // a failed load is kept too, it answers null
    return m_maps.emplace(xrefName, std::move(made)).first->second.get();
}
