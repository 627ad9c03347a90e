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
    data.colour.number = value & kColourNumber;
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

EntityData readEntityData(Fields& fields, std::uint64_t own) {
    EntityData data;
    const auto placed = [](BitReader& bits, const auto& read) {
        FieldPlace place{bits.position(), 0};
        read();
        place.end = bits.position();
        return place;
    };
    unsigned mode = 0;
    data.modePlace = placed(fields.data(), [&] { mode = fields.data().twoBits(); });
    data.mode = mode == 1   ? OwnerMode::PaperSpace
                : mode == 2 ? OwnerMode::ModelSpace
                            : OwnerMode::Stored;
    const std::uint32_t reactors = fields.handleCount();
    const bool noDictionary = fields.since(Release::R2004) && fields.bit();
    if (fields.since(Release::R2013)) static_cast<void>(fields.bit());
    if (fields.upTo(Release::R14)) data.lineTypeKind = fields.bit() ? 0 : kByHandle;
    const bool links = fields.upTo(Release::R2000);
    bool noLinks = false;
    data.noLinksPlace = placed(fields.data(), [&] { noLinks = links && fields.bit(); });
    bool colourHandle = false;
    readEntityColour(fields, data, colourHandle);
    data.lineTypeScale = fields.bitReal();
    unsigned visualBits = 0;
    if (fields.since(Release::R2000)) {
        data.lineTypeKind = fields.data().twoBits();
        if (fields.since(Release::R2007)) data.materialKind = fields.data().twoBits();
        data.plotStyleKind = fields.data().twoBits();
    }
    if (fields.since(Release::R2007)) data.shadow = fields.byte();
    if (fields.since(Release::R2010))
        for (int i = 0; i < 3; ++i) visualBits += fields.bit() ? 1 : 0;
    data.invisible = (fields.bitShort() & 1) != 0;
    if (fields.since(Release::R2000)) data.weight = fields.byte();

    data.ownerPlace = placed(fields.handles(), [&] {
        if (data.mode == OwnerMode::Stored) data.object.owner = fields.handleIn(own);
    });
    data.object.reactors = readReactors(fields, reactors, own);
    if (!noDictionary) data.object.dictionary = fields.handleIn(own);
    const auto readLayer = [&] {
        data.layerPlace = placed(fields.handles(), [&] { data.layer = fields.handleIn(own); });
        if (data.lineTypeKind == kByHandle) data.lineType = fields.handleIn(own);
    };
    if (fields.upTo(Release::R14)) readLayer();
    data.linksPlace = placed(fields.handles(), [&] {
        data.previous = noLinks ? own - 1 : links ? fields.handleIn(own) : 0;
        data.next = noLinks ? own + 1 : links ? fields.handleIn(own) : 0;
    });
    if (colourHandle) data.colourHandle = fields.handleIn(own);
    if (fields.since(Release::R2000)) readLayer();
    if (data.materialKind == kByHandle) data.material = fields.handleIn(own);
    if (data.shadow == 3) static_cast<void>(fields.handle());
    if (data.plotStyleKind == kByHandle) data.plotStyle = fields.handleIn(own);
    for (unsigned i = 0; i < visualBits; ++i) data.visualStyles.push_back(fields.handleIn(own));
    return data;
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
