#include "host/host.h"

#include <gtest/gtest.h>

#include <limits>

namespace mor::host {
namespace {

CMORAdsLispVar read(std::string_view text) {
    Result<CMORAdsLispVar> result = readLisp(text);
    EXPECT_TRUE(result) << text;
    return result ? result.value() : CMORAdsLispVar{};
}

TEST(Value, IsWhatItWasMadeFromAndNothingElse) {
    const ads_name name = {7, 2};
    EXPECT_EQ(integerOf(makeInteger(std::numeric_limits<std::int32_t>::min())),
              std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(realOf(makeReal(0.1)), 0.1);
    EXPECT_EQ(stringOf(makeString(L"a\u00E4")), L"a\u00E4");
    EXPECT_EQ(entityNameOf(CMORAdsLispVar{name}), EntityName(7, 2));
    EXPECT_EQ(integerOf(makeReal(1.0)) + realOf(makeInteger(1)), 0.0);
    EXPECT_EQ(stringOf(makeInteger(1)), L"");
    EXPECT_EQ(entityNameOf(makeString(L"x")), EntityName{});
    EXPECT_TRUE(elementsOf(makeString(L"x")).empty() && elementsOf({}).empty());
}

TEST(Value, KnowsItsKind) {
    const struct {
        const char* text;
        ValueKind kind;
    } cases[] = {{"nil", ValueKind::Nil},          {"()", ValueKind::Nil},
                 {"1", ValueKind::Integer},        {"1.0", ValueKind::Real},
                 {"\"1\"", ValueKind::String},     {"(handent \"0\")", ValueKind::EntityName},
                 {"(1)", ValueKind::List},         {"(nil)", ValueKind::List},
                 {"(1 . nil)", ValueKind::List},   {"(1 . 2)", ValueKind::DottedList},
                 {"(1 (2 . 3))", ValueKind::List}, {"(1 2 . 3)", ValueKind::DottedList}};
    for (const auto& c : cases) EXPECT_EQ(kindOf(read(c.text)), c.kind) << c.text;
}

TEST(Value, IsKeptInItsSimplestForm) {
    const struct {
        const char* written;
        const char* kept;
    } cases[] = {{"(1 . nil)", "(1)"},
                 {"(1 . (2))", "(1 2)"},
                 {"(1 . (2 . (3 . ())))", "(1 2 3)"},
                 {"(1 . (2 . 3))", "(1 2 . 3)"},
                 {"(() (()))", "(nil (nil))"},
                 {"((1 . ()) . ((2 . 3)))", "((1) (2 . 3))"}};
    for (const auto& c : cases) EXPECT_EQ(lispText(read(c.written)), c.kept);
}

TEST(Value, MakesListsFromItemsAndGivesThemBackTheTailLast) {
    EXPECT_EQ(lispText(makeList({})), "nil");
    EXPECT_EQ(lispText(makeList({}, makeInteger(1))), "nil");
    EXPECT_EQ(lispText(makeList({makeInteger(1), {}})), "(1 nil)");
    EXPECT_EQ(lispText(makeList({makeInteger(1)}, makeInteger(2))), "(1 . 2)");
    EXPECT_EQ(lispText(makeList({makeInteger(1)}, read("(2 . 3)"))), "(1 2 . 3)");
    std::string elements;
    for (const auto& element : elementsOf(read("((1 2) nil \"x\" . 4.5)")))
        elements += lispText(element) + ", ";
    EXPECT_EQ(elements, "(1 2), nil, \"x\", 4.5, ");
}

TEST(Value, IsTheSameOnlyToTheBit) {
    const struct {
        const char* a;
        const char* b;
        bool same;
    } cases[] = {{"1", "1", true},
                 {"1", "1.0", false},
                 {"0.0", "-0.0", false},
                 {"(1 . 2)", "(1 2)", false},
                 {"((1) 2)", "(1 (2))", false},
                 {"nil", "(nil)", false},
                 {"\"a\"", "\"A\"", false},
                 {"(1 (2 \"x\"))", "(1 (2 \"x\"))", true}};
    for (const auto& c : cases) EXPECT_EQ(sameValue(read(c.a), read(c.b)), c.same) << c.a << c.b;
    EXPECT_TRUE(sameValue({}, {}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(sameValue(makeReal(nan), makeReal(nan)));
    EXPECT_FALSE(sameValue(makeReal(nan), makeReal(-nan)));
}

TEST(Value, NeverChangesThroughACopy) {
    CMORAdsLispVar original = read("(1 2)");
    CMORAdsLispVar copy = original;
    original.Append(read("(3)"));
    EXPECT_EQ(lispText(copy), "(1 2)");
    copy.Append(copy);
    EXPECT_EQ(lispText(copy), "(1 2 1 2)");
    EXPECT_EQ(lispText(original), "(1 2 3)");
}

TEST(Value, NestsAsDeepAsMemoryAllows) {
    constexpr std::size_t kDepth = 100'000;
    const std::string closing(kDepth, ')');
    const CMORAdsLispVar deep = read(std::string(kDepth, '(') + "1" + closing);
    CMORAdsLispVar changed = deep;
    EXPECT_TRUE(sameValue(deep, changed.Append({})));
    changed.Append(deep);
    EXPECT_EQ(elementsOf(changed).size(), 2u);
    EXPECT_EQ(lispText(deep).size(), 2 * kDepth + 1);
    std::string dotted;
    for (std::size_t i = 0; i < kDepth; ++i) dotted += "(1 . ";
    EXPECT_EQ(elementsOf(read(dotted + "2" + closing)).size(), kDepth + 1);
}

}  // namespace
}  // namespace mor::host
