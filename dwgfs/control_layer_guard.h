#pragma once

#include "platform/entity.h"

/// While it lives, the control layer is frozen and unlocked, so that the directories on it can be
/// changed and are never shown. Made when missing. At the end the layer is locked: always, or only
/// when it was locked at the beginning. When the layer can be neither connected nor made the work
/// is done all the same, and nothing is frozen, unlocked or locked.
class ControlLayerGuard {
public:
    static constexpr bool kRelockAlways = true;
    static constexpr bool kRelockAsFound = false;

    explicit ControlLayerGuard(bool relockAlways);
    ~ControlLayerGuard();
    ControlLayerGuard(const ControlLayerGuard&) = delete;
    ControlLayerGuard& operator=(const ControlLayerGuard&) = delete;

private:
    void flush();

    CMORAdsLayer m_layer;
    bool m_relock = false;
    bool m_ready = false;
};
