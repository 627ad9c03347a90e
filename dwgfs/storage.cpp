#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/selection_calls.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"

#include <cstdint>

namespace {

constexpr ads_point kOrigin = {0.0, 0.0, 0.0};

// The names of all block definitions that are no external references, in table order; false, and no
// names, when a record has none.
bool collectBlockNames(CMORStringList& names) {
    names.Reset();
    for (mor::ResbufList record{acdbTblNext(L"BLOCK", 1)}; record;
         record = mor::ResbufList{acdbTblNext(L"BLOCK", 0)}) {
        const resbuf* flags = mor::findGroup(record, mor::kGroupFlags);
        if (flags != nullptr && (flags->resval.rint & mor::kBlockReference) != 0) continue;
        const resbuf* name = mor::findGroup(record, mor::kGroupName);
        if (name == nullptr || !names.Append(name->resval.rstring)) {
            names.Reset();
            return false;
        }
    }
    return true;
}

// False when the block has no entities or one of them cannot be read; those before it have moved.
bool moveBlockEntities(const wchar_t* block, const wchar_t* fromLayer, const wchar_t* toLayer) {
    const mor::ResbufList record{acdbTblSearch(L"BLOCK", block, 0)};
    const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity);
    if (first == nullptr) return false;
    ads_name name;
    mor::EntityName{first->resval.rlname}.copyTo(name);
    CMOREntity entity;
    while (entity.Connect(name)) {
        if (mor::equalNoCase(entity.GetLayer(nullptr), fromLayer)) {
            const CMORSwitchMDIReactorOnOff reactorsOff{eMORReactorImportanceHigh};
            entity.SetLayer(toLayer);
            entity.Flush();
        }
        if (acdbEntNext(name, name) != RTNORM) return true;
    }
    return false;
}

// The name of the insert that was made; none when the platform refused it. What the platform calls
// its last entity is then another one, which must not become a directory.
mor::EntityName makeInsert() {
    ads_name former = {};
    acdbEntLast(former);  // not tested: there may be none yet
    const mor::ResbufList insert{acutBuildList(RTDXF0, L"INSERT", 2, mor::kFileSystemBlock, 8,
                                               mor::kControlLayer, 10, kOrigin, 67, 0, 0)};
    if (!insert || acdbEntMake(insert.get()) != RTNORM) return {};
    ads_name made = {};
    if (acdbEntLast(made) != RTNORM) return {};
    return mor::EntityName{made} == mor::EntityName{former} ? mor::EntityName{}
                                                            : mor::EntityName{made};
}

}  // namespace

bool CMORCadDwgFileSystem::makeBlock() {
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::makeBlock", m_view,
                               mor::kWarningNotWriteable, mor::kRefused);
        return false;
    }
    const mor::ResbufList header{
        acutBuildList(RTDXF0, L"BLOCK", 2, mor::kFileSystemBlock, 10, kOrigin, 70, 0, 0)};
    const mor::ResbufList attribute{acutBuildList(RTDXF0, L"ATTDEF", 1, L"", 2, mor::kAttdefTag, 3,
                                                  mor::kAttdefPrompt, 8, mor::kDefaultLayer, 10,
                                                  kOrigin, 40, 1.0, 70, int{mor::kAttdefFlags}, 0)};
    const mor::ResbufList end{acutBuildList(RTDXF0, L"ENDBLK", 0)};
    if (!header || !attribute || !end) return false;  // memory is short
    // Not tested: what could not be made is not found afterwards. But an open definition would take
    // in whatever is made next.
    acdbEntMake(header.get());
    acdbEntMake(attribute.get());
    const int ended = acdbEntMake(end.get());
    if (ended != RTKWORD && ended != RTNORM) acdbEntMake(nullptr);
    return true;
}

bool CMORCadDwgFileSystem::makeDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path,
                                   CMOREntity& dir) {
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::makeDir", m_view, mor::kWarningNotWriteable,
                               mor::kRefused);
        return false;
    }
    mor::NameBuffer link;
    ads_name entity = {};
    // A parent that could not be connected takes no link: the directory would be lost.
    if (!mor::makeLinkName(link, name) || !parent.GetEName(entity)) return false;
    makeInsert().copyTo(entity);
    if (mor::EntityName{entity}.isNone()) return false;
    if (!commonConnectEntity(entity, dir)) {
        acdbEntDel(entity);  // not tested: an insert without attributes is no directory
        return false;
    }
    // Not tested: what does not fit is missing from now on, as after any write that does not fit.
    dir.SetAttributeText(mor::kIdAttribute, mor::kDirectoryId);
    dir.SetAttributeText(mor::kInfoAttribute, path);
    dir.Flush();
    parent.SetAttributeText(link.c_str(), dir.Handle());
    parent.Flush();
    return true;
}

bool CMORCadDwgFileSystem::getBlockEntity(CMOREntity& block) {
    const mor::ResbufList record{m_view.searchBlock(mor::kFileSystemBlock)};
    const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity);
    return first != nullptr && commonConnectEntity(first->resval.rlname, block);
}

bool CMORCadDwgFileSystem::commonConnectEntity(const ads_name name, CMOREntity& entity) {
    if (!entity.Connect(name)) return false;
    short space = -1;
    entity.GetGroupShort(67, &space);  // not tested: -1 is not model space either
    if (space == 0) return true;
    if (!m_view.isWriteable()) return false;
    entity.SetGroupShort(67, 0);
    entity.Flush();
    return true;
}

void CMORCadDwgFileSystem::deleteAllInserts() {
    if (!m_view.isWriteable()) return;
    mor::SelectionSet inserts;
    {
        const mor::ResbufList filter{
            acutBuildList(RTDXF0, L"INSERT", 2, mor::kFileSystemBlock, 8, mor::kControlLayer, 0)};
        if (!filter) return;  // memory is short: without a filter everything would be selected
        if (acedSSGet(L"X", nullptr, nullptr, filter.get(), inserts.receive()) != RTNORM) return;
    }
    std::int32_t count = 0;
    if (acedSSLength(inserts.get(), &count) != RTNORM || count < 1) return;
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAsFound};
    for (std::int32_t i = 0; i < count; ++i) {
        ads_name insert;
        if (acedSSName(inserts.get(), i, insert) == RTNORM) acdbEntDel(insert);
    }
}

void CMORCadDwgFileSystem::protected_removeFileSystem(bool extended) {
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAlways};
    deleteAllInserts();
    if (extended) {
        CMORStringList blocks;
        collectBlockNames(blocks);
        for (std::size_t i = 0; i < blocks.Entries(); ++i)
            moveBlockEntities(blocks.Nth(i), mor::kControlLayer, mor::kDefaultLayer);
    }
    s_skipNextCheck = true;  // the next message would walk the tree that has just been erased
}
