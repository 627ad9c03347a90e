#include "platform/entity.h"

#include "host/documents/document.h"
#include "host/documents/running_counters.h"
#include "host/drawing/additions.h"
#include "host/faults.h"
#include "host/lisp/lisp_value.h"
#include "host/text/group_codes.h"
#include "platform/entity_calls.h"
#include "platform/runtime.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace mor::host {

/// What a layer's name depends on: the drawing, the mount and the number of the layer's text.
struct LayerKey {
    std::int64_t drawing = 0;  ///< 0: nothing
    std::int64_t mount = 0;
    std::uint16_t layer = 0;

    friend bool operator==(const LayerKey&, const LayerKey&) = default;
};

}  // namespace mor::host

namespace mor {

/// What one object has changed and not yet flushed, on top of the drawing as it is at each moment.
struct EntityState {
    EntityName name;
    std::map<int, std::variant<std::int64_t, std::wstring>> groups;
    std::vector<host::Attribute> attributes;  ///< in order; nil removes
    mutable CString handle;
    mutable CString type;
    mutable std::wstring layer;
    mutable host::LayerKey layerKey;  ///< of `layer`, while it is one of those that have one
    mutable std::wstring entry;

    /// The text of a group that is set and not yet flushed.
    [[nodiscard]] std::optional<std::wstring> pendingText(int code) const {
        const auto pending = groups.find(code);
        if (pending == groups.end()) return std::nullopt;
        const auto* number = std::get_if<std::int64_t>(&pending->second);
        return number != nullptr ? std::to_wstring(*number)
                                 : std::get<std::wstring>(pending->second);
    }
    /// Texts that were given out keep their room: walks connect one object to many entities.
    void disconnect() {
        name = {};
        groups.clear();
        attributes.clear();
    }
};

}  // namespace mor

namespace mor::host {

namespace {

constexpr std::size_t kAttributeTextLength = 2047;

/// The connected record; none when it is gone, erased or of another document than the current one.
Located live(const EntityState& state) {
    const Located found = locate(state.name);
    return found && found.drawing->entry(found.number).has(kErased) ? Located{} : found;
}

/// The same for a change: records of referenced drawings are read-only.
Located writeable(const EntityState& state) {
    const Located found = live(state);
    return found.mount == nullptr ? found : Located{};
}

long roomOf() {
    const long limit = faults::roomLimit();
    return limit > 0 ? limit : kRoomPerRecord;
}

/// The drawing's attributes with the pending ones over them.
AttributeList seen(const std::vector<Attribute>& changes, const Located& found) {
    AttributeList list = found.drawing->attributesNow(found.number);
    for (const auto& [name, value] : changes) list.set(name, value);
    return list;
}

/// What comes of changes.
struct Outcome {
    bool fits = false;
    bool holdsAny = false;  ///< any attributes are left
};

/// `former` are the changes that stand already. An entity over its room may still shrink.
Outcome outcomeOf(const std::vector<Attribute>& changes, const Located& found,
                  const std::vector<Attribute>* former = nullptr) {
    const AttributeList& now = found.drawing->attributesNow(found.number);
    if (!now.damage.empty()) return {};
    const bool none = former == nullptr || former->empty();
    const long before = none ? now.used() : seen(*former, found).used();
    if (changes.size() == 1) {  // nearly always: no list is made for that
        const Attribute& change = changes.front();
        const long after = now.usedWith(change.name, change.value);
        const std::size_t others = now.items().size() - (now.find(change.name) != nullptr ? 1 : 0);
        return {after <= roomOf() || after <= before,
                others > 0 || !CMORAdsLisp::NilP(change.value)};
    }
    const AttributeList list = seen(changes, found);
    return {list.used() <= roomOf() || list.used() <= before, !list.items().empty()};
}

/// The last change of that name; null when there is none.
const Attribute* lastChange(const std::vector<Attribute>& attributes, std::wstring_view name) {
    for (std::size_t i = attributes.size(); i > 0; --i)
        if (attributes[i - 1].name == name) return &attributes[i - 1];
    return nullptr;
}

const Attribute* findSeen(const EntityState& state, const Located& found, std::wstring_view name,
                          Attribute& pending) {
    if (const Attribute* last = lastChange(state.attributes, name)) {
        if (CMORAdsLisp::NilP(last->value)) return nullptr;
        pending = *last;
        return &pending;
    }
    return found.drawing->attributesNow(found.number).find(name);
}

/// Entity names of another drawing cannot be stored: their handles would name something else.
bool namesAreOurs(const CMORAdsLispVar& value) {
    Drawing* drawing = currentDrawing();
    return std::ranges::none_of(tokensOf(value), [drawing](const LispToken& token) {
        if (!token.is(LispKind::EntityName)) return false;
        const EntityName name = token.asEntityName();
        return !name.isNone() && drawing->numberOf(name) == 0 && drawing->handleForName(name) == 0;
    });
}

/// The table in which the text of a group names a symbol of the record's drawing; empty for other
/// groups.
std::string_view tableOfGroup(const Located& found, int code) {
    const std::string& type = found.drawing->typeOf(found.number);
    const bool dimension =
        type == "DIMENSION" || type == "ARC_DIMENSION" || type == "LARGE_RADIAL_DIMENSION";
    switch (code) {
        case 2:
            return dimension || type == "INSERT" || type == "ACAD_TABLE" ? "BLOCK" : "";
        case 3:
            return dimension || type == "LEADER" || type == "TOLERANCE" ? "DIMSTYLE" : "";
        case 6:
            return "LTYPE";
        case 7:
            return "STYLE";
        case 8:
            return "LAYER";
        default:
            return "";
    }
}

/// Entity names in a value of a referenced drawing are those of the mount.
CMORAdsLispVar asSeenFrom(const Located& found, const CMORAdsLispVar& value) {
    if (found.mount == nullptr || !holdsEntityName(value)) return value;
    std::vector<LispToken> tokens;
    for (const LispToken& token : tokensOf(value)) {
        const bool name = token.is(LispKind::EntityName) && !token.asEntityName().isNone();
        tokens.push_back(
            name ? LispToken::entityName({token.asEntityName().first(), found.mount->number})
                 : token);
    }
    return LispAccess::make(std::move(tokens));
}

/// Short ASCII text, without taking room for it each time.
void assign(CString& target, std::string_view text) {
    // Types mostly are those of the entity before.
    const std::wstring_view now(target.GetString(), static_cast<std::size_t>(target.GetLength()));
    if (std::ranges::equal(now, text)) return;
    std::array<wchar_t, 64> wide;
    if (text.size() < wide.size()) {
        *std::ranges::copy(text, wide.begin()).out = L'\0';
        target = wide.data();
    } else {
        target = std::wstring(text.begin(), text.end()).c_str();
    }
}

void assignHandle(CString& target, std::uint64_t handle) {
    std::array<wchar_t, 17> text{};
    wchar_t* begin = text.end() - 1;
    for (; handle != 0; handle >>= 4U)
        *--begin = static_cast<wchar_t>("0123456789ABCDEF"[handle & 15U]);
    target = begin;
}

/// Empty where the layer has to be read.
LayerKey layerKeyOf(const Located& found) {
    const std::uint16_t layer = found.drawing->layerNumberOf(found.number);
    if (layer == TextNumbers::kNone) return {};
    return {found.drawing->nameOf(found.number).second(),
            found.mount == nullptr ? 0 : found.mount->number, layer};
}

/// The layer as the document knows it: the part of every walk that is done for each entity.
void appendLayer(std::wstring& layer, const Located& found) {
    const auto group = found.drawing->groupOf(found.number, kLayerCode);
    found.drawing->text().decodeBehind(layer, group ? group->text() : "0");
    if (found.mount != nullptr && !isCommonSymbol("LAYER", layer)) {
        layer.insert(0, 1, L'|');
        layer.insert(0, found.mount->name);
    }
}

/// The same once for all records that have that key.
const std::wstring& layerOfKey(const LayerKey& key, const Located& found) {
    const Mount& mount = *found.mount;
    if (mount.namedDrawing != key.drawing) mount.layerNames.clear();
    mount.namedDrawing = key.drawing;
    if (key.layer >= mount.layerNames.size()) mount.layerNames.resize(key.layer + std::size_t{1});
    std::wstring& name = mount.layerNames[key.layer];
    if (name.empty()) appendLayer(name, found);
    return name;
}

/// A removal followed by a new value stays two changes: the attribute then comes last in the list.
void note(std::vector<Attribute>& attributes, std::wstring_view name, const CMORAdsLispVar& value) {
    const Attribute* last = lastChange(attributes, name);
    if (last != nullptr && CMORAdsLisp::NilP(last->value) == CMORAdsLisp::NilP(value)) {
        attributes[static_cast<std::size_t>(last - attributes.data())].value = value;
        return;
    }
    attributes.push_back({std::wstring(name), value});
}

}  // namespace

std::wstring attributeText(const CMORAdsLispVar& value) {
    std::wstring text = CMORAdsLisp::StringP(value) ? stringOf(value) : princText(value);
    if (text.size() > kAttributeTextLength) text.resize(kAttributeTextLength);
    return text;
}

bool layerIsLocked(Drawing& drawing, RecordNumber number) {
    if (!faults::layerLocksEnforced()) return false;
    const auto layer = drawing.textOf(number, 8);
    const RecordNumber record = layer ? drawing.names().findSymbol("LAYER", *layer) : 0;
    return record != 0 && (drawing.integerOf(record, kFlagsCode).value_or(0) & kLockedLayer) != 0;
}

}  // namespace mor::host

namespace host = mor::host;
using host::RecordNumber;

CMOREntity::CMOREntity() : m_state(std::make_unique<mor::EntityState>()) {}
CMOREntity::~CMOREntity() = default;

bool CMOREntity::Connect(const ads_name name) {
    m_state->disconnect();
    const host::Located found = host::locate(mor::EntityName(name));
    if (!found || host::faults::shouldFail("CMOREntity::Connect")) return false;
    if (found.drawing->entry(found.number).has(host::kEdge | host::kErased)) return false;
    m_state->name = mor::EntityName(name);
    return true;
}

bool CMOREntity::Disconnect() {
    const bool connected = !m_state->name.isNone();
    m_state->disconnect();
    return connected;
}

bool CMOREntity::Flush() {
    const host::Located found = host::writeable(*m_state);
    auto& counters = host::runningCounters();
    if (!found) return false;
    ++(host::reactorsOff() ? counters.flushesReactorsOff : counters.flushesReactorsOn);
    if (host::faults::shouldFail("CMOREntity::Flush")) return false;
    if (m_state->groups.empty() && m_state->attributes.empty()) return true;
    host::Drawing& drawing = *found.drawing;
    const RecordNumber number = found.number;
    if (host::faults::writesRefused() || host::layerIsLocked(drawing, number)) return false;
    if (!m_state->attributes.empty()) {
        const host::Outcome outcome = host::outcomeOf(m_state->attributes, found);
        if (!outcome.fits) return false;
        if (outcome.holdsAny && !drawing.attributesWereSet(number))
            host::registerApplication(drawing, host::kAttributeApplication);
        drawing.setAttributes(number, m_state->attributes);
    }
    for (const auto& [code, value] : m_state->groups) {
        if (code == 67 && std::get<std::int64_t>(value) == 0 &&
            drawing.isPaper(drawing.entry(number).container))
            drawing.moveToModelSpace(number);
        else if (const auto* integer = std::get_if<std::int64_t>(&value))
            drawing.setGroup(number, code, *integer);
        else
            drawing.setText(number, code, std::get<std::wstring>(value));
    }
    m_state->groups.clear();
    m_state->attributes.clear();
    return true;
}

bool CMOREntity::Destroy() {
    if (!host::live(*m_state) || host::faults::shouldFail("CMOREntity::Destroy")) return false;
    if (acdbEntDel(m_state->name) != RTNORM) return false;
    *m_state = {};
    return true;
}

bool CMOREntity::GetEName(ads_name result) const {
    m_state->name.copyTo(result);
    return !m_state->name.isNone();
}

const CString& CMOREntity::Handle() const {
    if (const host::Located found = host::locate(m_state->name))
        host::assignHandle(m_state->handle, found.drawing->handleOf(found.number));
    else
        m_state->handle = host::handleText(m_state->name).c_str();
    return m_state->handle;
}

const CString& CMOREntity::Type() const {
    const host::Located found = host::locate(m_state->name);
    if (found)
        host::assign(m_state->type, found.drawing->typeOf(found.number));
    else
        m_state->type.Empty();
    return m_state->type;
}

const wchar_t* CMOREntity::GetLayer(wchar_t* buffer) const {
    const host::Located found = host::live(*m_state);
    auto pending = m_state->pendingText(host::kLayerCode);
    const host::LayerKey key = pending || !found ? host::LayerKey() : host::layerKeyOf(found);
    if (key != m_state->layerKey || key == host::LayerKey()) {
        m_state->layerKey = {};
        m_state->layer.clear();
        if (pending)
            m_state->layer = *std::move(pending);
        else if (found && found.mount != nullptr && key != host::LayerKey())
            m_state->layer = host::layerOfKey(key, found);
        else if (found)
            host::appendLayer(m_state->layer, found);
        m_state->layerKey = key;
    }
    if (buffer != nullptr) *std::ranges::copy(m_state->layer, buffer).out = L'\0';
    return m_state->layer.c_str();
}

bool CMOREntity::SetLayer(const wchar_t* layer) {
    if (layer == nullptr || *layer == L'\0' || !host::writeable(*m_state)) return false;
    m_state->groups[8] = std::wstring(layer);
    return true;
}

bool CMOREntity::GetEntityEntry(int code, const wchar_t*& text) const {
    const host::Located found = host::live(*m_state);
    if (!found) return false;
    std::optional<std::wstring> value = m_state->pendingText(code);
    if (!value) {
        value = found.drawing->textOf(found.number, code);
        if (!value) return false;
        const std::string_view table = host::tableOfGroup(found, code);
        if (!table.empty()) value = found.qualified(table, *value);
    }
    m_state->entry = *std::move(value);
    text = m_state->entry.c_str();
    return true;
}

bool CMOREntity::GetGroupShort(int code, short* value) const {
    const host::Located found = host::live(*m_state);
    if (!found || value == nullptr) return false;
    if (const auto pending = m_state->groups.find(code); pending != m_state->groups.end()) {
        const auto* number = std::get_if<std::int64_t>(&pending->second);
        if (number != nullptr) *value = static_cast<short>(*number);
        return number != nullptr;
    }
    if (code == 67) {
        const host::ContainerNumber container = found.drawing->entry(found.number).container;
        const bool paper = container != host::kNoContainer && found.drawing->isPaper(container);
        *value = paper && found.mount == nullptr ? 1 : 0;
        return true;
    }
    const auto number16 = found.drawing->integerOf(found.number, code);
    if (!number16) return false;
    *value = static_cast<short>(*number16);
    return true;
}

bool CMOREntity::SetGroupShort(int code, short value) {
    if (!host::writeable(*m_state)) return false;
    m_state->groups[code] = std::int64_t{value};
    return true;
}

bool CMOREntity::GetAttribute(const wchar_t* name, CMORAdsLispVar& value) const {
    const host::Located found = host::live(*m_state);
    if (!found || name == nullptr || host::faults::shouldFail("CMOREntity::GetAttribute"))
        return false;
    host::Attribute pending;
    const host::Attribute* attribute = host::findSeen(*m_state, found, name, pending);
    if (attribute == nullptr) return false;
    value = host::asSeenFrom(found, attribute->value);
    return true;
}

bool CMOREntity::SetAttribute(const wchar_t* name, const CMORAdsLispVar& value) {
    const host::Located found = host::writeable(*m_state);
    if (!found || name == nullptr || *name == L'\0' ||
        host::faults::shouldFail("CMOREntity::SetAttribute"))
        return false;
    if (!host::isStorable(value) || !host::namesAreOurs(value)) return false;
    std::vector<host::Attribute> wanted = m_state->attributes;
    host::note(wanted, name, value);
    if (!host::outcomeOf(wanted, found, &m_state->attributes).fits) return false;
    m_state->attributes = std::move(wanted);
    return true;
}

bool CMOREntity::GetAttributeText(const wchar_t* name, wchar_t* buffer) const {
    const host::Located found = host::live(*m_state);
    if (!found || name == nullptr || host::faults::shouldFail("CMOREntity::GetAttributeText"))
        return false;
    host::Attribute pending;
    const host::Attribute* attribute = host::findSeen(*m_state, found, name, pending);
    if (attribute == nullptr) return false;
    const std::wstring text = host::attributeText(attribute->value);
    buffer[text.copy(buffer, text.size())] = L'\0';
    return true;
}

bool CMOREntity::SetAttributeText(const wchar_t* name, const wchar_t* text) {
    if (text == nullptr || host::faults::shouldFail("CMOREntity::SetAttributeText")) return false;
    return SetAttribute(name, CMORAdsLispVar(text));
}

bool CMOREntity::DeleteAttribute(const wchar_t* name) {
    const host::Located found = host::writeable(*m_state);
    if (!found || name == nullptr || host::faults::shouldFail("CMOREntity::DeleteAttribute"))
        return false;
    host::Attribute pending;
    if (host::findSeen(*m_state, found, name, pending) == nullptr) return false;
    host::note(m_state->attributes, name, {});
    return true;
}

void CMOREntity::GetAttributeNames(CMORStringList& names) const {
    names.Reset();
    const host::Located found = host::live(*m_state);
    if (!found) return;
    const host::AttributeList list = host::seen(m_state->attributes, found);
    for (const host::Attribute& attribute : list.items()) names.Append(attribute.name.c_str());
}

long CMOREntity::GetXDataSize(const wchar_t* name) const {
    const host::Located found = host::live(*m_state);
    if (!found || name == nullptr) return 0;
    host::Attribute pending;
    const host::Attribute* attribute = host::findSeen(*m_state, found, name, pending);
    return attribute == nullptr ? 0 : host::attributeCost(*attribute);
}

long CMOREntity::GetFreeXDataMem() const {
    const host::Located found = host::live(*m_state);
    return !found ? 0 : host::roomOf() - host::seen(m_state->attributes, found).used();
}
