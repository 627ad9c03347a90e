#include "host/dxf/dxf_codec.h"

#include "host/dxf/dxf_header.h"
#include "host/dxf/dxf_plan.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

constexpr std::uint64_t kWindowBytes = 256 * 1024;
/// A reader that skips no more records than this goes on with a walk.
constexpr RecordNumber kWalkStep = 8;

}  // namespace

std::string_view DxfCodec::bytesOf(RecordNumber number) const {
    const std::uint64_t place = m_index.places[number];
    const std::uint64_t end = m_index.endOf(number);
    const std::uint64_t size = end - place;
    if (place < m_windowAt || end > m_windowAt + m_window.size()) {
        // A walk reads ahead; a single look-up reads its record alone.
        const bool walks =
            number > m_lastRead && number - m_lastRead <= kWalkStep && size < kWindowBytes;
        const std::uint64_t ahead = std::min(kWindowBytes, m_index.end - place);
        m_window = m_index.source->read(place, walks ? ahead : size);
        m_windowAt = place;
    }
    m_lastRead = number;
    return std::string_view(m_window).substr(static_cast<std::size_t>(place - m_windowAt),
                                             static_cast<std::size_t>(size));
}

GroupList DxfCodec::read(RecordNumber number) const {
    return groupsFrom(std::string(bytesOf(number)), m_index.form);
}

std::optional<Group> DxfCodec::find(RecordNumber number, int code) const {
    if (code == kLayerCode) {
        const std::uint16_t layer = m_index.layers[number];
        if (layer == TextNumbers::kNone) return std::nullopt;
        if (layer != TextNumbers::kTooMany) return Group(code, m_index.layerTexts.text(layer));
    }
    m_found = GroupList();
    return findGroup(bytesOf(number), m_index.form, code, m_found);
}

bool DxfCodec::mayHoldHandles(RecordNumber number) const {
    return !m_index.form.isText() || bytesOf(number).find("1005") != std::string_view::npos;
}

SavePlan DxfCodec::plan(const EditSet& edits) const { return planSave(m_index, edits); }

std::string DxfCodec::compare(const SavePlan& plan, const EditSet& edits,
                              std::shared_ptr<Source> written) const {
    const auto indexed = indexDxf(std::move(written), {});
    if (!indexed) return indexed.error().message();
    const auto& damage = indexed.value().skeleton.damage;
    return damage ? damage->text : comparePlan(plan, m_index, edits, indexed.value());
}

Result<Opened> openDxf(std::shared_ptr<Source> source, const std::string& file) {
    auto indexed = indexDxf(std::move(source), file);
    if (!indexed) return indexed.error();
    DxfIndex& index = indexed.value().index;
    Skeleton& skeleton = indexed.value().skeleton;
    if (auto error = readHeader(index, skeleton, file)) return *error;
    DxfForm& form = index.form;
    form.padded = form.isText() && index.source->read(index.places[1], 1) == " ";
    skeleton.carets = form.isText();
    skeleton.lineEnd = !form.isText()           ? ""
                       : form.lineEnd == "\r\n" ? "CRLF"
                       : form.lineEnd == "\r"   ? "CR"
                                                : "LF";
    return Opened{std::make_unique<DxfCodec>(std::move(index)), std::move(skeleton)};
}

}  // namespace mor::host
