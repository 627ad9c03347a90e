#include "dwgfs/control_layer_guard.h"
#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "platform/owned.h"

bool CMORCadDwgFileSystem::read(const wchar_t* path, CMORAdsLispVar& value) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy) || !mor::isFilePath(copy.view())) return false;
    return readWrite(copy.c_str(), value, false);
}

bool CMORCadDwgFileSystem::write(const wchar_t* path, const CMORAdsLispVar& value) {
    mor::PathBuffer copy;
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::write", m_view, mor::kWarningNotWriteable,
                               mor::kRefused);
        return false;
    }
    if (!mor::copyPath(path, copy) || !mor::isFilePath(copy.view())) return false;
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAlways};
    CMORAdsLispVar written = value;
    return readWrite(copy.c_str(), written, true);
}

bool CMORCadDwgFileSystem::readWrite(const wchar_t* path, CMORAdsLispVar& value, bool write) {
    warnIfReadOnly(L"CMORCadDwgFileSystem::readWrite", write);
    const mor::DocumentLock lock;
    if (lock.result() == mor::LockResult::NotActive) return true;
    if (lock.result() == mor::LockResult::Refused) return false;
    CMOREntity dir;
    mor::NameBuffer name;
    if (!getFile(path, write, dir, name.data())) return false;
    if (write) return dir.SetAttribute(name.c_str(), value) && dir.Flush();
    dir.GetAttribute(name.c_str(), value);  // not tested: a missing file leaves the value alone
    return true;
}

bool CMORCadDwgFileSystem::del(const wchar_t* path) {
    mor::PathBuffer copy;
    if (!m_view.isWriteable()) {
        reportViewNotWriteable(L"CMORCadDwgFileSystem::del", m_view, mor::kWarningNotWriteable,
                               mor::kRefused);
        return false;
    }
    if (!mor::copyPath(path, copy) || !mor::isFilePath(copy.view())) return false;
    const ControlLayerGuard guard{ControlLayerGuard::kRelockAlways};
    CMOREntity dir;
    mor::NameBuffer name;
    if (!getFile(copy.c_str(), false, dir, name.data())) return false;
    if (!dir.SetAttribute(name.c_str(), CMORAdsLisp::Nil)) return false;
    dir.Flush();  // not tested: the result is that of setting the attribute
    return true;
}

long CMORCadDwgFileSystem::getFreeMem(const wchar_t* path) {
    mor::PathBuffer copy;
    CMOREntity dir;
    if (!mor::copyPath(path, copy) || !getDir(copy.c_str(), false, dir)) return 0;
    return dir.GetFreeXDataMem();
}

long CMORCadDwgFileSystem::getUsedMem(const wchar_t* path) {
    mor::PathBuffer copy;
    CMOREntity dir;
    mor::NameBuffer name;
    if (!mor::copyPath(path, copy) || !getFile(copy.c_str(), false, dir, name.data())) return 0;
    return dir.GetXDataSize(name.c_str());
}
