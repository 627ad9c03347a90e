#include "platform/list_calls.h"

#include "host/calls/list_kind.h"
#include "host/documents/running_counters.h"
#include "host/faults.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>

namespace mor::host {

namespace {

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
