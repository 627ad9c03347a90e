#include "xref/model_space_iterator.h"

#include "platform/list_calls.h"
#include "platform/output_calls.h"
#include "platform/selection_calls.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr short kGroupLayer = 8;
constexpr short kGroupOperator = -4;

/// A list of one element of that code; empty when memory is short.
mor::ResbufList makeElement(short code, std::wstring_view text) {
    mor::ResbufList element{acutNewRb(RTSTR)};
    if (!element) return {};
    auto* copy = static_cast<wchar_t*>(acad_malloc((text.size() + 1) * sizeof(wchar_t)));
    if (copy == nullptr) return {};
    copy[text.copy(copy, text.size())] = L'\0';
    element.get()->resval.rstring = copy;
    element.get()->restype = code;
    return element;
}

/// (8 . pattern), or ((-4 . "<OR") (8 . pattern) ... (-4 . "OR>")) for several; an empty list,
/// which selects everything, for none. No value when memory is short.
std::optional<mor::ResbufList> makeFilter(const std::vector<std::wstring>& layers) {
    std::vector<std::pair<short, std::wstring_view>> elements;
    if (layers.size() > 1) elements.emplace_back(kGroupOperator, L"<OR");
    for (const std::wstring& layer : layers) elements.emplace_back(kGroupLayer, layer);
    if (layers.size() > 1) elements.emplace_back(kGroupOperator, L"OR>");

    mor::ResbufList filter;
    resbuf* last = nullptr;
    for (const auto& [code, text] : elements) {
        mor::ResbufList element = makeElement(code, text);
        if (!element) return std::nullopt;
        resbuf* added = element.get();
        if (last == nullptr)
            filter = std::move(element);
        else
            last->rbnext = element.release();  // the filter owns it
        last = added;
    }
    return filter;
}

}  // namespace

CMORCadLetterModelSpaceIterator::CMORCadLetterModelSpaceIterator() = default;

CMORCadLetterModelSpaceIterator::~CMORCadLetterModelSpaceIterator() = default;

bool CMORCadLetterModelSpaceIterator::selectEntitiesByLayer(const CMORAdsLispVar& layers) {
    // A dotted pair is a list to AutoLISP but has no elements to go by: it must not select
    // everything.
    if (!CMORAdsLisp::NilP(layers) && !CMORAdsLisp::RealListP(layers)) return false;
    release();
    std::vector<std::wstring> texts;
    const std::size_t count = CMORAdsLisp::Length(layers);
    for (std::size_t i = 0; i < count; ++i) {
        const CMORAdsLispVar layer = CMORAdsLisp::Nth(static_cast<unsigned>(i), layers);
        const wchar_t* text = nullptr;
        if (!CMORAdsLisp::StringP(layer) || CMORAdsLisp::SetQ(text, layer) == nullptr) {
            acutPrintf(L"%s: string expected\n",
                       L"CMORCadLetterModelSpaceIterator::selectEntitiesByLayer");
            return false;
        }
        texts.emplace_back(text);
    }
    return select(texts);
}

bool CMORCadLetterModelSpaceIterator::selectEntitiesByLayer(const CMORStringList& layers) {
    release();
    std::vector<std::wstring> texts;
    for (std::size_t i = 0; i < layers.Entries(); ++i) texts.emplace_back(layers.Nth(i));
    return select(texts);
}

void CMORCadLetterModelSpaceIterator::release() {
    m_set.reset();
    m_count = 0;
    reset();
}

bool CMORCadLetterModelSpaceIterator::select(const std::vector<std::wstring>& layers) {
    const std::optional<mor::ResbufList> filter = makeFilter(layers);
    if (!filter) return false;
    if (acedSSGet(L"_X", nullptr, nullptr, filter->get(), m_set.receive()) == RTNORM &&
        acedSSLength(m_set.get(), &m_count) == RTNORM)
        return true;
    release();
    return false;
}

void CMORCadLetterModelSpaceIterator::reset() {
    m_index = 0;
    m_current[0] = m_current[1] = 0;
}

ads_name* CMORCadLetterModelSpaceIterator::next() {
    if (m_index >= m_count) return nullptr;  // also without a selection
    const int result = acedSSName(m_set.get(), m_index, m_current);
    ++m_index;
    return result == RTNORM ? &m_current : nullptr;
}
