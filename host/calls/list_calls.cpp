#include "platform/list_calls.h"

#include "host/calls/list_kind.h"
#include "host/documents/running_counters.h"
#include "host/faults.h"
#include "host/permanent.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>

namespace mor::host {

Counters& runningCounters() {
    static Permanent<Counters> s_counters;
    return *s_counters;
}

Counters counters() { return runningCounters(); }

void resetCounters() {
    Counters fresh;
    fresh.locksHeld = runningCounters().locksHeld;
    fresh.selectionSetsOpen = runningCounters().selectionSetsOpen;
    fresh.resbufsOpen = runningCounters().resbufsOpen;
    runningCounters() = fresh;
}

namespace {

struct KindRange {
    int first;
    int last;
    ListKind kind;
};

// In ascending order.
constexpr KindRange kKinds[] = {{-4, -4, ListKind::Text},
                                {-3, -3, ListKind::None},
                                {-2, -1, ListKind::Name},
                                {0, 9, ListKind::Text},
                                {10, 18, ListKind::Point},
                                {19, 59, ListKind::Real},
                                {60, 79, ListKind::Short},
                                {90, 99, ListKind::Long},
                                {100, 102, ListKind::Text},
                                {105, 105, ListKind::Text},
                                {110, 112, ListKind::Point},
                                {113, 149, ListKind::Real},
                                {160, 169, ListKind::Long},
                                {170, 179, ListKind::Short},
                                {210, 213, ListKind::Point},
                                {214, 239, ListKind::Real},
                                {270, 299, ListKind::Short},
                                {300, 329, ListKind::Text},
                                {330, 369, ListKind::Name},
                                {370, 389, ListKind::Short},
                                {390, 399, ListKind::Text},
                                {400, 409, ListKind::Short},
                                {410, 419, ListKind::Text},
                                {420, 429, ListKind::Long},
                                {430, 439, ListKind::Text},
                                {440, 459, ListKind::Long},
                                {460, 469, ListKind::Real},
                                {470, 481, ListKind::Text},
                                {999, 1009, ListKind::Text},
                                {1010, 1013, ListKind::Point},
                                {1014, 1059, ListKind::Real},
                                {1060, 1070, ListKind::Short},
                                {1071, 1071, ListKind::Long},
                                {RTREAL, RTREAL, ListKind::Real},
                                {RTPOINT, RTPOINT, ListKind::Point},
                                {RTSHORT, RTSHORT, ListKind::Short},
                                {RTSTR, RTSTR, ListKind::Text},
                                {RTENAME, RTENAME, ListKind::Name},
                                {RTLONG, RTLONG, ListKind::Long},
                                {RTLB, RTNIL, ListKind::None},
                                {RTDXF0, RTDXF0, ListKind::Text},
                                {RTT, RTT, ListKind::None}};

wchar_t* copyText(const wchar_t* text) {
    const std::wstring_view view{text};
    auto* copy = static_cast<wchar_t*>(acad_malloc((view.size() + 1) * sizeof(wchar_t)));
    if (copy == nullptr) return nullptr;
    view.copy(copy, view.size());
    copy[view.size()] = L'\0';
    return copy;
}

// Takes the argument of `element` off the list of arguments; false when the type or the memory does
// not do.
bool takeValue(resbuf& element, std::va_list* arguments) {
    ads_u_val& value = element.resval;
    switch (listKind(element.restype)) {
        case ListKind::None:
            return true;
        case ListKind::Text: {
            const auto* text = va_arg(*arguments, const wchar_t*);
            if (text != nullptr) value.rstring = copyText(text);
            return text == nullptr || value.rstring != nullptr;
        }
        case ListKind::Real:
            value.rreal = va_arg(*arguments, double);
            return true;
        case ListKind::Point:
            std::copy_n(va_arg(*arguments, const double*), 3, value.rpoint);
            return true;
        case ListKind::Short:
            value.rint = static_cast<short>(va_arg(*arguments, int));
            return true;
        case ListKind::Long:
            value.rlong = va_arg(*arguments, int);
            return true;
        case ListKind::Name:
            std::copy_n(va_arg(*arguments, const std::int64_t*), 2, value.rlname);
            return true;
        case ListKind::Unknown:
            break;
    }
    return false;
}

}  // namespace

ListKind listKind(int type) noexcept {
    const auto* range = std::ranges::lower_bound(kKinds, type, {}, &KindRange::last);
    return range != std::end(kKinds) && range->first <= type ? range->kind : ListKind::Unknown;
}

}  // namespace mor::host

resbuf* acutBuildList(int type, ...) {
    std::va_list arguments;
    va_start(arguments, type);
    resbuf* first = nullptr;
    resbuf** end = &first;
    bool whole = true;
    for (; type != 0 && whole; type = va_arg(arguments, int)) {
        *end = acutNewRb(type == RTDXF0 ? 0 : type);
        whole = *end != nullptr && mor::host::takeValue(**end, &arguments);
        if (!whole) break;
        end = &(*end)->rbnext;
    }
    va_end(arguments);
    if (whole) return first;
    acutRelRb(first);
    return nullptr;
}

resbuf* acutNewRb(int type) {
    if (mor::host::faults::shouldFail("acutNewRb")) return nullptr;
    std::unique_ptr<resbuf> element{new (std::nothrow) resbuf{}};
    if (element == nullptr) return nullptr;
    element->restype = static_cast<short>(type);
    ++mor::host::runningCounters().resbufsOpen;
    return element.release();  // caller owns
}

// The caller of the platform owns what comes from here until a list takes it over.
void* acad_malloc(std::size_t size) { return std::malloc(size); }  // NOLINT(*-owning-memory)

int acutRelRb(resbuf* list) {
    while (list != nullptr) {
        const std::unique_ptr<resbuf> element{list};
        list = element->rbnext;
        if (mor::host::listKind(element->restype) == mor::host::ListKind::Text)
            std::free(element->resval.rstring);  // NOLINT(*-owning-memory): see acad_malloc
        --mor::host::runningCounters().resbufsOpen;
    }
    return RTNORM;
}
