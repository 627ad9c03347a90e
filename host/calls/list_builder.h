#pragma once

#include "host/drawing/drawing.h"
#include "platform/owned.h"
#include "platform/types.h"

#include <cstdint>
#include <string_view>

namespace mor::host {

/// Puts a list together, element by element.
class ListBuilder {
public:
    void text(int code, std::wstring_view value);
    void integer(int code, std::int64_t value);
    void real(int code, double value);
    void point(int code, const double* value);
    void name(int code, EntityName value);
    /// A group of a record of the drawing; a point takes its second and third coordinate from the
    /// groups behind it. Values that are no numbers where there must be one are left out.
    void group(const Drawing& drawing, const GroupList& record, std::size_t index);
    [[nodiscard]] ResbufList take() { return std::move(m_list); }

private:
    resbuf* append(int code);

    ResbufList m_list;
    resbuf* m_last = nullptr;
};

}  // namespace mor::host
