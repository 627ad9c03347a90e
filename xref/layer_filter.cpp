#include "xref/layer_filter.h"

#include "platform/bounded_text.h"
#include "platform/output_calls.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace mor {
namespace {

using PatternText = BoundedText<2048>;
constexpr const wchar_t* kAllLayers = L"*";

std::optional<PatternText> qualified(const wchar_t* xrefName, const wchar_t* pattern) {
    PatternText text;
    if (!text.assign(xrefName) || !text.append(L"|") || !text.append(pattern)) return std::nullopt;
    return text;
}

}  // namespace

bool qualifyLayers(const CMORStringList& patterns, const wchar_t* xrefName,
                   CMORStringList& result) {
    result.Reset();
    if (patterns.Entries() == 0) return false;
    for (std::size_t i = 0; i < patterns.Entries(); ++i) {
        const wchar_t* pattern = patterns.Nth(i);
        if (std::wstring_view{pattern} == kAllLayers) {
            result.Reset();
            result.Append(kAllLayers);
            return true;
        }
        if (const auto text = qualified(xrefName, pattern)) result.Append(text->c_str());
    }
    return true;
}

CMORAdsLispVar qualifyLayers(const CMORAdsLispVar& patterns, const wchar_t* xrefName) {
    if (!CMORAdsLisp::RealListP(patterns)) return CMORAdsLisp::Nil;
    CMORAdsLispVar result;
    const std::size_t count = CMORAdsLisp::Length(patterns);
    for (std::size_t i = 0; i < count; ++i) {
        const CMORAdsLispVar element = CMORAdsLisp::Nth(static_cast<unsigned>(i), patterns);
        const wchar_t* pattern = nullptr;
        if (!CMORAdsLisp::StringP(element) || CMORAdsLisp::SetQ(pattern, element) == nullptr) {
            acutPrintf(L"Layername expected: ");
            CMORAdsLisp::PrinC(element);
            acutPrintf(L"\n");
            return CMORAdsLisp::Nil;
        }
        if (std::wstring_view{pattern} == kAllLayers)
            return CMORAdsLisp::List(CMORAdsLispVar{kAllLayers});
        if (const auto text = qualified(xrefName, pattern))
            CMORAdsLisp::SetQ(result, CMORAdsLisp::Cons(CMORAdsLispVar{text->c_str()}, result));
    }
    return result;
}

}  // namespace mor
