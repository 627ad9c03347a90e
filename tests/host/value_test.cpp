#include "host/host.h"
#include "platform/runtime.h"
#include "tests/host/random_values.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

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

using Limits = std::numeric_limits<double>;

TEST(LispText, ShowsRealsAsTheShortestTextThatReadsBack) {
    const struct {
        double value;
        const char* text;
    } cases[] = {{1.0, "1.0"},
                 {0.1, "0.1"},
                 {-0.0, "-0.0"},
                 {1e20, "1.0e+20"},
                 {1.5e-7, "1.5e-07"},
                 {100000.0, "100000.0"},
                 {0.1 + 0.2, "0.30000000000000004"},
                 {9007199254740993.0, "9007199254740992.0"},
                 {1e16, "1.0e+16"},
                 {Limits::max(), "1.7976931348623157e+308"},
                 {Limits::denorm_min(), "5.0e-324"}};
    for (const auto& c : cases) EXPECT_EQ(lispText(makeReal(c.value)), c.text);
}

TEST(LispText, EscapesWhatWouldNotReadBack) {
    const std::pair<std::wstring_view, const char*> cases[] = {
        {L"a\"b", R"("a\"b")"},
        {L"a\\b", R"("a\\b")"},
        {L"\n\r\t\x1B", R"("\n\r\t\e")"},
        {L"\x01z\x7F", R"("\001z\177")"},
        {L"\0011", R"("\0011")"},
        {L"\u0085", R"("\205")"},
        {L"\u00E4\u20AC", "\"\u00E4\u20AC\""},
        {L"^J \\U+0041", R"("^J \\U+0041")"},
        {{L"a\0b", 3}, R"("a\000b")"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(lispText(makeString(value)), text);
    EXPECT_EQ(lispText(makeString(std::wstring(1, wchar_t{0xD83D}))), R"("\U+D83D")");
}

TEST(ReadLisp, TakesWhatPeopleWrite) {
    const struct {
        std::string_view written;
        const char* value;
    } cases[] = {{"42", "42"},
                 {"+7", "7"},
                 {"-2147483648", "-2147483648"},
                 {"2147483648.0", "2147483648.0"},
                 {"1.", "1.0"},
                 {".5", "0.5"},
                 {"+2.50e2", "250.0"},
                 {"1E-7", "1.0e-07"},
                 {"NIL", "nil"},
                 {" ( 1\t2\r\n3 ) ", "(1 2 3)"},
                 {"(1 . 2)", "(1 . 2)"},
                 {"(1 .2)", "(1 0.2)"},
                 {"(1 . nil)", "(1)"},
                 {"(1 . (2 . (3 . ())))", "(1 2 3)"},
                 {"(1 . (2 . 3))", "(1 2 . 3)"},
                 {"((1 . ()) . ((2 . 3) ()))", "((1) (2 . 3) nil)"},
                 {"'(1 '2 '(3))", "(1 2 (3))"},
                 {"; a remark\n(1 ; another )\n2);end", "(1 2)"},
                 {"\xEF\xBB\xBF\"x\"", "\"x\""},
                 {R"("\101\7\"\\\e")", R"("A\007\"\\\e")"},
                 {R"("\U+00e4\U+D83D\U+DE00")", "\"\u00E4\U0001F600\""},
                 {"\"two\nlines\"", R"("two\nlines")"},
                 {"(\"a\"\"b\"(1)2)", "(\"a\" \"b\" (1) 2)"}};
    for (const auto& c : cases) {
        const Result<CMORAdsLispVar> result = readLisp(c.written);
        ASSERT_TRUE(result) << c.written << ": " << result.error().text;
        EXPECT_EQ(lispText(result.value()), c.value);
    }
}

TEST(ReadLisp, SaysWhereAndWhyItCannotRead) {
    const struct {
        std::string_view written;
        const char* error;
    } cases[] = {
        {"", "line 1, column 1: no value; write nil, a number, a \"text\" or a (list)"},
        {"; only a remark",
         "line 1, column 16: no value; write nil, a number, a \"text\" or a (list)"},
        {"hello", "line 1, column 1: hello is no value; write a text in quotes: \"hello\""},
        {"(1\n  T)", "line 2, column 3: T is no value; write a text in quotes: \"T\""},
        {"1e", "line 1, column 1: 1e is no number; write a text in quotes: \"1e\""},
        {"0x10", "line 1, column 1: 0x10 is no value; write a text in quotes: \"0x10\""},
        {"nan", "line 1, column 1: nan is no value; write a text in quotes: \"nan\""},
        {"1e999",
         "line 1, column 1: 1e999 is outside the range of reals; the largest is "
         "1.7976931348623157e+308"},
        {"(99999999999)",
         "line 1, column 2: 99999999999 is outside the range of integers, -2147483648 to "
         "2147483647; write 99999999999.0 for a real"},
        {"(1 (2", "line 1, column 4: this ( is never closed; add a )"},
        {"(1))", "line 1, column 4: text after the value; put several values into one list: (1 2)"},
        {")", "line 1, column 1: a ) without its (; remove it, or begin with ("},
        {"1 2", "line 1, column 3: text after the value; put several values into one list: (1 2)"},
        {"(. 1)", "line 1, column 2: a dot stands between the last two values of a list: (1 . 2)"},
        {".", "line 1, column 1: a dot stands between the last two values of a list: (1 . 2)"},
        {"(1 . )", "line 1, column 6: a value must stand behind the dot: (1 . 2)"},
        {"(1 . 2 3)", "line 1, column 8: only one value may stand behind the dot: (1 . 2)"},
        {"(1 . 2 (3))", "line 1, column 8: only one value may stand behind the dot: (1 . 2)"},
        {"(1 ')", "line 1, column 4: a value must stand behind the '; remove it, or write '(1 2)"},
        {"\"abc", "line 1, column 1: this text is never closed; add a \" at its end"},
        {R"("a\d")",
         R"(line 1, column 3: unknown escape; write \\ for a backslash (known are \" \\ \n \r \t \e)"
         R"( \nnn \U+XXXX))"},
        {R"("\U+12G4")", R"(line 1, column 2: \U+ takes four hexadecimal digits: \U+00E4)"},
        {"(handent 5)",
         "line 1, column 10: handent takes one handle as a text: (handent \"1A2F\")"},
        {"(1 (handent \"FFFFFF\"))",
         "line 1, column 4: no record of the drawing has the handle \"FFFFFF\"; give the handle of "
         "an "
         "existing one"},
        {"\xFF", "the text is no UTF-8; convert it first"}};
    for (const auto& c : cases) {
        const Result<CMORAdsLispVar> result = readLisp(c.written);
        ASSERT_FALSE(result) << c.written;
        EXPECT_EQ(result.error().text, c.error);
        EXPECT_EQ(result.error().kind, ErrorKind::Invalid);
    }
}

RC_GTEST_PROP(LispText, ReadsBackToTheSameValue, ()) {
    const CMORAdsLispVar value = *anyValue(2);
    const Result<CMORAdsLispVar> back = readLisp(lispText(value));
    RC_ASSERT(static_cast<bool>(back));
    RC_ASSERT(sameValue(back.value(), value));
}

TEST(Utf8, GoesBothWaysForEveryLength) {
    for (const wchar_t c : {L'\0', L'A', L'\x7F', L'\x80', L'\u07FF', L'\u0800', L'\uFFFD',
                            L'\U00010000', L'\U0010FFFF'}) {
        const std::wstring text(1, c);
        EXPECT_EQ(fromUtf8(toUtf8(text)), text) << static_cast<long>(c);
    }
    EXPECT_EQ(toUtf8(L"\u00E4\u20AC\U0001F600"), "\u00E4\u20AC\U0001F600");
}

TEST(Utf8, RefusesWhatIsNotUtf8) {
    for (const char* bytes :
         {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF0\x80\x80\x80",
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE2\x82"})
        EXPECT_FALSE(fromUtf8(bytes)) << bytes;
}

TEST(Utf8, ReplacesWhatIsNoCodePoint) {
    EXPECT_EQ(toUtf8(std::wstring(1, wchar_t{0xD800})), "\uFFFD");
    EXPECT_EQ(narrow(std::wstring(1, wchar_t{0x110000})), "\uFFFD");
}

}  // namespace
}  // namespace mor::host
