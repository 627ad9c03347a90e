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
    const auto follows = [&](const Window& window) {
        return number > window.last && number - window.last <= kWalkStep;
    };
    // The one that was not used last is given up for what neither holds nor is to go on with.
    if (!m_windows[m_used].holds(place, end) &&
        (m_windows[1 - m_used].holds(place, end) || !follows(m_windows[m_used])))
        m_used = 1 - m_used;
    Window& window = m_windows[m_used];
    if (!window.holds(place, end)) {
        // A walk reads ahead, more and more: most end soon. A single look-up reads its record
        // alone.
        const bool walks = follows(window) && size < kWindowBytes;
        window.ahead = walks ? std::min(2 * window.ahead, kWindowBytes) : kFirstWindow;
        const std::uint64_t ahead = std::min(std::max(window.ahead, size), m_index.end - place);
        window.bytes = m_index.source->read(place, walks ? ahead : size);
        window.at = place;
    }
    window.last = number;
    return std::string_view(window.bytes)
        .substr(static_cast<std::size_t>(place - window.at), static_cast<std::size_t>(size));
}

GroupList DxfCodec::read(RecordNumber number) const {
    return groupsFrom(std::string(bytesOf(number)), m_index.form);
}

void DxfCodec::readInto(RecordNumber number, GroupList& list) const {
    std::string& text = list.restart();
    text = bytesOf(number);
    addGroups(text, m_index.form, list);
}

std::uint64_t DxfCodec::endOfClose(std::span<const RecordNumber> records) const {
    const std::uint64_t begin = m_index.places[records.front()];
    std::uint64_t end = m_index.endOf(records.front());
    for (const RecordNumber number : records.subspan(1)) {
        const std::uint64_t place = m_index.places[number];
        if (place < end || place - end > kFirstWindow ||
            m_index.endOf(number) - begin > kWindowBytes)
            break;
        end = m_index.endOf(number);
    }
    return end;
}

bool DxfCodec::readBeside(std::span<const RecordNumber> records, std::deque<std::string>& texts,
                          const std::function<void(const GroupList&)>& take) const {
    if (!m_index.form.isText()) return false;
    std::uint64_t begin = 0;  // of the last text
    std::uint64_t end = 0;
    GroupList groups;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const std::uint64_t place = m_index.places[records[i]];
        const std::uint64_t stop = m_index.endOf(records[i]);
        if (place < begin || stop > end) {
            begin = place;
            end = endOfClose(records.subspan(i));
            texts.push_back(m_index.source->read(begin, end - begin));
        }
        const std::string_view text = texts.back();
        const std::size_t at = std::min(static_cast<std::size_t>(place - begin), text.size());
        static_cast<void>(groups.restart());
        addGroups(text.substr(at, static_cast<std::size_t>(stop - place)), m_index.form, groups);
        take(groups);
    }
    return true;
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
