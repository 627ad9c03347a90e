#include "tools/moradmin/picture/looks.h"

#include "platform/runtime.h"
#include "space/record_flags.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace mor::tool {

namespace {

constexpr int kApplication = 1001;
constexpr float kDefaultWeight = 0.25F;
// Weights that are no hundredths of a millimetre.
constexpr int kWeightByLayer = -1;
constexpr int kWeightByBlock = -2;
constexpr int kMostWeight = 211;
// Kinds of a transparency, in its highest byte.
constexpr int kOpaqueByLayer = 0;
constexpr int kOpaqueByBlock = 1;
// Of a style that names a family: flags in the extended data.
constexpr unsigned kItalic = 0x1000000;
constexpr unsigned kBold = 0x2000000;
constexpr int kVertical = 4;
// What stands within a dash of a line type.
constexpr unsigned kUpright = 1;
constexpr unsigned kLineText = 2;
/// Kinds of packed colours, in their highest byte.
constexpr unsigned kPackedTrue = 0xC2;
constexpr unsigned kPackedNumber = 0xC3;

bool isName(std::string_view text, std::wstring_view name) {
    return equalNoCase(wide(std::string(text)), name);
}

float weightOf(int hundredths) {
    return hundredths < 0 || hundredths > kMostWeight ? kDefaultWeight
                                                      : static_cast<float>(hundredths) / 100.0F;
}

float opacityOf(int transparency) {
    return static_cast<float>(static_cast<unsigned>(transparency) & 0xFFU) / 255.0F;
}

bool isOwnTransparency(std::int64_t transparency) {
    constexpr int kOwn = 2;
    return transparency / 0x1000000 == kOwn;
}

}  // namespace

std::string Looks::qualified(const std::string& reference, const std::string& name) {
    return reference.empty() ? name : reference + "|" + name;
}

std::optional<mor::EntityName> Looks::symbol(std::string_view table,
                                             const std::string& name) const {
    auto record = host::resolveSymbol(m_document, table, wide(name));
    if (record) return record;
    const std::size_t bar = name.rfind('|');  // one that is the same in all drawings never has it
    if (bar == std::string::npos) return std::nullopt;
    return host::resolveSymbol(m_document, table, wide(name.substr(bar + 1)));
}

const LayerLook& Looks::layer(const std::string& name) {
    const auto [known, added] = m_layers.try_emplace(name);
    if (!added) return known->second;
    LayerLook& found = known->second;
    found.name = &known->first;
    const auto id = host::resolveSymbol(m_document, "LAYER", wide(name));
    if (!id) return found;
    const EntityRecord record(m_document, *id);
    const int number = record.integer(62, 7);  // negative for a layer that is off
    found.off = number < 0;
    found.frozen = (record.integer(kGroupFlags) & kLayerFrozen) != 0;
    found.plotted = record.integer(290, 1) != 0 && !isName(name, L"Defpoints") &&
                    !wide(name).ends_with(L"|Defpoints");
    Look& look = found.look;
    look.colour = record.find(420) != nullptr ? record.integer(420) & kWhite
                                              : paletteColour(std::abs(number));
    look.weight = weightOf(record.integer(370, -3));
    const std::size_t bar = name.rfind('|');
    const std::string reference = bar == std::string::npos ? "" : name.substr(0, bar);
    look.lineType = &lineType(qualified(reference, record.text(6)));
    for (const host::RecordGroup& group : extendedData(m_document, *id, "AcCmTransparency"))
        if (group.code == 1071 && isOwnTransparency(readInteger(group.value).value_or(0)))
            look.opacity = opacityOf(static_cast<int>(readInteger(group.value).value_or(0xFF)));
    return found;
}

const LineType& Looks::lineType(const std::string& name) {
    const auto [known, added] = m_lineTypes.try_emplace(name);
    if (!added || name.empty()) return known->second;
    if (const auto record = symbol("LTYPE", name)) readLineType(*record, known->second);
    return known->second;
}

void Looks::readLineType(mor::EntityName name, LineType& type) const {
    bool within = false;  // a text of the dash that is read
    double length = 0.0;
    const EntityRecord record(m_document, name);
    for (const host::GroupView& group : record.groups()) {
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == 49) {
            type.lengths.push_back(value);
            length += std::fabs(value);
            within = false;
        }
        if (group.code == 74 && (static_cast<unsigned>(value) & kLineText) != 0) {
            within = true;
            type.texts.emplace_back().along = length;
            type.texts.back().upright = (static_cast<unsigned>(value) & kUpright) != 0;
        }
        if (!within) continue;
        LineText& text = type.texts.back();
        if (group.code == 340)
            if (const auto style =
                    host::findHandleBeside(m_document, name, wide(std::string(group.value))))
                text.style = styleOf(*style);
        if (group.code == 46) text.size = value;
        if (group.code == 50) text.turn = value;
        if (group.code == 44) text.x = value;
        if (group.code == 45) text.y = value;
        if (group.code == 9) text.text = group.value;
    }
}

const TextStyle& Looks::textStyle(const std::string& name) {
    const auto [known, added] = m_textStyles.try_emplace(name);
    if (!added) return known->second;
    const auto id = host::resolveSymbol(m_document, "STYLE", wide(name));
    if (id) known->second = styleOf(*id);
    return known->second;
}

TextStyle Looks::styleOf(mor::EntityName name) const {
    const EntityRecord record(m_document, name);
    TextStyle style;
    style.font.file = record.text(3);
    style.height = std::max(record.real(40), 0.0);
    style.widened = record.real(41, 1.0);
    style.oblique = record.real(50);
    style.vertical = (record.integer(kGroupFlags) & kVertical) != 0;
    for (const host::RecordGroup& group : extendedData(m_document, name, "ACAD")) {
        if (group.code == 1000) style.font.family = group.value;
        if (group.code != 1071) continue;
        const auto flags = static_cast<unsigned>(readInteger(group.value).value_or(0));
        style.font.bold = (flags & kBold) != 0;
        style.font.italic = (flags & kItalic) != 0;
    }
    return style;
}

const EntityRecord* Looks::dimensionStyle(const std::string& name) {
    const auto [known, added] = m_dimensionStyles.try_emplace(name);
    if (added)
        if (const auto record = symbol("DIMSTYLE", name))
            known->second.emplace(m_document, *record);
    return known->second ? &*known->second : nullptr;
}

int colourOf(const EntityRecord& record, int byLayer, int byBlock) {
    if (record.find(420) != nullptr) return record.integer(420) & kWhite;
    const int number = record.integer(62, kByLayer);
    if (number == kByBlock) return byBlock;
    return number == kByLayer ? byLayer : paletteColour(std::abs(number));
}

Look Looks::lookOf(const EntityRecord& record, const LayerLook& layer, const Look& insert,
                   const std::string& reference) {
    Look look;
    look.colour = colourOf(record, layer.look.colour, insert.colour);
    const int weight = record.integer(370, kWeightByLayer);
    look.weight = weight == kWeightByLayer   ? layer.look.weight
                  : weight == kWeightByBlock ? insert.weight
                                             : weightOf(weight);
    const int transparency = record.integer(440);
    const int kind = transparency / 0x1000000;
    look.opacity = kind == kOpaqueByLayer   ? layer.look.opacity
                   : kind == kOpaqueByBlock ? insert.opacity
                                            : opacityOf(transparency);
    const std::string_view* type = record.find(6);
    if (type == nullptr || type->empty() || isName(*type, L"BYLAYER"))
        look.lineType = layer.look.lineType;
    else if (isName(*type, L"BYBLOCK"))
        look.lineType = insert.lineType;
    else
        look.lineType = &lineType(qualified(reference, std::string(*type)));
    look.lineTypeScale = record.real(48, 1.0);
    return look;
}

std::optional<int> packedColour(int packed) {
    const auto bits = static_cast<unsigned>(packed);
    const unsigned kind = bits >> 24U;
    if (kind == kPackedTrue) return static_cast<int>(bits & 0xFFFFFFU);
    if (kind == kPackedNumber) return paletteColour(static_cast<int>(bits & 0xFFU));
    return std::nullopt;
}

std::vector<host::RecordGroup> extendedData(const AcApDocument* document, mor::EntityName name,
                                            std::string_view application) {
    std::vector<host::RecordGroup> found;
    bool within = false;
    for (host::RecordGroup& group : host::recordGroups(document, name)) {
        if (group.code == kApplication)
            within = equalNoCase(wide(group.value), wide(std::string(application)));
        else if (within)
            found.push_back(std::move(group));
    }
    return found;
}

}  // namespace mor::tool
