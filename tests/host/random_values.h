#pragma once

#include "host/host.h"

#include <bit>
#include <cmath>
#include <ostream>
#include <rapidcheck.h>
#include <string>
#include <vector>

inline void showValue(const CMORAdsLispVar& value, std::ostream& out) {
    out << mor::host::lispText(value);
}

namespace mor::host {

/// Texts with the characters that file formats trip over.
inline rc::Gen<std::wstring> anyText() {
    const auto letter = rc::gen::oneOf(
        rc::gen::elementOf(
            std::wstring{L"ab0\\\"U+^\n\r\t\x1B\x01\x7F();' \u00E4\u20AC\U0001F600"}),
        rc::gen::inRange<wchar_t>(0, 0xD800));
    return rc::gen::container<std::wstring>(letter);
}

inline rc::Gen<CMORAdsLispVar> anyAtom() {
    const auto number = rc::gen::map(rc::gen::arbitrary<std::int32_t>(), makeInteger);
    const auto real = rc::gen::map(
        rc::gen::suchThat(
            rc::gen::map(rc::gen::arbitrary<std::uint64_t>(),
                         [](std::uint64_t bits) { return std::bit_cast<double>(bits); }),
            [](double value) { return std::isfinite(value); }),
        makeReal);
    const auto text = rc::gen::map(anyText(), [](const std::wstring& t) { return makeString(t); });
    return rc::gen::oneOf(number, real, text, rc::gen::just(CMORAdsLispVar{}));
}

/// Lists nested up to that depth.
inline rc::Gen<CMORAdsLispVar> anyValue(int depth) {
    if (depth == 0) return anyAtom();
    return rc::gen::oneOf(
        anyAtom(),
        rc::gen::apply([](const std::vector<CMORAdsLispVar>& items,
                          const CMORAdsLispVar& tail) { return makeList(items, tail); },
                       rc::gen::container<std::vector<CMORAdsLispVar>>(anyValue(depth - 1)),
                       anyAtom()));
}

}  // namespace mor::host
