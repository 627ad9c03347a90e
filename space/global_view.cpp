#include "space/global_view.h"

#include "platform/entity_calls.h"
#include "space/letter_view.h"
#include "space/view.h"

#include <memory>

const CMORCadView* CMORCadView::getTheGlobalObject() {
    CMORCadView*& slot = CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
    if (slot != nullptr) return slot;
    slot = s_globalViews.append(std::make_unique<CMORCadView>());
    slot->connect();
    return slot;
}

bool CMORCadView::connectTheGlobalObject(const ads_name ename) {
    static_cast<void>(getTheGlobalObject());  // makes the view that the slot then holds
    return CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject()->connect(ename);
}

bool CMORCadView::connectTheGlobalObject() {
    static_cast<void>(getTheGlobalObject());
    return CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject()->connect();
}

void CMORCadView::deleteTheGlobalObject() {
    CMORCadView*& slot = CMORMDIDocumentData::GetCurrentDocumentData().GetMapGlobalObject();
    if (slot == nullptr) return;
    if (!s_globalViews.remove(slot)) return;
    slot = nullptr;
}

bool mor_xref::SwitchGlobalView(const wchar_t* handle) {
    if (handle == nullptr) return false;
    if (*handle == L'\0') return CMORCadView::connectTheGlobalObject();
    ads_name ename{};
    if (acdbHandEnt(handle, ename) != RTNORM) return false;
    return CMORCadView::connectTheGlobalObject(ename);
}
