#include "host/dwg/common_data.h"

#include "host/dwg/dwg_file.h"
#include "host/dwg/group_writer.h"
#include "host/dwg/palette.h"

#include <algorithm>
#include <array>

namespace mor::host {

namespace {

/// Bits of an entity's colour that say what follows its number.
enum ColourBit : unsigned {
    kColourNumber = 0x1FF,
    kTransparency = 0x2000,
    kColourHandle = 0x4000,
    kTrueColour = 0x8000,
    kColourName = 0x4100,
    kColourBook = 0x4200
};
constexpr std::uint32_t kRgb = 0xFFFFFF;
constexpr unsigned kByHandle = 3;
constexpr std::size_t kChunkBytes = 127;

constexpr std::array<std::int16_t, 24> kWeights = {0,  5,   9,   13,  15,  18,  20,  25,
                                                   30, 35,  40,  50,  53,  60,  70,  80,
                                                   90, 100, 106, 120, 140, 158, 200, 211};

void readEntityColour(Fields& fields, EntityData& data, bool& byHandle) {
    if (!fields.since(Release::R2004)) {
        data.colour.number = fields.bitShort();
        return;
    }
    const auto value = static_cast<std::uint16_t>(fields.bitShort());
    data.colour.number = static_cast<std::int32_t>(value & kColourNumber);
    byHandle = (value & kColourHandle) != 0;
    if ((value & kTrueColour) != 0 && !byHandle) {
        data.colour.trueColour = static_cast<std::uint32_t>(fields.bitLong()) & kRgb;
        if (data.colour.number == 0)
            data.colour.number = nearestColourNumber(data.colour.trueColour);
    }
    if ((value & kTransparency) != 0)
        data.transparency = static_cast<std::uint32_t>(fields.bitLong());
    if ((value & kColourName) == kColourName) data.colour.name = fields.text();
    if ((value & kColourBook) == kColourBook) data.colour.book = fields.text();
}

std::vector<std::uint64_t> readReactors(Fields& fields, std::uint32_t count, std::uint64_t own) {
    std::vector<std::uint64_t> reactors;
    if (!fields.handles().holds(count, 8)) return reactors;
    reactors.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) reactors.push_back(fields.handleIn(own));
    return reactors;
}

std::string hexadecimal(std::string_view bytes) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4U];
        text += digits[static_cast<unsigned char>(c) & 0xFU];
    }
    return text;
}

}  // namespace

ObjectData readObjectData(Fields& fields, const ObjectFrame& frame) {
    ObjectData data;
    const std::uint32_t reactors = fields.handleCount();
    const bool noDictionary = fields.since(Release::R2004) && fields.bit();
    if (fields.since(Release::R2013)) static_cast<void>(fields.bit());
    data.owner = fields.handleIn(frame.handle);
    data.reactors = readReactors(fields, reactors, frame.handle);
    if (!noDictionary) data.dictionary = fields.handleIn(frame.handle);
    return data;
}

namespace {

/// Takes an entity's data, then its handles.
class EntityReader {
public:
    EntityReader(Fields& fields, std::uint64_t own) : m_fields(fields), m_own(own) {}

    EntityData run() {
        readStart();
        readLooks();
        readOwner();
        if (m_fields.upTo(Release::R14)) readLayer();
        readLinks();
        if (m_colourHandle) m_data.colourHandle = handle();
        if (m_fields.since(Release::R2000)) readLayer();
        readStyles();
        return std::move(m_data);
    }

private:
    std::uint64_t handle() { return m_fields.handleIn(m_own); }
    template <typename Read>
    static FieldPlace placed(BitReader& bits, const Read& read) {
        FieldPlace place{bits.position(), 0};
        read();
        place.end = bits.position();
        return place;
    }
    void readStart();
    void readLooks();
    void readOwner();
    void readLayer();
    void readLinks();
    void readStyles();

    Fields& m_fields;
    std::uint64_t m_own;
    EntityData m_data;
    std::uint32_t m_reactors = 0;
    bool m_noDictionary = false;
    bool m_noLinks = false;
    bool m_colourHandle = false;
    unsigned m_visualStyles = 0;
};

void EntityReader::readStart() {
    unsigned mode = 0;
    m_data.modePlace = placed(m_fields.data(), [&] { mode = m_fields.data().twoBits(); });
    m_data.mode = mode == 1   ? OwnerMode::PaperSpace
                  : mode == 2 ? OwnerMode::ModelSpace
                              : OwnerMode::Stored;
    m_reactors = m_fields.handleCount();
    m_noDictionary = m_fields.since(Release::R2004) && m_fields.bit();
    if (m_fields.since(Release::R2013)) static_cast<void>(m_fields.bit());
    if (m_fields.upTo(Release::R14)) m_data.lineTypeKind = m_fields.bit() ? 0 : kByHandle;
    m_data.noLinksPlace = placed(
        m_fields.data(), [&] { m_noLinks = m_fields.upTo(Release::R2000) && m_fields.bit(); });
}

void EntityReader::readLooks() {
    readEntityColour(m_fields, m_data, m_colourHandle);
    m_data.lineTypeScale = m_fields.bitReal();
    if (m_fields.since(Release::R2000)) {
        m_data.lineTypeKind = m_fields.data().twoBits();
        if (m_fields.since(Release::R2007)) m_data.materialKind = m_fields.data().twoBits();
        m_data.plotStyleKind = m_fields.data().twoBits();
    }
    if (m_fields.since(Release::R2007)) m_data.shadow = m_fields.byte();
    if (m_fields.since(Release::R2010))
        for (int i = 0; i < 3; ++i) m_visualStyles += m_fields.bit() ? 1 : 0;
    m_data.invisible = (m_fields.bitShort() & 1) != 0;
    if (m_fields.since(Release::R2000)) m_data.weight = m_fields.byte();
}

void EntityReader::readOwner() {
    m_data.ownerPlace = placed(m_fields.handles(), [&] {
        if (m_data.mode == OwnerMode::Stored) m_data.object.owner = handle();
    });
    m_data.object.reactors = readReactors(m_fields, m_reactors, m_own);
    if (!m_noDictionary) m_data.object.dictionary = handle();
}

void EntityReader::readLayer() {
    m_data.layerPlace = placed(m_fields.handles(), [&] { m_data.layer = handle(); });
    if (m_data.lineTypeKind == kByHandle) m_data.lineType = handle();
}

void EntityReader::readLinks() {
    const bool stored = m_fields.upTo(Release::R2000) && !m_noLinks;
    m_data.linksPlace = placed(m_fields.handles(), [&] {
        m_data.previous = stored ? handle() : m_noLinks ? m_own - 1 : 0;
        m_data.next = stored ? handle() : m_noLinks ? m_own + 1 : 0;
    });
}

void EntityReader::readStyles() {
    if (m_data.materialKind == kByHandle) m_data.material = handle();
    if (m_data.shadow == 3) static_cast<void>(m_fields.handle());
    if (m_data.plotStyleKind == kByHandle) m_data.plotStyle = handle();
    for (unsigned i = 0; i < m_visualStyles; ++i) m_data.visualStyles.push_back(handle());
}

}  // namespace

EntityData readEntityData(Fields& fields, std::uint64_t own) {
    return EntityReader(fields, own).run();
}

Neighbours neighboursOf(const ObjectFrame& frame, Release release) {
    BitReader data(frame.bytes, frame.body, frame.handles);
    BitReader handles(frame.bytes, frame.handles, frame.end());
    const unsigned mode = data.twoBits();
    std::int64_t before = data.bitLong();  // handles: of reactors, and others
    const bool ownLineType = release <= Release::R14 && !data.bit();
    if (data.bit()) return {frame.handle - 1, frame.handle + 1};
    if (mode == 0 || mode == 3) ++before;                        // the owner
    if (release <= Release::R14) before += ownLineType ? 2 : 1;  // layer, line type
    ++before;                                                    // the dictionary
    for (; before > 0 && !handles.failed(); --before) static_cast<void>(handles.handle());
    const std::uint64_t previous = handles.handle().from(frame.handle);
    return {previous, handles.handle().from(frame.handle)};
}

std::uint64_t ownerOf(const EntityData& data, const DwgFile& file) {
    switch (data.mode) {
        case OwnerMode::PaperSpace:
            return file.header().paperSpace;
        case OwnerMode::ModelSpace:
            return file.header().modelSpace;
        default:
            return data.object.owner;
    }
}

int lineWeight(std::uint8_t index) {
    if (index < kWeights.size()) return kWeights[index];
    constexpr std::uint8_t kByBlockIndex = 30;
    constexpr std::uint8_t kDefaultIndex = 31;
    return index == kByBlockIndex ? -2 : index == kDefaultIndex ? -3 : -1;
}

void writeObjectData(GroupWriter& out, const ObjectData& data, std::uint64_t owner) {
    if (data.dictionary != 0) {
        out.literal(102, "{ACAD_XDICTIONARY");
        out.handle(360, data.dictionary);
        out.literal(102, "}");
    }
    if (!data.reactors.empty()) {
        out.literal(102, "{ACAD_REACTORS");
        for (const std::uint64_t reactor : data.reactors) out.handle(330, reactor);
        out.literal(102, "}");
    }
    out.handle(330, owner);
}

void writeColour(GroupWriter& out, const DwgColour& colour, int numberCode, int trueColourCode) {
    out.integer(numberCode, colour.number);
    if (colour.trueColour >= 0) out.integer(trueColourCode, colour.trueColour);
    if (!colour.name.empty())
        out.text(trueColourCode + 10,
                 colour.book.empty() ? colour.name : colour.book + "$" + colour.name);
}

void writeEntityData(GroupWriter& out, const EntityData& data, const DwgFile& file) {
    out.text(8, file.nameOf(data.layer));
    static constexpr const char* lineTypes[] = {nullptr, "ByBlock", "Continuous"};
    if (data.lineTypeKind == kByHandle)
        out.text(6, file.nameOf(data.lineType));
    else if (data.lineTypeKind != 0)
        out.literal(6, lineTypes[data.lineTypeKind]);
    if (data.materialKind == kByHandle) out.handle(347, data.material);
    if (data.materialKind == 1)
        if (const std::uint64_t material = file.byBlockMaterial(); material != 0)
            out.handle(347, material);
    constexpr int kByLayer = 256;
    DwgColour colour = data.colour;
    if (data.colourHandle != 0) file.completeColour(data.colourHandle, colour);
    const bool coloured = colour.trueColour >= 0 || !colour.name.empty();
    if (colour.number != kByLayer || coloured) writeColour(out, colour, 62, 420);
    if (data.transparency >= 0) out.integer(440, data.transparency);
    if (data.invisible) out.integer(60, 1);
    if (const int weight = lineWeight(data.weight);
        weight != -1 && file.release() >= Release::R2000)
        out.integer(370, weight);
    out.realUnless(48, data.lineTypeScale, 1.0);
    if (data.plotStyleKind == kByHandle) out.handle(390, data.plotStyle);
    if (data.shadow != 0) out.integer(284, data.shadow);
    for (const std::uint64_t style : data.visualStyles) out.handle(348, style);
}

void writeBytes(GroupWriter& out, std::string_view bytes, int sizeCode, int code) {
    if (sizeCode != 0) out.integer(sizeCode, static_cast<std::int64_t>(bytes.size()));
    for (; !bytes.empty(); bytes.remove_prefix(std::min(kChunkBytes, bytes.size())))
        out.text(code, hexadecimal(bytes.substr(0, kChunkBytes)));
}

}  // namespace mor::host
