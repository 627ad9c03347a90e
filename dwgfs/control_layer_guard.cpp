#include "dwgfs/control_layer_guard.h"

#include "dwgfs/names.h"
#include "platform/document_data.h"

ControlLayerGuard::ControlLayerGuard(bool relockAlways) {
    if (!m_layer.Connect(mor::kControlLayer) && !m_layer.Create(mor::kControlLayer)) return;
    const bool locked = m_layer.IsLocked();
    const bool frozen = m_layer.IsFrozen();
    m_relock = relockAlways || locked;
    if (!frozen) m_layer.IsFrozen(true);
    if (locked) m_layer.IsLocked(false);
    if (!frozen || locked) flush();
    m_ready = true;
}

ControlLayerGuard::~ControlLayerGuard() {
    if (!m_ready || !m_relock) return;
    try {
        m_layer.IsLocked(true);
        flush();
    } catch (...) {  // Memory is short: the layer stays unlocked until the next change locks it.
    }
}

void ControlLayerGuard::flush() {
    const CMORSwitchMDIReactorOnOff reactorsOff{eMORReactorImportanceHigh};
    m_layer.Flush();
}
