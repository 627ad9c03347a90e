#include "xref/xref_space.h"

#include "platform/entity.h"
#include "platform/entity_calls.h"
#include "platform/output_calls.h"
#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "xref/layer_filter.h"
#include "xref/xref_iterator.h"

namespace {

/// Sub-entities lie on no layer of their own.
bool isSubEntity(const CMOREntity& entity) {
    const CString& type = entity.Type();
    const std::wstring_view text(type.GetString(), static_cast<std::size_t>(type.GetLength()));
    return mor::equalNoCase(text, L"ATTRIB") || mor::equalNoCase(text, L"SEQEND") ||
           mor::equalNoCase(text, L"VERTEX");
}

}  // namespace

MOR_XRef::MOR_XRef() = default;

MOR_XRef::MOR_XRef(const MOR_XRef& other) = default;

MOR_XRef::~MOR_XRef() = default;

MOR_Letter_XRef::MOR_Letter_XRef() = default;

MOR_Letter_XRef::~MOR_Letter_XRef() = default;

bool MOR_Letter_XRef::hasName(const wchar_t* name) { return mor::equalNoCase(name, m_name.view()); }

bool MOR_Letter_XRef::isValid() {
    mor::EntityName firstEntity;
    return isConnected() && lookUpBlock(firstEntity) && firstEntity == m_firstEntity;
}

const wchar_t* MOR_Letter_XRef::getName() { return m_name.c_str(); }

resbuf* MOR_Letter_XRef::searchBlock(const wchar_t* block) {
    return isConnected() ? tblSearch(L"BLOCK", block) : nullptr;
}

resbuf* MOR_Letter_XRef::tblSearch(const wchar_t* table, const wchar_t* symbol) {
    mor::BoundedText<kNameSize> qualified = m_name;
    if (!qualified.append(L"|") || !qualified.append(symbol)) return nullptr;
    return acdbTblSearch(table, qualified.c_str(), 0);
}

bool MOR_Letter_XRef::isConnected() { return m_connected; }

bool MOR_Letter_XRef::handEnt(const wchar_t* handle, ads_name result) {
    if (!isHashtableBuilt() && !buildHashtable()) {
        acutPrintf(L"unable building hashtable\n");
        return false;
    }
    const mor::EntityName entity = m_handles.find(handle);
    entity.copyTo(result);
    return !entity.isNone();
}

bool MOR_Letter_XRef::isWriteable() { return false; }

CMORCadLetterSpaceIterator* MOR_Letter_XRef::getIterator(const CMORStringList& layers) {
    if (!isHashtableBuilt() && !buildHashtable()) return nullptr;
    CMORStringList qualified;
    if (!mor::qualifyLayers(layers, getName(), qualified)) return nullptr;
    return m_layers.iteratorForLayers(qualified);
}

CMORCadLetterSpaceIterator* MOR_Letter_XRef::getIterator(const CMORAdsLispVar& layers) {
    if (!isHashtableBuilt() && !buildHashtable()) return nullptr;
    const CMORAdsLispVar qualified = mor::qualifyLayers(layers, getName());
    if (CMORAdsLisp::NilP(qualified)) return nullptr;
    return m_layers.iteratorForLayers(qualified);
}

bool MOR_Letter_XRef::connect(const wchar_t* xrefName) {
    if (isConnected() || !m_name.assign(xrefName)) return false;
    static_cast<void>(findBlock());  // shows in isConnected
    return isConnected();
}

bool MOR_Letter_XRef::isHashtableBuilt() { return m_built; }

bool MOR_Letter_XRef::buildHashtable() {
    if (!isConnected() || isHashtableBuilt()) return false;
    CMOREntity entity;
    ads_name current{};
    m_firstEntity.copyTo(current);
    do {
        if (!entity.Connect(current)) continue;  // to the condition: the next entity
        record(entity, mor::EntityName{current});
        entity.Disconnect();
    } while (acdbEntNext(current, current) == RTNORM);
    m_handles.order();
    m_built = true;
    return true;
}

bool MOR_Letter_XRef::findBlock() {
    if (!lookUpBlock(m_firstEntity)) return false;
    m_connected = true;
    return true;
}

bool MOR_Letter_XRef::lookUpBlock(mor::EntityName& firstEntity) const {
    firstEntity = {};
    const mor::ResbufList block{acdbTblSearch(L"BLOCK", m_name.c_str(), 0)};
    const resbuf* flags = mor::findGroup(block, mor::kGroupFlags);
    if (flags == nullptr || (flags->resval.rint & mor::kBlockReference) == 0) return false;
    const resbuf* first = mor::findGroup(block, mor::kGroupFirstEntity);
    if (first == nullptr) return false;
    firstEntity = mor::EntityName{first->resval.rlname};
    return true;
}

void MOR_Letter_XRef::record(const CMOREntity& entity, const mor::EntityName& name) {
    // The first one keeps its handle. Entities of old drawings may have none, and no text finds
    // those.
    const CString& handle = entity.Handle();
    if (!handle.IsEmpty())
        m_handles.add({handle.GetString(), static_cast<std::size_t>(handle.GetLength())}, name);
    if (isSubEntity(entity)) return;
    const std::wstring_view layer = entity.GetLayer(nullptr);
    m_layers.add(name, layer);
}

bool mor_xref::HandEnt(const wchar_t* xrefName, const wchar_t* handle, ads_name result) {
    MOR_XRef xref;
    return xref.CMORCadSpace::connect(xrefName) && xref.CMORCadSpace::handEnt(handle, result);
}
