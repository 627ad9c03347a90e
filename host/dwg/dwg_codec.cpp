#include "host/dwg/dwg_codec.h"

#include "host/dwg/common_data.h"
#include "host/dwg/record_groups.h"
#include "host/text/group_codes.h"

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
    m_found = read(number);
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

std::string DwgCodec::oddityOf(RecordNumber number) const {
    const ObjectFrame frame = frameOf(number);
    if (frame.wrong != nullptr) return frame.wrong;
    const DecodedRecord record = decoded(number);
    return !record.known || record.exact ? "" : "it has bits that are no fields";
}

std::string DwgCodec::salvaged() const { return source().read(0, source().size()); }

SavePlan DwgCodec::plan(const EditSet& edits) const {
    SavePlan plan;
    plan.size = source().size();
    plan.pieces.push_back({true, 0, plan.size, {}, 0});
    static_cast<void>(edits);
    return plan;
}

std::string DwgCodec::compare(const SavePlan& plan, const Source& written) const {
    const bool same = written.size() == plan.size && sameBytes(source(), 0, written, 0, plan.size);
    return same ? "" : "what was copied differs";
}

Result<Opened> openDwg(const std::shared_ptr<Source>& source, const std::string& file) {
    auto opened = DwgFile::open(source, file);
    if (!opened) return opened.error();
    DwgIndex index;
    auto skeleton = indexDwg(*opened.value(), file, index);
    if (!skeleton) return skeleton.error();
    skeleton.value().form = "DWG";
    skeleton.value().unwritable = "DWG is read, not yet written; save it as DXF";
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
