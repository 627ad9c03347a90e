#include "host/calls/command_line.h"
#include "host/host.h"
#include "host/lisp/lisp_value.h"
#include "host/permanent.h"
#include "platform/runtime.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <utility>

using mor::LispAccess;
using mor::LispKind;
using mor::LispToken;
using mor::LispTokens;

namespace {

using Variables = std::map<std::wstring, CMORAdsLispVar, mor::LessNoCase>;

Variables& variables() {
    static mor::host::Permanent<Variables> s_variables;
    return *s_variables;
}

std::vector<LispToken> listOf(std::span<const LispToken> first, std::span<const LispToken> rest) {
    std::vector<LispToken> tokens{LispToken::open()};
    std::ranges::copy(first, std::back_inserter(tokens));
    std::ranges::copy(rest, std::back_inserter(tokens));
    tokens.push_back(LispToken::close());
    return tokens;
}

const LispToken* firstToken(const CMORAdsLispVar& value, LispKind kind) {
    const LispToken& token = mor::host::tokensOf(value).front();
    return token.is(kind) ? &token : nullptr;
}

}  // namespace

const CMORAdsLispVar CMORAdsLisp::Nil;

bool CMORAdsLisp::NilP(const CMORAdsLispVar& value) { return LispAccess::tokens(value) == nullptr; }

bool CMORAdsLisp::ListP(const CMORAdsLispVar& value) {
    const LispTokens* tokens = LispAccess::tokens(value);
    return tokens == nullptr || tokens->isList();
}

bool CMORAdsLisp::RealListP(const CMORAdsLispVar& value) {
    const LispTokens* tokens = LispAccess::tokens(value);
    return tokens != nullptr && tokens->isList() && !tokens->isDotted();
}

bool CMORAdsLisp::StringP(const CMORAdsLispVar& value) {
    return firstToken(value, LispKind::String) != nullptr;
}

std::size_t CMORAdsLisp::Length(const CMORAdsLispVar& list) {
    return RealListP(list) ? LispAccess::tokens(list)->elementCount() : 0;
}

CMORAdsLispVar CMORAdsLisp::Nth(unsigned index, const CMORAdsLispVar& list) {
    const LispTokens* tokens = LispAccess::tokens(list);
    if (tokens == nullptr) return {};
    const std::size_t count = tokens->elementCount() - (tokens->isDotted() ? 1 : 0);
    return index < count ? LispAccess::make(tokens->element(index)) : CMORAdsLispVar{};
}

CMORAdsLispVar CMORAdsLisp::List(const CMORAdsLispVar& a) {
    return LispAccess::make(listOf(mor::host::tokensOf(a), {}));
}

CMORAdsLispVar CMORAdsLisp::List(const CMORAdsLispVar& a, const CMORAdsLispVar& b) {
    return LispAccess::make(listOf(mor::host::tokensOf(a), mor::host::tokensOf(b)));
}

CMORConsProxy CMORAdsLisp::Cons(const CMORAdsLispVar& a, const CMORAdsLispVar& b) {
    return CMORConsProxy{mor::host::makeList({a}, b)};
}

CMORAdsLispVar CMORAdsLisp::Append(const CMORAdsLispVar& a, const CMORAdsLispVar& b) {
    for (const CMORAdsLispVar* list : {&a, &b})
        if (!NilP(*list) && !RealListP(*list)) return {};
    CMORAdsLispVar result = a;
    result.Append(b);
    return result;
}

CMORReverseProxy CMORAdsLisp::Reverse(const CMORAdsLispVar& list) {
    if (!RealListP(list)) return CMORReverseProxy{{}};
    const LispTokens& tokens = *LispAccess::tokens(list);
    std::vector<LispToken> reversed{LispToken::open()};
    for (std::size_t i = tokens.elementCount(); i > 0; --i)
        std::ranges::copy(tokens.element(i - 1), std::back_inserter(reversed));
    reversed.push_back(LispToken::close());
    return CMORReverseProxy{LispAccess::make(std::move(reversed))};
}

CMORAdsLispVar& CMORAdsLisp::SetQ(CMORAdsLispVar& target, const CMORAdsLispVar& value) {
    return target = value;
}

CMORAdsLispVar& CMORAdsLisp::SetQ(CMORAdsLispVar& target, const CMORConsProxy& value) {
    return target = value.value();
}

CMORAdsLispVar& CMORAdsLisp::SetQ(CMORAdsLispVar& target, const CMORReverseProxy& value) {
    return target = value.value();
}

short& CMORAdsLisp::SetQ(short& target, const CMORAdsLispVar& value) {
    return target = static_cast<short>(mor::host::integerOf(value));
}

const wchar_t*& CMORAdsLisp::SetQ(const wchar_t*& target, const CMORAdsLispVar& value) {
    const LispToken* text = firstToken(value, LispKind::String);
    return target = text == nullptr ? nullptr : text->asString().c_str();
}

void CMORAdsLisp::SetQ(ads_name target, const CMORAdsLispVar& value) {
    mor::host::entityNameOf(value).copyTo(target);
}

CMORAdsLispVar CMORAdsLisp::GetVar(const CMORAdsLispVar& name) {
    const auto found = variables().find(mor::host::stringOf(name));
    return found == variables().end() ? CMORAdsLispVar{} : found->second;
}

void CMORAdsLisp::PrinC(const CMORAdsLispVar& value) {
    mor::host::printText(mor::host::princText(value));
}

namespace mor::host {

void setSystemVariable(std::wstring_view name, const CMORAdsLispVar& value) {
    if (!CMORAdsLisp::NilP(value)) {
        variables().insert_or_assign(std::wstring{name}, value);
        return;
    }
    if (const auto found = variables().find(name); found != variables().end())
        variables().erase(found);
}

}  // namespace mor::host
