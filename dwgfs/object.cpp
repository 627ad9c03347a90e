#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "frame/message_system.h"
#include "space/space.h"

#include <memory>

namespace {

// Raises a flag for as long as it lives.
class Raised {
public:
    explicit Raised(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Raised() { m_flag = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    bool& m_flag;
};

}  // namespace

bool CMORCadDwgFileSystem::s_skipNextCheck = false;

CMORCadDwgFileSystem::CMORCadDwgFileSystem() : m_view(*CMORCadView::getTheGlobalObject()) {}

CMORCadDwgFileSystem::CMORCadDwgFileSystem(const CMORCadView& view) { m_view = view; }

CMORCadDwgFileSystem::CMORCadDwgFileSystem(const CMORCadDwgFileSystem& other)
    : CMORMDIDocumentVariable(other), m_directories(other.m_directories), m_view(other.m_view) {}

CMORCadDwgFileSystem& CMORCadDwgFileSystem::operator=(const CMORCadDwgFileSystem& other) {
    if (this == &other) return *this;
    CMORMDIDocumentVariable::operator=(other);
    m_directories = other.m_directories;
    m_view = other.m_view;
    return *this;
}

CMORCadDwgFileSystem::~CMORCadDwgFileSystem() {
    m_directories.clear();
    try {
        m_view.forget();
    } catch (...) {  // Memory is short: the view's letter ends with the view.
    }
}

CMORMDIDocumentVariable* CMORCadDwgFileSystem::CreateInstance() const {
    return std::make_unique<CMORCadDwgFileSystem>().release();  // caller owns
}

CMORMDIDocumentVariable* CMORCadDwgFileSystem::CreateCopy() const {
    return std::make_unique<CMORCadDwgFileSystem>(*this).release();  // caller owns
}

CMORCadDwgFileSystem* CMORCadDwgFileSystem::getTheGlobalObject() {
    CMORCadDwgFileSystem*& slot =
        CMORMDIDocumentData::GetCurrentDocumentData().GetMorDwgFileSystem();
    if (slot == nullptr) {
        slot = s_fileSystems.append(std::make_unique<CMORCadDwgFileSystem>());
        MOR_AdsMsgSystemClass::getTheGlobalObject()->registerFct(callBack);
    }
    return slot->connect(*CMORCadView::getTheGlobalObject()) ? slot : nullptr;
}

bool CMORCadDwgFileSystem::connect(const CMORCadView& view) {
    if (m_view.sameSpace(view)) return true;
    m_directories.clear();
    m_view = view;
    return !m_view.isEmpty();
}

bool CMORCadDwgFileSystem::IsInModelSpace() const {
    return m_view.ViewType() == CMORCadView::eModelSpace;
}

const wchar_t* CMORCadDwgFileSystem::ViewHandle() const { return m_view.getHandle(); }

const wchar_t* CMORCadDwgFileSystem::getViewHandle() const { return ViewHandle(); }

const wchar_t* CMORCadDwgFileSystem::getViewName() const {
    const CMORCadSpace* space = m_view.getSpace();
    return space == nullptr ? nullptr : space->getName();
}

bool CMORCadDwgFileSystem::hasWriteableView() const { return m_view.isWriteable(); }

void CMORCadDwgFileSystem::callBack(int message) {
    CMORCadDwgFileSystem*& slot =
        CMORMDIDocumentData::GetCurrentDocumentData().GetMorDwgFileSystem();
    if (slot != nullptr) slot->connect(*CMORCadView::getTheGlobalObject());
    if (message == MOR_AdsMsgSystemClass::ReleaseDocumentObjects) {
        if (s_fileSystems.remove(slot)) slot = nullptr;
        MOR_AdsMsgSystemClass::getTheGlobalObject()->unregisterFct(callBack);
    } else if (message == MOR_AdsMsgSystemClass::CheckDwgFileSystem) {
        if (slot != nullptr && !s_skipNextCheck) slot->checkFileSystem();
        s_skipNextCheck = false;
    }
}

void CMORCadDwgFileSystem::doIfGewerkWechsel() {}

void CMORCadDwgFileSystem::zero() {
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::zero", m_view, mor::kErrorNotWriteable,
                               mor::kRefused);
        return;
    }
    // The root look-up below comes back here when the block could not be made anew.
    if (m_zeroing) return;
    const Raised zeroing{m_zeroing};
    makeBlock();
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAsFound};
    CMOREntity root;
    getRoot(root, true);
    m_directories.clear();
}

void CMORCadDwgFileSystem::removeFileSystem() { protected_removeFileSystem(false); }

void CMORCadDwgFileSystem::removeFileSystemEx() { protected_removeFileSystem(true); }

void reportViewNotWriteable(const wchar_t* /*operation*/, const CMORCadView& view,
                            const wchar_t* /*message*/, int /*severity*/) {
    const CMORCadSpace* space = view.getSpace();
    if (space != nullptr) static_cast<void>(space->getName());  // for the debugger to show
}
