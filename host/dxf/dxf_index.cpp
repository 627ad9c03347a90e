#include "host/dxf/dxf_index.h"

#include "host/dxf/structure.h"
#include "host/dxf/text_scan.h"
#include "host/faults.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kStartSize = 4096;

/// Whether group codes have one byte: the first group is 0, or a comment.
bool hasShortCodes(std::string_view behindMark) {
    if (behindMark.size() < 3) return false;
    if (behindMark[0] == '\0') return behindMark[1] != '\0';
    return behindMark[0] == '\xFF';
}

/// The form that the first bytes show.
DxfForm formOf(std::string_view start) {
    DxfForm form;
    if (start.starts_with(kBinaryMark)) {
        form.kind = hasShortCodes(start.substr(kBinaryMark.size())) ? DxfForm::Kind::OneByte
                                                                    : DxfForm::Kind::TwoBytes;
        return form;
    }
    const std::size_t end = start.find_first_of("\r\n");
    if (end == std::string_view::npos || start[end] == '\n') return form;
    form.lineEnd = start.substr(end + 1, 1) == "\n" ? "\r\n" : "\r";
    form.anyLineEnd = form.lineEnd == "\r";
    return form;
}

/// One attempt to read the file in that form.
std::optional<Stop> attempt(Indexed& result, const std::shared_ptr<Source>& source,
                            const DxfForm& form, Scan scan) {
    result = Indexed();
    result.index.source = source;
    result.index.form = form;
    Structure structure(result);
    auto stop = form.isText() ? scanText(result.index, structure, scan)
                              : scanBinary(result.index, structure);
    if (stop && !structure.started()) stop->foreign = true;
    if (stop && !stop->foreign) structure.giveUp();
    return stop;
}

}  // namespace

const Section* DxfIndex::section(std::string_view name) const {
    const auto found = std::ranges::find(sections, name, &Section::name);
    return found == sections.end() ? nullptr : &*found;
}

Result<Indexed> indexDxf(const std::shared_ptr<Source>& source, const std::string& name) {
    const std::string start = source->read(0, kStartSize);
    const Scan scan = faults::readsLineByLine() ? Scan::LineByLine : Scan::Vectorised;
    DxfForm form = formOf(start);
    Indexed result;
    auto stop = attempt(result, source, form, scan);
    if (stop && form.isText() && !form.anyLineEnd) {
        // Some lines may end with a carriage return alone.
        form.anyLineEnd = true;
        Indexed other;
        auto next = attempt(other, source, form, scan);
        if (!next || (!next->foreign && (stop->foreign || next->offset > stop->offset))) {
            result = std::move(other);
            stop = std::move(next);
        }
    }
    if (stop && (stop->foreign || result.index.lastRecord() == 0))
        return Error{ErrorKind::Unreadable, name, stop->line, stop->text};
    if (stop) result.skeleton.damage = Damage{stop->text, stop->line, stop->offset};
    return result;
}

}  // namespace mor::host
