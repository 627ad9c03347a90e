#include "platform/lisp.h"

#include "host/host.h"

#include <gtest/gtest.h>

namespace {

using mor::host::lispText;
using Lisp = CMORAdsLisp;

CMORAdsLispVar read(std::string_view text) {
    mor::host::Result<CMORAdsLispVar> result = mor::host::readLisp(text);
    EXPECT_TRUE(result) << text;
    return result ? result.value() : CMORAdsLispVar{};
}

TEST(Lisp, TellsListsFromAtoms) {
    const struct {
        const char* text;
        bool nil, list, realList, string;
        std::size_t length;
    } cases[] = {
        {"nil", true, true, false, false, 0},      {"1", false, false, false, false, 0},
        {"\"x\"", false, false, false, true, 0},   {"(1 2)", false, true, true, false, 2},
        {"(1 . 2)", false, true, false, false, 0}, {"((1 . 2))", false, true, true, false, 1}};
    for (const auto& c : cases) {
        const CMORAdsLispVar value = read(c.text);
        EXPECT_EQ(Lisp::NilP(value), c.nil) << c.text;
        EXPECT_EQ(Lisp::ListP(value), c.list) << c.text;
        EXPECT_EQ(Lisp::RealListP(value), c.realList) << c.text;
        EXPECT_EQ(Lisp::StringP(value), c.string) << c.text;
        EXPECT_EQ(Lisp::Length(value), c.length) << c.text;
    }
    EXPECT_TRUE(Lisp::NilP(CMORAdsLispVar{static_cast<const wchar_t*>(nullptr)}));
    EXPECT_TRUE(Lisp::NilP(Lisp::Nil));
}

TEST(Lisp, GivesTheNthElement) {
    const CMORAdsLispVar list = read("((1 (2)) nil \"x\" (3 . 4) 5)");
    const char* elements[] = {"(1 (2))", "nil", "\"x\"", "(3 . 4)", "5", "nil"};
    for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(lispText(Lisp::Nth(i, list)), elements[i]);
    EXPECT_EQ(lispText(Lisp::Nth(0, read("7"))), "nil");
    EXPECT_EQ(lispText(Lisp::Nth(0, read("(1 . 2)"))), "1");
    EXPECT_EQ(lispText(Lisp::Nth(1, read("(1 . 2)"))), "nil");
}

TEST(Lisp, FindsElementsAnewAfterAnAppend) {
    CMORAdsLispVar list = read("(1)");
    EXPECT_EQ(Lisp::Length(list), 1u);
    list.Append(read("(2)"));
    EXPECT_EQ(lispText(Lisp::Nth(1, list)), "2");
}

TEST(Lisp, ConsesInFrontOfListsAndAtoms) {
    const struct {
        const char *a, *b, *result;
    } cases[] = {{"1", "(2)", "(1 2)"},
                 {"1", "2", "(1 . 2)"},
                 {"1", "nil", "(1)"},
                 {"(1)", "(2 . 3)", "((1) 2 . 3)"},
                 {"nil", "nil", "(nil)"}};
    for (const auto& c : cases)
        EXPECT_EQ(lispText(Lisp::Cons(read(c.a), read(c.b))), c.result) << c.a << c.b;
}

TEST(Lisp, AppendsProperListsOnly) {
    const struct {
        const char *a, *b, *joined, *inPlace;
    } cases[] = {{"(1)", "(2 3)", "(1 2 3)", "(1 2 3)"},
                 {"nil", "(1)", "(1)", "(1)"},
                 {"(1)", "nil", "(1)", "(1)"},
                 {"nil", "nil", "nil", "nil"},
                 {"(1)", "2", "nil", "(1)"},
                 {"1", "(2)", "nil", "1"},
                 {"(1 . 2)", "(3)", "nil", "(1 . 2)"},
                 {"(1)", "(2 . 3)", "nil", "(1)"}};
    for (const auto& c : cases) {
        CMORAdsLispVar a = read(c.a);
        EXPECT_EQ(lispText(Lisp::Append(a, read(c.b))), c.joined) << c.a << c.b;
        EXPECT_EQ(lispText(a.Append(read(c.b))), c.inPlace) << c.a << c.b;
    }
}

TEST(Lisp, ReversesProperListsOnly) {
    CMORAdsLispVar result;
    EXPECT_EQ(lispText(Lisp::SetQ(result, Lisp::Reverse(read("(1 (2 3) \"x\")")))),
              "(\"x\" (2 3) 1)");
    EXPECT_EQ(lispText(Lisp::SetQ(result, Lisp::Reverse(read("(1 . 2)")))), "nil");
    EXPECT_EQ(lispText(Lisp::SetQ(result, Lisp::Reverse({}))), "nil");
}

TEST(Lisp, MakesListsOfOneAndTwo) {
    EXPECT_EQ(lispText(Lisp::List(read("(1)"))), "((1))");
    EXPECT_EQ(lispText(Lisp::List({})), "(nil)");
    EXPECT_EQ(lispText(Lisp::List(L"a", {})), "(\"a\" nil)");
}

TEST(Lisp, AssignsToPlainVariables) {
    short number = 5;
    EXPECT_EQ(Lisp::SetQ(number, mor::host::makeInteger(65537)), 1);
    EXPECT_EQ(Lisp::SetQ(number, L"1"), 0);

    const CMORAdsLispVar value{L"text"};
    const wchar_t* text = nullptr;
    EXPECT_STREQ(Lisp::SetQ(text, value), L"text");
    EXPECT_EQ(Lisp::SetQ(text, mor::host::makeInteger(1)), nullptr);

    const ads_name name = {3, 4};
    ads_name target = {1, 1};
    Lisp::SetQ(target, CMORAdsLispVar{name});
    EXPECT_EQ(mor::EntityName{target}, mor::EntityName(3, 4));
    Lisp::SetQ(target, {});
    EXPECT_EQ(mor::EntityName{target}, mor::EntityName{});
}

TEST(Lisp, ReadsSystemVariablesInAnyCase) {
    EXPECT_EQ(lispText(Lisp::GetVar(L"MORTEST")), "nil");
    mor::host::setSystemVariable(L"MorTest", mor::host::makeInteger(8));
    EXPECT_EQ(lispText(Lisp::GetVar(L"MORTEST")), "8");
    mor::host::setSystemVariable(L"mortest", {});
    EXPECT_EQ(lispText(Lisp::GetVar(L"MORTEST")), "nil");
    EXPECT_EQ(lispText(Lisp::GetVar({})), "nil");
}

TEST(Lisp, PrintsLikePrinc) {
    const struct {
        const char* text;
        const wchar_t* printed;
    } cases[] = {{"nil", L"nil"},
                 {"1.0", L"1.0"},
                 {"100000.0", L"100000.0"},
                 {"1000000.0", L"1.0e+06"},
                 {"0.33333333", L"0.333333"},
                 {"2147483647.0", L"2.14748e+09"},
                 {"1e20", L"1.0e+20"},
                 {"0.00001", L"1.0e-05"},
                 {"-0.0", L"-0.0"},
                 {"(1 2.0 \"a\\\"b\")", L"(1 2.0 a\"b)"},
                 {"(\"a\" . \"b\")", L"(a . b)"},
                 {"(1 2 . (3 nil . 4))", L"(1 2 3 nil . 4)"}};
    static_cast<void>(mor::host::takePrintedText());
    for (const auto& c : cases) {
        Lisp::PrinC(read(c.text));
        EXPECT_EQ(mor::host::takePrintedText(), c.printed);
    }
    const ads_name name = {0x1A, 0};
    Lisp::PrinC(CMORAdsLispVar{name});
    EXPECT_EQ(mor::host::takePrintedText(), L"<Entity name: 1a>");
}

}  // namespace
