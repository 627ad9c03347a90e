#include "host/calls/list_builder.h"

#include "host/calls/list_kind.h"
#include "platform/list_calls.h"

#include <algorithm>
#include <array>
#include <new>

namespace mor::host {

resbuf* ListBuilder::append(int code) {
    resbuf* item = acutNewRb(code);
    if (item == nullptr) throw std::bad_alloc();
    if (m_last == nullptr)
        m_list = ResbufList(item);
    else
        m_last->rbnext = item;
    m_last = item;
    return item;
}

void ListBuilder::text(int code, std::wstring_view value) {
    resbuf* item = append(code);
    auto* memory = static_cast<wchar_t*>(acad_malloc((value.size() + 1) * sizeof(wchar_t)));
    if (memory == nullptr) throw std::bad_alloc();
    *std::ranges::copy(value, memory).out = L'\0';
    item->resval.rstring = memory;
}

void ListBuilder::integer(int code, std::int64_t value) {
    resbuf* item = append(code);
    if (listKind(code) == ListKind::Long)
        item->resval.rlong = static_cast<std::int32_t>(value);
    else
        item->resval.rint = static_cast<short>(value);
}

void ListBuilder::real(int code, double value) { append(code)->resval.rreal = value; }

void ListBuilder::point(int code, const double* value) {
    resbuf* item = append(code);
    std::copy_n(value, 3, item->resval.rpoint);
}

void ListBuilder::name(int code, EntityName value) { value.copyTo(append(code)->resval.rlname); }

void ListBuilder::group(const Drawing& drawing, const GroupList& record, std::size_t index) {
    const Group& group = record[index];
    const int code = group.code();
    switch (listKind(code)) {
        case ListKind::Text:
            text(code, drawing.decoded(group));
            break;
        case ListKind::Short:
        case ListKind::Long:
            if (const auto number = group.integer()) integer(code, *number);
            break;
        case ListKind::Real:
            if (const auto number = group.real()) real(code, *number);
            break;
        case ListKind::Point: {
            std::array<double, 3> coordinates{};
            for (std::size_t i = 0; i < 3 && index + i < record.size(); ++i) {
                const Group& part = record[index + i];
                if (part.code() != code + 10 * static_cast<int>(i)) break;
                coordinates[i] = part.real().value_or(0.0);
            }
            point(code, coordinates.data());
            break;
        }
        case ListKind::Name:
        case ListKind::None:
        case ListKind::Unknown:
            break;
    }
}

}  // namespace mor::host
