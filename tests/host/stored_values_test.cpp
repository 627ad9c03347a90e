#include "tests/host/host_fixture.h"
#include "tests/host/random_values.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <sstream>

namespace mor::test {
namespace {

using host::Release;
using Limits = std::numeric_limits<double>;

CMORAdsLispVar parsed(const std::string& text) {
    auto value = host::readLisp(text);
    EXPECT_TRUE(value) << text;
    return value ? value.value() : CMORAdsLispVar{};
}

std::wstring repeated(std::wstring_view part, int times) {
    std::wstring all;
    for (int i = 0; i < times; ++i) all += part;
    return all;
}

constexpr const char* kNumbers =
    "(0 1 -1 32767 32768 -32768 -32769 2147483647 -2147483648 0.0 -0.0 1.0 -1.0 0.1 "
    "0.30000000000000004 0.3333333333333333 5e-324 2.5e-320 2.2250738585072014e-308 "
    "1.7976931348623157e+308 -1.7976931348623157e+308 1e15 1e16 1e17 123456789012345678.0 "
    "9007199254740993.0 1e100 1e-7)";

/// A slash between them.
constexpr const wchar_t* kTexts =
    L"/ /  a  /\t/\"quoted\"/a\nb\r\nc\r/\n/^/^ /^J/^M^/a^/\\/\\\\/\\U+0041/"
    L"\\\\U+0041/\\U+004/\\M+18140/\\u+0041/\\P/%%c/{/}/0/1001/\u00E4\u00D6\u00DF/"
    L"\u0416\u4E2D\uAC00/\U0001F600/a\U0001F600\\U+0041\U0010FFFF/\uFFFD\uFEFF/"
    L"\u0080\u009F\u00A0/\x01\x1A\x1B\x7F/; no remark/  0/EOF";

std::vector<CMORAdsLispVar> shortValues() {
    std::vector<CMORAdsLispVar> all = host::elementsOf(parsed(kNumbers));
    std::wistringstream texts{kTexts};
    for (std::wstring text; std::getline(texts, text, L'/');) all.push_back(host::makeString(text));
    return all;
}

/// Texts whose pieces in the file begin or end with what must not stand there.
std::vector<CMORAdsLispVar> longTexts() {
    std::vector<CMORAdsLispVar> all;
    const auto add = [&all](const std::wstring& text) { all.push_back(host::makeString(text)); };
    for (const int length : {248, 249, 250, 254, 255, 256, 257, 509, 510, 511, 2047, 2048, 10000})
        add(repeated(L"x", length));
    for (int length = 246; length <= 258; ++length) {
        for (const wchar_t* part : {L"   ", L"\\U+0041", L"\\\\^\U0001F600"})
            add(repeated(L"x", length) + part + repeated(L"y", 300));
        add(repeated(L" ", length));
    }
    add(repeated(L"\U0001F600", 1000));
    add(repeated(L"^\n", 500));
    return all;
}

std::vector<CMORAdsLispVar> lists() {
    std::vector<CMORAdsLispVar> all;
    for (const char* lisp :
         {"(1)", "(nil)", "(nil nil)", "((nil))", "(1 . 2)", "(1 2 . 3)", "((1 . 2) . 3)",
          "(nil . 1)", "(\"a\" (\"b\" (\"c\" . 2.5)))", "((((((1))))))", "(0 -1 1070)",
          "(1 (2 . \"x\") nil (nil . (3 . 4.0)))", "(\"{\" (\"}\") \"\")"})
        all.push_back(parsed(lisp));
    all.push_back(parsed(std::string(3500, '(') + "1" + std::string(3500, ')')));
    std::string dotted;
    for (int i = 0; i < 1500; ++i) dotted += "((nil) . ";
    all.push_back(parsed(dotted + "\"end\"" + std::string(1500, ')')));
    std::vector<CMORAdsLispVar> many;
    for (int i = 0; i < 3000; ++i) many.push_back(host::makeInteger(i * 7919));
    all.push_back(host::makeList(many));
    all.push_back(host::makeList({host::makeString(repeated(L"long ", 200)), L" ", L""},
                                 host::makeString(repeated(L"\u20AC", 200))));
    return all;
}

class StoredValues : public HostTest {
protected:
    /// Puts every value on an entity of its own, saves, loads and compares.
    void expectBack(const std::vector<CMORAdsLispVar>& values) {
        for (const CMORAdsLispVar& value : values) {
            ASSERT_EQ(makeLine(), RTNORM);
            Connected line{lastEntity()};
            ASSERT_TRUE(line.SetAttribute(L"value", value)) << host::lispText(value).substr(0, 80);
            ASSERT_TRUE(line.Flush());
        }
        reopen();
        ads_name name = {};
        ASSERT_EQ(acdbEntNext(nullptr, name), RTNORM);
        for (const CMORAdsLispVar& value : values) {
            CMORAdsLispVar back;
            EXPECT_TRUE(Connected{EntityName{name}}.GetAttribute(L"value", back));
            EXPECT_TRUE(host::sameValue(value, back))
                << host::lispText(value).substr(0, 200) << "\ncame back as\n"
                << host::lispText(back).substr(0, 200);
            acdbEntNext(name, name);
        }
    }
};

TEST_F(StoredValues, AreTheSameToTheBitInEveryRelease) {
    for (const Release release :
         {Release::R12, Release::R13, Release::R14, Release::R2000, Release::R2004, Release::R2007,
          Release::R2010, Release::R2013, Release::R2018})
        for (const char* lineEnd : {"\n", "\r\n"}) {
            SCOPED_TRACE(host::releaseName(release) + (lineEnd[0] == '\r' ? " CRLF" : " LF"));
            for (const auto& values : {shortValues(), longTexts(), lists()}) {
                create(release, lineEnd);
                expectBack(values);
            }
        }
}

TEST_F(StoredValues, StandInTheFileAsLinesOfAsciiNoLongerThanAllowed) {
    create(Release::R12);
    for (const CMORAdsLispVar& value : longTexts()) {
        ASSERT_EQ(makeLine(), RTNORM);
        Connected line{lastEntity()};
        ASSERT_TRUE(line.SetAttribute(L"\u00E4^ ", value) && line.Flush());
    }
    std::string rest = savedBytes();
    EXPECT_TRUE(
        std::ranges::all_of(rest, [](char c) { return c == '\n' || (c >= ' ' && c < 127); }));
    for (std::size_t feed = rest.find('\n'); feed != std::string::npos; feed = rest.find('\n')) {
        EXPECT_LE(feed, 255u) << rest.substr(0, feed);
        EXPECT_FALSE(feed > 0 && rest[feed - 1] == ' ') << rest.substr(0, feed);
        rest.erase(0, feed + 1);
    }
}

TEST_F(StoredValues, KeepTheirNamesWhateverTheseHold) {
    create(Release::R2000);
    ASSERT_EQ(makeLine(), RTNORM);
    const std::wstring names[] = {
        L"^ROOT", L"$ID", L" x ", L"a b", L"\u00C4", L"a", L"A", L"\\U+0041", repeated(L"n", 300)};
    Connected line{lastEntity()};
    for (std::size_t i = 0; i < std::size(names); ++i)
        EXPECT_TRUE(line.SetAttribute(names[i].c_str(), host::makeInteger(static_cast<int>(i))));
    ASSERT_TRUE(line.Flush());
    reopen();
    const auto attributes = host::recordAttributes(document(), lastEntity());
    ASSERT_EQ(attributes.items.size(), std::size(names));
    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(attributes.items[i].name, names[i]);
        EXPECT_EQ(host::integerOf(attributes.items[i].value), static_cast<int>(i));
    }
}

TEST_F(StoredValues, WithoutADxfFormAreRefused) {
    create();
    ASSERT_EQ(makeLine(), RTNORM);
    Connected line{lastEntity()};
    for (const double value : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
        EXPECT_FALSE(line.SetAttribute(L"x", host::makeReal(value)));
        EXPECT_FALSE(line.SetAttribute(L"x", host::makeList({host::makeReal(value)})));
    }
    CMORAdsLispVar none;
    EXPECT_FALSE(line.GetAttribute(L"x", none));
}

TEST_F(StoredValues, NameEntitiesByTheirHandles) {
    create(Release::R2004);
    ASSERT_EQ(makeLine(), RTNORM);
    const EntityName first = lastEntity();
    ASSERT_EQ(makeLine(), RTNORM);
    ads_name words = {};
    const ads_name none = {};
    first.copyTo(words);
    Connected line{lastEntity()};
    EXPECT_TRUE(
        line.SetAttribute(L"e", host::makeList({CMORAdsLispVar(words), CMORAdsLispVar(none)})));
    ASSERT_TRUE(line.Flush());
    const std::string text =
        host::lispText(host::recordAttributes(document(), lastEntity()).items[0].value);
    reopen();
    const auto value = host::recordAttributes(document(), lastEntity()).items.at(0).value;
    EXPECT_EQ(host::lispText(value), text);
    ads_name back = {};
    CMORAdsLisp::SetQ(back, CMORAdsLisp::Nth(0, value));
    EXPECT_EQ(titleOf(EntityName{back}), text.substr(11, 2).insert(0, "LINE:"));
    EXPECT_TRUE(host::entityNameOf(CMORAdsLisp::Nth(1, value)).isNone());
}

TEST_F(StoredValues, SurviveProgramsThatDecodeEscapes) {
    // Another program wrote the same texts in the file's own encoding, with carets and lower case.
    const auto read = [this](const std::string& version, const std::string& values) {
        open(DxfDrawing{.entities = lineEntity("A1", "0") + attributeTags(values),
                        .header = "9 $DWGCODEPAGE|3 ANSI_1251|",
                        .version = version});
        std::wstring all;
        for (const auto& item : host::recordAttributes(document(), named(L"A1")).items)
            all += item.name + L"=" + host::stringOf(item.value) + L";";
        return all;
    };
    EXPECT_EQ(read("AC1021",
                   "1000 n|1000 K\xC3\xB6ln \xF0\x9F\x98\x80|1000 \xC3\xA4|1000 a^Jb^ c|"
                   "1000 l|1000 \\U+00e4\\U+d83d\\U+de00|"),
              L"n=K\u00F6ln \U0001F600;\u00E4=a\nb^c;l=\u00E4\U0001F600;");
    EXPECT_EQ(read("AC1015", "1000 n|1000 \xC6|"), L"n=\u0416;");
}

RC_GTEST_FIXTURE_PROP(StoredValues, ComeBackWhateverTheyAre, ()) {
    static constexpr Release releases[] = {Release::R12, Release::R14, Release::R2000,
                                           Release::R2018};
    create(*rc::gen::elementOf(std::vector<Release>(std::begin(releases), std::end(releases))),
           *rc::gen::elementOf(std::vector<std::string>{"\n", "\r\n"}));
    const auto values =
        *rc::gen::resize(12, rc::gen::container<std::vector<CMORAdsLispVar>>(host::anyValue(3)));
    RC_ASSERT(makeLine() == RTNORM);
    Connected line{lastEntity()};
    std::vector<CMORAdsLispVar> stored;
    for (const CMORAdsLispVar& value : values) {
        const std::wstring name = L"v" + std::to_wstring(stored.size());
        if (CMORAdsLisp::NilP(value) || !line.SetAttribute(name.c_str(), value)) continue;
        stored.push_back(value);
    }
    RC_ASSERT(line.Flush());
    reopen();
    const auto back = host::recordAttributes(document(), lastEntity()).items;
    RC_ASSERT(back.size() == stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i)
        RC_ASSERT(host::sameValue(back[i].value, stored[i]));
}

}  // namespace
}  // namespace mor::test
