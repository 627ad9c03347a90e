#include "host/documents/document.h"
#include "host/documents/running_counters.h"
#include "host/drawing/additions.h"
#include "host/faults.h"
#include "host/text/group_codes.h"
#include "platform/entity.h"

#include <optional>
#include <string_view>

namespace mor {

/// The layer's record and what is pending of its flags.
struct LayerState {
    EntityName name;
    std::optional<bool> frozen;
    std::optional<bool> locked;
};

}  // namespace mor

namespace mor::host {

namespace {

constexpr std::size_t kLongestOldName = 31;
constexpr std::size_t kLongestName = 255;

RecordNumber live(const LayerState& state) {
    const Drawing* drawing = currentDrawing();
    return drawing == nullptr ? 0 : drawing->numberOf(state.name);
}

bool flag(const LayerState& state, std::int64_t bit) {
    const RecordNumber number = live(state);
    return number != 0 && (currentDrawing()->integerOf(number, kFlagsCode).value_or(0) & bit) != 0;
}

bool isLayerName(const Drawing& drawing, std::wstring_view name) {
    const std::size_t most = drawing.release() < Release::R2000 ? kLongestOldName : kLongestName;
    return !name.empty() && name.size() <= most &&
           name.find_first_of(L"<>/\\\":;?*,=|`") == std::wstring_view::npos;
}

}  // namespace

}  // namespace mor::host

namespace host = mor::host;

CMORAdsLayer::CMORAdsLayer() : m_state(std::make_unique<mor::LayerState>()) {}
CMORAdsLayer::~CMORAdsLayer() = default;

bool CMORAdsLayer::Connect(const wchar_t* name) {
    *m_state = {};
    host::Drawing* drawing = host::currentDrawing();
    if (drawing == nullptr || name == nullptr) return false;
    if (host::faults::layerRefused() || host::faults::shouldFail("CMORAdsLayer::Connect"))
        return false;
    const host::RecordNumber number = drawing->names().findSymbol("LAYER", name);
    if (number == 0) return false;
    m_state->name = drawing->nameOf(number);
    return true;
}

bool CMORAdsLayer::Create(const wchar_t* name) {
    *m_state = {};
    host::Drawing* drawing = host::currentDrawing();
    if (drawing == nullptr || name == nullptr || !host::isLayerName(*drawing, name)) return false;
    if (host::faults::layerRefused() || host::faults::writesRefused() ||
        host::faults::shouldFail("CMORAdsLayer::Create"))
        return false;
    if (drawing->names().findSymbol("LAYER", name) != 0) return false;
    m_state->name = drawing->nameOf(host::addLayer(*drawing, name));
    return true;
}

bool CMORAdsLayer::IsFrozen() const {
    return m_state->frozen.value_or(host::flag(*m_state, host::kFrozenLayer));
}
bool CMORAdsLayer::IsFrozen(bool frozen) {
    if (host::live(*m_state) == 0) return false;
    m_state->frozen = frozen;
    return true;
}
bool CMORAdsLayer::IsLocked() const {
    return m_state->locked.value_or(host::flag(*m_state, host::kLockedLayer));
}
bool CMORAdsLayer::IsLocked(bool locked) {
    if (host::live(*m_state) == 0) return false;
    m_state->locked = locked;
    return true;
}

bool CMORAdsLayer::Flush() {
    const host::RecordNumber number = host::live(*m_state);
    if (number == 0) return false;
    auto& counters = host::runningCounters();
    ++(host::reactorsOff() ? counters.flushesReactorsOff : counters.flushesReactorsOn);
    if (host::faults::shouldFail("CMORAdsLayer::Flush")) return false;
    if (!m_state->frozen && !m_state->locked) return true;
    if (host::faults::writesRefused()) return false;
    host::Drawing& drawing = *host::currentDrawing();
    std::int64_t flags = drawing.integerOf(number, host::kFlagsCode).value_or(0);
    const auto set = [&flags](std::int64_t bit, bool on) {
        flags = on ? flags | bit : flags & ~bit;
    };
    if (m_state->frozen) set(host::kFrozenLayer, *m_state->frozen);
    if (m_state->locked) set(host::kLockedLayer, *m_state->locked);
    drawing.setGroup(number, host::kFlagsCode, flags);
    *m_state = mor::LayerState{m_state->name, {}, {}};
    return true;
}
