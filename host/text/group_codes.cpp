#include "host/text/group_codes.h"

#include <algorithm>
#include <iterator>

namespace mor::host {

namespace {

struct Range {
    int first;
    int last;
    CodeKind kind;
};

// In ascending order.
constexpr Range kRanges[] = {{0, 4, CodeKind::Text},
                             {5, 5, CodeKind::Handle},
                             {6, 9, CodeKind::Text},
                             {10, 18, CodeKind::Point},
                             {19, 59, CodeKind::Real},
                             {60, 79, CodeKind::Integer16},
                             {90, 99, CodeKind::Integer32},
                             {100, 102, CodeKind::Text},
                             {105, 105, CodeKind::Handle},
                             {110, 112, CodeKind::Point},
                             {113, 149, CodeKind::Real},
                             {160, 169, CodeKind::Integer64},
                             {170, 179, CodeKind::Integer16},
                             {210, 213, CodeKind::Point},
                             {214, 239, CodeKind::Real},
                             {270, 289, CodeKind::Integer16},
                             {290, 299, CodeKind::Flag},
                             {300, 309, CodeKind::Text},
                             {310, 319, CodeKind::Chunk},
                             {320, 369, CodeKind::Handle},
                             {370, 389, CodeKind::Integer16},
                             {390, 399, CodeKind::Handle},
                             {400, 409, CodeKind::Integer16},
                             {410, 419, CodeKind::Text},
                             {420, 429, CodeKind::Integer32},
                             {430, 439, CodeKind::Text},
                             {440, 459, CodeKind::Integer32},
                             {460, 469, CodeKind::Real},
                             {470, 479, CodeKind::Text},
                             {480, 481, CodeKind::Handle},
                             {999, 1003, CodeKind::Text},
                             {1004, 1004, CodeKind::Chunk},
                             {1005, 1005, CodeKind::Handle},
                             {1006, 1009, CodeKind::Text},
                             {1010, 1013, CodeKind::Point},
                             {1014, 1059, CodeKind::Real},
                             {1060, 1070, CodeKind::Integer16},
                             {1071, 1071, CodeKind::Integer32}};

}  // namespace

CodeKind codeKind(int code) noexcept {
    const auto* range = std::ranges::lower_bound(kRanges, code, {}, &Range::last);
    return range != std::end(kRanges) && range->first <= code ? range->kind : CodeKind::Unknown;
}

long extendedCost(int code, std::size_t textBytes) noexcept {
    // The application's name is free, and a point counts with its first coordinate.
    if (code == kApplicationCode || code < 1000) return 0;
    constexpr long kNesting = 1002;
    if (code == kNesting) return 2;
    switch (codeKind(code)) {
        case CodeKind::Text:
            return 2 + static_cast<long>(textBytes);
        case CodeKind::Chunk:
            return 2 + static_cast<long>(textBytes / 2);  // hexadecimal digits
        case CodeKind::Handle:
            return 9;
        case CodeKind::Point:
            return 25;
        case CodeKind::Real:
            return code >= 1040 ? 9 : 0;
        case CodeKind::Integer16:
            return 3;
        case CodeKind::Integer32:
            return 5;
        default:
            return 0;
    }
}

}  // namespace mor::host
