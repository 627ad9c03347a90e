#include "host/dwg/dwg_codec.h"

#include "host/dwg/common_data.h"
#include "host/dwg/dwg_plan.h"
#include "host/dwg/record_groups.h"
#include "host/handles.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <utility>

namespace mor::host {

ObjectFrame DwgCodec::frameOf(RecordNumber number) const {
    const MapEntry& entry = m_file->map().entries()[m_index.objects[number]];
    ObjectFrame frame = m_file->frame(entry.place);
    if (frame.wrong == nullptr && frame.handle != entry.handle) frame.wrong = "it is another one";
    frame.handle = entry.handle;
    return frame;
}

DecodedRecord DwgCodec::decoded(RecordNumber number) const {
    const auto viewport = m_index.viewports.find(number);
    const RecordPlace place{m_paper[number],
                            viewport == m_index.viewports.end() ? 0 : viewport->second};
    return decodeRecord(*m_file, frameOf(number), place);
}

GroupList DwgCodec::read(RecordNumber number) const { return decoded(number).groups; }

std::uint64_t DwgCodec::layerOf(const ObjectFrame& frame) const {
    if (!frame.entity || frame.wrong != nullptr) return 0;
    Fields fields = frame.fields(m_file->release());
    return readEntityData(fields, frame.handle).layer;
}

std::optional<Group> DwgCodec::find(RecordNumber number, int code) const {
    if (code == kLayerCode) {
        const std::uint16_t layer = layerNumberOf(number);
        if (layer == TextNumbers::kNone) return std::nullopt;
        if (layer != TextNumbers::kTooMany) return Group(code, m_layerTexts.text(layer));
    }
    if (m_foundNumber != number) {
        m_found = read(number);
        m_foundNumber = number;
    }
    const Group* group = m_found.find(code);
    return group == nullptr ? std::nullopt : std::optional(*group);
}

std::uint16_t DwgCodec::layerNumberOf(RecordNumber number) const {
    const ObjectFrame frame = frameOf(number);
    if (!frame.entity || frame.wrong != nullptr) return TextNumbers::kNone;
    const std::uint64_t layer = layerOf(frame);
    const auto [known, added] = m_layerNumbers.try_emplace(layer);
    if (added) known->second = m_layerTexts.number(m_file->nameOf(layer));
    return known->second;
}

std::vector<std::string> DwgCodec::applicationsOf(RecordNumber number) const {
    const ObjectFrame frame = frameOf(number);
    return frame.wrong == nullptr ? applicationNames(*m_file, frame) : std::vector<std::string>();
}

std::string DwgCodec::undecoded(RecordNumber number) const {
    const DecodedRecord record = decoded(number);
    return record.known && record.exact ? std::string() : std::string(frameOf(number).bytes);
}

std::string DwgCodec::oddityOf(RecordNumber number) const {
    const ObjectFrame frame = frameOf(number);
    if (frame.wrong != nullptr) return frame.wrong;
    const DecodedRecord record = decoded(number);
    return !record.known || record.exact ? "" : "it has bits that are no fields";
}

std::string DwgCodec::salvaged() const { return source().read(0, source().size()); }

SavePlan DwgCodec::plan(const EditSet& edits) const {
    SavePlan plan;
    m_changes = objectChanges(*m_file, edits);
    plan.edits = m_changes.edits;
    plan.refused = m_changes.refused;
    if (!plan.refused.empty()) return plan;
    if (!m_changes.any())
        addCopy(plan, 0, source().size());
    else if (m_file->release() < Release::R2004)
        planFlat(*m_file, m_changes, plan);
    else
        planPaged(*m_file, m_changes, plan);
    return plan;
}

std::string DwgCodec::compare(const SavePlan& plan, const Source& written) const {
    if (written.size() != plan.size) return "the size differs";
    std::uint64_t at = 0;
    for (const PlanPiece& piece : plan.pieces) {
        const std::string place = " to byte " + std::to_string(at) + " differs";
        if (piece.copy && !sameBytes(source(), piece.from, written, at, piece.size))
            return "what was copied" + place;
        if (!piece.copy && written.read(at, piece.bytes.size()) != piece.bytes)
            return "what was written" + place;
        at += piece.copy ? piece.size : piece.bytes.size();
    }
    // Read anew, with every sum and every object: the plan itself may be wrong.
    const std::shared_ptr<Source> again = makeBufferSource(written.read(0, written.size()));
    auto opened = DwgFile::open(again, "what was written");
    if (!opened) return opened.error().text;
    return differences(*opened.value());
}

/// Whether the written file has the object, with these bytes.
std::string DwgCodec::objectFault(const DwgFile& written, std::uint64_t handle,
                                  std::string_view bytes) const {
    const MapEntry* found = written.map().find(handle);
    if (found == nullptr) return " is missing";
    const ObjectFrame fresh = written.frame(found->place, true);
    if (fresh.wrong != nullptr || fresh.handle != handle || fresh.whole != bytes) return " differs";
    if (!m_changes.written.contains(handle)) return {};
    const DecodedRecord record = decodeRecord(written, fresh);
    return record.known && !record.exact ? " has bits that are no fields" : "";
}

/// What a file that was written has other than it should; empty when there is nothing.
std::string DwgCodec::differences(DwgFile& written) const {
    if (written.damage().count != 0) return written.damage().first;
    const auto said = [](std::uint64_t handle, const std::string& fault) {
        return "object " + handleText(handle) + fault;
    };
    std::vector<std::uint64_t> erased = m_changes.erased;
    std::ranges::sort(erased);
    std::size_t expected = m_changes.written.size();
    for (const MapEntry& entry : m_file->map().entries()) {
        if (m_changes.written.contains(entry.handle) ||
            std::ranges::binary_search(erased, entry.handle))
            continue;
        ++expected;
        const std::string_view bytes = m_file->frame(entry.place).whole;
        if (const std::string fault = objectFault(written, entry.handle, bytes); !fault.empty())
            return said(entry.handle, fault);
    }
    for (const auto& [handle, bytes] : m_changes.written)
        if (const std::string fault = objectFault(written, handle, bytes); !fault.empty())
            return said(handle, fault);
    if (written.map().entries().size() != expected) return "there are other objects than expected";
    const bool seeded = m_changes.seed == 0 || written.header().seed == m_changes.seed;
    return seeded ? "" : "$HANDSEED differs";
}

namespace {

/// Why files like that are not written; empty when they are.
std::string unwritable(const DwgStart& start) {
    if (start.isSigned)
        return "it is signed, and a change would break its signature; save it without one";
    if (start.release < Release::R2000 || start.release == Release::R2007)
        return "DWG of " + releaseName(start.release) +
               " is read, not written; save it as R2000, R2004, R2010 or later, or as DXF";
    return {};
}

}  // namespace

Result<Opened> openDwg(const std::shared_ptr<Source>& source, const std::string& file) {
    auto opened = DwgFile::open(source, file);
    if (!opened) return opened.error();
    DwgIndex index;
    auto skeleton = indexDwg(*opened.value(), file, index);
    if (!skeleton) return skeleton.error();
    skeleton.value().form = "DWG";
    skeleton.value().unwritable = unwritable(opened.value()->start());
    const Skeleton& found = skeleton.value();
    std::vector<bool> paper(found.records.size());
    const std::uint16_t viewport = found.types.find("VIEWPORT");
    std::unordered_map<ContainerNumber, unsigned> viewports;
    for (RecordNumber number = 1; number < found.records.size(); ++number) {
        const RecordEntry& entry = found.records[number];
        paper[number] = found.containers[entry.container].paper;
        if (entry.type == viewport && paper[number])
            index.viewports[number] = ++viewports[entry.container];
    }
    return Opened{
        std::make_unique<DwgCodec>(std::move(opened.value()), std::move(index), std::move(paper)),
        std::move(skeleton.value())};
}

}  // namespace mor::host
