#include "host/dwg/encode.h"

#include "host/dwg/common_data.h"
#include "host/text/ascii.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

namespace mor::host {

namespace {

constexpr std::pair<std::string_view, std::uint16_t> kTypes[] = {
    {"TEXT", 1},  {"ATTDEF", 3}, {"BLOCK", 4},         {"ENDBLK", 5}, {"INSERT", 7}, {"CIRCLE", 18},
    {"LINE", 19}, {"POINT", 27}, {"BLOCK_RECORD", 49}, {"LAYER", 51}, {"APPID", 67}};
// How handles refer.
constexpr unsigned kHardOwner = 3;
constexpr unsigned kSoftPointer = 4;
constexpr unsigned kHardPointer = 5;
constexpr unsigned kByHandle = 3;
constexpr std::int64_t kByLayer = 256;
constexpr std::uint32_t kColourNumber = 0xC3000000;
constexpr double kRadians = 0.017453292519943295;

std::uint16_t typeOf(std::string_view type) {
    const auto* found =
        std::ranges::find(kTypes, type, &std::pair<std::string_view, std::uint16_t>::first);
    return found == std::end(kTypes) ? 0 : found->second;
}

/// The index of a line weight.
std::uint8_t weightIndex(std::int64_t weight) {
    for (std::uint8_t index = 0; index < 32; ++index)
        if (lineWeight(index) == weight && index != 28) return index;
    constexpr std::uint8_t kByLayerIndex = 29;
    return kByLayerIndex;
}

std::string bytesOfHex(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        unsigned value = 0;
        for (const char c : digits.substr(i, 2)) {
            const unsigned digit = static_cast<unsigned char>(c) - unsigned{'0'};
            const unsigned letter = (static_cast<unsigned char>(c) | 0x20U) - unsigned{'a'};
            value = value << 4U | (digit <= 9 ? digit : letter + 10);
        }
        bytes += static_cast<char>(value);
    }
    return bytes;
}

}  // namespace

/// An object on its way. Texts lie behind the data from R2007 on.
struct ObjectEncoder::Making {
    ObjectBits object;
    BitWriter strings;
    bool hasStrings = false;
};

bool ObjectEncoder::knows(std::string_view type) { return typeOf(type) != 0; }

void ObjectEncoder::text(Making& making, std::string_view text) const {
    if (since(Release::R2007)) {
        const std::string units = utf16Of(text);
        making.hasStrings = true;
        making.strings.bitShort(static_cast<std::int64_t>(units.size() / 2));
        making.strings.text(units);
        return;
    }
    // A NUL behind it counts, as in the files of other programs.
    making.object.data.bitShort(text.empty() ? 0 : static_cast<std::int64_t>(text.size()) + 1);
    if (text.empty()) return;
    making.object.data.text(text);
    making.object.data.byte(0);
}

std::string ObjectEncoder::encode(const GroupList& record, const ObjectPlace& place,
                                  const NewBlock& block) const {
    Making making;
    BitWriter& data = making.object.data;
    const std::string_view typeText = record[0].bare();
    const std::uint16_t type = typeOf(typeText);
    if (since(Release::R2010)) {
        data.bits(0, 2);
        data.byte(type);
    } else {
        data.bitShort(type);
        making.object.sizeAt = data.size();
        data.longWord(0);
    }
    data.handle(0, place.handle);
    data.append(extendedData(record, record.extendedBegin(), record.size()));
    data.bitShort(0);
    if (isEntityType(type)) {
        beginEntity(making, record, place);
        addEntity(making, record);
    } else {
        beginObject(making, place);
        beginTableRecord(making, record);
        if (typeText == "LAYER") addLayer(making, record);
        if (typeText == "APPID") addApplication(making);
        if (typeText == "BLOCK_RECORD") addBlockRecord(making, block);
    }
    if (since(Release::R2007)) addStrings(making);
    return sealed(std::move(making.object), m_file.release());
}

void ObjectEncoder::beginObject(Making& making, const ObjectPlace& place) const {
    BitWriter& data = making.object.data;
    data.bitLong(0);
    if (since(Release::R2004)) data.bit(true);
    if (since(Release::R2013)) data.bit(false);
    making.object.handles.handle(kSoftPointer, place.owner);
    if (!since(Release::R2004)) making.object.handles.handle(kHardOwner, 0);
}

void ObjectEncoder::addApplication(Making& making) {
    making.object.data.byte(0);
    making.object.handles.handle(kHardPointer, 0);
}

/// The texts behind the data, and how long they are.
void ObjectEncoder::addStrings(Making& making) {
    constexpr std::uint64_t kMore = 0x8000;
    BitWriter& data = making.object.data;
    const std::uint64_t bits = making.strings.size();
    data.append(making.strings);
    if (making.hasStrings) {
        if (bits >= kMore) data.word(bits >> 15U);
        data.word(bits < kMore ? bits : (bits & (kMore - 1)) | kMore);
    }
    data.bit(making.hasStrings);
}

// ---- extended data ------------------------------------------------------------------------------

BitWriter ObjectEncoder::extendedData(const std::vector<NewGroup>& groups) const {
    GroupList list;
    for (const NewGroup& group : groups) list.add(group);
    return extendedData(list, 0, list.size());
}

namespace {

/// The items of one application; `next` moves over the coordinates of a point.
void appendItem(std::string& items, const GroupList& record, std::size_t& at, Release release,
                unsigned codePage, const NameSource& names) {
    const Group& group = record[at];
    const int code = group.code();
    const auto kind = static_cast<std::uint64_t>(code - 1000);
    appendNumber(items, kind, 1);
    switch (code) {
        case 1002:
            appendNumber(items, group.bare() == "{" ? 0 : 1, 1);
            break;
        case 1003:
            appendHighFirst(items, names.find("LAYER", group.text()), 8);
            break;
        case 1004: {
            const std::string bytes = bytesOfHex(group.bare());
            appendNumber(items, bytes.size(), 1);
            items += bytes;
            break;
        }
        case 1005:
            appendHighFirst(items, group.handle(), 8);
            break;
        case 1070:
            appendNumber(items, static_cast<std::uint64_t>(group.integer().value_or(0)), 2);
            break;
        case 1071:
            appendNumber(items, static_cast<std::uint64_t>(group.integer().value_or(0)), 4);
            break;
        case 1000:
            if (release >= Release::R2007) {
                const std::string units = utf16Of(group.text());
                appendNumber(items, units.size() / 2, 2);
                items += units;
            } else {
                appendNumber(items, group.text().size(), 1);
                appendHighFirst(items, codePage, 2);
                items += group.text();
            }
            break;
        default: {
            const std::size_t reals = codeKind(code) == CodeKind::Point ? 3 : 1;
            for (std::size_t i = 0; i < reals && at + i < record.size(); ++i)
                appendNumber(items, std::bit_cast<std::uint64_t>(record[at + i].real().value_or(0)),
                             8);
            at += reals - 1;
            break;
        }
    }
}

}  // namespace

BitWriter ObjectEncoder::extendedData(const GroupList& record, std::size_t begin,
                                      std::size_t end) const {
    BitWriter lists;
    std::uint64_t application = 0;
    std::string items;
    const auto close = [&] {
        if (items.empty()) return;
        lists.bitShort(static_cast<std::int64_t>(items.size()));
        lists.handle(kHardPointer, application);
        lists.text(items);
        items.clear();
    };
    for (std::size_t at = begin; at < end; ++at) {
        if (record[at].code() == kCommentCode) continue;
        if (record[at].code() == kApplicationCode) {
            close();
            application = m_names.find("APPID", record[at].text());
            continue;
        }
        appendItem(items, record, at, m_file.release(), m_file.start().codePage, m_names);
    }
    close();
    return lists;
}

// ---- records of tables --------------------------------------------------------------------------

void ObjectEncoder::beginTableRecord(Making& making, const GroupList& record) const {
    const Group* name = record.find(kNameCode);
    text(making, name == nullptr ? std::string_view() : name->text());
    BitWriter& data = making.object.data;
    if (since(Release::R2007)) return data.bitShort(0);
    data.bit(true);
    data.bitShort(0);
    data.bit(false);
}

void ObjectEncoder::addColour(Making& making, std::int64_t number) const {
    BitWriter& data = making.object.data;
    if (!since(Release::R2004)) return data.bitShort(number);
    data.bitShort(0);
    data.bitLong(static_cast<std::int32_t>(kColourNumber | static_cast<std::uint32_t>(number)));
    data.byte(0);
}

void ObjectEncoder::addLayer(Making& making, const GroupList& record) const {
    BitWriter& data = making.object.data;
    BitWriter& handles = making.object.handles;
    const std::int64_t flags = record.integerOf(kFlagsCode, 0);
    const std::int64_t colour = record.integerOf(62, 7);
    std::int64_t bits = 0x10 | weightIndex(record.integerOf(370, -3)) << 5U;
    if ((flags & kFrozenLayer) != 0) bits |= 1;
    if (colour < 0) bits |= 2;
    if ((flags & 2) != 0) bits |= 4;
    if ((flags & kLockedLayer) != 0) bits |= 8;
    data.bitShort(bits);
    addColour(making, std::abs(colour));
    const auto handleOf = [&record](int code) {
        const Group* group = record.find(code);
        return group == nullptr ? 0 : group->handle();
    };
    const Group* lineType = record.find(6);
    std::uint64_t line = lineType == nullptr ? 0 : m_names.find("LTYPE", lineType->text());
    if (line == 0) line = m_file.header().continuous;
    handles.handle(kHardPointer, 0);
    handles.handle(kHardPointer, handleOf(390));
    if (since(Release::R2007)) handles.handle(kHardPointer, handleOf(347));
    handles.handle(kHardPointer, line);
    if (since(Release::R2013)) handles.handle(kHardPointer, handleOf(348));
}

void ObjectEncoder::addBlockRecord(Making& making, const NewBlock& block) const {
    BitWriter& data = making.object.data;
    BitWriter& handles = making.object.handles;
    data.bit((block.flags & kAnonymousBlock) != 0);
    data.bit((block.flags & kBlockWithAttributes) != 0);
    data.bits(0, 3);
    const auto& members = block.members;
    if (since(Release::R2004)) data.bitLong(static_cast<std::int64_t>(members.size()));
    for (const double value : block.base) data.bitReal(value);
    text(making, "");
    for (std::size_t i = 0; i < block.inserts.size(); ++i) data.byte(1);
    data.byte(0);
    text(making, "");
    data.bitLong(0);
    if (since(Release::R2007)) {
        data.bitShort(0);
        data.bit(true);
        data.byte(0);
    }
    handles.handle(kHardPointer, 0);
    handles.handle(kHardOwner, block.block);
    if (since(Release::R2004)) {
        for (const std::uint64_t member : members) handles.handle(kHardOwner, member);
    } else {
        handles.handle(kSoftPointer, members.empty() ? 0 : members.front());
        handles.handle(kSoftPointer, members.empty() ? 0 : members.back());
    }
    handles.handle(kHardOwner, block.end);
    for (const std::uint64_t insert : block.inserts) handles.handle(kSoftPointer, insert);
    handles.handle(kHardPointer, 0);
}

// ---- entities -----------------------------------------------------------------------------------

void ObjectEncoder::beginEntity(Making& making, const GroupList& record,
                                const ObjectPlace& place) const {
    BitWriter& data = making.object.data;
    BitWriter& handles = making.object.handles;
    const unsigned mode = place.owner == m_file.header().modelSpace   ? 2
                          : place.owner == m_file.header().paperSpace ? 1
                                                                      : 0;
    const Group* lineType = record.find(6);
    const std::uint64_t line = lineType == nullptr ? 0 : m_names.find("LTYPE", lineType->text());
    data.bit(false);
    data.bits(mode, 2);
    data.bitLong(0);
    if (since(Release::R2004)) data.bit(true);
    if (since(Release::R2013)) data.bit(false);
    if (!since(Release::R2004)) data.bit(false);
    data.bitShort(record.integerOf(62, kByLayer));
    data.bitReal(record.realOf(48, 1.0));
    data.bits(line != 0 ? kByHandle : 0, 2);
    if (since(Release::R2007)) data.bits(0, 2);
    data.bits(0, 2);
    if (since(Release::R2007)) data.byte(0);
    if (since(Release::R2010)) data.bits(0, 3);
    data.bitShort(record.integerOf(60, 0));
    data.byte(weightIndex(record.integerOf(370, -1)));
    if (mode == 0) handles.handle(kSoftPointer, place.owner);
    if (!since(Release::R2004)) {
        handles.handle(kHardOwner, 0);
        handles.handle(kSoftPointer, place.previous);
        handles.handle(kSoftPointer, place.next);
    }
    const Group* layer = record.find(kLayerCode);
    std::uint64_t own = layer == nullptr ? 0 : m_names.find("LAYER", layer->text());
    if (own == 0) own = m_names.find("LAYER", "0");
    handles.handle(kHardPointer, own);
    if (line != 0) handles.handle(kHardPointer, line);
}

namespace {

void addNormal(BitWriter& data, const GroupList& record) {
    const auto normal = record.pointOf(210, {0.0, 0.0, 1.0});
    const bool usual = normal == std::array<double, 3>{0.0, 0.0, 1.0};
    data.bit(usual);
    if (!usual)
        for (const double value : normal) data.bitReal(value);
}

void addThickness(BitWriter& data, const GroupList& record) {
    const double thickness = record.realOf(39, 0.0);
    data.bit(thickness == 0.0);
    if (thickness != 0.0) data.bitReal(thickness);
}

void addPoint(BitWriter& data, const GroupList& record, int code) {
    for (const double value : record.pointOf(code, {})) data.bitReal(value);
}

}  // namespace

void ObjectEncoder::addEntity(Making& making, const GroupList& record) const {
    BitWriter& data = making.object.data;
    const std::string_view type = record[0].bare();
    if (type == "BLOCK") {
        const Group* name = record.find(kNameCode);
        text(making, name == nullptr ? std::string_view() : name->text());
    } else if (type == "INSERT") {
        addInsert(making, record);
    } else if (type == "TEXT" || type == "ATTDEF") {
        addText(making, record);
        if (type == "ATTDEF") addAttributeEnd(making, record);
    } else if (type == "LINE") {
        const auto from = record.pointOf(10, {});
        const auto to = record.pointOf(11, {});
        data.bit(false);
        for (std::size_t i = 0; i < from.size(); ++i) {
            data.real(from[i]);
            data.bits(3, 2);
            data.real(to[i]);
        }
        addThickness(data, record);
        addNormal(data, record);
    } else if (type == "POINT") {
        addPoint(data, record, 10);
        addThickness(data, record);
        addNormal(data, record);
        data.bitReal(record.realOf(50, 0.0) * kRadians);
    } else if (type == "CIRCLE") {
        addPoint(data, record, 10);
        data.bitReal(record.realOf(40, 0.0));
        addThickness(data, record);
        addNormal(data, record);
    }
}

void ObjectEncoder::addInsert(Making& making, const GroupList& record) const {
    BitWriter& data = making.object.data;
    addPoint(data, record, 10);
    const std::array<double, 3> scale = {record.realOf(41, 1.0), record.realOf(42, 1.0),
                                         record.realOf(43, 1.0)};
    const bool usual = scale == std::array<double, 3>{1.0, 1.0, 1.0};
    data.bits(usual ? 3 : 0, 2);
    if (!usual) {
        data.real(scale[0]);
        for (const std::size_t i : {1U, 2U}) {
            data.bits(3, 2);
            data.real(scale[i]);
        }
    }
    data.bitReal(record.realOf(50, 0.0) * kRadians);
    for (const double value : record.pointOf(210, {0.0, 0.0, 1.0})) data.bitReal(value);
    data.bit(false);
    const Group* block = record.find(kNameCode);
    making.object.handles.handle(
        kHardPointer, block == nullptr ? 0 : m_names.find("BLOCK_RECORD", block->text()));
}

void ObjectEncoder::addText(Making& making, const GroupList& record) const {
    BitWriter& data = making.object.data;
    const auto point = record.pointOf(10, {});
    const bool aligned = record.find(11) != nullptr;
    const auto alignment = record.pointOf(11, {});
    const double oblique = record.realOf(51, 0.0);
    const double rotation = record.realOf(50, 0.0);
    const double width = record.realOf(41, 1.0);
    const std::int64_t generation = record.integerOf(71, 0);
    const std::int64_t horizontal = record.integerOf(72, 0);
    const std::int64_t vertical = record.integerOf(record[0].bare() == "ATTDEF" ? 74 : 73, 0);
    const auto absent = [](bool usual, unsigned bit) { return usual ? bit : 0U; };
    data.byte(absent(point[2] == 0.0, 1) | absent(!aligned, 2) | absent(oblique == 0.0, 4) |
              absent(rotation == 0.0, 8) | absent(width == 1.0, 0x10) |
              absent(generation == 0, 0x20) | absent(horizontal == 0, 0x40) |
              absent(vertical == 0, 0x80));
    if (point[2] != 0.0) data.real(point[2]);
    data.real(point[0]);
    data.real(point[1]);
    if (aligned)
        for (const std::size_t i : {0U, 1U}) {
            data.bits(3, 2);
            data.real(alignment[i]);
        }
    addNormal(data, record);
    addThickness(data, record);
    if (oblique != 0.0) data.real(oblique * kRadians);
    if (rotation != 0.0) data.real(rotation * kRadians);
    data.real(record.realOf(40, 1.0));
    if (width != 1.0) data.real(width);
    const Group* value = record.find(1);
    text(making, value == nullptr ? std::string_view() : value->text());
    if (generation != 0) data.bitShort(generation);
    if (horizontal != 0) data.bitShort(horizontal);
    if (vertical != 0) data.bitShort(vertical);
    const Group* style = record.find(7);
    std::uint64_t handle = m_names.find("STYLE", style == nullptr ? "Standard" : style->text());
    if (handle == 0) handle = m_names.find("STYLE", "");
    making.object.handles.handle(kHardPointer, handle);
}

void ObjectEncoder::addAttributeEnd(Making& making, const GroupList& record) const {
    BitWriter& data = making.object.data;
    const auto textOf = [&record](int code) {
        const Group* group = record.find(code);
        return group == nullptr ? std::string_view() : group->text();
    };
    if (since(Release::R2010)) data.byte(0);
    if (since(Release::R2018)) data.byte(1);  // of a single line
    text(making, textOf(kNameCode));
    data.bitShort(0);
    data.byte(static_cast<std::uint64_t>(record.integerOf(kFlagsCode, 0)));
    if (since(Release::R2007)) data.bit(false);
    if (since(Release::R2010)) data.byte(0);
    text(making, textOf(3));
}

}  // namespace mor::host
