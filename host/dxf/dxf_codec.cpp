#include "host/dxf/dxf_codec.h"

#include "host/dxf/dxf_header.h"
#include "host/dxf/dxf_plan.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

constexpr std::uint64_t kWindowBytes = std::uint64_t{256} * 1024;
/// A reader that skips no more records than this goes on with a walk.
constexpr RecordNumber kWalkStep = 8;

/// What closes the table or block, the section and the drawing that are open at the end.
std::vector<std::string> closersOf(const DxfIndex& index, const Skeleton& skeleton) {
    std::vector<std::string> types;
    if (!skeleton.damage) return types;
    for (const Container& container : skeleton.containers)
        if (container.first != 0 && container.end == 0) {
            if (container.kind == ContainerKind::Block) types.emplace_back("ENDBLK");
            if (container.kind == ContainerKind::Table) types.emplace_back("ENDTAB");
        }
    if (!index.sections.empty() && index.sections.back().end == 0) types.emplace_back("ENDSEC");
    types.emplace_back("EOF");
    return types;
}

/// Lines that a carriage return alone ends get another end.
std::string withoutLoneReturns(std::string_view bytes, std::string_view lineEnd) {
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] != '\r' || bytes.substr(i + 1, 1) == "\n")
            result += bytes[i];
        else
            result += lineEnd;
    }
    return result;
}

}  // namespace

std::string_view DxfCodec::bytesOf(RecordNumber number) const {
    const std::uint64_t place = m_index.places[number];
    const std::uint64_t end = m_index.endOf(number);
    const std::uint64_t size = end - place;
    if (place < m_windowAt || end > m_windowAt + m_window.size()) {
        // A walk reads ahead, more and more: most end soon. A single look-up reads its record
        // alone.
        const bool walks =
            number > m_lastRead && number - m_lastRead <= kWalkStep && size < kWindowBytes;
        m_ahead = walks ? std::min(2 * m_ahead, kWindowBytes) : kFirstWindow;
        const std::uint64_t ahead = std::min(std::max(m_ahead, size), m_index.end - place);
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

std::vector<std::string> DxfCodec::applicationsOf(RecordNumber number) const {
    const std::string_view bytes = bytesOf(number);
    std::vector<std::string> names;
    GroupList list;
    Tag tag;
    for (std::size_t at = 0; m_index.form.next(bytes, at, tag);)
        if (tag.code == kApplicationCode)
            names.emplace_back(m_index.form.group(bytes, tag, list).text());
    return names;
}

std::string DxfCodec::oddityOf(RecordNumber number) const {
    const std::string_view bytes = bytesOf(number);
    Tag tag;
    std::size_t at = 0;
    while (m_index.form.next(bytes, at, tag) && tag.end < bytes.size())
        if (tag.code == kTypeCode && bytes.substr(tag.valueBegin, 3) == "EOF") return {};
    return at == bytes.size() ? std::string() : "it has bytes that are no groups";
}

std::string DxfCodec::salvaged() const {
    const DxfForm& form = m_index.form;
    std::string bytes = m_index.source->read(0, m_index.end);
    bytes += form.missingLineEnd(bytes);
    // Whole, it might be read without regard to carriage returns, which then were part of texts.
    if (form.isText() && form.anyLineEnd && form.lineEnd != "\r")
        bytes = withoutLoneReturns(bytes, form.lineEnd);
    for (const std::string& type : m_open) bytes += form.bytes(kTypeCode, type);
    return bytes;
}

SavePlan DxfCodec::plan(const EditSet& edits) const { return planSave(m_index, edits); }

std::string DxfCodec::compare(const SavePlan& plan, const Source& written) const {
    if (written.size() != plan.size) return "the size differs";
    std::uint64_t at = 0;
    for (const PlanPiece& piece : plan.pieces) {
        if (piece.copy) {
            if (!sameBytes(source(), piece.from, written, at, piece.size))
                return "what was copied to byte " + std::to_string(at) + " differs";
            at += piece.size;
            continue;
        }
        std::string bytes = written.read(at, piece.bytes.size());
        if (bytes != piece.bytes)
            return "what was written to byte " + std::to_string(at) + " differs";
        at += bytes.size();
        const GroupList groups = groupsFrom(std::move(bytes), m_index.form);
        const auto records = std::ranges::count(groups, kTypeCode, &Group::code);
        if (piece.records != 0 && static_cast<std::size_t>(records) != piece.records)
            return "there are other records than were made";
    }
    return {};
}

Result<Opened> openDxf(const std::shared_ptr<Source>& source, const std::string& file) {
    auto indexed = indexDxf(source, file);
    if (!indexed) return indexed.error();
    DxfIndex& index = indexed.value().index;
    Skeleton& skeleton = indexed.value().skeleton;
    if (auto error = readHeader(index, skeleton, file)) return *error;
    DxfForm& form = index.form;
    form.padded = form.isText() && index.source->read(index.places[1], 1) == " ";
    skeleton.carets = form.isText();
    if (!form.isText()) skeleton.form = "binary DXF";
    skeleton.lineEnd = !form.isText()           ? ""
                       : form.lineEnd == "\r\n" ? "CRLF"
                       : form.lineEnd == "\r"   ? "CR"
                                                : "LF";
    std::vector<std::string> open = closersOf(index, skeleton);
    return Opened{std::make_unique<DxfCodec>(std::move(index), std::move(open)),
                  std::move(skeleton)};
}

}  // namespace mor::host
